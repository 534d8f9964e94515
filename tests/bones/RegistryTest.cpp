#include <vort/bones/Library.h>
#include <vort/bones/PackagePath.h>
#include <vort/bones/Registry.h>
#include <vort/err/ZQFErrorDescription.h>

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

using VORT::ClassName;
using VORT::ClassPath;
using VORT::ErrorHolder;
using VORT::Package;
using VORT::PackageName;
using VORT::PackagePath;
using VORT::Registry;
using VORT::StringID;

namespace {

PackagePath path(const char *text) {
    return PackagePath(StringID(text));
}

template <typename... Ids>
std::string joined(Ids const &...ids) {
    return ((ids.toString() + "|") + ...);
}

class Factory : public VORT::ClassFactoryBase {
public:
    Factory() { ++live; }
    ~Factory() override { --live; }
    static inline int live = 0;
};

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
    ASSERT_NE(dynamic_cast<VORT::ZQFErrorType<0x5A0007> *>(error.description()), nullptr);
    EXPECT_EQ(error.description()->where().file() + ":" +
                  std::to_string(error.description()->where().line()),
              ".\\bones\\Registry:61");

    // Found: the holder is left alone.
    EXPECT_EQ(universe.findPackage(path("root"), error), universe.getRootPackage());
    EXPECT_TRUE(error.hasError());

    error.clear();
    EXPECT_EQ(universe.createPackage(path("a.b"), error), nullptr);
    EXPECT_EQ(error.what(), "Package '' cannot be registered in Universe with root root.");
    ASSERT_NE(dynamic_cast<VORT::ZQFErrorType<0x5A0008> *>(error.description()), nullptr);
    EXPECT_EQ(error.description()->where().line(), 40u);
    EXPECT_EQ(universe.findPackage(path("a"), error), nullptr);  // nothing was made

    // An old error in the holder makes an existing package look missing: it is made anew.
    error.clear();
    Package *first = universe.createPackage(path("root.p"), error);
    error.setError(VORT::SimpleErrorDescription(VORT::CodeLocation("here", 1), "stale"));
    Package *remade = universe.createPackage(path("root.p"), error);
    EXPECT_FALSE(error.hasError());
    EXPECT_NE(remade, first);
    EXPECT_EQ(universe.findPackage(path("root.p"), error), remade);
    EXPECT_EQ(universe.getRootPackage()->getChildren().size(), 2);
}

TEST(Registry, AnUnnamedRootTakesEveryPathButKeysDiffer) {
    Registry universe{PackageName()};
    ErrorHolder error;
    Package *a = universe.createPackage(path("a"), error);
    ASSERT_NE(a, nullptr);
    EXPECT_TRUE(universe.getRootPackage()->isRoot() && a->getPath() == path(".a"));
    EXPECT_EQ(universe.findPackage(path("a"), error), a);
    EXPECT_EQ(universe.findPackage(path(".a"), error), nullptr);
    EXPECT_EQ(universe.createPackage(path(""), error), universe.getRootPackage());
}

TEST(Registry, PackagesOwnTheirFactoriesAndRegisterTheirClass) {
    {
        Registry universe(PackageName(StringID("root")));
        ErrorHolder error;
        Package *a = universe.createPackage(path("root.a"), error);
        Package *b = universe.createPackage(path("root.b"), error);
        a->baseClasses().insert(VORT::ClassName(StringID("F")), new Factory);
        a->baseClasses().insert(VORT::ClassName(StringID("G")), new Factory);
        b->baseClasses().insert(VORT::ClassName(StringID("H")), new Factory);
        EXPECT_EQ(a->getBaseClassNames().size(), 2);
        // b takes a's tables (and its count, 2 like its own): b's factory goes, a's are shared.
        *b = *a;
        EXPECT_EQ(Factory::live * 10 + b->getBaseClassNames().size(), 22);

        VORT::ClassRegistration<Package>::registerIn(a);
        EXPECT_EQ(b->getClassPath().toString() + Package::staticGetClassName().toString(),
                  "root.a:PackagePackage");
        EXPECT_EQ(b->getPackage(), a);

        // A copy of the registry shares the packages, which still point at the first.
        const Registry copy(universe);
        EXPECT_EQ(copy.getRootPackage(), universe.getRootPackage());
        EXPECT_TRUE(copy.findPackage(path("root.a"), error) == a && a->getUniverse() == &universe);
    }
    EXPECT_EQ(Factory::live, 0);
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

TEST(PackagePath, ConcatJoinsBlindlyAndComparesAsItsId) {
    const PackageName a{StringID("a")};
    const PackagePath ab{StringID("a.b")}, root;
    const ClassPath cd{StringID("c:D")};
    EXPECT_EQ(joined(a.concat(a), a.concat(cd), ab.concat(ab), ab.concat(ClassName(StringID("C"))),
                     root.concat(a), a.concat(root)),
              "a.a|a.c:D|a.b.a.b|a.b:C|.a|a.|");
    static_assert(std::is_same<decltype(a.concat(cd)), ClassPath>::value, "");
    static_assert(std::is_same<decltype(ab.concat(a)), PackagePath>::value, "");
    EXPECT_TRUE(ab == PackagePath(PackageName(StringID("a.b"))));
    EXPECT_TRUE(ab != PackagePath(StringID("a..b")));  // the same package by the grammar
    static_assert(!std::is_convertible<ClassName, PackagePath>::value, "kinds stay apart");
}
