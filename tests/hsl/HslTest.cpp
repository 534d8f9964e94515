#include "support/PlatformHooks.h"
#include <hsl/hsl.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>

namespace {

const uint32_t kCodes[] = {0x7F0001, 0x7F0002, 0x7F0003, 0xFFFFFFFF};
const char *const kIds[] = {"T_One", "T_Two", "T_Three"};
const char *const kEnglish[] = {"Plain text.", "Item '%s' in '%s' (100%%).", "Only %s here."};
const char *const kGerman[] = {"Klartext.", "'%2' enth\xE4lt '%1'.", "Nur %1 hier."};
const hsl_message_table kTable = {3, 0x7F, kCodes, kIds, kEnglish, ""};

const uint32_t kFacilities[] = {0x7F, 0xFFFFFFFF};
const uint32_t *const kCodeTables[] = {kCodes};
const char *const *const kTextTables[] = {kGerman};
// The third message has a German text, but the count stops short of it: it is not used.
const uint32_t kCounts[] = {2};
const hsl_language_table kGermanTable = {kFacilities, kCodeTables, kTextTables, kCounts};

std::string format(uint32_t code, const char *a = nullptr, const char *b = nullptr) {
    char buffer[256];
    hsl_sprintm(hslGetMessageContext(), buffer, sizeof buffer, code, a, b,
                static_cast<const char *>(nullptr));
    return buffer;
}

class HslMessages : public vort_test::PlatformHooksTest {
protected:
    static void SetUpTestSuite() {
        hsl_mem_add_primary_message_table(hslGetMemoryContext(), &kTable);
        hsl_mem_add_language(hslGetMemoryContext(), "de", &kGermanTable);
    }
};

}  // namespace

TEST_F(HslMessages, SubstitutesInOrderOrByNumber) {
    EXPECT_EQ(format(0x7F0001), "Plain text.");
    EXPECT_EQ(format(0x7F0002, "a", "b"), "Item 'a' in 'b' (100%).");
    EXPECT_EQ(format(0x7F0002, "a"), "Item 'a' in '' (100%).") << "missing arguments read empty";
    hslSetLanguage("de");
    EXPECT_STREQ(hslGetLanguage(), "de");
    EXPECT_EQ(format(0x7F0002, "a", "b"), "'b' enth\xE4lt 'a'.");
    EXPECT_EQ(format(0x7F0003, "x"), "Only x here.") << "no German text: English is used";
    hslSetLanguage("en");
    EXPECT_EQ(format(0x7F0001), "Plain text.");
}

TEST_F(HslMessages, UnknownCodeIsNamedInHexadecimal) {
    EXPECT_NE(format(0x7F00AB).find("0x7F00AB"), std::string::npos);
}

TEST_F(HslMessages, OutputNeverPassesTheBuffer) {
    for (size_t size = 1; size < 40; ++size) {
        char buffer[64];
        std::memset(buffer, '#', sizeof buffer);
        const int written =
            hsl_sprintm(hslGetMessageContext(), buffer, size, 0x7F0002, "a long argument",
                        "another long argument", static_cast<const char *>(nullptr));
        EXPECT_EQ(static_cast<size_t>(written), std::strlen(buffer));
        EXPECT_LT(std::strlen(buffer), size);
        for (size_t i = size; i < sizeof buffer; ++i) {
            ASSERT_EQ(buffer[i], '#') << "byte " << i << " written with a buffer of " << size;
        }
    }
    EXPECT_EQ(hsl_sprintm(hslGetMessageContext(), nullptr, 0, 0x7F0001, nullptr), 0);
}

TEST_F(HslMessages, RemovedTableIsNoLongerFound) {
    const uint32_t codes[] = {0x7E0001, 0xFFFFFFFF};
    const char *const ids[] = {"T_Gone"};
    const char *const texts[] = {"Gone soon."};
    const hsl_message_table table = {1, 0x7E, codes, ids, texts, ""};
    void *context = hslGetMemoryContext();
    ASSERT_EQ(hsl_mem_add_primary_message_table(context, &table), 0);
    EXPECT_EQ(format(0x7E0001), "Gone soon.");
    EXPECT_EQ(hsl_mem_remove_primary_message_table(context, &table), 0);
    EXPECT_NE(format(0x7E0001), "Gone soon.");
    EXPECT_EQ(hsl_mem_remove_primary_message_table(context, &table), -1);
}

TEST_F(HslMessages, AssertionsReachTheInstalledHandler) {
    hsl_assert("x > 0", "file.cpp", 12);
    hsl_assertstr("y", "other.cpp", 34, "why");
    const auto reports = platform.assertions();
    ASSERT_EQ(reports.size(), 2u);
    EXPECT_EQ(reports[0].expression, "x > 0");
    EXPECT_EQ(reports[0].file, "file.cpp");
    EXPECT_EQ(reports[0].line, 12);
    EXPECT_FALSE(reports[0].hasMessage);
    EXPECT_TRUE(reports[1].hasMessage);
    EXPECT_EQ(reports[1].message, "why");
}

TEST_F(HslMessages, HooksReturnThePreviousOneAndNullRestoresTheDefault) {
    HslTextSink mine = [](const char *) {};
    const HslTextSink capture = hslSetConsoleSink(mine);
    EXPECT_EQ(hslSetConsoleSink(nullptr), mine);
    const HslTextSink fallback = hslSetConsoleSink(capture);
    EXPECT_NE(fallback, mine);
    EXPECT_NE(fallback, nullptr);
}

TEST_F(HslMessages, ConsoleAndDebugOutputGoToTheirSinks) {
    const std::string longText(2000, 'z');
    EXPECT_EQ(hslPrintf("%d-%s", 42, longText.c_str()), 2003);
    EXPECT_EQ(platform.consoleOutput(), "42-" + longText);
    hslDebugOutput("to the debugger");
    EXPECT_EQ(platform.debugOutput(), "to the debugger");
}

TEST_F(HslMessages, ClockFollowsTheInstalledSource) {
    platform.setClock(12.5);
    EXPECT_EQ(hslRealtime(), 12.5);
    hslSetRealtimeSource(nullptr);
    const double a = hslRealtime();
    const double b = hslRealtime();
    EXPECT_LE(a, b) << "the default clock is monotonic";
}

TEST(HslHash, IsXxHash32WithTheSeedFirst) {
    // Published xxHash32 values.
    EXPECT_EQ(hsl_hash_string(0, ""), 0x02CC5D05u);
    EXPECT_EQ(hsl_hash_string(0, "abc"), 0x32D153FFu);
    EXPECT_EQ(hsl_hash_string(0, "Nobody inspects the spammish repetition"), 0xE2293B2Fu);
    EXPECT_NE(hsl_hash_string(1, "abc"), hsl_hash_string(0, "abc"));
    const char bytes[] = "abc\0def";
    EXPECT_EQ(hsl_hash_n_bytes(0, bytes, 3), hsl_hash_string(0, "abc"));
    EXPECT_NE(hsl_hash_n_bytes(0, bytes, 7), hsl_hash_string(0, "abc"));
    EXPECT_EQ(hslStrlen(bytes), 3u);
    EXPECT_EQ(hslStrlen(nullptr), 0u);
}

TEST(HslThreads, SignalThreadIsTheOneMarked) {
    bool otherBefore = true;
    std::thread([&] { otherBefore = hslIsSignalThread() != 0; }).join();
    EXPECT_FALSE(otherBefore) << "no thread is marked at start";
    hslSetSignalThread();
    EXPECT_TRUE(hslIsSignalThread());
    bool otherAfter = true;
    std::thread([&] { otherAfter = hslIsSignalThread() != 0; }).join();
    EXPECT_FALSE(otherAfter);
}

TEST(HslThreads, ThreadSpecificSlotsAreSeparatePerThread) {
    using namespace Corvane::System;
    const tss_key key = tss_create(nullptr);
    int mine = 1;
    tss_set(key, &mine);
    void *seenElsewhere = &mine;
    std::thread([&] {
        seenElsewhere = tss_get(key);
        int theirs = 2;
        tss_set(key, &theirs);
    }).join();
    EXPECT_EQ(seenElsewhere, nullptr);
    EXPECT_EQ(tss_get(key), &mine);
    tss_delete(key);
}
