#include <vort/bones/StringUtils.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

TEST(StringUtils, ReplacesAndSplitsAtTheFirstMatch) {
    const char *const replaced[][4] = {
        {"aaa", "aa", "b", "ba"}, {"abab", "ab", "abab", "abababab"}, {"abc", "", "x", "abc"}};
    for (auto const &c : replaced) {
        EXPECT_EQ(VORT::StringReplace(c[0], c[1], c[2]), c[3]) << c[0] << ": " << c[1];
    }
    std::string left = "kept", right = "kept";
    EXPECT_FALSE(VORT::SplitStringFromLeft("no separator", "=", left, right));
    EXPECT_EQ(left + "|" + right, "kept|kept");
    std::string rest = "a::b::c", head;
    ASSERT_TRUE(VORT::SplitStringFromLeft(rest, "::", head, rest));
    ASSERT_TRUE(VORT::SplitStringFromLeft(rest, "::", rest, head));
    EXPECT_EQ(rest + "|" + head, "b|c");
}

TEST(StringUtils, GetTokenSkipsDelimiterSets) {
    std::string token = "old";
    std::size_t position = 0;
    ASSERT_TRUE(VORT::GetToken("  ab  cd", " ", token, position));
    EXPECT_EQ(token + "@" + std::to_string(position), "ab@4");
    ASSERT_TRUE(VORT::GetToken("  ab  cd", " ", token, position));
    EXPECT_EQ(token + "@" + std::to_string(position), "cd@8");
    EXPECT_FALSE(VORT::GetToken("  ab  cd", " ", token, position));
    EXPECT_EQ(token + "@" + std::to_string(position), "cd@8");
    position = 4;
    ASSERT_TRUE(VORT::GetToken(";a,b;;c,", ",;", token, position));
    EXPECT_EQ(token + "@" + std::to_string(position), "c@7");
}

TEST(StringUtils, CompareIgnoreCaseFoldsAsciiLettersOnly) {
    struct Case {
        const char *a, *b;
        int sign;
    };
    const Case cases[] = {{"", "", 0},
                          {"Hello", "hELLO", 0},
                          {"ABCXYZ", "abcxyz", 0},
                          {"abc", "ABCD", -1},
                          {"_", "A", -1},
                          {"[", "a", -1},
                          {"@", "`", -1},
                          {"\xC3\xA9", "\xC3\x89", 1},
                          {"\xFF", "a", 1}};
    for (Case const &c : cases) {
        const int forward = VORT::compareIgnoreCase(c.a, c.b);
        const int backward = VORT::compareIgnoreCase(c.b, c.a);
        EXPECT_EQ((forward > 0) - (forward < 0), c.sign) << c.a << " vs " << c.b;
        EXPECT_EQ((backward > 0) - (backward < 0), -c.sign) << c.b << " vs " << c.a;
    }
}
