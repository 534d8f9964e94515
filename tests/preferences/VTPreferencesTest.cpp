#include "support/FuzzCorpus.h"
#include <vort/preferences/VTPreferences.h>
#include <vort/services/ApplicationContext.h>

#include <gtest/gtest.h>

#include <climits>
#include <csignal>
#include <memory>
#include <sys/wait.h>
#include <tuple>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace {

using P = VTPreferences;
using Table = VTPreferences::Table;
using Strings = std::vector<std::string>;

// What the host answers, null included.
struct Context : VTServices::ApplicationContext {
    Context(const char *directory, const char *release) : directory(directory), release(release) {}
    const char *getPreferencesDirectory(bool) override { return directory; }
    const char *getRelease() override { return release; }
    const char *directory, *release;
};

struct Store : VTPreferences {
    using VTPreferences::getPrefFileName;
    using VTPreferences::m_dirty;
    using VTPreferences::m_loaded;
    using VTPreferences::m_prefMaps;
};

std::string readFile(const std::filesystem::path &path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::string text(const char *section, const char *key, std::string held, const char *fallback) {
    P::getStringPref(section, key, &held, fallback);
    return held;
}

// A fresh directory, named by a host of release "R", and an empty store for every test.
class Prefs : public ::testing::Test {
protected:
    void SetUp() override {
        std::filesystem::remove_all(dir);
        std::filesystem::create_directories(dir);
        use(dir.c_str(), "R");
    }
    void TearDown() override {
        VTServices::VTService<VTServices::ApplicationContext>::install(nullptr);
        std::filesystem::remove_all(dir);
    }
    static void use(const char *directory, const char *release) {
        VTServices::VTService<VTServices::ApplicationContext>::install(
            new Context(directory, release));
        Store::m_prefMaps.clear();
        Store::m_loaded = Store::m_dirty = false;
    }
    void write(const std::string &bytes) { std::ofstream(file(), std::ios::binary) << bytes; }
    std::string file() const { return dir + "/nexlark.prf"; }
    const std::string dir =
        (std::filesystem::temp_directory_path() / ("vort-prefs-" + std::to_string(::getpid())))
            .string();
};

TEST(PreferencesFuzzer, ReplaysTheKeptCorpus) {
    vort_test::replayCorpus(VORT_FUZZ_CORPUS_DIR, "preferences_fuzzer", &LLVMFuzzerTestOneInput);
}

TEST_F(Prefs, ReaderTakesEachFileTextIntoItsTable) {
    const std::string x(300, 'x');  // crosses the reader's 255-byte buffers in every state
    std::pair<std::string, Table> cases[] = {
        {"[A]\nk=v", {}},  // a last line without a line break is lost
        {"# note\n  [A]\n\t k=v\n#k=w\n", {{"A", {{"k", "v"}}}}},
        {"[A]\nk=\n\n   next line\nm=n\n", {{"A", {{"k", "next line"}, {"m", "n"}}}}},
        {"k=v\n[A]\nm=n\n", {}},  // a key above the first section swallows the file
        {"[A]\nk =  v w \n", {{"A", {{"k ", "v w "}}}}},
        {"[A]\nk=v\n[B]\nk=w\n[A]\nk=z\n", {{"A", {{"k", "z"}}}, {"B", {{"k", "w"}}}}},
        {"[A]\nfoo\nbar=baz\n", {{"A", {{"foo\nbar", "baz"}}}}},
        {"#" + x + "\n[" + x + "]\n" + x + "=" + x + "\n", {{x, {{x, x}}}}},
    };
    for (auto &[bytes, expected] : cases) {
        use(dir.c_str(), "R");
        write(bytes);
        ASSERT_TRUE(P::loadPrefs());
        expected["General"]["TessarRelease"] = "R";
        EXPECT_EQ(Store::m_prefMaps, expected) << bytes.substr(0, 40);
    }
}

TEST_F(Prefs, LoadsOnceRetriesAfterAMissingFileAndNeedsAPlace) {
    EXPECT_EQ(P::getIntPref("A", "k", 7), 7);
    EXPECT_TRUE(P::setIntPref("A", "set", 1));  // setters don't load, and the load replaces them
    write("[General]\nTessarRelease=R\n[A]\nk=5\n");
    EXPECT_EQ(P::getIntPref("A", "k", 7) + P::getIntPref("A", "set", 7), 12);
    write("[General]\nTessarRelease=R\n[A]\nk=6\n");
    EXPECT_TRUE(P::getIntPref("A", "k", 7) == 5 && !Store::m_dirty);
    ASSERT_TRUE(P::clearPrefs());
    EXPECT_TRUE(readFile(file()).empty() && Store::m_prefMaps.empty() && !Store::m_loaded);
    for (auto const &[directory, name] :
         {std::make_pair("/p", "/p/nexlark.prf"), std::make_pair("C:\\p\\", "C:\\p\\nexlark.prf"),
          std::make_pair("/p/", "/p/nexlark.prf"), std::make_pair("", "/nexlark.prf")}) {
        use(directory, "R");
        EXPECT_EQ(Store::getPrefFileName(), name);
    }
    // Without a host there is no place: nothing loads, clears or saves.
    VTServices::VTService<VTServices::ApplicationContext>::install(nullptr);
    Store::m_dirty = true;
    EXPECT_FALSE(P::loadPrefs() || P::clearPrefs() || P::savePrefs());
    EXPECT_TRUE(Store::getPrefFileName().empty() && Store::m_dirty);
}

TEST_F(Prefs, WritesTypedTextsSortedAfterTheHeaderReadsThemBackAndMarksOnlyRealChanges) {
    Store::m_loaded = true;
    VORT::Color translucent;
    translucent.setRGBAFromPackedValue(0xFF800040u);
    const int pair[] = {1, 2};
    Strings words = {"a", "b"}, none;
    EXPECT_TRUE(
        P::setStringPref("a", "z", " spaced ") && P::setStringPref("B", "m", "n") &&
        P::setBoolPref("T", "on", true) && P::setBoolPref("T", "off", false) &&
        P::setIntPref("T", "min", INT_MIN) && P::setRectPref("T", "rect", 10, 20, 300, -200) &&
        P::setColorPref("T", "colour", translucent) && P::setIntArrayPref("T", "ints", pair, 2) &&
        P::setStringVectorPref("T", "words", &words) && P::setStringPref("Gone", "x", "y") &&
        P::setStringPref("Gone", "x", ""));  // an empty text deletes
    ASSERT_TRUE(P::savePrefs());
    EXPECT_EQ(
        readFile(file()),
        "#\n#Nexlark Preference File\n#\n\n\n[B]\nm=n\n\n[T]\ncolour=255 128 0\nints=1 2 \n"
        "min=-2147483648\noff=0\non=1\nrect=10 20 300 -200\nwords=a,b,\n\n[a]\nz= spaced \n\n");
    write("sentinel");  // nothing changed since: no write
    EXPECT_FALSE(P::savePrefs() || Store::m_dirty || readFile(file()) != "sentinel");
    EXPECT_FALSE(P::setStringPref("B", "missing", "") || P::setStringPref("Missing", "k", "") ||
                 Store::m_dirty);
    EXPECT_TRUE(P::getBoolPref("T", "on", false) && !P::getBoolPref("T", "off", true));
    EXPECT_TRUE(P::setIntArrayPref("T", "ints", pair, -1) &&
                P::setStringVectorPref("T", "words", &none) &&
                Store::m_dirty);  // empty arrays and vectors delete
    EXPECT_EQ(Store::m_prefMaps["T"].count("ints") + Store::m_prefMaps["T"].count("words"), 0u);

    Store::m_prefMaps[""]["k"] = "1";  // an empty section is ignored by every operation
    EXPECT_FALSE(P::setBoolPref("", "k", true) || P::setIntPref("", "k", 1) ||
                 P::setRectPref("", "k", 1, 2, 3, 4) || P::setStringPref("", "k", "x") ||
                 P::setIntArrayPref("", "k", pair, 2) || P::setStringVectorPref("", "k", &words) ||
                 P::setColorPref("", "k", VORT::Color()) || P::getBoolPref("", "k", false));
    P::getStringVectorPref("", "k", &words);
    EXPECT_EQ(words, (Strings{"a", "b"}));
    EXPECT_EQ(
        text("", "k", "kept", "d") + text("T", "missing", "x", nullptr) + text("", "k", "", "d"),
        "keptd");
    Store::m_prefMaps["T"]["yes"] = "yes";
    EXPECT_TRUE(P::getBoolPref("T", "yes", true) && !P::getBoolPref("T", "yes", false));
    // Int arrays: tokens between runs of blanks and commas; a token that isn't a number is 0.
    for (auto const &[stored, expected] :
         {std::make_pair(" ,, -3 ,x,7y  4", std::vector<int>{-3, 0, 7, 4}),
          std::make_pair(" , ,", std::vector<int>{})}) {
        Store::m_prefMaps["T"]["a"] = stored;
        int count = -1;
        std::unique_ptr<int[]> values(P::getIntArrayPref("T", "a", count));
        EXPECT_EQ(std::vector<int>(values.get(), values.get() + count), expected) << stored;
    }
    // String vectors: the last character is taken as the closing comma, whatever it is.
    for (auto const &[stored, expected] :
         {std::make_pair("a,bc", Strings{"a", "b"}),
          std::make_pair(",,x,,y z,", Strings{"x", "y z"}), std::make_pair("q", Strings{}),
          std::make_pair("", Strings{"old"})}) {
        Store::m_prefMaps["T"]["v"] = stored;
        Strings read = {"old"};
        P::getStringVectorPref("T", "v", &read);
        EXPECT_EQ(read, expected) << stored;
    }
}

TEST_F(Prefs, AReleaseChangeConvertsOldColoursAndDropsTreeRecordsAndSavesThat) {
    // The file's release and the host's (null: none), and whether old colours convert.
    using Case = std::tuple<const char *, const char *, bool>;
    const Case cases[] = {{"1", "R", true},
                          {"2000", "R", false},
                          {nullptr, "R", false},
                          {"1", nullptr, true},
                          {"R", "R", false}};
    for (auto const &[old, host, converts] : cases) {
        SCOPED_TRACE(std::string(old ? old : "-") + (host ? host : "-"));
        use(dir.c_str(), host);
        write(
            (old ? std::string("[General]\nTessarRelease=") + old + "\n" : "") +
            "[SyntaxHighlighting]\nkeyword=1 0 0.5\nodd=0.5 x\nhuge=1e300 -1e300 -0.001\n[Nexlark "
            "Tree "
            "Browser]\nTBTreeClassRecord_A=1\nTBTreeClassRecord_B=2\nwidth=3\nTBTreeClass=4\n");
        ASSERT_TRUE(P::loadPrefs());
        EXPECT_FALSE(Store::m_dirty);  // the migration saved what it did
        auto &colours = Store::m_prefMaps["SyntaxHighlighting"];
        EXPECT_EQ(colours["keyword"] + "|" + colours["odd"] + "|" + colours["huge"],
                  converts ? "255 0 128|128 0 0|2147483647 -2147483648 0"
                           : "1 0 0.5|0.5 x|1e300 -1e300 -0.001");
        const bool same = old && host && std::string(old) == host;  // else only the records go
        EXPECT_EQ(Store::m_prefMaps["Nexlark Tree Browser"].size(), same ? 4u : 2u);
        EXPECT_EQ(text("General", "TessarRelease", "", "none"), host ? host : "none");
    }
}

// A save killed at any moment leaves the old file or the new one whole. The saves run in a child
// process, so that it can be killed without touching the test.
TEST_F(Prefs, AKilledSaveLeavesTheOldOrTheNewFileWhole) {
    const auto fill = [](int version) {  // about 1 MB
        for (int s = 0; s < 10000; ++s) {
            Store::m_prefMaps["S" + std::to_string(s / 500)]["k" + std::to_string(s)] =
                std::string(100, 'a' + version);
        }
        Store::m_dirty = true;
        return P::savePrefs();
    };
    ASSERT_TRUE(fill(0));
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const pid_t child = ::fork();
    for (int version = 0; child == 0; version = 1 - version) {  // tells of each save it begins
        if (::write(ends[1], "s", 1) != 1 || !fill(version)) {
            ::_exit(3);
        }
    }
    char signal = 0;
    for (int begun = 0; begun < 3; ++begun) {  // kills the third save, just after it began
        EXPECT_EQ(::read(ends[0], &signal, 1), 1);
    }
    ::kill(child, SIGKILL);
    int status = 0;
    EXPECT_TRUE(::waitpid(child, &status, 0) == child && WIFSIGNALED(status));
    ::close(ends[0]);
    ::close(ends[1]);
    use(dir.c_str(), "R");  // the last key of either version is there, whole
    ASSERT_TRUE(P::loadPrefs());
    EXPECT_EQ(Store::m_prefMaps["S9"]["k4999"].size() + Store::m_prefMaps.size(), 100u + 21u);
}

}  // namespace
