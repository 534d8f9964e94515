#include "support/PlatformHooks.h"
#include <hsl/hsl.h>

#include <gtest/gtest.h>

#include <chrono>
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

TEST_F(HslMessages, SubstitutesInOrderOrByNumberNamesUnknownCodesAndKeepsInTheBuffer) {
    EXPECT_EQ(format(0x7F0001), "Plain text.");
    EXPECT_EQ(format(0x7F0002, "a", "b"), "Item 'a' in 'b' (100%).");
    EXPECT_EQ(format(0x7F0002, "a"), "Item 'a' in '' (100%).") << "missing arguments read empty";
    EXPECT_NE(format(0x7F00AB).find("0x7F00AB"), std::string::npos);
    hslSetLanguage("de");
    EXPECT_STREQ(hslGetLanguage(), "de");
    EXPECT_EQ(format(0x7F0002, "a", "b"), "'b' enth\xE4lt 'a'.");
    EXPECT_EQ(format(0x7F0003, "x"), "Only x here.") << "no German text: English is used";
    hslSetLanguage("en");
    EXPECT_EQ(format(0x7F0001), "Plain text.");
    // The output never passes the buffer.
    for (size_t size = 1; size < 40; ++size) {
        char buffer[64];
        std::memset(buffer, '#', sizeof buffer);
        const int written =
            hsl_sprintm(hslGetMessageContext(), buffer, size, 0x7F0002, "a long",
                        "another long argument", static_cast<const char *>(nullptr));
        EXPECT_TRUE(size_t(written) == std::strlen(buffer) && std::strlen(buffer) < size);
        ASSERT_EQ(std::string(buffer + size, sizeof buffer - size), std::string(64 - size, '#'));
    }
}

TEST_F(HslMessages, HooksReceiveAssertionsOutputAndTheClock) {
    hsl_assert("x > 0", "file.cpp", 12);
    hsl_assertstr("y", "other.cpp", 34, "why");
    const auto r = platform.assertions();
    ASSERT_EQ(r.size(), 2u);
    EXPECT_EQ(r[0].expression + r[0].file + std::to_string(r[0].line) + r[1].message,
              "x > 0file.cpp12why");
    EXPECT_TRUE(!r[0].hasMessage && r[1].hasMessage);
    const std::string longText(2000, 'z');
    EXPECT_EQ(hslPrintf("%d-%s", 42, longText.c_str()), 2003);
    hslDebugOutput("to the debugger");
    platform.setClock(12.5);
    EXPECT_EQ(platform.consoleOutput() + platform.debugOutput() + std::to_string(hslRealtime()),
              "42-" + longText + "to the debugger12.500000");

    // A setter answers the previous hook; null restores the default.
    HslTextSink mine = [](const char *) {};
    const HslTextSink capture = hslSetConsoleSink(mine);
    EXPECT_EQ(hslSetConsoleSink(nullptr), mine);
    const HslTextSink fallback = hslSetConsoleSink(capture);
    EXPECT_TRUE(fallback != mine && fallback != nullptr);

    // The default clock counts seconds of the monotonic clock, to within a scheduler tick.
    hslSetRealtimeSource(nullptr);
    const double steady =
        std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
    EXPECT_NEAR(hslRealtime(), steady, 0.1);
}

TEST(HslPlatform, SignalThreadAndSlotsArePerThreadAndTheHashIsXxHash32) {
    using namespace Corvane::System;
    bool marked = true;
    hslSetSignalThread();
    std::thread([&] { marked = hslIsSignalThread() != 0; }).join();
    EXPECT_TRUE(hslIsSignalThread() && !marked);

    const tss_key key = tss_create(nullptr);
    int mine = 1;
    tss_set(key, &mine);
    void *seenElsewhere = &mine;
    std::thread([&] {
        seenElsewhere = tss_get(key);
        int theirs = 2;
        tss_set(key, &theirs);
    }).join();
    EXPECT_TRUE(seenElsewhere == nullptr && tss_get(key) == &mine);
    tss_delete(key);
    // Published xxHash32 values.
    EXPECT_TRUE(hsl_hash_string(0, "") == 0x02CC5D05u && hsl_hash_string(0, "abc") == 0x32D153FFu);
    EXPECT_EQ(hsl_hash_string(0, "Nobody inspects the spammish repetition"), 0xE2293B2Fu);
    EXPECT_NE(hsl_hash_string(1, "abc"), hsl_hash_string(0, "abc"));
    const char bytes[] = "abc\0def";
    EXPECT_TRUE(hsl_hash_n_bytes(0, bytes, 3) == hsl_hash_string(0, "abc") &&
                hsl_hash_n_bytes(0, bytes, 7) != hsl_hash_string(0, "abc"));
    EXPECT_EQ(hslStrlen(bytes) * 10 + hslStrlen(nullptr), 30u);
}
