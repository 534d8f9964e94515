#include "VortProcess.h"

#include <gtest/gtest.h>

#include <string>

TEST(VortMessage, PrintsCatalogueTextsAndRejectsMalformedCalls) {
    const std::string unknown = "unknown message code";
    vort_test::expectRuns({
        {{"message", "0x5A0007", "a.b"}, 0, "Package 'a.b' not found.\n", ""},
        {{"message", "5898247", "a.b"}, 0, "Package 'a.b' not found.\n", ""},
        {{"message", "VT_BadCommandState"},
         0,
         "Command not in an appropriate state for request.\n",
         ""},
        {{"message", "--lang", "ja", "VT_PackageCannotBeRegisteredInUniverse", "p.q", "Root"},
         0,
         "パッケージ 'p.q' は、ルート Root を持つ Universe で登録できません。\n",
         ""},
        {{"message", "0x5a0003", "Brush", "--lang=en"}, 0, "Class 'Brush' not found.\n", ""},
        {{"message"}, 2, "", "usage: vort message CODE"},
        {{"message", "0x5A0010"}, 2, "", "unknown message code '0x5A0010'"},
        {{"message", "0x5A00071"}, 2, "", unknown},
        {{"message", "0x"}, 2, "", unknown},
        {{"message", "5A0007"}, 2, "", unknown},
        {{"message", "-1"}, 2, "", unknown},
        {{"message", "99999999999999999999999"}, 2, "", unknown},
        {{"message", std::string("0x5A\xFF\x01", 6)}, 2, "", unknown},
        {{"message", "VT_PackageNotFound"}, 2, "", "takes 1 argument(s), got 0"},
        {{"message", "VT_BadCommandState", "extra"}, 2, "", "takes 0 argument(s), got 1"},
        {{"message", "VT_BadCommandState", "--lang"}, 2, "", "--lang needs a language"},
        {{"message", "VT_BadCommandState", "--lang", "fr"}, 2, "", "unknown language 'fr'"},
    });
}
