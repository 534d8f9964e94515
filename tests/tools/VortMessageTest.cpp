#include "VortProcess.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using vort_test::runVort;
using vort_test::VortRun;

TEST(VortMessage, PrintsCatalogueTextsInBothLanguages) {
    struct Row {
        std::vector<std::string> arguments;
        const char *out;
    };
    const Row rows[] = {
        {{"message", "0x5A0007", "a.b"}, "Package 'a.b' not found.\n"},
        {{"message", "5898247", "a.b"}, "Package 'a.b' not found.\n"},
        {{"message", "VT_BadCommandState"}, "Command not in an appropriate state for request.\n"},
        {{"message", "--lang", "ja", "VT_PackageCannotBeRegisteredInUniverse", "p.q", "Root"},
         "パッケージ 'p.q' は、ルート Root を持つ Universe で登録できません。\n"},
        {{"message", "0x5a0003", "Brush", "--lang=en"}, "Class 'Brush' not found.\n"},
    };
    for (Row const &row : rows) {
        const VortRun run = runVort(row.arguments);
        ASSERT_TRUE(run.finished);
        EXPECT_EQ(run.exitCode, 0) << run.err;
        EXPECT_EQ(run.out, row.out);
    }
}

TEST(VortMessage, RejectsMalformedCodesAndArgumentsWithAReason) {
    struct Row {
        std::vector<std::string> arguments;
        const char *reason;
    };
    const Row rows[] = {
        {{"message"}, "usage: vort message CODE"},
        {{"message", "0x5A0010"}, "unknown message code '0x5A0010'"},
        {{"message", "0x5A00071"}, "unknown message code"},
        {{"message", "0x"}, "unknown message code"},
        {{"message", "5A0007"}, "unknown message code"},
        {{"message", "-1"}, "unknown message code"},
        {{"message", "99999999999999999999999"}, "unknown message code"},
        {{"message", std::string("0x5A\xFF\x01", 6)}, "unknown message code"},
        {{"message", "VT_PackageNotFound"}, "takes 1 argument(s), got 0"},
        {{"message", "VT_BadCommandState", "extra"}, "takes 0 argument(s), got 1"},
        {{"message", "VT_BadCommandState", "--lang"}, "--lang needs a language"},
        {{"message", "VT_BadCommandState", "--lang", "fr"}, "unknown language 'fr'"},
    };
    for (Row const &row : rows) {
        const VortRun run = runVort(row.arguments);
        ASSERT_TRUE(run.finished) << row.arguments.back();
        EXPECT_EQ(run.exitCode, 2) << row.arguments.back();
        EXPECT_EQ(run.out, "");
        EXPECT_NE(run.err.find(row.reason), std::string::npos) << run.err;
    }
}
