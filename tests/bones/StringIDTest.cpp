#include "support/Latch.h"
#include <vort/bones/StringID.h>

#include <QHash>
#include <QSet>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <random>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

using VORT::StringID;

namespace {

std::uintptr_t addressOf(StringID const &id) {
    return id.empty() ? 0 : reinterpret_cast<std::uintptr_t>(&id.getString());
}

}  // namespace

TEST(StringID, EmptyIdsAreOneAndTheSame) {
    const StringID byDefault;
    const StringID fromLiteral("");
    const StringID fromString{std::string()};
    StringID assigned("x");
    assigned = "";
    const StringID *all[] = {&byDefault, &fromLiteral, &fromString, &assigned};
    for (const StringID *id : all) {
        EXPECT_TRUE(id->empty());
        EXPECT_EQ(*id, byDefault);
        EXPECT_STREQ(id->c_str(), "");
        EXPECT_EQ(id->getString(), "");
        EXPECT_EQ(VORT::vHash(*id), 0u);
    }
    EXPECT_EQ(&byDefault.getString(), &fromLiteral.getString());
}

TEST(StringID, EqualTextsShareOneString) {
    const char first[] = "interned text";
    const std::string second = std::string("interned ") + "text";
    const StringID a(first);
    const StringID b(second);
    StringID c;
    c = std::string("interned text");
    StringID d;
    d = "interned text";
    EXPECT_FALSE(a.empty());
    EXPECT_EQ(a, b);
    EXPECT_EQ(a, c);
    EXPECT_EQ(a, d);
    EXPECT_EQ(&a.getString(), &b.getString());
    EXPECT_EQ(a.c_str(), d.c_str());
    EXPECT_EQ(a.getString(), "interned text");

    const StringID other("Interned text");
    EXPECT_NE(a, other);
    EXPECT_NE(&a.getString(), &other.getString());
}

TEST(StringID, ComparesByAddress) {
    const StringID a("alpha-order");
    const StringID b("beta-order");
    const bool less = addressOf(a) < addressOf(b);
    EXPECT_EQ(a < b, less);
    EXPECT_EQ(a > b, !less);
    EXPECT_EQ(a <= b, less);
    EXPECT_EQ(a >= b, !less);
    EXPECT_TRUE(a <= a);
    EXPECT_TRUE(a >= a);
    EXPECT_FALSE(a < a);
    // The empty id is the null address, below every other.
    EXPECT_TRUE(StringID() < a);
    EXPECT_TRUE(StringID() < b);
}

TEST(StringID, EmbeddedNulGivesItsOwnIdThatReadsShort) {
    const std::string withNul("ab\0cd", 5);
    const StringID cut(withNul);
    const StringID plain("ab");
    EXPECT_NE(cut, plain);
    EXPECT_EQ(cut, StringID(std::string("ab\0cd", 5)));
    EXPECT_EQ(cut.getString(), "ab");
    EXPECT_STREQ(cut.c_str(), "ab");
    EXPECT_NE(cut, StringID(std::string("ab\0ce", 5)));
}

TEST(StringID, Concat) {
    StringID head("con");
    const StringID tail("catenated");
    EXPECT_EQ(head.concat(tail), StringID("concatenated"));
    EXPECT_EQ(head.concat(StringID()), head);
    StringID none;
    EXPECT_EQ(none.concat(tail), tail);
    EXPECT_TRUE(none.concat(none).empty());
    EXPECT_EQ(head, StringID("con"));
}

TEST(StringID, EqualsIgnoreCase) {
    const StringID mixed("Content-Type");
    EXPECT_TRUE(mixed.equalsIgnoreCase(StringID("content-type")));
    EXPECT_TRUE(mixed.equalsIgnoreCase(StringID("CONTENT-TYPE")));
    EXPECT_TRUE(mixed.equalsIgnoreCase(mixed));
    EXPECT_FALSE(mixed.equalsIgnoreCase(StringID("content-typ")));
    EXPECT_FALSE(mixed.equalsIgnoreCase(StringID("content-types")));
    EXPECT_FALSE(mixed.equalsIgnoreCase(StringID()));
    EXPECT_FALSE(StringID().equalsIgnoreCase(mixed));
    EXPECT_TRUE(StringID().equalsIgnoreCase(StringID()));
    // Only ASCII letters fold: '@' and '`' sit next to 'A' and 'a' but are not letters, and
    // bytes above 0x7F compare as they are.
    EXPECT_FALSE(StringID("@").equalsIgnoreCase(StringID("`")));
    EXPECT_FALSE(StringID("[").equalsIgnoreCase(StringID("{")));
    EXPECT_FALSE(StringID("\xC4").equalsIgnoreCase(StringID("\xE4")));

    EXPECT_TRUE(mixed.equalsIgnoreCase(std::string("cOnTeNt-TyPe")));
    EXPECT_FALSE(mixed.equalsIgnoreCase(std::string("content_type")));
    EXPECT_FALSE(StringID().equalsIgnoreCase(std::string()));
    EXPECT_TRUE(StringID("ab").equalsIgnoreCase(std::string("AB\0zz", 5)));
}

TEST(StringID, Hashes) {
    const StringID id("hashed by address");
    const std::uintptr_t p = addressOf(id);
    const auto expected = static_cast<unsigned int>((static_cast<std::uint64_t>(p) >> 31) ^ p);
    EXPECT_EQ(VORT::vHash(id), expected);
    EXPECT_EQ(qHash(id), std::size_t{expected});
    EXPECT_EQ(::qHash(id, 0x5A5A), std::size_t{expected} ^ 0x5A5A);

    QHash<StringID, int> byId;
    byId.insert(StringID("one"), 1);
    byId.insert(StringID("two"), 2);
    byId.insert(StringID(std::string("one")), 3);
    EXPECT_EQ(byId.size(), 2);
    EXPECT_EQ(byId.value(StringID("one")), 3);
    QSet<StringID> ids{StringID("one"), StringID("one"), StringID()};
    EXPECT_EQ(ids.size(), 2);
}

TEST(StringID, ToStringAndDefaultFont) {
    EXPECT_EQ(VORT::toString(StringID("copy me")), "copy me");
    EXPECT_EQ(VORT::toString(StringID()), "");
    EXPECT_EQ(RD::DefaultFontName, StringID("Helvetica"));
    EXPECT_EQ(RD::DefaultFontName.getString(), "Helvetica");
}

TEST(StringID, WritesTheBareText) {
    std::ostringstream out;
    out << '[' << StringID("two words") << ']' << StringID() << '.';
    EXPECT_EQ(out.str(), "[two words].");
}

TEST(StringID, ReadingTakesTheRestOfTheStream) {
    std::istringstream whole("  leading blanks,\ttabs\nand line ends \n");
    StringID id;
    whole >> id;
    EXPECT_EQ(id.getString(), "  leading blanks,\ttabs\nand line ends \n");
    EXPECT_TRUE(whole.eof());
    EXPECT_FALSE(whole.fail());

    // A byte 0xFF ends the text and is consumed.
    std::istringstream stopped("first part\xFFsecond part");
    StringID first;
    StringID second;
    stopped >> first;
    EXPECT_EQ(first.getString(), "first part");
    EXPECT_FALSE(stopped.eof());
    stopped >> second;
    EXPECT_EQ(second.getString(), "second part");
    EXPECT_TRUE(stopped.eof());

    // Other high bytes are kept.
    std::istringstream high("caf\xC3\xA9\xFE");
    high >> id;
    EXPECT_EQ(id.getString(), "caf\xC3\xA9\xFE");

    // After a word has been read by other means, the rest goes with its leading blank.
    std::istringstream mixed("key value with blanks");
    std::string key;
    mixed >> key >> id;
    EXPECT_EQ(id.getString(), " value with blanks");

    // Nothing left: the empty id, and the stream has failed.
    StringID cleared("something");
    mixed >> cleared;
    EXPECT_TRUE(cleared.empty());
    EXPECT_TRUE(mixed.fail());

    std::istringstream empty("");
    StringID none("something");
    empty >> none;
    EXPECT_TRUE(none.empty());
}

TEST(StringIDConcurrency, EachTextGetsExactlyOneId) {
    constexpr int kThreads = 4;
    constexpr int kTexts = 3000;
    std::vector<std::string> texts;
    for (int i = 0; i < kTexts; ++i) {
        texts.push_back("concurrent text " + std::to_string(i));
    }

    std::vector<std::vector<std::uintptr_t>> seen(kThreads, std::vector<std::uintptr_t>(kTexts));
    vort_test::Latch start(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            // Each thread meets the texts in its own order, half of them twice.
            std::vector<int> order(kTexts);
            for (int i = 0; i < kTexts; ++i) {
                order[i] = i;
            }
            std::shuffle(order.begin(), order.end(), std::mt19937(static_cast<unsigned>(t)));
            start.countDown();
            start.wait();
            for (int i : order) {
                const StringID id(texts[i]);
                seen[t][i] = addressOf(id);
                if (i % 2 == 0) {
                    const StringID again(texts[i].c_str());
                    if (addressOf(again) != seen[t][i]) {
                        seen[t][i] = 0;
                    }
                }
            }
        });
    }
    for (auto &thread : threads) {
        thread.join();
    }

    std::vector<std::uintptr_t> distinct;
    for (int i = 0; i < kTexts; ++i) {
        ASSERT_NE(seen[0][i], 0u) << texts[i];
        for (int t = 1; t < kThreads; ++t) {
            ASSERT_EQ(seen[t][i], seen[0][i]) << texts[i];
        }
        EXPECT_EQ(StringID(texts[i]).getString(), texts[i]);
        distinct.push_back(seen[0][i]);
    }
    std::sort(distinct.begin(), distinct.end());
    EXPECT_EQ(std::unique(distinct.begin(), distinct.end()), distinct.end());
}

TEST(StringIDConcurrency, IdsAreReadableWhileOthersIntern) {
    constexpr int kWritten = 4000;
    std::vector<StringID> published(kWritten);
    std::atomic<int> count{0};
    std::atomic<bool> writerDone{false};
    vort_test::Latch start(3);

    std::thread writer([&] {
        start.countDown();
        start.wait();
        for (int i = 0; i < kWritten; ++i) {
            published[i] = StringID("published " + std::to_string(i));
            count.store(i + 1, std::memory_order_release);
        }
        writerDone.store(true, std::memory_order_release);
    });

    std::atomic<int> mismatches{0};
    auto reader = [&](bool alsoInterns) {
        start.countDown();
        start.wait();
        int checked = 0;
        while (!writerDone.load(std::memory_order_acquire) || checked < kWritten) {
            const int available = count.load(std::memory_order_acquire);
            for (int i = checked; i < available; ++i) {
                const std::string expected = "published " + std::to_string(i);
                StringID const &id = published[i];
                if (id.getString() != expected || std::string(id.c_str()) != expected ||
                    VORT::vHash(id) == 0) {
                    ++mismatches;
                }
                // Meeting the same text again on another thread gives the same id.
                if (alsoInterns && StringID(expected) != id) {
                    ++mismatches;
                }
            }
            checked = available;
            if (alsoInterns) {
                // New texts of its own while the writer grows the table.
                StringID own("reader text " + std::to_string(checked));
                if (own.getString() != "reader text " + std::to_string(checked)) {
                    ++mismatches;
                }
            }
        }
    };
    std::thread plainReader(reader, false);
    std::thread interningReader(reader, true);
    writer.join();
    plainReader.join();
    interningReader.join();
    EXPECT_EQ(mismatches.load(), 0);
}
