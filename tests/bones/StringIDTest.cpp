#include "support/Latch.h"
#include <vort/bones/StringID.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <numeric>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

using VORT::StringID;

namespace {

std::uintptr_t addressOf(StringID const &id) {
    return id.empty() ? 0 : reinterpret_cast<std::uintptr_t>(&id.getString());
}

}  // namespace

TEST(StringID, EqualTextsShareOneStringAndCompareByItsAddress) {
    StringID assigned("x");
    assigned = "";
    for (const StringID &empty : {StringID(), StringID(""), StringID(std::string()), assigned}) {
        EXPECT_TRUE(empty.empty() && addressOf(empty) == 0 && VORT::vHash(empty) == 0);
        EXPECT_EQ(empty.getString() + empty.c_str(), "");
    }
    const StringID a("interned text");
    StringID b, c;
    b = std::string("interned ") + "text";
    c = "interned text";
    EXPECT_TRUE(a.getString() == "interned text" && &a.getString() == &b.getString());
    EXPECT_EQ(a.c_str(), c.c_str());
    const StringID other("Interned text");
    const bool less = addressOf(a) < addressOf(other);
    EXPECT_TRUE(a != other && (a < other) == less && (a > other) == !less);
    EXPECT_TRUE((a <= other) == less && (a >= other) == !less && a <= a && a >= a && !(a < a));
    EXPECT_TRUE(StringID() < a && a == b);

    // A text with a NUL in it gets an id of its own that reads as the part before the NUL.
    const StringID cut(std::string("ab\0cd", 5));
    EXPECT_TRUE(cut != StringID("ab") && cut == StringID(std::string("ab\0cd", 5)));
    EXPECT_TRUE(cut.getString() == "ab" && cut != StringID(std::string("ab\0ce", 5)));
}

TEST(StringID, ConcatenatesComparesWithoutCaseAndHashesByAddress) {
    StringID head("con");
    EXPECT_EQ(head.concat(StringID("catenated")), StringID("concatenated"));
    EXPECT_TRUE(head.concat(StringID()) == head && StringID().concat(head) == head);

    const StringID mixed("Content-Type");
    EXPECT_TRUE(mixed.equalsIgnoreCase(StringID("cONTENT-tYPE")) &&
                mixed.equalsIgnoreCase(std::string("content-type")) &&
                StringID().equalsIgnoreCase(StringID()) &&
                StringID("ab").equalsIgnoreCase(std::string("AB\0zz", 5)));
    // Only ASCII letters fold: '@' and '`' sit next to 'A' and 'a' but are not letters, and
    // bytes above 0x7F compare as they are. An empty id equals no text, not even an empty one.
    const std::pair<StringID, StringID> unequal[] = {{mixed, StringID("content-typ")},
                                                     {mixed, StringID("content-types")},
                                                     {mixed, StringID()},
                                                     {StringID(), mixed},
                                                     {StringID("@"), StringID("`")},
                                                     {StringID("["), StringID("{")},
                                                     {StringID("\xC4"), StringID("\xE4")}};
    for (const auto &pair : unequal) {
        EXPECT_FALSE(pair.first.equalsIgnoreCase(pair.second)) << pair.first << pair.second;
    }
    EXPECT_FALSE(StringID().equalsIgnoreCase(std::string()));

    const std::uintptr_t p = addressOf(mixed);
    const auto expected = static_cast<unsigned int>((static_cast<std::uint64_t>(p) >> 31) ^ p);
    EXPECT_EQ(VORT::vHash(mixed), expected);
    EXPECT_EQ(::qHash(mixed, 0x5A5A), std::size_t{expected} ^ 0x5A5A);
    EXPECT_EQ(VORT::toString(mixed), "Content-Type");
}

TEST(StringID, StreamsTheBareTextAndReadsTheRestUpToAByteFF) {
    std::ostringstream out;
    out << '[' << StringID("two words") << ']' << StringID() << '.';
    EXPECT_EQ(out.str(), "[two words].");

    std::istringstream whole("  leading blanks,\ttabs\nand line ends \n");
    StringID id;
    whole >> id;
    EXPECT_TRUE(id.getString() == "  leading blanks,\ttabs\nand line ends \n" && whole.eof() &&
                !whole.fail());

    std::istringstream stopped("first part\xFFsecond caf\xC3\xA9\xFE");
    stopped >> id;  // the byte 0xFF ends the text and is consumed; other high bytes are kept
    EXPECT_TRUE(id.getString() == "first part" && !stopped.eof());
    stopped >> id;
    EXPECT_EQ(id.getString(), "second caf\xC3\xA9\xFE");

    std::istringstream mixed("key value");
    std::string key;
    mixed >> key >> id;  // the rest goes with its leading blank
    EXPECT_EQ(id.getString(), " value");
    mixed >> id;  // nothing left: the empty id, and the stream has failed
    EXPECT_TRUE(id.empty() && mixed.fail());
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
