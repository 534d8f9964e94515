#include "support/Latch.h"
#include <vort/bones/StringTokenizer.h>
#include <vort/bones/StringUtils.h>
#include <vort/bones/UUID.h>

#include <gtest/gtest.h>

#include <cctype>
#include <cstddef>
#include <set>
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

TEST(StringTokenizer, ChangesDelimitersPerCallReadsNumbersAndFiltersTokens) {
    StringTokenizer original("k=v;x=y;", ";", false, false);
    EXPECT_EQ(original.nextToken("="), "k");
    StringTokenizer copy = original;  // with its own position
    EXPECT_EQ(copy.nextToken(), "v");
    EXPECT_EQ(copy.nextToken("y;"), "x=");  // no "/" left behind by the per-call form
    EXPECT_FALSE(copy.hasMoreTokens());
    EXPECT_EQ(original.nextToken(""), "v;x=y;");  // an empty delimiter is never found

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

TEST(StringUtils, ReplacesSplitsAndGetsTokens) {
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

// The tokenizer's numbers share one C locale, made on first use, and UUIDs come from one
// generator: threads that start together race both from the first call on.
TEST(TextConcurrency, NumbersAndUuidsFromManyThreadsAtOnce) {
    constexpr int kThreads = 4;
    std::vector<std::vector<std::string>> uuids(kThreads);
    std::vector<double> sums(kThreads, 0.0);
    vort_test::runTogether(kThreads, [&](int t) {
        for (int i = 0; i < 200; ++i) {
            VORT::StringTokenizer tokens("1.5;2", ";", false, false);
            sums[t] += tokens.nextFloatToken() + tokens.nextIntToken();
            uuids[t].push_back(VORT::UUID::createUuidAsString());
        }
    });
    // Fresh lower-case version-4 texts.
    std::set<std::string> distinct;
    for (int t = 0; t < kThreads; ++t) {
        EXPECT_EQ(sums[t], 700.0);
        for (std::string const &uuid : uuids[t]) {
            std::string shape = uuid;
            for (char &c : shape) {
                c = std::isdigit(c) || (c >= 'a' && c <= 'f') ? 'x' : c;
            }
            ASSERT_EQ(shape.replace(14, 1, 1, uuid[14]), "xxxxxxxx-xxxx-4xxx-xxxx-xxxxxxxxxxxx");
        }
        distinct.insert(uuids[t].begin(), uuids[t].end());
    }
    EXPECT_EQ(distinct.size(), std::size_t(kThreads * 200));
}
