#include <vort/services/ApplicationContext.h>
#include <vort/services/LumigraphClient.h>
#include <vort/services/Translation.h>
#include <vort/services/VTService.h>

#include <gtest/gtest.h>

using VTServices::Translation;
using VTServices::VTService;

namespace {

class Counted : public Translation {
public:
    static inline int destroyed = 0;
    ~Counted() override { ++destroyed; }
};

// Another class that claims the key "Translation".
struct Impostor : VTService<Impostor> {
    static std::string serviceName() { return "Translation"; }
};

}  // namespace

// An object of another class under the same key is not found.
TEST(VTService, InstallReplacesAndDeletesOnceAndAnswersItsDefaults) {
    VTService<Translation>::install(new Counted);
    VTService<Translation>::install(new Counted);
    VTService<Impostor>::install(new Impostor);
    EXPECT_EQ(VTService<Translation>::get(), nullptr);
    VTService<Impostor>::install(nullptr);
    VTService<Impostor>::install(nullptr);  // finds nothing to delete
    EXPECT_EQ(Counted::destroyed, 2);
    const char text[] = "Untitled";
    EXPECT_EQ(Translation().translate(text), text);
    EXPECT_TRUE(VTServices::ApplicationContext().isFeatureEnabled(""));
    EXPECT_FALSE(VTServices::LumigraphClient().isValidItem(0));
}
