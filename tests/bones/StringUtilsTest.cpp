#include <vort/bones/StringUtils.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

TEST(StringReplace, ReplacesLeftToRightWithoutOverlapOrRescan) {
    const char *const cases[][4] = {
        {"a.b.c", ".", "/", "a/b/c"},       {"aaa", "aa", "b", "ba"},
        {"abab", "ab", "abab", "abababab"}, {"xx", "x", "", ""},
        {"none", "z", "y", "none"},         {"abc", "", "x", "abc"},
    };
    for (auto const &c : cases) {
        EXPECT_EQ(VORT::StringReplace(c[0], c[1], c[2]), c[3]) << c[0] << ": " << c[1];
    }
}

TEST(SplitStringFromLeft, SplitsAtTheFirstSeparatorEvenIntoItself) {
    const char *const cases[][4] = {
        {"key=value=more", "=", "key", "value=more"},
        {"a::b", "::", "a", "b"},
        {"=", "=", "", ""},
        {"abc", "", "", "abc"},
    };
    for (auto const &c : cases) {
        std::string left = "old", right = "old";
        EXPECT_TRUE(VORT::SplitStringFromLeft(c[0], c[1], left, right)) << c[0];
        EXPECT_EQ(left + "|" + right, std::string(c[2]) + "|" + c[3]);
    }
    std::string left = "kept", right = "kept too";
    EXPECT_FALSE(VORT::SplitStringFromLeft("no separator", "=", left, right));
    EXPECT_EQ(left + "|" + right, "kept|kept too");

    std::string rest = "a.b.c", head;
    ASSERT_TRUE(VORT::SplitStringFromLeft(rest, ".", head, rest));
    ASSERT_TRUE(VORT::SplitStringFromLeft(rest, ".", rest, head));
    EXPECT_EQ(rest + "|" + head, "b|c");
}

TEST(GetToken, SkipsDelimiterSetsAndReportsWhereItStopped) {
    struct Step {
        const char *text;
        const char *delimiters;
        std::size_t from;
        bool found;
        const char *token;
        std::size_t after;
    };
    const Step steps[] = {
        {"  ab  cd", " ", 0, true, "ab", 4}, {"  ab  cd", " ", 4, true, "cd", 8},
        {"  ab  cd", " ", 8, false, "old", 8},  {";a,b;;c,", ",;", 4, true, "c", 7},
        {" \t ", " \t", 1, false, "old", 1},    {"abc", " ", 99, false, "old", 99},
        {"a b", "", 1, true, " b", 3},
    };
    for (Step const &s : steps) {
        std::string token = "old";
        std::size_t position = s.from;
        EXPECT_EQ(VORT::GetToken(s.text, s.delimiters, token, position), s.found) << s.text;
        EXPECT_EQ(token, s.token);
        EXPECT_EQ(position, s.after);
    }
}

TEST(CompareIgnoreCase, FoldsAsciiLettersOnlyAndComparesBytesUnsigned) {
    struct Case {
        const char *a;
        const char *b;
        int sign;
    };
    const Case cases[] = {
        {"", "", 0},      {"Hello", "hELLO", 0}, {"ABCXYZ", "abcxyz", 0},
        {"a", "b", -1},   {"abc", "ABCD", -1},   {"_", "A", -1},
        {"[", "a", -1},   {"@", "`", -1},        {"\xC3\xA9", "\xC3\x89", 1},
        {"\xFF", "a", 1},
    };
    for (Case const &c : cases) {
        const int forward = VORT::compareIgnoreCase(c.a, c.b);
        const int backward = VORT::compareIgnoreCase(c.b, c.a);
        EXPECT_EQ((forward > 0) - (forward < 0), c.sign) << c.a << " vs " << c.b;
        EXPECT_EQ((backward > 0) - (backward < 0), -c.sign) << c.b << " vs " << c.a;
    }
}
