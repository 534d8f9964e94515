#include "support/Latch.h"
#include <vort/bones/StringID.h>
#include <vort/services/Translation.h>

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

using VORT::StringID;
using VTServices::Translation;
using VTServices::VTService;

namespace {

// Answers from a fixed table, records what it was asked, and makes ids of its own while it
// translates, which would deadlock if the repository's lock were held around the call.
class Recording : public Translation {
public:
    std::vector<const char *> asked;
    const char *translate(const char *text) override {
        asked.push_back(text);
        return std::string(text) == "Untitled" ? "Sans titre"
                                               : StringID(std::string(text) + "!").c_str();
    }
};

}  // namespace

TEST(TranslatedString, AsksTheServiceEveryTimeWithTheInternedTextButNotForTheEmptyId) {
    VTService<Translation>::install(nullptr);
    EXPECT_EQ(StringID().getXlateString(), "");  // needs no service
    auto *recording = new Recording;
    VTService<Translation>::install(recording);
    const StringID untitled("Untitled");
    EXPECT_EQ(StringID("").getXlateString(), "");
    EXPECT_EQ(untitled.getXlateString(), "Sans titre");
    EXPECT_EQ(untitled.getXlateString(), "Sans titre");
    std::string layer;
    vort_test::Latch done(1);
    std::thread worker([&] {
        layer = StringID("Layer").getXlateString();
        done.countDown();
    });
    if (!done.wait()) {
        worker.detach();
        FAIL() << "the service was called under the repository lock";
    }
    worker.join();
    EXPECT_EQ(layer, "Layer!");
    EXPECT_EQ(recording->asked, (std::vector<const char *>{untitled.c_str(), untitled.c_str(),
                                                           StringID("Layer").c_str()}));
    VTService<Translation>::install(new Translation);
    EXPECT_EQ(StringID("Brush size").getXlateString(), "Brush size");
    VTService<Translation>::install(nullptr);
}
