#include "support/PlatformHooks.h"
#include <vort/bones/FileUtils.h>
#include <vort/bones/Library.h>
#include <vort/bones/PackagePath.h>
#include <vort/bones/Registry.h>
#include <vort/err/ZQFErrorDescription.h>

#include <QtCore/QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <sys/stat.h>
#include <tuple>
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

class Library : public vort_test::PlatformHooksTest {
protected:
    void SetUp() override { initialize_vort_util(); }
};

void reassertFromHandler(const char *, const char *, int, const char *) {
    logAssert("inner.cpp", 2, "inner");
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
    EXPECT_TRUE(b->getParent() == a && a->getParent() == root && b->getUniverse() == &universe);
    EXPECT_EQ(b->getPath().toString() + "|" + b->getName().toString(), "root.a.b|b");
    ASSERT_EQ(a->getChildren().size(), 1);
    EXPECT_TRUE(a->getChildren()[0].get() == b && b->getResolveRoutes().value(0) == a);
    // An existing path gives its package and makes nothing.
    EXPECT_EQ(universe.createPackage(path("root.a.b"), error), b);
    // A package's own class is named after the package that registers it.
    VORT::ClassRegistration<VORT::Package>::registerIn(a);
    EXPECT_EQ(b->getClassPath().toString(), "root.a:Package");
}

TEST(Registry, ReportsPackagesItCannotFindOrPlace) {
    initialize_vort_util();
    Registry universe(PackageName(StringID("root")));
    ErrorHolder error;
    EXPECT_EQ(universe.findPackage(path("root.x"), error), nullptr);
    ASSERT_NE(dynamic_cast<ZQFErrorType<0x5A0007> *>(error.description()), nullptr);
    EXPECT_EQ(error.what() + error.description()->where().file() +
                  std::to_string(error.description()->where().line()),
              "Package 'root.x' not found..\\bones\\Registry61");

    // Found: the holder is left alone.
    EXPECT_EQ(universe.findPackage(path("root"), error), universe.getRootPackage());
    EXPECT_TRUE(error.hasError());

    error.clear();
    EXPECT_EQ(universe.createPackage(path("a.b"), error), nullptr);
    ASSERT_NE(dynamic_cast<ZQFErrorType<0x5A0008> *>(error.description()), nullptr);
    EXPECT_EQ(error.what() + std::to_string(error.description()->where().line()),
              "Package '' cannot be registered in Universe with root root.40");
    EXPECT_EQ(universe.findPackage(path("a"), error), nullptr);  // nothing was made

    // An old error in the holder makes an existing package look missing: it is made anew.
    error.clear();
    Package *first = universe.createPackage(path("root.p"), error);
    error.setError(SimpleErrorDescription(CodeLocation("here", 1), "stale"));
    Package *remade = universe.createPackage(path("root.p"), error);
    EXPECT_TRUE(!error.hasError() && remade != first);
    EXPECT_EQ(universe.findPackage(path("root.p"), error), remade);
    EXPECT_EQ(universe.getRootPackage()->getChildren().size(), 2);
}

TEST(PackagePath, ValidatesAndSplitsEachFormByItsGrammar) {
    // A text, then whether it is a valid name, package path and class path.
    const std::tuple<const char *, bool, bool, bool> cases[] = {
        {"", false, true, false},        {"W_1\t\xC3\xA9", true, true, false},
        {"a..b", false, true, false},    {".a.", false, true, false},
        {"a b.c", false, false, false},  {":Widget", false, false, true},
        {"a..b.:C", false, false, true}, {"a:b:C", false, false, false},
        {"a.b:", false, false, false},   {"a:b.c", false, false, false}};
    for (auto const &[text, name, packagePath, classPath] : cases) {
        const StringID id(text);
        EXPECT_EQ(std::make_tuple(ClassName(id).isValid(), PackageName(id).isValid(),
                                  PackagePath(id).isValid(), ClassPath(id).isValid()),
                  std::make_tuple(name, name, packagePath, classPath))
            << text;
    }
    // path: super path, last name, first name; class path: package path, class name
    const char *const parts[][6] = {
        {"", "", "", "", "", ""},
        {"a.b:C", "a", "b:C", "a", "a.b", "C"},
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
        EXPECT_TRUE(path.isRoot() == (*p[0] == '\0') && classPath.isRoot() == (*p[0] == ':'))
            << p[0];
    }
}

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
}

// Patterns match without case, hidden entries stay out, a looping link is not followed, and
// without recursion the immediate subfolders are searched all the same. The time list comes in
// reverse order of gathering, its times cut to 32 bits.
TEST(FileUtils, GathersFilesListsTheirTimesAndReadsTextFiles) {
    QTemporaryDir folder;
    const std::string root = folder.path().toStdString();
    const auto write = [&root](std::string const &name, std::string const &text, std::int64_t t) {
        const std::filesystem::path path = root + "/" + name;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << text;
        const struct timespec times[2] = {{t, 0}, {t, 0}};
        return ::utimensat(AT_FDCWD, path.c_str(), times, 0) == 0;
    };
    ASSERT_TRUE(write("top.xml", "line one\r\nline two\n", 1000000000) &&
                write("UPPER.XML", "", 7) && write(".hidden.xml", "", 7) &&
                write("sub/a.xml", "", 4294967296LL + 77) && write("sub/deep/b.xml", "", 7) &&
                write("\xC3\xA9migr\xC3\xA9/\xC3\xBC.xml", "", 7) && write("notes.txt", "", 7));
    std::filesystem::create_directory_symlink("..", root + "/sub/deep/back");
    std::vector<std::string> deep, shallow;
    VORT::gatherFiles(root, "*.xml", deep, true);
    VORT::gatherFiles(root + "/", "*.XML", shallow, false);
    std::vector<std::pair<std::string, unsigned long>> list{{"kept", 1ul}};
    VORT::buildFileAndTimeList(root, "*.xml", false, list);
    std::string text;
    for (auto const &[path, time] : list) {
        text += path.substr(path.find('/') == 0 ? root.size() + 1 : 0) + "@" +
                std::to_string(time) + " ";
    }
    std::sort(deep.begin(), deep.end());
    EXPECT_EQ(deep.size() + shallow.size(), 9u);
    EXPECT_EQ(deep.back(), root + "/\xC3\xA9migr\xC3\xA9/\xC3\xBC.xml");
    EXPECT_EQ(list.size(), shallow.size() + 1);
    EXPECT_EQ(list.back().first, shallow.front());
    EXPECT_NE(text.find("sub/a.xml@77 "), std::string::npos) << text;
    EXPECT_NE(text.find("top.xml@1000000000 "), std::string::npos) << text;

    // Text mode turns "\r\n" into "\n", a NUL ends what arrived, and the size is the file's.
    std::int64_t size = -7;
    std::unique_ptr<char[]> read(VORT::readTextFileIntoNewBuffer(root + "/top.xml", size));
    ASSERT_NE(read, nullptr);
    EXPECT_EQ(read.get() + std::to_string(size), "line one\nline two\n19");
    EXPECT_TRUE(VORT::readTextFileIntoNewBuffer(root + "/UPPER.XML", size) == nullptr && size == 0);
    size = -7;
    EXPECT_TRUE(VORT::readTextFileIntoNewBuffer(root + "/missing", size) == nullptr &&
                VORT::readTextFileIntoNewBuffer(root + "/sub", size) == nullptr && size == -7);

    // The resident size, which the process's status gives in kilobytes.
    const double before = VORT::GetCurrentProcessMemory(false);
    const std::size_t bytes = std::size_t(32) << 20;
    std::unique_ptr<volatile char[]> block(new volatile char[bytes]);
    for (std::size_t i = 0; i < bytes; i += 4096) {
        block[i] = 1;
    }
    const double after = VORT::GetCurrentProcessMemory(false);
    EXPECT_TRUE(std::fmod(before, 1024.0) == 0.0 && after - before >= 24.0 * 1048576.0);
    EXPECT_NEAR(VORT::GetCurrentProcessMemory(true), after / 1048576.0, 8.0);
}
