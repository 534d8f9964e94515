#include "support/FuzzCorpus.h"
#include <vort/preferences/VTPreferences.h>
#include <vort/services/ApplicationContext.h>

#include <gtest/gtest.h>

#include <climits>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace {

using Table = VTPreferences::Table;
using Strings = std::vector<std::string>;
const char kHeader[] = "#\n#Nexlark Preference File\n#\n\n\n";

// What the host answers; a missing directory or release is answered as null.
struct Context : VTServices::ApplicationContext {
    std::optional<std::string> directory, release;
    const char *getPreferencesDirectory(bool) override {
        return directory ? directory->c_str() : nullptr;
    }
    const char *getRelease() override { return release ? release->c_str() : nullptr; }
};

struct Store : VTPreferences {
    using VTPreferences::getPrefFileName;
    using VTPreferences::m_dirty;
    using VTPreferences::m_loaded;
    using VTPreferences::m_prefMaps;
    static void reset() {
        m_prefMaps.clear();
        m_loaded = m_dirty = false;
    }
};

std::string readFile(const std::filesystem::path &path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::string text(const char *section, const char *key, std::string held, const char *fallback) {
    VTPreferences::getStringPref(section, key, &held, fallback);
    return held;
}

// A fresh directory per test, named by a host of release "R", and an empty store.
class Prefs : public ::testing::Test {
protected:
    void SetUp() override {
        dir = std::filesystem::temp_directory_path() /
              ("vort-prefs-" + std::to_string(::getpid()) + "-" +
               ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::remove_all(dir);
        std::filesystem::create_directories(dir);
        useContext(dir.string(), "R");
        Store::reset();
    }
    void TearDown() override {
        VTServices::VTService<VTServices::ApplicationContext>::install(nullptr);
        Store::reset();
        std::filesystem::remove_all(dir);
    }
    static void useContext(std::optional<std::string> directory,
                           std::optional<std::string> release) {
        auto *context = new Context;
        context->directory = directory;
        context->release = release;
        VTServices::VTService<VTServices::ApplicationContext>::install(context);
    }
    void write(const std::string &bytes) { std::ofstream(file(), std::ios::binary) << bytes; }
    std::filesystem::path file() const { return dir / "nexlark.prf"; }
    std::filesystem::path dir;
};

TEST(PreferencesFuzzer, ReplaysTheKeptCorpus) {
    vort_test::replayCorpus(VORT_FUZZ_CORPUS_DIR, "preferences_fuzzer", &LLVMFuzzerTestOneInput);
}

TEST_F(Prefs, ReaderTakesEachFileTextIntoItsTable) {
    std::string longFile = "[Long]\n";
    Table longTable;
    for (int i = 0; i < 40; ++i) {  // 300-byte values cross the 255-byte buffer at every offset
        const std::string key = "key" + std::to_string(i), value = std::string(300 - i, 'x');
        longFile += key + "=" + value + "\n";
        longTable["Long"][key] = value;
    }
    const std::pair<std::string, Table> cases[] = {
        {"[A]\nk=v", {}},  // a last line without a line break is lost
        {"# note\n  [A]\n\t k=v\n#k=w\n", {{"A", {{"k", "v"}}}}},
        {"[A]\nk=\n\n   next line\nm=n\n", {{"A", {{"k", "next line"}, {"m", "n"}}}}},
        {"k=v\n[A]\nm=n\n", {}},  // a key above the first section swallows the file
        {"[A]\nk =  v w \n", {{"A", {{"k ", "v w "}}}}},
        {"[A]x=1\r\n", {{"A", {{"x", "1\r"}}}}},
        {"[A]\nk=v\n[B]\nk=w\n[A]\nk=z\n", {{"A", {{"k", "z"}}}, {"B", {{"k", "w"}}}}},
        {"[A]\nfoo\nbar=baz\n", {{"A", {{"foo\nbar", "baz"}}}}},
        {longFile, longTable},
    };
    for (auto const &[bytes, expected] : cases) {
        SCOPED_TRACE(bytes.substr(0, 40));
        Store::reset();
        write(bytes);
        ASSERT_TRUE(VTPreferences::loadPrefs());
        Table withRelease = expected;
        withRelease["General"]["TessarRelease"] = "R";
        EXPECT_EQ(Store::m_prefMaps, withRelease);
    }
}

TEST_F(Prefs, LoadsLazilyOnceAndRetriesAfterAMissingFile) {
    EXPECT_EQ(VTPreferences::getIntPref("A", "k", 7), 7);
    EXPECT_TRUE(VTPreferences::setIntPref("A", "set", 1));  // setters don't load...
    write("[General]\nTessarRelease=R\n[A]\nk=5\n");
    EXPECT_EQ(VTPreferences::getIntPref("A", "k", 7), 5);
    EXPECT_EQ(VTPreferences::getIntPref("A", "set", 7), 7);  // ...and the load replaces them
    EXPECT_FALSE(Store::m_dirty);
    write("[General]\nTessarRelease=R\n[A]\nk=6\n");
    EXPECT_EQ(VTPreferences::getIntPref("A", "k", 7), 5);
    ASSERT_TRUE(VTPreferences::clearPrefs());
    EXPECT_EQ(readFile(file()), "");
    EXPECT_TRUE(Store::m_prefMaps.empty() && !Store::m_loaded && !Store::m_dirty);

    for (auto const &[directory, name] :
         {std::make_pair("/p", "/p/nexlark.prf"), std::make_pair("C:\\p\\", "C:\\p\\nexlark.prf"),
          std::make_pair("/p/", "/p/nexlark.prf"), std::make_pair("", "/nexlark.prf")}) {
        useContext(directory, "R");
        EXPECT_EQ(Store::getPrefFileName(), name);
    }
    useContext(std::nullopt, "R");  // no place: nothing can be read, saved or cleared
    EXPECT_TRUE(VTPreferences::setStringPref("A", "k", "v") && text("A", "k", "", "") == "v");
    EXPECT_FALSE(VTPreferences::savePrefs() || VTPreferences::clearPrefs());
    EXPECT_TRUE(Store::m_dirty);
}

TEST_F(Prefs, WriterSortsSectionsAndKeysAfterTheHeaderAndMarksOnlyRealChanges) {
    VTPreferences::setStringPref("B", "m", "n");
    VTPreferences::setStringPref("A", "k", "v");
    VTPreferences::setStringPref("a", "z", "last");
    VTPreferences::setStringPref("A", "j", " spaced ");
    EXPECT_TRUE(VTPreferences::setStringPref("Gone", "x", "y") &&
                VTPreferences::setStringPref("Gone", "x", ""));  // an empty text deletes
    ASSERT_TRUE(VTPreferences::savePrefs());
    EXPECT_EQ(readFile(file()),
              std::string(kHeader) + "[A]\nj= spaced \nk=v\n\n[B]\nm=n\n\n[a]\nz=last\n\n");
    write("sentinel");  // nothing changed since: no write
    EXPECT_FALSE(VTPreferences::savePrefs() || Store::m_dirty);
    EXPECT_EQ(readFile(file()), "sentinel");
    EXPECT_TRUE(VTPreferences::setStringPref("A", "k", "v") && !Store::m_dirty);
    EXPECT_FALSE(VTPreferences::setStringPref("A", "missing", "") ||
                 VTPreferences::setStringPref("Missing", "k", "") || Store::m_dirty);
    EXPECT_TRUE(VTPreferences::setIntPref("A", "k", 3) && Store::m_dirty);
}

TEST_F(Prefs, TypedValuesWriteTheirTextsAndReadThemBack) {
    Store::m_loaded = true;
    VORT::Color translucent;
    translucent.setRGBAFromPackedValue(0xFF800040u);
    const int pair[] = {1, 2};
    Strings words = {"a", "b"};
    EXPECT_TRUE(VTPreferences::setBoolPref("T", "on", true) &&
                VTPreferences::setBoolPref("T", "off", false) &&
                VTPreferences::setIntPref("T", "min", INT_MIN) &&
                VTPreferences::setRectPref("T", "rect", 10, 20, 300, -200) &&
                VTPreferences::setColorPref("T", "colour", translucent) &&
                VTPreferences::setIntArrayPref("T", "ints", pair, 2) &&
                VTPreferences::setStringVectorPref("T", "words", &words));
    EXPECT_EQ(Store::m_prefMaps["T"], (VTPreferences::Section{{"colour", "255 128 0"},
                                                              {"ints", "1 2 "},
                                                              {"min", "-2147483648"},
                                                              {"off", "0"},
                                                              {"on", "1"},
                                                              {"rect", "10 20 300 -200"},
                                                              {"words", "a,b,"}}));
    EXPECT_TRUE(VTPreferences::getBoolPref("T", "on", false) &&
                !VTPreferences::getBoolPref("T", "off", true));
    EXPECT_EQ(VTPreferences::getIntPref("T", "min", 0), INT_MIN);
    EXPECT_EQ(VTPreferences::getColorPref("T", "colour", VORT::Color()).getAsRgba(), 0xFF8000FFu);
    Strings none;  // empty arrays and vectors delete
    EXPECT_TRUE(VTPreferences::setIntArrayPref("T", "ints", pair, -1) &&
                VTPreferences::setStringVectorPref("T", "words", &none));
    EXPECT_EQ(Store::m_prefMaps["T"].count("ints") + Store::m_prefMaps["T"].count("words"), 0u);

    // An empty section is ignored by every operation.
    Store::m_prefMaps[""]["k"] = "1";
    EXPECT_FALSE(VTPreferences::setBoolPref("", "k", true) ||
                 VTPreferences::setIntPref("", "k", 1) ||
                 VTPreferences::setRectPref("", "k", 1, 2, 3, 4) ||
                 VTPreferences::setStringPref("", "k", "x") ||
                 VTPreferences::setIntArrayPref("", "k", pair, 2) ||
                 VTPreferences::setStringVectorPref("", "k", &words) ||
                 VTPreferences::setColorPref("", "k", VORT::Color()) ||
                 VTPreferences::getBoolPref("", "k", false));
    VTPreferences::getStringVectorPref("", "k", &words);
    EXPECT_EQ(words, (Strings{"a", "b"}));
    EXPECT_EQ(
        text("", "k", "kept", "d") + text("T", "missing", "x", nullptr) + text("", "k", "", "d"),
        "keptd");
}

TEST_F(Prefs, ReadersFallBackOnTextsThatDontParseAndCutListsAsTheWritersLeaveThem) {
    Store::m_loaded = true;
    Store::m_prefMaps["T"] = {{"yes", "yes"}, {"lead", " 42x"}, {"pair", "1 2"}};
    EXPECT_TRUE(VTPreferences::getBoolPref("T", "yes", true) &&
                !VTPreferences::getBoolPref("T", "yes", false));
    EXPECT_EQ(
        VTPreferences::getIntPref("T", "lead", 5) + VTPreferences::getIntPref("T", "missing", 5),
        47);
    int x = 0, y = 0, w = 0, h = 0;
    VTPreferences::getRectPref("T", "pair", x, y, w, h, 5, 6, 7, 8);
    EXPECT_EQ((std::vector<int>{x, y, w, h}), (std::vector<int>{1, 2, 7, 8}));
    VORT::Color fallback;
    fallback.setRGBAFromPackedValue(0x11223344u);
    for (auto const &[stored, rgba] :
         {std::make_pair(" 1 2 3 x", 0x010203FFu), std::make_pair("300 -5 7", 0xFF0007FFu),
          std::make_pair("255 0", 0x11223344u)}) {
        Store::m_prefMaps["T"]["c"] = stored;
        EXPECT_EQ(VTPreferences::getColorPref("T", "c", fallback).getAsRgba(), rgba) << stored;
    }
    // Int arrays: tokens between runs of blanks and commas; a token that isn't a number is 0.
    for (auto const &[stored, expected] :
         {std::make_pair(" ,, -3 ,x,7y  4", std::vector<int>{-3, 0, 7, 4}),
          std::make_pair(" , ,", std::vector<int>{})}) {
        Store::m_prefMaps["T"]["a"] = stored;
        int count = -1;
        int *values = VTPreferences::getIntArrayPref("T", "a", count);
        EXPECT_EQ(std::vector<int>(values, values + count), expected) << stored;
        delete[] values;
    }
    // String vectors: the last character is taken as the closing comma, whatever it is.
    for (auto const &[stored, expected] :
         {std::make_pair("a,bc", Strings{"a", "b"}),
          std::make_pair(",,x,,y z,", Strings{"x", "y z"}), std::make_pair("q", Strings{}),
          std::make_pair("", Strings{"old"})}) {
        Store::m_prefMaps["T"]["v"] = stored;
        Strings read = {"old"};
        VTPreferences::getStringVectorPref("T", "v", &read);
        EXPECT_EQ(read, expected) << stored;
    }
}

TEST_F(Prefs, AReleaseChangeConvertsOldColoursAndDropsTreeRecordsAndSavesThat) {
    const struct {
        const char *file, *host;  // the releases; null: none
        bool converts;
    } cases[] = {{"1", "R", true},
                 {"2000", "R", false},
                 {nullptr, "R", false},
                 {"1", nullptr, true},
                 {"R", "R", false}};
    for (auto const &c : cases) {
        SCOPED_TRACE(std::string(c.file ? c.file : "-") + (c.host ? c.host : "-"));
        Store::reset();
        useContext(dir.string(), c.host ? std::optional<std::string>(c.host) : std::nullopt);
        write((c.file ? std::string("[General]\nTessarRelease=") + c.file + "\n" : "") +
              "[SyntaxHighlighting]\nkeyword=1 0 0.5\nodd=0.5 x\nhuge=1e300 -1e300 -0.001\n"
              "[Nexlark Tree "
              "Browser]\nTBTreeClassRecord_A=1\nTBTreeClassRecord_B=2\nwidth=3\nTBTreeClass=4\n");
        ASSERT_TRUE(VTPreferences::loadPrefs());
        Table expected = {
            {"Nexlark Tree Browser", {{"width", "3"}, {"TBTreeClass", "4"}}},
            {"SyntaxHighlighting",
             {{"keyword", "1 0 0.5"}, {"odd", "0.5 x"}, {"huge", "1e300 -1e300 -0.001"}}}};
        if (c.converts) {
            expected["SyntaxHighlighting"] = {
                {"keyword", "255 0 128"}, {"odd", "128 0 0"}, {"huge", "2147483647 -2147483648 0"}};
        }
        expected["General"];
        if (c.host) {
            expected["General"]["TessarRelease"] = c.host;
        }
        if (c.file && c.host && std::string(c.file) == c.host) {
            expected["Nexlark Tree Browser"]["TBTreeClassRecord_A"] = "1";
            expected["Nexlark Tree Browser"]["TBTreeClassRecord_B"] = "2";
        }
        EXPECT_EQ(Store::m_prefMaps, expected);
        EXPECT_FALSE(Store::m_dirty);  // the migration saved what it did
        Store::reset();
        ASSERT_TRUE(VTPreferences::loadPrefs());
        if (!c.host) {
            expected.erase("General");  // an emptied section isn't saved
        }
        EXPECT_EQ(Store::m_prefMaps, expected);
    }
}

// A save killed at any moment leaves the old file or the new one whole. The saves run in a child
// process, so that it can be killed without touching the test.
TEST_F(Prefs, AKilledSaveLeavesTheOldOrTheNewFileWhole) {
    Table tables[2];
    std::string texts[2];
    for (int i : {1, 0}) {
        for (int s = 0; s < 10000; ++s) {  // about 1 MB
            tables[i]["S" + std::to_string(s / 500)]["k" + std::to_string(s)] =
                std::string(100, 'a' + i);
        }
        Store::m_prefMaps = tables[i];
        Store::m_dirty = true;
        ASSERT_TRUE(VTPreferences::savePrefs());
        texts[i] = readFile(file());
    }
    for (int round = 1; round <= 4; ++round) {
        int pipeEnds[2];
        ASSERT_EQ(::pipe(pipeEnds), 0);
        const pid_t child = ::fork();
        ASSERT_NE(child, -1);
        if (child == 0) {  // saves the two tables in turn, telling of each start, until killed
            for (int i = 1; i < 10000; ++i) {
                Store::m_prefMaps = tables[i % 2];
                Store::m_dirty = true;
                if (::write(pipeEnds[1], "s", 1) != 1 || !VTPreferences::savePrefs()) {
                    ::_exit(3);
                }
            }
            ::_exit(0);
        }
        char signal = 0;
        bool told = true;
        for (int begun = 0; begun < round && told; ++begun) {  // each round kills a later save
            told = ::read(pipeEnds[0], &signal, 1) == 1;
        }
        ::kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ::close(pipeEnds[0]);
        ::close(pipeEnds[1]);
        ASSERT_TRUE(told && WIFSIGNALED(status));
        const std::string now = readFile(file());
        EXPECT_TRUE(now == texts[0] || now == texts[1]) << now.size() << " bytes, neither version";
    }
}

}  // namespace
