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

TEST_F(TranslatedStringTest, EmptyIdNeedsNoService) {
    VTService<Translation>::install(nullptr);
    ASSERT_EQ(VTService<Translation>::get(), nullptr);
    EXPECT_EQ(StringID().getXlateString(), "");
    EXPECT_EQ(StringID("").getXlateString(), "");

    auto *recording = new Recording;
    VTService<Translation>::install(recording);
    EXPECT_EQ(StringID().getXlateString(), "");
    EXPECT_TRUE(recording->asked.empty()) << "the service was asked about the empty id";
}

TEST_F(TranslatedStringTest, AsksTheServiceEveryTimeWithTheInternedText) {
    auto *recording = new Recording;
    VTService<Translation>::install(recording);
    const StringID untitled("Untitled");
    EXPECT_EQ(untitled.getXlateString(), "Sans titre");
    EXPECT_EQ(untitled.getXlateString(), "Sans titre");
    EXPECT_EQ(StringID("Layer").getXlateString(), "Layer");
    ASSERT_EQ(recording->asked.size(), 3u) << "a translation was cached";
    EXPECT_EQ(recording->asked[0], untitled.c_str());
    EXPECT_EQ(recording->asked[1], untitled.c_str());
}

TEST_F(TranslatedStringTest, PlainServiceGivesTheTextBack) {
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
