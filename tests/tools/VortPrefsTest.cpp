#include "VortProcess.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

using vort_test::VortCase;

// The cases run in order on one folder, each seeing the file that the ones before it left.
TEST(VortPrefs, KeepsTheFileAsAHostWouldAndRefusesWhatItCantCarry) {
    vort_test::ScratchFolder folder;
    const std::string dir = folder.path("p");
    const auto prefs = [&](std::vector<std::string> arguments, int code, std::string const &out,
                           std::string const &err = "") {
        arguments.insert(arguments.begin(), "prefs");
        arguments.insert(arguments.end(), {"--dir", dir, "--release=T1"});
        return VortCase{arguments, code, out, err};
    };
    const std::string header = "#\n#Nexlark Preference File\n#\n\n\n";
    const std::string both =
        "[Editor]\nfont=Courier New\nsize=12\n\n[General]\nTessarRelease=T1\n\n";
    std::vector<VortCase> cases = {
        prefs({"path"}, 0, dir + "/nexlark.prf\n"),
        prefs({"show"}, 1, "", "vort prefs: no preference file at '" + dir + "/nexlark.prf'\n"),
        prefs({"set", "Editor", "font", "Courier New"}, 0, ""),
        prefs({"set", "Editor", "size", "12"}, 0, ""),
        prefs({"get", "Editor", "font"}, 0, "Courier New\n"),
        prefs({"show"}, 0, both),
        prefs({"unset", "Editor", "font"}, 0, ""),
        prefs({"unset", "Editor", "font"}, 1, "", "vort prefs: no value for 'font' in [Editor]\n"),
        prefs({"get", "Editor", "font"}, 1, "", "vort prefs: "),
        {{"prefs", "path", "--dir"}, 2, "", "vort prefs: "},
    };
    for (std::vector<std::string> const &misuse :
         std::vector<std::vector<std::string>>{{},
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
                                               {"show", "--colour"}}) {
        cases.push_back(prefs(misuse, 2, "", "vort prefs: "));
    }
    vort_test::expectRuns(cases);
    EXPECT_EQ(folder.read("p/nexlark.prf"),
              header + "[Editor]\nsize=12\n\n[General]\nTessarRelease=T1\n\n");

    // A file of another release migrates on its first read.
    folder.write("p/nexlark.prf",
                 "[General]\nTessarRelease=1998c\n[SyntaxHighlighting]\nkeyword=1 0 0.5\n"
                 "[Nexlark Tree Browser]\nTBTreeClassRecord_A=1\nwidth=300\n");
    vort_test::expectRuns({prefs({"get", "SyntaxHighlighting", "keyword"}, 0, "255 0 128\n")});
    EXPECT_EQ(folder.read("p/nexlark.prf"),
              header +
                  "[General]\nTessarRelease=T1\n\n[Nexlark Tree Browser]\nwidth=300\n\n"
                  "[SyntaxHighlighting]\nkeyword=255 0 128\n\n");

    // Neither a "file" that is a directory, left alone, nor a folder under a plain file is written.
    std::filesystem::remove(folder.path("p/nexlark.prf"));
    std::filesystem::create_directories(folder.path("p/nexlark.prf"));
    folder.write("p/nexlark.prf/inside", "x");
    folder.write("plain", "x");
    vort_test::expectRuns({prefs({"set", "A", "k", "v"}, 1, "", "vort prefs: cannot write '"),
                           {{"prefs", "set", "A", "k", "v", "--dir", folder.path("plain") + "/sub"},
                            1,
                            "",
                            "vort prefs: "}});
    EXPECT_EQ(folder.read("p/nexlark.prf/inside"), "x");
}
