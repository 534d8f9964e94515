#include <vort/bones/StringTokenizer.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using VORT::StringTokenizer;

TEST(StringTokenizer, SplitsKeepingTheSlashLeftAtTheEnd) {
    struct Case {
        const char *text, *delimiter;
        bool trim, collapse;
        int count;
        std::vector<std::string> tokens;
    };
    const Case cases[] = {
        {"a,b", ",", false, false, 2, {"a", "b"}},
        {"a,b,", ",", false, false, 3, {"a", "b", "/"}},  // "/" whatever the delimiter
        {"a,b,", ",", true, false, 2, {"a", "b"}},
        {"a/b/", "/", false, false, 3, {"a", "b", ""}},
        {"a,,", ",", false, false, 3, {"a", ""}},  // no "/" after an empty token
        {"a,,b", ",", false, true, 2, {"a", "b"}},
        {",,a,,,b,,", ",", true, true, 2, {"a", "b"}},
        {",,a,,", ",", true, false, 3, {"", "a", "/"}},  // one delimiter trimmed at each end
        {"xababx", "ab", false, true, 2, {"x", "x"}},
        {"aaa", "aa", false, false, 2, {"", "a"}},
        {"", ",", true, true, 0, {}},
        {"abc", "", false, false, 0, {}}};
    for (Case const &c : cases) {
        SCOPED_TRACE(std::string(c.text) + " by " + c.delimiter);
        StringTokenizer tokenizer(c.text, c.delimiter, c.trim, c.collapse);
        EXPECT_EQ(tokenizer.countTokens(), c.count);
        std::vector<std::string> tokens;
        for (int guard = 0; tokenizer.hasMoreTokens() && guard < 10; ++guard) {
            tokens.push_back(tokenizer.nextToken());
        }
        EXPECT_EQ(tokens, c.tokens);
        EXPECT_EQ(tokenizer.nextToken() + tokenizer.remainingString(), "");
    }
}

TEST(StringTokenizer, CopiesKeepTheirOwnPositionAndDelimitersCanChangePerCall) {
    StringTokenizer original("k=v;x=y;", ";", false, false);
    EXPECT_EQ(original.nextToken("="), "k");
    StringTokenizer copy = original;
    EXPECT_EQ(copy.nextToken(), "v");
    EXPECT_EQ(copy.nextToken("y;"), "x=");  // no "/" left behind by the per-call form
    EXPECT_FALSE(copy.hasMoreTokens());
    EXPECT_EQ(original.nextToken(""), "v;x=y;");  // an empty delimiter is never found
}

TEST(StringTokenizer, ReadsNumbersAndFiltersTokens) {
    struct Number {
        const char *token;
        int asInt;
        double asFloat;
    };
    const Number numbers[] = {{"42", 42, 42.0},     {"  -7", -7, -7.0},
                              {"+3.75e1", 3, 37.5}, {"1.5abc", 1, 1.5},
                              {"0x10", 0, 16.0},    {"abc", 0, 0.0},
                              {"", 0, 0.0},         {"4294967297", 1, 4294967297.0}};
    for (Number const &n : numbers) {
        StringTokenizer tokens(std::string(n.token) + "|" + n.token, "|", false, false);
        EXPECT_EQ(tokens.nextIntToken(), n.asInt) << n.token;
        EXPECT_DOUBLE_EQ(tokens.nextFloatToken(), n.asFloat) << n.token;
    }
    const char *const filters[][3] = {
        {"a_b_c", "_", "abc"}, {"aabb", "ab", "ab"}, {"xyxyx", "xy", "x"}, {"abc", "", "abc"}};
    for (auto const &f : filters) {
        StringTokenizer tokenizer(std::string{f[0]} + ";rest", ";", false, false);
        EXPECT_EQ(tokenizer.filterNextToken(f[1]), f[2]) << f[0];
        EXPECT_EQ(tokenizer.remainingString(), "rest");
    }
}
