#include "PreferencesTestSupport.h"
#include <vort/preferences/VTPreferences.h>

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <utility>
#include <vector>

namespace {

using vort_test::PreferencesTest;
using vort_test::readFile;
using vort_test::Store;
using vort_test::writeFile;
using Table = VTPreferences::Table;

const char kHeader[] = "#\n#Nexlark Preference File\n#\n\n\n";

// The release that every load in these tests stores, since no file text names it.
Table withRelease(Table table) {
    table["General"]["TessarRelease"] = "R";
    return table;
}

std::vector<int> rect(const char *section, const char *key, int dx, int dy, int dw, int dh) {
    int x = 0, y = 0, w = 0, h = 0;
    VTPreferences::getRectPref(section, key, x, y, w, h, dx, dy, dw, dh);
    return {x, y, w, h};
}

std::string text(const char *section, const char *key, std::string held, const char *fallback) {
    VTPreferences::getStringPref(section, key, &held, fallback);
    return held;
}

using VTPreferencesReader = PreferencesTest;

TEST_F(VTPreferencesReader, ReadsEachFileTextIntoItsTable) {
    std::string longFile = "[Long]\n";
    Table longTable;
    for (int i = 0; i < 40; ++i) {
        // Values of 300 bytes cross every 255-byte buffer boundary somewhere.
        const std::string key = "key" + std::to_string(i);
        const std::string value = std::to_string(i) + std::string(300 - i, 'x');
        longFile += key + "=" + value + "\n";
        longTable["Long"][key] = value;
    }
    const std::pair<std::string, Table> cases[] = {
        {"[A]\nk=v\n", {{"A", {{"k", "v"}}}}},
        // A last line without a line break is lost.
        {"[A]\nk=v", {}},
        {"# note\n  [A]\n\t k=v\n#k=w\n", {{"A", {{"k", "v"}}}}},
        // An empty value takes the next non-blank line.
        {"[A]\nk=\n\n   next line\nm=n\n", {{"A", {{"k", "next line"}, {"m", "n"}}}}},
        // A key above the first section, a line beginning with "=" or an empty section name
        // swallows the file.
        {"k=v\n[A]\nm=n\n", {}},
        {"[A]\n=v\nm=n\n", {}},
        {"[]\nk=v\n[A]\nm=n\n", {}},
        // Blanks before "=" and inside the value stay.
        {"[A]\nk =  v w \n", {{"A", {{"k ", "v w "}}}}},
        {"[A]x=1\n", {{"A", {{"x", "1"}}}}},
        // Later values replace earlier ones.
        {"[A]\nk=v\n[B]\nk=w\n[A]\nk=z\n", {{"A", {{"k", "z"}}}, {"B", {{"k", "w"}}}}},
        {"[A]\r\nk=v\r\n", {{"A", {{"k", "v\r"}}}}},
        {"[A]\nk=a=b\n", {{"A", {{"k", "a=b"}}}}},
        // A line without "=" runs into the next key; section names may span lines.
        {"[A]\nfoo\nbar=baz\n", {{"A", {{"foo\nbar", "baz"}}}}},
        {"[A\nB]\nk=v\n", {{"A\nB", {{"k", "v"}}}}},
        {"[B]\nb=1\n[A]\na=1\n[B]\nc=2\n", {{"A", {{"a", "1"}}}, {"B", {{"b", "1"}, {"c", "2"}}}}},
        // A value's line break waits for the missing parts.
        {"[A]\nk=\n", {}},
        {longFile, longTable},
    };
    for (auto const &[bytes, expected] : cases) {
        SCOPED_TRACE(bytes.substr(0, 40));
        Store::reset();
        writeFile(file(), bytes);
        ASSERT_TRUE(VTPreferences::loadPrefs());
        EXPECT_EQ(Store::m_prefMaps, withRelease(expected));
    }
}

TEST_F(VTPreferencesReader, LoadsLazilyOnceAndRetriesAfterAMissingFile) {
    // No file: the getter gives its default and the next read tries again.
    EXPECT_FALSE(VTPreferences::loadPrefs());
    EXPECT_EQ(VTPreferences::getIntPref("A", "k", 7), 7);

    // Setters don't load, and the first load replaces what they set.
    EXPECT_TRUE(VTPreferences::setIntPref("A", "set", 1));
    writeFile(file(), "[General]\nTessarRelease=R\n[A]\nk=5\n");
    EXPECT_EQ(VTPreferences::getIntPref("A", "k", 7), 5);
    EXPECT_EQ(VTPreferences::getIntPref("A", "set", 7), 7);
    EXPECT_FALSE(Store::m_dirty);

    // Once loaded, the file is not read again.
    writeFile(file(), "[General]\nTessarRelease=R\n[A]\nk=6\n");
    EXPECT_EQ(VTPreferences::getIntPref("A", "k", 7), 5);
}

TEST_F(VTPreferencesReader, NamesTheFileInTheHostsDirectory) {
    const std::pair<const char *, std::string> cases[] = {{"/prefs", "/prefs/nexlark.prf"},
                                                          {"/prefs/", "/prefs/nexlark.prf"},
                                                          {"C:\\prefs\\", "C:\\prefs\\nexlark.prf"},
                                                          {"", "/nexlark.prf"},
                                                          {nullptr, ""}};
    for (auto const &c : cases) {
        useContext(c.first, "R");
        EXPECT_EQ(Store::getPrefFileName(), c.second);
    }
    VTServices::VTService<VTServices::ApplicationContext>::install(nullptr);
    EXPECT_EQ(Store::getPrefFileName(), "");
}

using VTPreferencesWriter = PreferencesTest;

TEST_F(VTPreferencesWriter, WritesSortedSectionsAndKeysAfterTheHeader) {
    VTPreferences::setStringPref("B", "m", "n");
    VTPreferences::setStringPref("A", "k", "v");
    VTPreferences::setStringPref("a", "z", "last");
    VTPreferences::setStringPref("A", "j", " spaced value ");
    VTPreferences::setStringPref("Gone", "x", "y");
    VTPreferences::setStringPref("Gone", "x", "");
    ASSERT_TRUE(VTPreferences::savePrefs());
    EXPECT_FALSE(Store::m_dirty);
    EXPECT_EQ(readFile(file()), std::string(kHeader) +
                                    "[A]\nj= spaced value \nk=v\n\n"
                                    "[B]\nm=n\n\n"
                                    "[a]\nz=last\n\n");

    // Nothing changed since: no write, and the file stays as it is.
    writeFile(file(), "sentinel");
    EXPECT_FALSE(VTPreferences::savePrefs());
    EXPECT_EQ(readFile(file()), "sentinel");

    Store::reset();
    EXPECT_FALSE(VTPreferences::savePrefs());
    VTPreferences::setBoolPref("S", "b", true);
    ASSERT_TRUE(VTPreferences::savePrefs());
    EXPECT_EQ(readFile(file()), std::string(kHeader) + "[S]\nb=1\n\n");
}

TEST_F(PreferencesTest, SetterRuleMarksOnlyRealChanges) {
    EXPECT_TRUE(VTPreferences::setStringPref("A", "k", "v") && Store::m_dirty);
    Store::m_dirty = false;
    EXPECT_TRUE(VTPreferences::setStringPref("A", "k", "v") && !Store::m_dirty);
    EXPECT_TRUE(VTPreferences::setIntPref("A", "k", 3) && Store::m_dirty);

    // An empty text deletes; deleting what isn't there is false and changes nothing.
    Store::m_dirty = false;
    EXPECT_FALSE(VTPreferences::setStringPref("A", "missing", ""));
    EXPECT_FALSE(VTPreferences::setStringPref("Missing", "k", ""));
    EXPECT_FALSE(Store::m_dirty);
    EXPECT_TRUE(VTPreferences::setStringPref("A", "k", "") && Store::m_dirty);
    EXPECT_EQ(Store::m_prefMaps, (Table{{"A", {}}}));
    EXPECT_FALSE(Store::delPref("A", "k"));
}

TEST_F(PreferencesTest, EveryTypedOperationIgnoresAnEmptySection) {
    Store::m_loaded = true;
    Store::m_prefMaps[""]["k"] = "1";
    int values[] = {1, 2};
    std::vector<std::string> strings = {"a"};
    EXPECT_FALSE(VTPreferences::setBoolPref("", "k", true) ||
                 VTPreferences::setIntPref("", "k", 1) ||
                 VTPreferences::setRectPref("", "k", 1, 2, 3, 4) ||
                 VTPreferences::setStringPref("", "k", "x") ||
                 VTPreferences::setIntArrayPref("", "k", values, 2) ||
                 VTPreferences::setStringVectorPref("", "k", &strings) ||
                 VTPreferences::setColorPref("", "k", VORT::Color()));
    EXPECT_EQ(Store::m_prefMaps[""]["k"], "1");
    EXPECT_FALSE(Store::m_dirty);

    EXPECT_FALSE(VTPreferences::getBoolPref("", "k", false));
    EXPECT_EQ(VTPreferences::getIntPref("", "k", 9), 9);
    EXPECT_EQ(rect("", "k", 5, 6, 7, 8), (std::vector<int>{5, 6, 7, 8}));
    int count = 5;
    EXPECT_EQ(VTPreferences::getIntArrayPref("", "k", count), nullptr);
    EXPECT_EQ(count, 0);
    VTPreferences::getStringVectorPref("", "k", &strings);
    EXPECT_EQ(strings, std::vector<std::string>{"a"});
    EXPECT_EQ(VTPreferences::getColorPref("", "k", VORT::Color()), VORT::Color());
    // A string keeps what it held, unless that was empty.
    EXPECT_EQ(text("", "k", "kept", "default") + text("", "k", "", "default"), "keptdefault");
}

TEST_F(PreferencesTest, EncodingsWriteTheirTextAndReadItBack) {
    Store::m_loaded = true;
    VORT::Color translucent;
    translucent.setRGBAFromPackedValue(0xFF800040u);
    const int pair[] = {1, 2};
    std::vector<std::string> words = {"a", "b"};
    EXPECT_TRUE(VTPreferences::setBoolPref("T", "on", true) &&
                VTPreferences::setBoolPref("T", "off", false) &&
                VTPreferences::setIntPref("T", "min", INT_MIN) &&
                VTPreferences::setRectPref("T", "rect", 10, 20, 300, -200) &&
                VTPreferences::setStringPref("T", "font", "Courier") &&
                VTPreferences::setColorPref("T", "colour", translucent) &&
                VTPreferences::setIntArrayPref("T", "ints", pair, 2) &&
                VTPreferences::setStringVectorPref("T", "words", &words));
    std::string section;
    for (auto const &[key, value] : Store::m_prefMaps["T"]) {
        section += key + "=" + value + ";";
    }
    EXPECT_EQ(section,
              "colour=255 128 0;font=Courier;ints=1 2 ;min=-2147483648;off=0;on=1;"
              "rect=10 20 300 -200;words=a,b,;");

    EXPECT_TRUE(VTPreferences::getBoolPref("T", "on", false));
    EXPECT_FALSE(VTPreferences::getBoolPref("T", "off", true));
    EXPECT_EQ(VTPreferences::getIntPref("T", "min", 0), INT_MIN);
    EXPECT_EQ(rect("T", "rect", 0, 0, 0, 0), (std::vector<int>{10, 20, 300, -200}));
    EXPECT_EQ(text("T", "font", "", "Helvetica"), "Courier");
    EXPECT_EQ(text("T", "missing", "Courier", nullptr), "");
    // Alpha is not kept: the colour comes back opaque.
    EXPECT_EQ(VTPreferences::getColorPref("T", "colour", VORT::Color()).getAsRgba(), 0xFF8000FFu);
    // Empty arrays and vectors delete.
    std::vector<std::string> none;
    EXPECT_TRUE(VTPreferences::setIntArrayPref("T", "ints", pair, -1) &&
                VTPreferences::setStringVectorPref("T", "words", &none));
    EXPECT_EQ(Store::m_prefMaps["T"].count("ints") + Store::m_prefMaps["T"].count("words"), 0u);
}

TEST_F(PreferencesTest, ScalarReadersFallBackOnTextsThatDontParse) {
    Store::m_loaded = true;
    Store::m_prefMaps["T"] = {{"yes", "yes"},   {"one", "1 "},   {"word", "abc"},
                              {"lead", " 42x"}, {"pair", "1 2"}, {"comma", "1,2,3,4"}};
    EXPECT_TRUE(VTPreferences::getBoolPref("T", "yes", true));
    EXPECT_FALSE(VTPreferences::getBoolPref("T", "yes", false) ||
                 VTPreferences::getBoolPref("T", "one", false));
    EXPECT_EQ(VTPreferences::getIntPref("T", "word", 5), 5);
    EXPECT_EQ(VTPreferences::getIntPref("T", "lead", 5), 42);
    EXPECT_EQ(VTPreferences::getIntPref("T", "missing", 5), 5);
    EXPECT_EQ(rect("T", "pair", 5, 6, 7, 8), (std::vector<int>{1, 2, 7, 8}));
    EXPECT_EQ(rect("T", "comma", 5, 6, 7, 8), (std::vector<int>{1, 6, 7, 8}));

    VORT::Color fallback;
    fallback.setRGBAFromPackedValue(0x11223344u);
    const std::pair<const char *, unsigned int> colours[] = {
        {"255 0 128", 0xFF0080FFu}, {" 1 2 3 trailing", 0x010203FFu}, {"300 -5 7", 0xFF0007FFu},
        {"255 0", 0x11223344u},     {"1.5 2 3", 0x11223344u},         {"red", 0x11223344u}};
    for (auto const &colour : colours) {
        Store::m_prefMaps["T"]["c"] = colour.first;
        EXPECT_EQ(VTPreferences::getColorPref("T", "c", fallback).getAsRgba(), colour.second)
            << colour.first;
    }
    EXPECT_EQ(VTPreferences::getColorPref("T", "missing", fallback), fallback);
}

TEST_F(PreferencesTest, ListReadersCutTheirTextsAsTheWritersLeaveThem) {
    Store::m_loaded = true;
    // Int arrays: tokens between runs of blanks and commas; a token that isn't a number is 0.
    const std::pair<const char *, std::vector<int>> arrays[] = {
        {"1 2 ", {1, 2}}, {"1,2", {1, 2}}, {" ,, -3 ,x,7y  4", {-3, 0, 7, 4}}, {" , ,", {}}};
    for (auto const &array : arrays) {
        Store::m_prefMaps["T"]["a"] = array.first;
        int count = -1;
        int *values = VTPreferences::getIntArrayPref("T", "a", count);
        EXPECT_EQ(std::vector<int>(values, values + count), array.second) << array.first;
        EXPECT_EQ(values == nullptr, array.second.empty());
        delete[] values;
    }
    // String vectors: the last character is taken as the closing comma, whatever it is.
    const std::pair<const char *, std::vector<std::string>> vectors[] = {
        {"a,b,", {"a", "b"}},
        {"a,bc", {"a", "b"}},
        {"a,b", {"a"}},
        {",,x,,y z,", {"x", "y z"}},
        {"abc", {"ab"}},
        {"q", {}},
        {",", {}}};
    for (auto const &vector : vectors) {
        Store::m_prefMaps["T"]["v"] = vector.first;
        std::vector<std::string> read = {"old"};
        VTPreferences::getStringVectorPref("T", "v", &read);
        EXPECT_EQ(read, vector.second) << vector.first;
    }
    std::vector<std::string> kept = {"old"};
    VTPreferences::getStringVectorPref("T", "missing", &kept);
    EXPECT_EQ(kept, std::vector<std::string>{"old"});
}

TEST_F(PreferencesTest, ClearEmptiesTheFileAndForgetsTheLoad) {
    writeFile(file(), "[General]\nTessarRelease=R\n[A]\nk=v\n");
    ASSERT_EQ(text("A", "k", "", ""), "v");
    VTPreferences::setStringPref("A", "k", "changed");
    ASSERT_TRUE(VTPreferences::clearPrefs());
    EXPECT_EQ(readFile(file()), "");
    EXPECT_TRUE(Store::m_prefMaps.empty() && !Store::m_loaded && !Store::m_dirty);
}

using VTPreferencesMigration = PreferencesTest;

TEST_F(VTPreferencesMigration, ConvertsOldColoursAndDropsTreeRecordsOnAReleaseChange) {
    struct Case {
        const char *oldRelease;  // null: no release in the file
        bool converts;
    };
    const Case cases[] = {{"1998c", true}, {"1", true},   {"1997b", true}, {"1.5", true},
                          {"2000", false}, {"R2", false}, {nullptr, false}};
    for (Case const &c : cases) {
        SCOPED_TRACE(c.oldRelease ? c.oldRelease : "(none)");
        Store::reset();
        std::string text;
        if (c.oldRelease != nullptr) {
            text += std::string("[General]\nTessarRelease=") + c.oldRelease + "\nother=1\n";
        }
        text +=
            "[SyntaxHighlighting]\nkeyword=1 0 0.5\ncomment=0.2 0.4 0.6\nodd=0.5 x\n"
            "[Nexlark Tree Browser]\nTBTreeClassRecord_A=1\nTBTreeClassRecord_B=2\nwidth=300\n"
            "TBTreeClass=3\n";
        writeFile(file(), text);
        ASSERT_TRUE(VTPreferences::loadPrefs());

        Table expected = {
            {"General", {{"TessarRelease", "R"}}},
            {"Nexlark Tree Browser", {{"width", "300"}, {"TBTreeClass", "3"}}},
            {"SyntaxHighlighting", c.converts ? VTPreferences::Section{{"keyword", "255 0 128"},
                                                                       {"comment", "51 102 153"},
                                                                       {"odd", "128 0 0"}}
                                              : VTPreferences::Section{{"keyword", "1 0 0.5"},
                                                                       {"comment", "0.2 0.4 0.6"},
                                                                       {"odd", "0.5 x"}}}};
        if (c.oldRelease != nullptr) {
            expected["General"]["other"] = "1";
        }
        EXPECT_EQ(Store::m_prefMaps, expected);
        // The migration saved what it did.
        EXPECT_FALSE(Store::m_dirty);
        Store::reset();
        ASSERT_TRUE(VTPreferences::loadPrefs());
        EXPECT_EQ(Store::m_prefMaps, expected);
    }
}

TEST_F(VTPreferencesMigration, LeavesAFileOfTheSameReleaseAlone) {
    const std::string text =
        "# hand-edited\n[General]\nTessarRelease=R\n[SyntaxHighlighting]\nkeyword=1 0 0.5\n"
        "[Nexlark Tree Browser]\nTBTreeClassRecord_A=1\n";
    writeFile(file(), text);
    ASSERT_TRUE(VTPreferences::loadPrefs());
    EXPECT_FALSE(Store::versionHasChanged() || Store::m_dirty);
    EXPECT_EQ(Store::m_prefMaps["SyntaxHighlighting"]["keyword"], "1 0 0.5");
    EXPECT_EQ(Store::m_prefMaps["Nexlark Tree Browser"].size(), 1u);
    EXPECT_EQ(readFile(file()), text);
}

TEST_F(VTPreferencesMigration, ClampsHugeComponentsAndCopesWithAHostWithoutRelease) {
    writeFile(file(), "[General]\nTessarRelease=1\n[SyntaxHighlighting]\nk=1e300 -1e300 -0.001\n");
    useContext(m_directory.string().c_str(), nullptr);
    ASSERT_TRUE(VTPreferences::loadPrefs());
    EXPECT_EQ(Store::m_prefMaps["SyntaxHighlighting"]["k"], "2147483647 -2147483648 0");
    // The host's release is unknown: the stored one is removed.
    EXPECT_EQ(Store::m_prefMaps["General"].count("TessarRelease"), 0u);
    EXPECT_TRUE(Store::versionHasChanged());
}

}  // namespace
