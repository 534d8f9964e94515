#include <vort/bones/PackagePath.h>

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

using VORT::ClassName;
using VORT::ClassPath;
using VORT::PackageName;
using VORT::PackagePath;
using VORT::StringID;

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
        EXPECT_EQ(path.getSuperPackagePath().toString() + "|" + path.getPackageName().toString() +
                      "|" + path.getFirstPackageName().toString() + "|" +
                      classPath.getPackagePath().toString() + "|" +
                      classPath.getClassName().toString(),
                  std::string(p[1]) + "|" + p[2] + "|" + p[3] + "|" + p[4] + "|" + p[5]);
        EXPECT_EQ(path.isRoot(), *p[0] == '\0') << p[0];
        EXPECT_EQ(classPath.isRoot(), *p[0] == ':') << p[0];
    }
}

TEST(PackagePath, ConcatJoinsBlindlyWithTheTablesSeparator) {
    const PackageName a{StringID("a")};
    const PackagePath ab{StringID("a.b")}, root;
    const ClassName c{StringID("C")};
    const ClassPath cd{StringID("c:D")};
    const std::string joined[] = {
        a.concat(a).toString(),    a.concat(ab).toString(),  a.concat(c).toString(),
        a.concat(cd).toString(),   ab.concat(ab).toString(), ab.concat(a).toString(),
        ab.concat(c).toString(),   ab.concat(cd).toString(), root.concat(a).toString(),
        root.concat(c).toString(), a.concat(root).toString()};
    const std::string expected[] = {"a.a",   "a.a.b",   "a:C", "a.c:D", "a.b.a.b", "a.b.a",
                                    "a.b:C", "a.b.c:D", ".a",  ":C",    "a."};
    for (int i = 0; i < 11; ++i) {
        EXPECT_EQ(joined[i], expected[i]) << i;
    }
    static_assert(std::is_same<decltype(a.concat(cd)), ClassPath>::value, "");
    static_assert(std::is_same<decltype(ab.concat(a)), PackagePath>::value, "");
}

TEST(PackagePath, ComparesAsItsIdAndKeepsKindsApart) {
    const PackagePath path{StringID("a.b")}, lenient{StringID("a..b")};
    EXPECT_TRUE(path == PackagePath(PackageName(StringID("a.b"))));
    EXPECT_TRUE(path != lenient);  // the same package by the grammar, another text
    static_assert(!std::is_convertible<ClassName, PackagePath>::value, "kinds stay apart");
    static_assert(sizeof(ClassPath) == sizeof(StringID), "as cheap as an id");
}
