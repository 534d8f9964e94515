#include "support/Latch.h"
#include <vort/bones/StringID.h>
#include <vort/services/ApplicationContext.h>
#include <vort/services/LumigraphClient.h>
#include <vort/services/Translation.h>
#include <vort/services/VTService.h>

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

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

// Answers from a table, records what it is asked, and makes ids while it translates, which
// would deadlock if the id repository's lock were held around the call.
struct Recording : Translation {
    std::vector<const char *> asked;
    const char *translate(const char *text) override {
        asked.push_back(text);
        const std::string plain(text);
        return plain == "Untitled" ? "Sans titre" : VORT::StringID(plain + "!").c_str();
    }
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

TEST(VTService, IdsAreTranslatedThroughTheServiceByTheirInternedTextOutsideTheRepositoryLock) {
    VTService<Translation>::install(nullptr);
    EXPECT_EQ(VORT::StringID().getXlateString(), "");  // needs no service
    auto *recording = new Recording;
    VTService<Translation>::install(recording);
    const VORT::StringID untitled("Untitled");
    EXPECT_EQ(VORT::StringID("").getXlateString() + untitled.getXlateString() + "|" +
                  untitled.getXlateString(),
              "Sans titre|Sans titre");  // asked each time
    std::string layer;
    vort_test::Latch done(1);
    std::thread worker([&] {
        layer = VORT::StringID("Layer").getXlateString();
        done.countDown();
    });
    const bool returned = done.wait();
    returned ? worker.join() : worker.detach();
    ASSERT_TRUE(returned) << "the service was called under the repository lock";
    EXPECT_EQ(layer, "Layer!");
    EXPECT_EQ(recording->asked, (std::vector<const char *>{untitled.c_str(), untitled.c_str(),
                                                           VORT::StringID("Layer").c_str()}));
    VTService<Translation>::install(nullptr);
}
