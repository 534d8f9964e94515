#include "support/PlatformHooks.h"
#include <vort/bones/Library.h>

#include <gtest/gtest.h>

#include <string>

namespace {

std::string message(uint32_t code, const char *a = nullptr, const char *b = nullptr) {
    char buffer[2048];
    hsl_sprintm(hslGetMessageContext(), buffer, sizeof buffer, code, a, b,
                static_cast<const char *>(nullptr));
    return buffer;
}

const char *const kEnglish[] = {"Command not in an appropriate state for request.",
                                "We do not have undo information far enough back.",
                                "Class 'A' not found.",
                                "Class 'A' registered as NULL.",
                                "Class 'A' cannot be cloned.",
                                "Base class 'A' not found.",
                                "Package 'A' not found.",
                                "Package 'A' cannot be registered in Universe with root B.",
                                "Class 'A' does not expose requested interface."};

class Library : public vort_test::PlatformHooksTest {
protected:
    void SetUp() override { initialize_vort_util(); }
};

}  // namespace

TEST_F(Library, CatalogueTablesSpeakEnglishAndJapaneseAndRegisterOnce) {
    const hsl_message_table &primary = VORT::primaryMessageTable();
    EXPECT_TRUE(primary.count == 9 && primary.facility == 0x5A && primary.codes[9] == 0xFFFFFFFF);
    EXPECT_STREQ(primary.trailing, "");
    for (uint32_t i = 0; i < 9; ++i) {
        EXPECT_EQ(primary.codes[i], 0x5A0001 + i);
        EXPECT_EQ(message(0x5A0001 + i, "A", "B"), kEnglish[i]) << i;
    }
    EXPECT_STREQ(primary.ids[8], "VT_ClassDoesNotExposeInterface");
    const hsl_language_table &japanese = VORT::japaneseMessageTable();
    EXPECT_TRUE(japanese.facilities[0] == 0x5A && japanese.facilities[1] == 0xFFFFFFFF);
    EXPECT_TRUE(japanese.codeTables[0] == primary.codes && japanese.counts[0] == 9);
    hslSetLanguage("ja");
    // Shift-JIS, with the arguments placed by number.
    EXPECT_EQ(message(0x5A0008, "A", "B").substr(0, 17),
              "\x83p\x83"
              "b\x83P\x81[\x83W 'A' \x82\xCD");
    EXPECT_NE(message(0x5A0009, "A", "B").find("'A'"), std::string::npos);
    hslSetLanguage("en");

    // Registered once: a single withdrawal through the loader's hook leaves no table behind.
    initialize_vort_util();
    EXPECT_EQ(vort_catalogue_hooks.unload(), 0);
    EXPECT_NE(message(0x5A0001), kEnglish[0]);
    EXPECT_EQ(vort_catalogue_hooks.load(), 0);
    EXPECT_EQ(message(0x5A0001), kEnglish[0]);
}

namespace {

void reassertFromHandler(const char *, const char *, int, const char *) {
    VORT::logAssert("inner.cpp", 2, "inner");
}

}  // namespace

TEST_F(Library, LogAssertReportsOnceAndNeverRecurses) {
    VORT::logAssert(".\\bones\\Registry", 120, "node != 0");
    EXPECT_EQ(platform.debugOutput(), ".\\bones\\Registry (120) : Assertion failure (node != 0)");
    auto reports = platform.assertions();
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].expression + reports[0].file + std::to_string(reports[0].line),
              "node != 0.\\bones\\Registry120");
    platform.clear();
    const HslAssertHandler recorder = hslSetAssertHandler(&reassertFromHandler);
    VORT::logAssert("outer.cpp", 1, "outer");
    hslSetAssertHandler(recorder);
    EXPECT_EQ(platform.debugOutput(), "outer.cpp (1) : Assertion failure (outer)")
        << "the assertion raised inside the handler is dropped";
    platform.clear();
    VORT::logAssert("after.cpp", 3, "after");
    EXPECT_EQ(platform.assertions().size(), 1u) << "the flag is cleared after a report";

    EXPECT_EQ(std::string() + VORT::CLASS_SEPARATOR + VORT::PACKAGE_SEPARATOR, ":.");
    EXPECT_FALSE(VORT::isDevelopmentCode());
    platform.clear();
    VORT::outputToDebugger("nothing", true, true);
    EXPECT_EQ(platform.debugOutput(), "");
}
