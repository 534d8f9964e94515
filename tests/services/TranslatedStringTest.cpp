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

// Answers from a fixed table and records what it was asked.
class Recording : public Translation {
public:
    std::vector<const char *> asked;
    const char *translate(const char *text) override {
        asked.push_back(text);
        if (std::string(text) == "Untitled") {
            return "Sans titre";
        }
        return text;
    }
};

class TranslatedStringTest : public ::testing::Test {
protected:
    void TearDown() override { VTService<Translation>::install(nullptr); }
};

}  // namespace

TEST_F(TranslatedStringTest, AsksTheServiceEveryTimeWithTheInternedTextButNotForTheEmptyId) {
    VTService<Translation>::install(nullptr);
    EXPECT_EQ(StringID().getXlateString(), "");  // needs no service
    auto *recording = new Recording;
    VTService<Translation>::install(recording);
    const StringID untitled("Untitled");
    EXPECT_EQ(StringID("").getXlateString(), "");
    EXPECT_EQ(untitled.getXlateString(), "Sans titre");
    EXPECT_EQ(untitled.getXlateString(), "Sans titre");
    EXPECT_EQ(StringID("Layer").getXlateString(), "Layer");
    EXPECT_EQ(recording->asked, (std::vector<const char *>{untitled.c_str(), untitled.c_str(),
                                                           StringID("Layer").c_str()}))
        << "a translation was cached, or the empty id was asked about";
    VTService<Translation>::install(new Translation);
    EXPECT_EQ(StringID("Brush size").getXlateString(), "Brush size");
}

namespace {

// Makes ids of its own while translating, which would deadlock if the repository's
// non-recursive lock were held around the call.
class Interning : public Translation {
public:
    const char *translate(const char *text) override {
        return StringID(std::string(text) + " (translated)").c_str();
    }
};

}  // namespace

TEST_F(TranslatedStringTest, ServiceRunsWithoutTheRepositoryLock) {
    VTService<Translation>::install(new Interning);
    std::string result;
    vort_test::Latch done(1);
    std::thread worker([&] {
        result = StringID("Opacity").getXlateString();
        done.countDown();
    });
    if (!done.wait()) {
        worker.detach();
        FAIL() << "getXlateString deadlocked: the service was called under the repository lock";
    }
    worker.join();
    EXPECT_EQ(result, "Opacity (translated)");
}
