// Saving never leaves a half-written preference file: a save killed at any moment, or one that
// runs out of room, leaves the old file or the new one whole. The saves run in child processes,
// so that they can be killed and limited without touching the test itself.
#include "PreferencesTestSupport.h"
#include <vort/preferences/VTPreferences.h>

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using vort_test::PreferencesTest;
using vort_test::readFile;
using vort_test::Store;
using vort_test::writeFile;
using Table = VTPreferences::Table;

// About 1 MB of text, different for each `tag`.
Table bigTable(char tag) {
    Table table;
    for (int s = 0; s < 20; ++s) {
        VTPreferences::Section &section = table["Section" + std::to_string(s)];
        for (int k = 0; k < 500; ++k) {
            section["key" + std::to_string(k)] = std::string(100, tag) + std::to_string(k);
        }
    }
    return table;
}

void setTable(Table const &table) {
    Store::m_prefMaps = table;
    Store::m_dirty = true;
}

using VTPreferencesSave = PreferencesTest;

TEST_F(VTPreferencesSave, AKilledSaveLeavesTheOldOrTheNewFileWhole) {
    const Table tables[2] = {bigTable('a'), bigTable('b')};
    std::string texts[2];
    for (int i : {1, 0}) {
        setTable(tables[i]);
        ASSERT_TRUE(VTPreferences::savePrefs());
        texts[i] = readFile(file());
    }

    for (int round = 1; round <= 6; ++round) {
        SCOPED_TRACE(round);
        int pipeEnds[2];
        ASSERT_EQ(::pipe(pipeEnds), 0);
        const pid_t child = ::fork();
        ASSERT_NE(child, -1);
        if (child == 0) {
            ::close(pipeEnds[0]);
            // Saves the two tables in turn, telling the parent as each save begins, until
            // killed; the bound only keeps a lost parent from leaving it running for ever.
            for (int i = 1; i < 10000; ++i) {
                setTable(tables[i % 2]);
                if (::write(pipeEnds[1], "s", 1) != 1 || !VTPreferences::savePrefs()) {
                    ::_exit(3);
                }
            }
            ::_exit(0);
        }
        ::close(pipeEnds[1]);
        // Each round kills at a later save, right after it has begun.
        char signal = 0;
        bool toldOfSaves = true;
        for (int begun = 0; begun < round && toldOfSaves; ++begun) {
            toldOfSaves = ::read(pipeEnds[0], &signal, 1) == 1;
        }
        ::kill(child, SIGKILL);
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ::close(pipeEnds[0]);
        ASSERT_TRUE(toldOfSaves);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the child ended before it was killed";

        const std::string now = readFile(file());
        EXPECT_TRUE(now == texts[0] || now == texts[1])
            << "a file of " << now.size() << " bytes is neither version";
    }
}

TEST_F(VTPreferencesSave, AFullDiskKeepsTheOldFileAndTheTableDirty) {
    VTPreferences::setStringPref("Old", "k", "v");
    ASSERT_TRUE(VTPreferences::savePrefs());
    const std::string old = readFile(file());

    const pid_t child = ::fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        // The file size limit stands in for a full disk: writes past it fail with EFBIG.
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit = {4096, 4096};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        setTable(bigTable('c'));
        const bool saved = VTPreferences::savePrefs();
        ::_exit(saved ? 1 : (Store::m_dirty ? 0 : 2));
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0) << "1: the save claimed success, 2: it cleared m_dirty";
    EXPECT_EQ(readFile(file()), old);
}

TEST_F(VTPreferencesSave, NoPlaceOrAnUnwritableOneFailsAndKeepsTheTableDirty) {
    // A directory that can't exist (its parent is a file) fails for every user, root included.
    writeFile(m_directory / "plain", "x");
    const std::string impossible = (m_directory / "plain" / "sub").string();
    for (const char *directory : {static_cast<const char *>(nullptr), impossible.c_str()}) {
        useContext(directory, "R");
        EXPECT_TRUE(VTPreferences::setStringPref("A", "k", "v"));
        std::string value;
        VTPreferences::getStringPref("A", "k", &value, "none");
        EXPECT_EQ(value, "v");
        EXPECT_FALSE(VTPreferences::savePrefs());
        EXPECT_TRUE(Store::m_dirty);
        EXPECT_FALSE(VTPreferences::clearPrefs() || VTPreferences::loadPrefs());
    }
    if (::geteuid() == 0) {
        GTEST_SKIP() << "root writes into a read-only directory";
    }
    const std::filesystem::path locked = m_directory / "locked";
    std::filesystem::create_directory(locked);
    useContext(locked.string().c_str(), "R");
    std::filesystem::permissions(
        locked, std::filesystem::perms::owner_read | std::filesystem::perms::owner_exec);
    EXPECT_FALSE(VTPreferences::savePrefs());
    EXPECT_TRUE(Store::m_dirty);
    std::filesystem::permissions(locked, std::filesystem::perms::owner_all);
}

TEST_F(VTPreferencesSave, AFileThatIsADirectoryReadsAsEmptyAndCantBeSaved) {
    std::filesystem::create_directory(file());
    // The read error is reported and the load still counts, with the release migrated in.
    EXPECT_TRUE(VTPreferences::loadPrefs() && Store::m_loaded && Store::m_dirty);
    EXPECT_EQ(Store::m_prefMaps, (Table{{"General", {{"TessarRelease", "R"}}}}));
    EXPECT_FALSE(VTPreferences::savePrefs());
    EXPECT_TRUE(std::filesystem::is_directory(file()));
}

}  // namespace
