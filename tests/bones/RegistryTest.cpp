#include "support/PlatformHooks.h"
#include <vort/bones/FileUtils.h>
#include <vort/bones/Library.h>
#include <vort/bones/PackagePath.h>
#include <vort/bones/Registry.h>
#include <vort/err/ZQFErrorDescription.h>

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

using namespace VORT;

namespace {

PackagePath path(const char *text) {
    return PackagePath(StringID(text));
}

template <typename... Ids>
std::string joined(Ids const &...ids) {
    return ((ids.toString() + "|") + ...);
}

}  // namespace

TEST(Registry, MakesMissingAncestorsFromTheTopDown) {
    Registry universe(PackageName(StringID("root")));
    Package *root = universe.getRootPackage();
    ErrorHolder error;
    EXPECT_EQ(universe.findPackage(path("root"), error), root);
    EXPECT_EQ(universe.createPackage(path("root"), error), root);
    EXPECT_FALSE(root->isRoot());  // only the empty path is a root by that test

    Package *b = universe.createPackage(path("root.a.b"), error);
    Package *a = universe.findPackage(path("root.a"), error);
    ASSERT_TRUE(a && b && !error.hasError());
    EXPECT_TRUE(b->getParent() == a && a->getParent() == root);
    EXPECT_EQ(b->getPath().toString() + "|" + b->getName().toString(), "root.a.b|b");
    EXPECT_TRUE(b->getUniverse() == &universe && root->getUniverse() == &universe);
    ASSERT_EQ(a->getChildren().size(), 1);
    EXPECT_TRUE(a->getChildren()[0].get() == b && b->getResolveRoutes().value(0) == a);

    // An existing path gives its package and makes nothing.
    EXPECT_EQ(universe.createPackage(path("root.a.b"), error), b);
    universe.createPackage(path("root.a.c"), error);
    EXPECT_EQ(a->getChildren().size() * 10 + root->getChildren().size(), 21);
}

TEST(Registry, ReportsPackagesItCannotFindOrPlace) {
    initialize_vort_util();
    Registry universe(PackageName(StringID("root")));
    ErrorHolder error;
    EXPECT_EQ(universe.findPackage(path("root.x"), error), nullptr);
    EXPECT_EQ(error.what(), "Package 'root.x' not found.");
    ASSERT_NE(dynamic_cast<ZQFErrorType<0x5A0007> *>(error.description()), nullptr);
    EXPECT_EQ(error.description()->where().file() + ":" +
                  std::to_string(error.description()->where().line()),
              ".\\bones\\Registry:61");

    // Found: the holder is left alone.
    EXPECT_EQ(universe.findPackage(path("root"), error), universe.getRootPackage());
    EXPECT_TRUE(error.hasError());

    error.clear();
    EXPECT_EQ(universe.createPackage(path("a.b"), error), nullptr);
    EXPECT_EQ(error.what(), "Package '' cannot be registered in Universe with root root.");
    ASSERT_NE(dynamic_cast<ZQFErrorType<0x5A0008> *>(error.description()), nullptr);
    EXPECT_EQ(error.description()->where().line(), 40u);
    EXPECT_EQ(universe.findPackage(path("a"), error), nullptr);  // nothing was made

    // An old error in the holder makes an existing package look missing: it is made anew.
    error.clear();
    Package *first = universe.createPackage(path("root.p"), error);
    error.setError(SimpleErrorDescription(CodeLocation("here", 1), "stale"));
    Package *remade = universe.createPackage(path("root.p"), error);
    EXPECT_FALSE(error.hasError());
    EXPECT_NE(remade, first);
    EXPECT_EQ(universe.findPackage(path("root.p"), error), remade);
    EXPECT_EQ(universe.getRootPackage()->getChildren().size(), 2);
}

TEST(PackagePath, ValidatesAndSplitsEachFormByItsGrammar) {
    struct Case {
        const char *text;
        bool name, packagePath, classPath;
    };
    const Case cases[] = {{"", false, true, false},        {"W_1\t\xC3\xA9", true, true, false},
                          {"a..b", false, true, false},    {".a.", false, true, false},
                          {"a b.c", false, false, false},  {":Widget", false, false, true},
                          {"a..b.:C", false, false, true}, {"a:b:C", false, false, false},
                          {"a.b:", false, false, false},   {"a:b.c", false, false, false}};
    for (Case const &c : cases) {
        EXPECT_EQ(ClassName(StringID(c.text)).isValid(), c.name) << c.text;
        EXPECT_EQ(PackageName(StringID(c.text)).isValid(), c.name) << c.text;
        EXPECT_EQ(PackagePath(StringID(c.text)).isValid(), c.packagePath) << c.text;
        EXPECT_EQ(ClassPath(StringID(c.text)).isValid(), c.classPath) << c.text;
    }
    // path: super path, last name, first name; class path: package path, class name
    const char *const parts[][6] = {
        {"", "", "", "", "", ""},
        {"a", "", "a", "a", "", ""},
        {"a.b:C", "a", "b:C", "a", "a.b", "C"},
        {".a", "", "a", "", "", ""},
        {"a:b:C", "", "a:b:C", "a:b:C", "a", "b:C"},
        {":W", "", ":W", ":W", "", "W"},
    };
    for (auto const &p : parts) {
        const PackagePath path{StringID(p[0])};
        const ClassPath classPath{StringID(p[0])};
        EXPECT_EQ(
            joined(path.getSuperPackagePath(), path.getPackageName(), path.getFirstPackageName(),
                   classPath.getPackagePath(), classPath.getClassName()),
            std::string(p[1]) + "|" + p[2] + "|" + p[3] + "|" + p[4] + "|" + p[5] + "|");
        EXPECT_EQ(path.isRoot(), *p[0] == '\0') << p[0];
        EXPECT_EQ(classPath.isRoot(), *p[0] == ':') << p[0];
    }
}

namespace {

std::string message(uint32_t code, const char *a = nullptr, const char *b = nullptr) {
    char buffer[2048];
    hsl_sprintm(hslGetMessageContext(), buffer, sizeof buffer, code, a, b,
                static_cast<const char *>(nullptr));
    return buffer;
}

class Library : public vort_test::PlatformHooksTest {
protected:
    void SetUp() override { initialize_vort_util(); }
};

}  // namespace

TEST_F(Library, CatalogueTablesRegisterOnceAndSpeakJapanese) {
    const hsl_message_table &primary = primaryMessageTable();
    EXPECT_TRUE(primary.count == 9 && primary.facility == 0x5A && primary.codes[9] == 0xFFFFFFFF);
    const hsl_language_table &japanese = japaneseMessageTable();
    EXPECT_TRUE(japanese.codeTables[0] == primary.codes && japanese.counts[0] == 9);
    hslSetLanguage("ja");
    // Shift-JIS, with the arguments placed by number.
    EXPECT_EQ(message(0x5A0008, "A", "B").substr(0, 17),
              "\x83p\x83"
              "b\x83P\x81[\x83W 'A' \x82\xCD");
    hslSetLanguage("en");
    // Registered once: a single withdrawal through the loader's hook leaves no table behind.
    initialize_vort_util();
    const std::string text = "Class 'A' does not expose requested interface.";
    EXPECT_EQ(message(0x5A0009, "A"), text);
    EXPECT_EQ(vort_catalogue_hooks.unload(), 0);
    EXPECT_NE(message(0x5A0009, "A"), text);
    EXPECT_EQ(vort_catalogue_hooks.load(), 0);
}

namespace {

void reassertFromHandler(const char *, const char *, int, const char *) {
    logAssert("inner.cpp", 2, "inner");
}

}  // namespace

TEST_F(Library, LogAssertReportsOnceAndNeverRecurses) {
    logAssert(".\\bones\\Registry", 120, "node != 0");
    EXPECT_EQ(platform.debugOutput(), ".\\bones\\Registry (120) : Assertion failure (node != 0)");
    auto reports = platform.assertions();
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].expression + reports[0].file + std::to_string(reports[0].line),
              "node != 0.\\bones\\Registry120");
    platform.clear();
    const HslAssertHandler recorder = hslSetAssertHandler(&reassertFromHandler);
    logAssert("outer.cpp", 1, "outer");
    hslSetAssertHandler(recorder);
    EXPECT_EQ(platform.debugOutput(), "outer.cpp (1) : Assertion failure (outer)")
        << "the assertion raised inside the handler is dropped";
    platform.clear();
    logAssert("after.cpp", 3, "after");
    EXPECT_EQ(platform.assertions().size(), 1u) << "the flag is cleared after a report";

    EXPECT_EQ(std::string() + CLASS_SEPARATOR + PACKAGE_SEPARATOR, ":.");
    EXPECT_FALSE(isDevelopmentCode());
    platform.clear();
    outputToDebugger("nothing", true, true);
    EXPECT_EQ(platform.debugOutput(), "");
}

namespace fs = std::filesystem;

#define EMIGRE "\xC3\xA9migr\xC3\xA9"

namespace {

// Hidden entries, non-ASCII names, a link that loops (sub/deeper/back -> ..) and one that
// doesn't (alias -> sub/deeper).
class FileTree : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(m_folder.isValid());
        for (const char *name :
             {"top.xml", "UPPER.XML", "notes.txt", ".hidden.xml", "sub/a.xml", "sub/deeper/b.xml",
              "sub/deeper/deepest/c.xml", EMIGRE "/\xC3\xBC.xml", ".hiddendir/h.xml", "empty/"}) {
            write(name, "x");
        }
        fs::create_directory_symlink("..", root + "/sub/deeper/back");
        fs::create_directory_symlink("sub/deeper", root + "/alias");
    }

    void write(std::string const &name, std::string const &content) const {
        const fs::path path = root + "/" + name;
        fs::create_directories(path.parent_path());
        if (path.has_filename()) {
            std::ofstream(path, std::ios::binary) << content;
        }
    }

    // Relative to the root, as a set: the file system gives no order.
    std::set<std::string> relative(std::vector<std::string> const &paths) const {
        std::set<std::string> names;
        for (std::string const &path : paths) {
            EXPECT_EQ(path.compare(0, root.size() + 1, root + "/"), 0) << path;
            names.insert(path.substr(root.size() + 1));
        }
        return names;
    }

    QTemporaryDir m_folder;
    const std::string root = m_folder.path().toStdString();
};

}  // namespace

TEST_F(FileTree, GathersSubdirectoriesParentsFirstAndMatchingFilesWithoutLooping) {
    std::vector<std::string> found;
    gatherSubDirectories(root, found, true);
    EXPECT_EQ(relative(found),
              (std::set<std::string>{"alias", "alias/back", "alias/deepest", "empty", "sub",
                                     "sub/deeper", "sub/deeper/deepest", EMIGRE}));
    for (auto it = found.begin(); it != found.end(); ++it) {
        const std::string parent = fs::path(*it).parent_path().string();  // parents first
        EXPECT_TRUE(parent == root || std::find(found.begin(), it, parent) != it) << *it;
    }
    std::vector<std::string> flat{root + "/kept"};
    gatherSubDirectories(root + "/", flat, false);
    EXPECT_EQ(relative(flat), (std::set<std::string>{"alias", "empty", "kept", "sub", EMIGRE}));

    std::vector<std::string> deep, shallow, several, none{"kept"};
    // Patterns match without case, hidden entries stay out, the looping link isn't followed.
    gatherFiles(root, "*.xml", deep, true);
    EXPECT_EQ(relative(deep), (std::set<std::string>{"top.xml", "UPPER.XML", "sub/a.xml",
                                                     "sub/deeper/b.xml", "sub/deeper/deepest/c.xml",
                                                     "alias/b.xml", "alias/deepest/c.xml",
                                                     "alias/back/a.xml", EMIGRE "/\xC3\xBC.xml"}));
    // Without recursion the immediate subdirectories are searched all the same.
    gatherFiles(root, "*.xml", shallow, false);
    EXPECT_EQ(relative(shallow), (std::set<std::string>{"top.xml", "UPPER.XML", "sub/a.xml",
                                                        "alias/b.xml", EMIGRE "/\xC3\xBC.xml"}));
    gatherFiles(root + "/", std::vector<std::string>{"*.txt", "?op.*"}, several, false);
    EXPECT_EQ(relative(several), (std::set<std::string>{"notes.txt", "top.xml"}));

    gatherFiles(root + "/missing", "*", none, true);
    gatherSubDirectories(root + "/empty", none, true);
    gatherFiles(root, "", none, true);
    EXPECT_EQ(none, std::vector<std::string>{"kept"});

    // Text mode turns "\r\n" into "\n"; the size is the file's, and a NUL ends what arrived.
    write(EMIGRE "/text.txt", "line one\r\nline two\n");
    std::int64_t size = -7;
    std::unique_ptr<char[]> text(readTextFileIntoNewBuffer(root + "/" EMIGRE "/text.txt", size));
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(text.get() + std::to_string(size), "line one\nline two\n19");
    EXPECT_TRUE(readTextFileIntoNewBuffer(root + "/sub", size) == nullptr && size == 19);
}
