#include "VortProcess.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

using vort_test::runVort;
using vort_test::ScratchFolder;
using vort_test::VortRun;

namespace {

const std::string kHeader = "#\n#Nexlark Preference File\n#\n\n\n";

VortRun prefs(ScratchFolder const &folder, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "prefs");
    arguments.push_back("--dir");
    arguments.push_back(folder.path("p"));
    arguments.push_back("--release=T1");
    return runVort(arguments);
}

}  // namespace

TEST(VortPrefs, SetsGetsShowsAndUnsetsThroughTheFile) {
    ScratchFolder folder;
    VortRun run = prefs(folder, {"path"});
    ASSERT_TRUE(run.finished);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, folder.path("p") + "/nexlark.prf\n");

    run = prefs(folder, {"set", "Editor", "font", "Courier New"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    run = prefs(folder, {"set", "Editor", "size", "12"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(folder.read("p/nexlark.prf"),
              kHeader + "[Editor]\nfont=Courier New\nsize=12\n\n[General]\nTessarRelease=T1\n\n");

    run = prefs(folder, {"get", "Editor", "font"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "Courier New\n");

    run = prefs(folder, {"show"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "[Editor]\nfont=Courier New\nsize=12\n\n[General]\nTessarRelease=T1\n\n");

    run = prefs(folder, {"unset", "Editor", "font"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    run = prefs(folder, {"unset", "Editor", "font"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.err, "vort prefs: no value for 'font' in [Editor]\n");
    run = prefs(folder, {"get", "Editor", "font"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(folder.read("p/nexlark.prf"),
              kHeader + "[Editor]\nsize=12\n\n[General]\nTessarRelease=T1\n\n");
}

TEST(VortPrefs, MigratesAFileOfAnotherReleaseAsAHostWould) {
    ScratchFolder folder;
    VortRun run = prefs(folder, {"show"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.err,
              "vort prefs: no preference file at '" + folder.path("p") + "/nexlark.prf'\n");

    folder.write("p/nexlark.prf",
                 "[General]\nTessarRelease=1998c\n[SyntaxHighlighting]\nkeyword=1 0 0.5\n"
                 "[Nexlark Tree Browser]\nTBTreeClassRecord_A=1\nwidth=300\n");
    run = prefs(folder, {"get", "SyntaxHighlighting", "keyword"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "255 0 128\n");
    EXPECT_EQ(folder.read("p/nexlark.prf"),
              kHeader +
                  "[General]\nTessarRelease=T1\n\n[Nexlark Tree Browser]\nwidth=300\n\n"
                  "[SyntaxHighlighting]\nkeyword=255 0 128\n\n");
}

TEST(VortPrefs, RefusesWhatTheFileCantCarryAndMalformedCalls) {
    ScratchFolder folder;
    const std::vector<std::vector<std::string>> calls = {
        {},
        {"list"},
        {"get", "A"},
        {"set", "A", "k"},
        {"path", "extra"},
        {"set", "A", "k=1", "v"},
        {"set", "A]", "k", "v"},
        {"set", "", "k", "v"},
        {"set", "A", "#k", "v"},
        {"set", "A", " k", "v"},
        {"set", "A", "k", ""},
        {"set", "A", "k", " v"},
        {"set", "A", "k", "two\nlines"},
        {"show", "--colour"},
    };
    for (auto const &call : calls) {
        const VortRun run = prefs(folder, call);
        ASSERT_TRUE(run.finished);
        EXPECT_EQ(run.exitCode, 2) << (call.empty() ? "" : call[0]) << run.err;
    }
    const VortRun run = runVort({"prefs", "path", "--dir"});
    EXPECT_EQ(run.exitCode, 2);
}

TEST(VortPrefs, NeitherOverwritesAnUnreadableFileNorWritesWhereItCant) {
    ScratchFolder folder;
    // A preference "file" that is a directory can't be read as one: it is left alone.
    std::filesystem::create_directories(folder.path("p/nexlark.prf"));
    folder.write("p/nexlark.prf/inside", "x");
    VortRun run = prefs(folder, {"set", "A", "k", "v"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.err.find("vort prefs: cannot write '"), std::string::npos) << run.err;
    EXPECT_EQ(folder.read("p/nexlark.prf/inside"), "x");

    // A directory under a plain file can't be made.
    folder.write("plain", "x");
    run = runVort({"prefs", "set", "A", "k", "v", "--dir", folder.path("plain") + "/sub"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.err.find("vort prefs: "), std::string::npos);
}
