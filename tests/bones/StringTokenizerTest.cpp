#include <vort/bones/StringTokenizer.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using VORT::StringTokenizer;

namespace {

std::vector<std::string> drain(StringTokenizer &tokenizer) {
    std::vector<std::string> tokens;
    // Bounded, so that a tokenizer that never runs out fails instead of hanging.
    for (int guard = 0; tokenizer.hasMoreTokens() && guard < 100; ++guard) {
        tokens.push_back(tokenizer.nextToken());
    }
    return tokens;
}

struct Case {
    const char *text;
    const char *delimiter;
    bool trim;
    bool collapse;
    int count;
    std::vector<std::string> tokens;
};

}  // namespace

TEST(StringTokenizer, SplitsKeepingTheSlashLeftAtTheEnd) {
    const Case cases[] = {
        {"a,b", ",", false, false, 2, {"a", "b"}},
        // A trailing delimiter leaves "/" behind, whatever the delimiter.
        {"a,b,", ",", false, false, 3, {"a", "b", "/"}},
        {"a,b,", ",", true, false, 2, {"a", "b"}},
        {"a/b/", "/", false, false, 3, {"a", "b", ""}},
        {"a::b::", "::", false, false, 3, {"a", "b", "/"}},
        // An empty token before the end leaves nothing behind.
        {",", ",", false, false, 2, {""}},
        {"a,,", ",", false, false, 3, {"a", ""}},
        {"a,,b", ",", false, false, 3, {"a", "", "b"}},
        {"a,,b", ",", false, true, 2, {"a", "b"}},
        {",,a,,,b,,", ",", false, true, 4, {"", "a", "b", "/"}},
        {",,a,,,b,,", ",", true, true, 2, {"a", "b"}},
        // Trimming takes one delimiter off each end, no more, after collapsing.
        {",,a,,", ",", true, false, 3, {"", "a", "/"}},
        {",", ",", true, false, 0, {}},
        {",,", ",", true, false, 0, {}},
        {",,,", ",", true, true, 0, {}},
        // The delimiter is a whole string; occurrences are found without overlap.
        {"a<>b>c", "<>", false, false, 2, {"a", "b>c"}},
        {"xababx", "ab", false, true, 2, {"x", "x"}},
        {"aaa", "aa", false, false, 2, {"", "a"}},
        {"aaaaa", "aa", false, true, 2, {"", "a"}},
        {"aaaa", "aa", true, false, 0, {}},
        // Nothing to split.
        {"", ",", true, true, 0, {}},
        {"abc", "", false, false, 0, {}},
        {"abc", ";", false, false, 1, {"abc"}},
    };
    for (Case const &c : cases) {
        SCOPED_TRACE(std::string(c.text) + " by " + c.delimiter);
        StringTokenizer tokenizer(c.text, c.delimiter, c.trim, c.collapse);
        EXPECT_EQ(tokenizer.countTokens(), c.count);
        EXPECT_EQ(tokenizer.hasMoreTokens(), c.count > 0);
        EXPECT_EQ(drain(tokenizer), c.tokens);
        EXPECT_FALSE(tokenizer.hasMoreTokens());
        EXPECT_EQ(tokenizer.countTokens(), 0);
        EXPECT_EQ(tokenizer.nextToken(), "");
        EXPECT_EQ(tokenizer.remainingString(), "");
    }
}

TEST(StringTokenizer, CopiesKeepTheirOwnPositionAndDelimitersCanChangePerCall) {
    StringTokenizer original("k=v;x=y;", ";", false, false);
    EXPECT_EQ(original.nextToken("="), "k");
    StringTokenizer copy = original;
    EXPECT_EQ(copy.nextToken(), "v");
    EXPECT_EQ(copy.nextToken("y;"), "x=");  // no "/" left behind by the per-call form
    EXPECT_FALSE(copy.hasMoreTokens());
    EXPECT_EQ(original.remainingString(), "v;x=y;");
    EXPECT_EQ(original.nextToken(""), "v;x=y;");  // an empty delimiter is never found
    EXPECT_FALSE(original.hasMoreTokens());
}

TEST(StringTokenizer, ReadsNumbersAsAtoiAndAtof) {
    struct Number {
        const char *token;
        int asInt;
        double asFloat;
    };
    const Number numbers[] = {
        {"42", 42, 42.0},     {"  -7", -7, -7.0},
        {"+3.75e1", 3, 37.5}, {"1.5abc", 1, 1.5},
        {"0x10", 0, 16.0},    {"abc", 0, 0.0},
        {"", 0, 0.0},         {"4294967297", 1, 4294967297.0},  // an int keeps its low 32 bits
    };
    for (Number const &n : numbers) {
        SCOPED_TRACE(n.token);
        StringTokenizer tokens(std::string(n.token) + "|" + n.token, "|", false, false);
        EXPECT_EQ(tokens.nextIntToken(), n.asInt);
        EXPECT_DOUBLE_EQ(tokens.nextFloatToken(), n.asFloat);
    }
}

TEST(StringTokenizer, FilterErasesEveryOccurrenceInOnePass) {
    const char *const filters[][3] = {
        {"a_b_c", "_", "abc"}, {"aabb", "ab", "ab"},   {"xyxyx", "xy", "x"},
        {"abc", "", "abc"},    {"abc", "abcd", "abc"}, {"___", "_", ""},
    };
    for (auto const &f : filters) {
        SCOPED_TRACE(std::string(f[0]) + " without " + f[1]);
        StringTokenizer tokenizer(std::string{f[0]} + ";rest", ";", false, false);
        EXPECT_EQ(tokenizer.filterNextToken(f[1]), f[2]);
        EXPECT_EQ(tokenizer.remainingString(), "rest");
    }
}
