#include "VortProcess.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using vort_test::runVort;
using vort_test::ScratchFolder;
using vort_test::VortRun;

TEST(VortXml, CheckPrintsEachFilesEventsOrItsErrorWithLineAndColumn) {
    ScratchFolder folder;
    folder.write("good.xml",
                 "<?xml version=\"1.0\"?>\n<!-- c -->\n<p:a xmlns:p=\"urn:p\" k=\"v\">\n"
                 "  <b>t&amp;\"x\"</b>\n  <?pi data?>\n</p:a>\n");
    folder.write("bad.xml", "<a>\n<b x=\"1\">t</c>");
    const std::string good = folder.path("good.xml");
    const std::string bad = folder.path("bad.xml");
    const std::string missing = folder.path("none.xml");

    const VortRun run = runVort({"xml", "check", good, bad, missing});
    ASSERT_TRUE(run.finished);
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out, good +
                           "\n"
                           "  StartDocument\n"
                           "  Comment \" c \"\n"
                           "  StartElement p:a xmlns:p=\"urn:p\" k=\"v\"\n"
                           "  StartElement b\n"
                           "  Characters \"t&\\\"x\\\"\"\n"
                           "  EndElement b\n"
                           "  ProcessingInstruction pi \"data\"\n"
                           "  EndElement p:a\n"
                           "  EndDocument\n" +
                           bad +
                           "\n"
                           "  StartDocument\n"
                           "  StartElement a\n"
                           "  StartElement b x=\"1\"\n"
                           "  Characters \"t\"\n");
    EXPECT_EQ(run.err, "vort xml: " + bad +
                           ":2:14: Opening and ending tag mismatch.\n"
                           "vort xml: Error in initializing XmlReader with target " +
                           missing + " : No such file or directory\n");

    const VortRun alone = runVort({"xml", "check", good});
    EXPECT_EQ(alone.exitCode, 0);
    EXPECT_EQ(alone.err, "");

    struct Row {
        std::vector<std::string> arguments;
        const char *reason;
    };
    const Row rows[] = {
        {{"xml"}, "missing check"},
        {{"xml", "verify", good}, "unknown mode 'verify'"},
        {{"xml", "check"}, "no file to check"},
    };
    for (Row const &row : rows) {
        const VortRun refused = runVort(row.arguments);
        ASSERT_TRUE(refused.finished);
        EXPECT_EQ(refused.exitCode, 2);
        EXPECT_NE(refused.err.find(row.reason), std::string::npos) << refused.err;
    }
}

TEST(VortXmlDb, DumpsTheMergedKeysOfTheExampleFolders) {
    const std::string base = VORT_EXAMPLES_DIR "/config/base";
    const std::string over = VORT_EXAMPLES_DIR "/config/override";
    const VortRun run = runVort({"xmldb", "dump", base, over});
    ASSERT_TRUE(run.finished);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    const std::string app = base + "/app.xml";
    const std::string both = app + ", " + over + "/app.xml (combined)";
    EXPECT_EQ(run.out,
              "App\n"
              "  from: " +
                  both +
                  "\n"
                  "App/Colors\n"
                  "  from: " +
                  app +
                  "\n"
                  "App/Colors/Background = \"0.2,0.2,0.2\"\n"
                  "  @value = \"0.2,0.2,0.2\"\n"
                  "  from: " +
                  app +
                  "\n"
                  "App/Colors/Selection = \"255,128,0\"\n"
                  "  from: " +
                  app +
                  "\n"
                  "App/Plugins = \"paint, text, shapes, gradients\"\n"
                  "  values: \"paint\", \"text\", \"shapes\", \"gradients\"\n"
                  "  @csv_list = \"true\"\n"
                  "  from: " +
                  both +
                  "\n"
                  "App/Recent\n"
                  "  from: " +
                  app +
                  "\n"
                  "App/Recent/File\n"
                  "  list: 2 entries\n"
                  "  from: " +
                  app +
                  "\n"
                  "App/Window\n"
                  "  @width = \"1280\"\n"
                  "  @height = \"600\"\n"
                  "  @title = \"Vort\"\n"
                  "  @maximized = \"true\"\n"
                  "  from: " +
                  both +
                  "\n"
                  "Theme\n"
                  "  @name = \"light\"\n"
                  "  from: " +
                  base + "/colors/theme.xml, " + over +
                  "/theme.xml (combined)\n"
                  "Theme/Accent = \"0.9,0.4,0.1\"\n"
                  "  from: " +
                  base + "/colors/theme.xml\n");

    const VortRun key = runVort({"xmldb", "dump", base, "--key", "App/Recent"});
    EXPECT_EQ(key.exitCode, 0) << key.err;
    EXPECT_EQ(key.out,
              "App/Recent\n"
              "  from: " +
                  app +
                  "\n"
                  "    App/Recent/File\n"
                  "      list: 2 entries\n"
                  "      from: " +
                  app +
                  "\n"
                  "        App/Recent/File = \"first.vrt\"\n"
                  "        App/Recent/File = \"second.vrt\"\n");

    struct Row {
        std::vector<std::string> arguments;
        int exitCode;
        std::string reason;
    };
    const Row rows[] = {
        {{"xmldb", "dump", base, "--key", "App/None"}, 1, "no key 'App/None' in the folders"},
        {{"xmldb", "dump", base + "/none"}, 1, "no such folder '" + base + "/none'"},
        {{"xmldb", "dump"}, 2, "no folder to read"},
        {{"xmldb", "dump", base, "--key"}, 2, "--key needs a long name"},
        {{"xmldb", "list", base}, 2, "unknown mode 'list'"},
        {{"xmldb", "dump", base, "--all"}, 2, "unknown option '--all'"},
    };
    for (Row const &row : rows) {
        const VortRun refused = runVort(row.arguments);
        ASSERT_TRUE(refused.finished);
        EXPECT_EQ(refused.exitCode, row.exitCode) << row.reason;
        EXPECT_NE(refused.err.find(row.reason), std::string::npos) << refused.err;
        EXPECT_EQ(refused.out, "");
    }
}
