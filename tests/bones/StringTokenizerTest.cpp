#include "support/FuzzCorpus.h"
#include "support/Latch.h"
#include <vort/bones/StringID.h>
#include <vort/bones/StringTokenizer.h>
#include <vort/bones/StringUtils.h>
#include <vort/bones/UUID.h>
#include <vort/bones/VTStringList.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

using namespace VORT;

TEST(StringTokenizer, SplitsKeepingTheSlashLeftAtTheEnd) {
    // A text, its delimiter, trimming and collapsing, then the count and the tokens.
    const std::tuple<const char *, const char *, bool, bool, int, std::vector<std::string>>
        cases[] = {
            {"a,b,", ",", false, false, 3, {"a", "b", "/"}},  // "/" whatever the delimiter
            {"a,b,", ",", true, false, 2, {"a", "b"}},
            {"a/b/", "/", false, false, 3, {"a", "b", ""}},
            {"a,,", ",", false, false, 3, {"a", ""}},  // no "/" after an empty token
            {",,a,,,b,,", ",", true, true, 2, {"a", "b"}},
            {",,a,,", ",", true, false, 3, {"", "a", "/"}},  // one delimiter trimmed at each end
            {"xababx", "ab", false, true, 2, {"x", "x"}},
            {"aaa", "aa", false, false, 2, {"", "a"}},
            {"", ",", true, true, 0, {}},
            {"abc", "", false, false, 0, {}}};
    for (auto const &[text, delimiter, trim, collapse, count, expected] : cases) {
        SCOPED_TRACE(std::string(text) + " by " + delimiter);
        StringTokenizer tokenizer(text, delimiter, trim, collapse);
        EXPECT_EQ(tokenizer.countTokens(), count);
        std::vector<std::string> tokens;
        for (int guard = 0; tokenizer.hasMoreTokens() && guard < 10; ++guard) {
            tokens.push_back(tokenizer.nextToken());
        }
        EXPECT_EQ(tokens, expected);
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

    // clang-format off
    const std::tuple<const char *, int, double> numbers[] = {
        {"42", 42, 42.0}, {"  -7", -7, -7.0}, {"+3.75e1", 3, 37.5}, {"1.5abc", 1, 1.5},
        {"0x10", 0, 16.0}, {"abc", 0, 0.0},   {"", 0, 0.0},         {"4294967297", 1, 4294967297.0}};
    // clang-format on
    for (auto const &[token, asInt, asFloat] : numbers) {
        StringTokenizer tokens(std::string(token) + "|" + token, "|", false, false);
        EXPECT_EQ(tokens.nextIntToken(), asInt) << token;
        EXPECT_DOUBLE_EQ(tokens.nextFloatToken(), asFloat) << token;
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
        EXPECT_EQ(StringReplace(c[0], c[1], c[2]), c[3]) << c[0] << ": " << c[1];
    }
    std::string left = "kept", right = "kept";
    EXPECT_FALSE(SplitStringFromLeft("no separator", "=", left, right));
    EXPECT_EQ(left + "|" + right, "kept|kept");
    std::string rest = "a::b::c", head;
    ASSERT_TRUE(SplitStringFromLeft(rest, "::", head, rest));
    ASSERT_TRUE(SplitStringFromLeft(rest, "::", rest, head));
    EXPECT_EQ(rest + "|" + head, "b|c");

    std::string token = "old", seen;
    std::size_t position = 0;
    while (GetToken("  ab  cd", " ", token, position)) {
        seen += token + "@" + std::to_string(position) + " ";
    }
    position = 4;  // a failed search leaves the token and the position
    EXPECT_TRUE(GetToken(";a,b;;c,", ",;", token, position));
    EXPECT_EQ(seen + token + "@" + std::to_string(position), "ab@4 cd@8 c@7");
}

// The tokenizer's numbers share one C locale, made on first use, and UUIDs come from one
// generator: threads that start together race both from the first call on.
TEST(TextConcurrency, NumbersAndUuidsFromManyThreadsAtOnce) {
    constexpr int kThreads = 4;
    std::vector<std::vector<std::string>> uuids(kThreads);
    std::vector<double> sums(kThreads, 0.0);
    vort_test::runTogether(kThreads, [&](int t) {
        for (int i = 0; i < 200; ++i) {
            StringTokenizer tokens("1.5;2", ";", false, false);
            sums[t] += tokens.nextFloatToken() + tokens.nextIntToken();
            uuids[t].push_back(UUID::createUuidAsString());
        }
    });
    // Fresh lower-case version-4 texts.
    std::set<std::string> distinct;
    for (int t = 0; t < kThreads; ++t) {
        EXPECT_EQ(sums[t], 700.0);
        distinct.insert(uuids[t].begin(), uuids[t].end());
    }
    std::string shape = uuids[0][0];
    for (char &c : shape) {
        c = std::isdigit(c) || (c >= 'a' && c <= 'f') ? 'x' : c;
    }
    EXPECT_EQ(shape.replace(14, 1, 1, uuids[0][0][14]), "xxxxxxxx-xxxx-4xxx-xxxx-xxxxxxxxxxxx");
    EXPECT_EQ(distinct.size(), std::size_t(kThreads * 200));
}

namespace {

std::uintptr_t addressOf(StringID const &id) {
    return id.empty() ? 0 : reinterpret_cast<std::uintptr_t>(&id.getString());
}

}  // namespace

TEST(StringID, EqualTextsShareOneStringAndCompareByItsAddress) {
    StringID assigned("x");
    assigned = "";
    for (const StringID &empty : {StringID(), StringID(std::string()), assigned}) {
        EXPECT_TRUE(empty.empty() && addressOf(empty) == 0 && vHash(empty) == 0 &&
                    empty.getString() + empty.c_str() == "");
    }
    const StringID a("interned text");
    StringID b, c;
    b = std::string("interned ") + "text";
    c = "interned text";
    EXPECT_TRUE(a.getString() == "interned text" && &a.getString() == &b.getString() &&
                a.c_str() == c.c_str());
    const StringID other("Interned text");
    const bool less = addressOf(a) < addressOf(other);
    EXPECT_TRUE(a != other && (a < other) == less && (a > other) == !less && (a <= other) == less &&
                (a >= other) == !less && a <= a && a >= a && !(a < a));
    EXPECT_TRUE(StringID() < a && a == b);

    // A text with a NUL in it gets an id of its own that reads as the part before the NUL.
    const StringID cut(std::string("ab\0cd", 5));
    EXPECT_TRUE(cut != StringID("ab") && cut == StringID(std::string("ab\0cd", 5)));
    EXPECT_TRUE(cut.getString() == "ab" && cut != StringID(std::string("ab\0ce", 5)));
}

TEST(StringID, ConcatenatesComparesWithoutCaseAndHashesByAddress) {
    StringID head("con");
    EXPECT_TRUE(head.concat(StringID("catenated")) == StringID("concatenated") &&
                head.concat(StringID()) == head && StringID().concat(head) == head);

    const StringID mixed("Content-Type");
    EXPECT_TRUE(mixed.equalsIgnoreCase(StringID("cONTENT-tYPE")) &&
                mixed.equalsIgnoreCase(std::string("content-type")) &&
                StringID().equalsIgnoreCase(StringID()) &&
                StringID("ab").equalsIgnoreCase(std::string("AB\0zz", 5)));
    // Only ASCII letters fold: '@' and '`' sit next to 'A' and 'a' but are not letters, and
    // bytes above 0x7F compare as they are. An empty id equals no text, not even an empty one.
    // clang-format off
    const std::pair<StringID, StringID> unequal[] = {
        {mixed, StringID("content-typ")}, {mixed, StringID("content-types")}, {mixed, StringID()},
        {StringID(), mixed}, {StringID("@"), StringID("`")}, {StringID("["), StringID("{")},
        {StringID("\xC4"), StringID("\xE4")}};
    // clang-format on
    for (const auto &pair : unequal) {
        EXPECT_FALSE(pair.first.equalsIgnoreCase(pair.second)) << pair.first << pair.second;
    }
    EXPECT_FALSE(StringID().equalsIgnoreCase(std::string()));

    const std::uintptr_t p = addressOf(mixed);
    const auto expected = static_cast<unsigned int>((static_cast<std::uint64_t>(p) >> 31) ^ p);
    EXPECT_TRUE(vHash(mixed) == expected &&
                ::qHash(mixed, 0x5A5A) == (std::size_t{expected} ^ 0x5A5A));
    EXPECT_EQ(toString(mixed), "Content-Type");
}

// An id streams out as its bare text and reads the rest of the stream, blanks included, up to
// a byte 0xFF, which ends the text and is consumed; other high bytes are kept.
TEST(StringID, StreamsTheBareTextAndReadsTheRestUpToAByteFF) {
    std::ostringstream out;
    out << '[' << StringID("two words") << ']' << StringID() << '.';
    std::istringstream in("key  blanks,\ttabs\n\xFFsecond caf\xC3\xA9\xFE");
    std::string key;
    StringID first, second, third;
    in >> key >> first;
    const bool stoppedBeforeTheEnd = !in.eof();
    in >> second >> third;  // nothing left: the empty id, and the stream has failed
    EXPECT_EQ(out.str() + first.getString() + "|" + second.getString(),
              "[two words].  blanks,\ttabs\n|second caf\xC3\xA9\xFE");
    EXPECT_TRUE(stoppedBeforeTheEnd && third.empty() && in.fail());
}

TEST(StringIDConcurrency, EachTextGetsExactlyOneIdReadableWhileOthersIntern) {
    constexpr int kThreads = 4, kTexts = 3000;
    std::vector<std::string> texts;
    for (int i = 0; i < kTexts; ++i) {
        texts.push_back("concurrent text " + std::to_string(i));
    }
    // Each thread meets the texts in its own order, and reads back the ids that the thread
    // before it published, while the table grows under them.
    std::vector<std::atomic<std::uintptr_t>> seen(kThreads * kTexts);
    std::atomic<int> mismatches{0};
    std::vector<std::vector<int>> orders(kThreads, std::vector<int>(kTexts));
    for (int t = 0; t < kThreads; ++t) {
        std::iota(orders[t].begin(), orders[t].end(), 0);
        std::shuffle(orders[t].begin(), orders[t].end(), std::mt19937(static_cast<unsigned>(t)));
    }
    vort_test::runTogether(kThreads, [&](int t) {
        for (int i : orders[t]) {
            const StringID id(texts[i]);
            seen[t * kTexts + i] = addressOf(id);
            const auto *published =
                reinterpret_cast<const std::string *>(seen[(t + 1) % kThreads * kTexts + i].load());
            mismatches += id.getString() != texts[i] || (published && *published != texts[i]);
        }
    });
    EXPECT_EQ(mismatches.load(), 0);
    std::set<std::uintptr_t> distinct;
    for (int i = 0; i < kTexts; ++i) {
        for (int t = 1; t < kThreads; ++t) {
            ASSERT_EQ(seen[t * kTexts + i], seen[i]) << texts[i];
        }
        distinct.insert(seen[i]);
    }
    EXPECT_EQ(distinct.size(), size_t(kTexts));
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

TEST(TextGrammarFuzzer, ReplaysTheKeptCorpus) {
    vort_test::replayCorpus(VORT_FUZZ_CORPUS_DIR, "text_grammar_fuzzer", &LLVMFuzzerTestOneInput);
}

// Copies in, clamped insertions, a cursor that stays on its element and rewinds after a
// removal, a ring through the end, and case-blind matching of ASCII letters only.
TEST(VTStringList, InsertsRemovesWalksAndComparesCopies) {
    const auto walk = [](VTStringList &list) {
        std::string all;
        for (const char *e = list.firstElement(); e != nullptr; e = list.nextElement()) {
            all += std::string(all.empty() ? "" : ",") + e;
        }
        return all;
    };
    char text[] = "b";
    VTStringList list;
    EXPECT_TRUE(list.firstElement() == nullptr && list.nextElement() == nullptr);
    list.addElement(text);
    text[0] = 'x';
    list.addElement(nullptr);
    for (auto const &[index, element] :
         {std::make_pair(0, "a"), {-5, "first"}, {99, "last"}, {2, "mid"}, {1, nullptr}}) {
        list.insertElement(index, element);
    }
    EXPECT_EQ(walk(list) + std::to_string(list.size()), "first,a,mid,b,last5");
    list.firstElement();
    list.insertElement(0, "Mid");
    EXPECT_STREQ(list.nextElement(), "a");
    std::string ring;
    for (int index : {0, 5, 6, 7, 12, -1}) {
        const char *element = list.elementAt(index);
        ring += std::string(element == nullptr ? "null" : element) + " ";
    }
    EXPECT_EQ(ring, "Mid last null Mid last Mid ");
    EXPECT_FALSE(list.removeElement("gamma", false) || list.isInList("MID", true) ||
                 list.isInList(nullptr, false) ||
                 list.isInList("m\xC9"
                               "d",
                               false));
    EXPECT_STREQ(list.nextElement(), "mid");  // a failed removal leaves the cursor
    EXPECT_TRUE(list.isInList("MID", false) && list.removeElement("mId", false));
    EXPECT_STREQ(list.nextElement(), "a");  // the cursor went back to the first element
    VTStringList copy(list);
    EXPECT_TRUE(copy == list && copy.elementAt(0) != list.elementAt(0) && !copy.nextElement());
    copy.addElement("more");
    EXPECT_TRUE(copy != list && walk(list) == "first,a,b,last");
}
