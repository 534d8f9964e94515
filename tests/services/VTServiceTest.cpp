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
    Counted::destroyed = 0;
    VTService<Translation>::install(new Counted);
    VTService<Translation>::install(new Counted);
    VTService<Impostor>::install(new Impostor);
    EXPECT_EQ(VTService<Translation>::get(), nullptr);
    VTService<Impostor>::install(nullptr);
    EXPECT_EQ(Counted::destroyed, 2);
    EXPECT_STREQ(Translation().translate("Untitled"), "Untitled");
    EXPECT_TRUE(VTServices::ApplicationContext().isFeatureEnabled(""));
    EXPECT_FALSE(VTServices::LumigraphClient().isValidItem(0));
}
