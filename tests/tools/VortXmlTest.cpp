#include "VortProcess.h"

#include <gtest/gtest.h>

#include <string>

TEST(VortXml, CheckPrintsEachFilesEventsOrItsErrorWithLineAndColumn) {
    vort_test::ScratchFolder folder;
    folder.write("good.xml",
                 "<?xml version=\"1.0\"?>\n<!-- c -->\n<p:a xmlns:p=\"urn:p\" k=\"v\">\n"
                 "  <b>t&amp;\"x\"</b>\n  <?pi data?>\n</p:a>\n");
    folder.write("bad.xml", "<a>\n<b x=\"1\">t</c>");
    const std::string good = folder.path("good.xml");
    const std::string bad = folder.path("bad.xml");
    const std::string missing = folder.path("none.xml");
    const std::string goodEvents =
        good +
        "\n  StartDocument\n  Comment \" c \"\n  StartElement p:a xmlns:p=\"urn:p\" k=\"v\"\n"
        "  StartElement b\n  Characters \"t&\\\"x\\\"\"\n  EndElement b\n"
        "  ProcessingInstruction pi \"data\"\n  EndElement p:a\n  EndDocument\n";
    vort_test::expectRuns({
        {{"xml", "check", good, bad, missing},
         1,
         goodEvents + bad +
             "\n  StartDocument\n  StartElement a\n  StartElement b x=\"1\"\n  Characters \"t\"\n",
         "vort xml: " + bad +
             ":2:14: Opening and ending tag mismatch.\n"
             "vort xml: Error in initializing XmlReader with target " +
             missing + " : No such file or directory\n"},
        {{"xml", "check", good}, 0, goodEvents, ""},
        {{"xml"}, 2, "", "missing check"},
        {{"xml", "verify", good}, 2, "", "unknown mode 'verify'"},
        {{"xml", "check"}, 2, "", "no file to check"},
    });
}

TEST(VortXmlDb, DumpsTheMergedKeysOfTheExampleFolders) {
    const std::string base = VORT_EXAMPLES_DIR "/config/base";
    const std::string over = VORT_EXAMPLES_DIR "/config/override";
    const std::string app = "  from: " + base + "/app.xml";
    const std::string both = app + ", " + over + "/app.xml (combined)\n";
    const std::string theme = "  from: " + base + "/colors/theme.xml";
    vort_test::expectRuns({
        {{"xmldb", "dump", base, over},
         0,
         "App\n" + both + "App/Colors\n" + app +
             "\nApp/Colors/Background = \"0.2,0.2,0.2\"\n  @value = \"0.2,0.2,0.2\"\n" + app +
             "\nApp/Colors/Selection = \"255,128,0\"\n" + app +
             "\nApp/Plugins = \"paint, text, shapes, gradients\"\n"
             "  values: \"paint\", \"text\", \"shapes\", \"gradients\"\n  @csv_list = \"true\"\n" +
             both + "App/Recent\n" + app + "\nApp/Recent/File\n  list: 2 entries\n" + app +
             "\nApp/Window\n  @width = \"1280\"\n  @height = \"600\"\n  @title = \"Vort\"\n"
             "  @maximized = \"true\"\n" +
             both + "Theme\n  @name = \"light\"\n" + theme + ", " + over +
             "/theme.xml (combined)\nTheme/Accent = \"0.9,0.4,0.1\"\n" + theme + "\n",
         ""},
        {{"xmldb", "dump", base, "--key", "App/Recent"},
         0,
         "App/Recent\n" + app + "\n    App/Recent/File\n      list: 2 entries\n    " + app +
             "\n        App/Recent/File = \"first.vrt\"\n"
             "        App/Recent/File = \"second.vrt\"\n",
         ""},
        {{"xmldb", "dump", base, "--key", "App/None"}, 1, "", "no key 'App/None' in the folders"},
        {{"xmldb", "dump", base + "/none"}, 1, "", "no such folder '" + base + "/none'"},
        {{"xmldb", "dump"}, 2, "", "no folder to read"},
        {{"xmldb", "dump", base, "--key"}, 2, "", "--key needs a long name"},
        {{"xmldb", "list", base}, 2, "", "unknown mode 'list'"},
        {{"xmldb", "dump", base, "--all"}, 2, "", "unknown option '--all'"},
    });
}
