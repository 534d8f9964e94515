#include "support/PlatformHooks.h"
#include <vort/bones/Library.h>

#include <gtest/gtest.h>

#include <iconv.h>
#include <string>

namespace {

std::string message(uint32_t code, const char *a = nullptr, const char *b = nullptr) {
    char buffer[2048];
    hsl_sprintm(hslGetMessageContext(), buffer, sizeof buffer, code, a, b,
                static_cast<const char *>(nullptr));
    return buffer;
}

// Converts the expected texts, written here in UTF-8, to Shift-JIS independently of the
// library's own byte tables.
std::string shiftJis(std::string const &utf8) {
    iconv_t converter = iconv_open("SHIFT_JIS", "UTF-8");
    EXPECT_NE(converter, reinterpret_cast<iconv_t>(-1));
    std::string in = utf8, out(in.size() * 2 + 1, '\0');
    char *source = in.data(), *target = out.data();
    size_t sourceLeft = in.size(), targetLeft = out.size();
    EXPECT_NE(iconv(converter, &source, &sourceLeft, &target, &targetLeft),
              static_cast<size_t>(-1));
    iconv_close(converter);
    out.resize(out.size() - targetLeft);
    return out;
}

struct CatalogueRow {
    uint32_t code;
    const char *id;
    const char *english;
    const char *japanese;
};

const CatalogueRow kRows[] = {
    {0x5A0001, "VT_BadCommandState", "Command not in an appropriate state for request.",
     "要求に対する適切な状態のコマンドではありません。"},
    {0x5A0002, "VT_DoNotHaveUndoInformationForChangeLevel",
     "We do not have undo information far enough back.",
     "だいぶ前の元に戻す (undo) 情報はありません。"},
    {0x5A0003, "VT_ClassNotFound", "Class 'A' not found.", "クラス 'A' が見つかりません。"},
    {0x5A0004, "VT_ClassRegisteredAsNULL", "Class 'A' registered as NULL.",
     "クラス 'A' は NULL として登録されました。"},
    {0x5A0005, "VT_ClassCannotBeCloned", "Class 'A' cannot be cloned.",
     "クラス 'A' はコピーできません。"},
    {0x5A0006, "VT_BaseClassNotFound", "Base class 'A' not found.",
     "基本クラス 'A' が見つかりません。"},
    {0x5A0007, "VT_PackageNotFound", "Package 'A' not found.", "パッケージ 'A' が見つかりません。"},
    {0x5A0008, "VT_PackageCannotBeRegisteredInUniverse",
     "Package 'A' cannot be registered in Universe with root B.",
     "パッケージ 'A' は、ルート B を持つ Universe で登録できません。"},
    {0x5A0009, "VT_ClassDoesNotExposeInterface", "Class 'A' does not expose requested interface.",
     "クラス 'A' は、要求されたインタフェースを公開しません。"}};

class Library : public vort_test::PlatformHooksTest {
protected:
    void SetUp() override { initialize_vort_util(); }
};

}  // namespace

TEST_F(Library, CatalogueSpeaksEnglishAndJapanese) {
    for (CatalogueRow const &row : kRows) {
        EXPECT_EQ(message(row.code, "A", "B"), row.english) << row.id;
    }
    hslSetLanguage("ja");
    for (CatalogueRow const &row : kRows) {
        EXPECT_EQ(message(row.code, "A", "B"), shiftJis(row.japanese)) << row.id;
    }
}

TEST_F(Library, TablesHaveNineRowsAndTheirTerminators) {
    const hsl_message_table &primary = VORT::primaryMessageTable();
    EXPECT_TRUE(primary.count == 9 && primary.facility == 0x5A && primary.codes[9] == 0xFFFFFFFF);
    EXPECT_STREQ(primary.trailing, "");
    for (int i = 0; i < 9; ++i) {
        EXPECT_EQ(primary.codes[i], kRows[i].code);
        EXPECT_STREQ(primary.ids[i], kRows[i].id);
    }
    const hsl_language_table &japanese = VORT::japaneseMessageTable();
    EXPECT_TRUE(japanese.facilities[0] == 0x5A && japanese.facilities[1] == 0xFFFFFFFF);
    EXPECT_TRUE(japanese.codeTables[0] == primary.codes && japanese.counts[0] == 9);
}

TEST_F(Library, SecondInitializationRegistersNothingMore) {
    initialize_vort_util();
    initialize_vort_util();
    // Registered once: a single withdrawal through the loader's hook leaves no table behind.
    EXPECT_EQ(vort_catalogue_hooks.unload(), 0);
    EXPECT_NE(message(0x5A0001), kRows[0].english);
    EXPECT_EQ(vort_catalogue_hooks.load(), 0);
    EXPECT_EQ(message(0x5A0001), kRows[0].english);
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
}

TEST_F(Library, SeparatorsAndNoOps) {
    EXPECT_EQ(std::string() + VORT::CLASS_SEPARATOR + VORT::PACKAGE_SEPARATOR, ":.");
    EXPECT_FALSE(VORT::isDevelopmentCode());
    VORT::outputToDebugger("nothing", true, true);
    EXPECT_EQ(platform.debugOutput(), "");
}
