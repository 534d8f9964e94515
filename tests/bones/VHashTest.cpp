#include "support/Counted.h"
#include "support/Latch.h"
#include <hsl/hsl.h>
#include <vort/bones/VHash.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <random>
#include <string>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

using VORT::VHash;
using VORT::VHashData;
using vort_test::Counted;

namespace {

// A key whose hash is chosen by the test, and which counts its comparisons.
struct Probe {
    int id;
    unsigned int h;
    static inline int comparisons = 0;
    bool operator==(const Probe &other) const {
        ++comparisons;
        return id == other.id;
    }
};
unsigned int vHash(const Probe &p) {
    return p.h;
}

// Every node sits in the bucket of its hash, chains end at the block, and nodes of equal hash
// are adjacent. Returns the number of nodes seen.
int checkChains(const VHashData &d) {
    const VHashData::Node *e = reinterpret_cast<const VHashData::Node *>(&d);
    int nodes = 0;
    for (int b = 0; b < d.bucketCount; ++b) {
        std::vector<unsigned int> runs;
        for (const VHashData::Node *n = d.buckets[b]; n != e; n = n->next) {
            EXPECT_EQ(int(n->h % unsigned(d.bucketCount)), b);
            if (runs.empty() || runs.back() != n->h) {
                EXPECT_EQ(std::count(runs.begin(), runs.end(), n->h), 0)
                    << "hash " << n->h << " split in bucket " << b;
                runs.push_back(n->h);
            }
            ++nodes;
        }
    }
    EXPECT_EQ(d.sentinelNext, nullptr);
    return nodes;
}

bool isPrime(long long n) {
    if (n < 2) {
        return false;
    }
    for (long long k = 2; k * k <= n; ++k) {
        if (n % k == 0) {
            return false;
        }
    }
    return true;
}

template <typename K, typename V>
std::vector<K> keysInOrder(const VHash<K, V> &hash) {
    std::vector<K> keys;
    for (auto it = hash.cbegin(); it != hash.cend(); ++it) {
        keys.push_back(it.key());
    }
    return keys;
}

}  // namespace

TEST(VHashFunctions, IntegersPointersAndStrings) {
    EXPECT_EQ(VORT::vHash(7), 7u);
    EXPECT_EQ(VORT::vHash(-1), 0xFFFFFFFFu);
    EXPECT_EQ(VORT::vHash(static_cast<short>(-2)), 0xFFFEu);
    EXPECT_EQ(VORT::vHash('a'), 97u);
    EXPECT_EQ(VORT::vHash(0x100000000ULL), 2u);  // the high half folds in
    EXPECT_EQ(VORT::vHash(0x123456789ABCDEF0ULL),
              static_cast<unsigned int>((0x123456789ABCDEF0ULL >> 31) ^ 0x123456789ABCDEF0ULL));
    EXPECT_EQ(VORT::vHash(-1LL), static_cast<unsigned int>((~0ULL >> 31) ^ ~0ULL));

    const int *p = reinterpret_cast<const int *>(std::uintptr_t(0x00007F12345678A0ULL));
    const std::uint64_t bits = 0x00007F12345678A0ULL;
    EXPECT_EQ(VORT::vHash(p), static_cast<unsigned int>((bits >> 31) ^ bits));
    int *mutablePointer = const_cast<int *>(p);
    EXPECT_EQ(VORT::vHash(mutablePointer), VORT::vHash(p));

    EXPECT_EQ(VORT::vHash(std::string("hello")), hsl_hash_string(0, "hello"));
    EXPECT_EQ(VORT::vHash(std::string()), hsl_hash_string(0, ""));
    // The text ends at its first NUL.
    EXPECT_EQ(VORT::vHash(std::string("ab\0cd", 5)), VORT::vHash(std::string("ab")));
    EXPECT_NE(VORT::vHash(std::string("ab")), VORT::vHash(std::string("ba")));
}

TEST(VHashData, BucketCountsFollowTheDeltaTable) {
    const int deltas[32] = {0, 0,  1, 3,  1, 5,  3, 3, 1, 9,  7,  5, 3, 9, 25, 3,
                            1, 21, 3, 21, 7, 15, 9, 5, 3, 29, 15, 0, 0, 0, 0,  0};
    for (int b = 0; b <= 30; ++b) {
        EXPECT_EQ(VHashData::bucketCountOf(b), (1 << b) + deltas[b]) << "class " << b;
    }
    EXPECT_EQ(VHashData::bucketCountOf(4), 17);
    EXPECT_EQ(VHashData::bucketCountOf(5), 37);
    EXPECT_EQ(VHashData::bucketCountOf(6), 67);
    EXPECT_EQ(VHashData::bucketCountOf(26), 67108879);
    // The classes a table of up to a few thousand keys uses are all prime.
    for (int b = 1; b <= 12; ++b) {
        EXPECT_TRUE(isPrime(VHashData::bucketCountOf(b))) << "class " << b;
    }
}

TEST(VHashData, SharedNullIsAnEmptySharableTable) {
    const VHashData &null = VHashData::shared_null;
    EXPECT_EQ(null.sentinelNext, nullptr);
    EXPECT_EQ(null.buckets, nullptr);
    EXPECT_GE(int(null.ref), 1);
    EXPECT_EQ(null.size, 0);
    EXPECT_EQ(null.nodeSize, 0);
    EXPECT_EQ(null.minimumBits, 4);
    EXPECT_EQ(null.bits, 0);
    EXPECT_EQ(null.bucketCount, 0);
    EXPECT_EQ(null.sharable, 1u);
}

TEST(VHash, GrowsAClassWhenEveryBucketHasANode) {
    VHash<int, int> hash;
    EXPECT_EQ(hash.capacity(), 0);
    hash.insert(0, 0);
    EXPECT_EQ(hash.capacity(), 17);
    EXPECT_EQ(hash.data().bits, 4);
    EXPECT_EQ(hash.data().nodeSize, int(sizeof(VORT::VHashNode<int, int>)));
    for (int i = 1; i < 17; ++i) {
        hash.insert(i, i);
    }
    EXPECT_EQ(hash.size(), 17);
    EXPECT_EQ(hash.capacity(), 17);
    hash.insert(5, 50);  // replacing a value never grows
    EXPECT_EQ(hash.capacity(), 17);
    hash.insert(17, 17);  // the eighteenth key, at size 17
    EXPECT_EQ(hash.capacity(), 37);
    EXPECT_EQ(hash.data().bits, 5);
    hash[100] = 1;
    for (int i = 18; i < 37; ++i) {
        hash[i] = i;
    }
    EXPECT_EQ(hash.capacity(), 67);
    EXPECT_EQ(checkChains(hash.data()), hash.size());
    EXPECT_EQ(hash.value(5), 50);
    EXPECT_EQ(hash.data().minimumBits, 4);  // growth leaves the floor alone
}

TEST(VHash, ShrinksTwoClassesAtATimeButNotUnderTheFloor) {
    auto shrinkSteps = [](VHash<int, int> &hash) {
        std::vector<std::pair<int, int>> steps;  // (size after removal, new class)
        int bits = hash.data().bits;
        for (int key = 0; key < 300; ++key) {
            hash.remove(key);
            if (hash.data().bits != bits) {
                bits = hash.data().bits;
                steps.emplace_back(hash.size(), bits);
                EXPECT_EQ(hash.capacity(), VHashData::bucketCountOf(bits));
                EXPECT_EQ(checkChains(hash.data()), hash.size());
            }
        }
        return steps;
    };
    VHash<int, int> hash;
    for (int i = 0; i < 300; ++i) {
        hash.insert(i, i);
    }
    EXPECT_EQ(hash.data().bits, 9);
    EXPECT_EQ(shrinkSteps(hash), (std::vector<std::pair<int, int>>{{65, 7}, {16, 5}, {4, 4}}));
    EXPECT_TRUE(hash.isEmpty());
    EXPECT_EQ(hash.capacity(), 17);

    // A reservation sets the floor.
    VHash<int, int> reserved;
    reserved.reserve(200);
    EXPECT_EQ(reserved.data().minimumBits, 8);
    EXPECT_EQ(reserved.capacity(), 257);
    for (int i = 0; i < 300; ++i) {
        reserved.insert(i, i);
    }
    EXPECT_EQ(reserved.data().bits, 9);
    EXPECT_EQ(shrinkSteps(reserved), (std::vector<std::pair<int, int>>{{65, 8}}));
    EXPECT_EQ(reserved.capacity(), 257);

    // Taking shrinks as removing does; erasing never does.
    VHash<int, int> taken;
    for (int i = 0; i < 40; ++i) {
        taken.insert(i, i);
    }
    for (auto it = taken.begin(); it != taken.end();) {
        it = taken.erase(it);
    }
    EXPECT_EQ(taken.capacity(), 67);
    for (int i = 0; i < 40; ++i) {
        taken.insert(i, i);
    }
    for (int i = 0; i < 40; ++i) {
        EXPECT_EQ(taken.take(i), i);
    }
    EXPECT_EQ(taken.capacity(), 17);
}

TEST(VHash, ANegativeRehashHintFixesTheFloor) {
    VHash<int, int> hash;
    hash.reserve(100);  // 2^6 + 3 = 67 < 100: class 7
    EXPECT_EQ(hash.data().minimumBits, 7);
    EXPECT_EQ(hash.capacity(), 131);
    hash.reserve(131);  // exactly class 7
    EXPECT_EQ(hash.data().minimumBits, 7);
    EXPECT_EQ(hash.capacity(), 131);
    hash.reserve(1);
    EXPECT_EQ(hash.data().minimumBits, 4);  // never under class 4
    EXPECT_EQ(hash.capacity(), 17);

    for (int i = 0; i < 100; ++i) {
        hash.insert(i, i);
    }
    EXPECT_EQ(hash.data().bits, 7);
    EXPECT_EQ(hash.data().minimumBits, 4);
    // A small reservation on a full table keeps enough buckets for half its keys.
    hash.reserve(5);
    EXPECT_EQ(hash.data().minimumBits, 4);
    EXPECT_EQ(hash.capacity(), 67);
    EXPECT_EQ(checkChains(hash.data()), 100);
    for (int i = 0; i < 100; ++i) {
        ASSERT_EQ(hash.value(i, -1), i);
    }
}

TEST(VHash, ChainsKeepEqualHashesTogetherAndCompareHashesFirst) {
    VHash<Probe, int> hash;
    // 1, 18 and 35 share bucket 1 of 17.
    hash.insert({1, 1}, 1);
    hash.insert({2, 18}, 2);
    hash.insert({3, 1}, 3);  // behind the other hash-1 node, not at the chain's end
    hash.insert({4, 35}, 4);
    hash.insert({5, 18}, 5);
    ASSERT_EQ(hash.capacity(), 17);
    std::vector<int> ids;
    for (auto it = hash.cbegin(); it != hash.cend(); ++it) {
        ids.push_back(it.key().id);
    }
    EXPECT_EQ(ids, (std::vector<int>{1, 3, 2, 5, 4}));
    EXPECT_EQ(checkChains(hash.data()), 5);

    // A lookup compares keys only where the stored hash matches.
    Probe::comparisons = 0;
    EXPECT_EQ(hash.value({4, 35}), 4);
    EXPECT_EQ(Probe::comparisons, 1);
    Probe::comparisons = 0;
    EXPECT_FALSE(hash.contains({6, 52}));  // bucket 1, a hash nobody has
    EXPECT_EQ(Probe::comparisons, 0);

    // A rehash moves each run whole and in order.
    hash.reserve(40);
    EXPECT_EQ(hash.capacity(), 67);
    ids.clear();
    for (auto it = hash.cbegin(); it != hash.cend(); ++it) {
        ids.push_back(it.key().id);
    }
    EXPECT_EQ(ids, (std::vector<int>{1, 3, 2, 5, 4}));
    EXPECT_EQ(checkChains(hash.data()), 5);

    // Hashes at the ends of the 32-bit range land in their buckets through every size.
    VHash<Probe, int> extremes;
    const unsigned int hashes[] = {0u, 1u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFEu, 0xFFFFFFFFu};
    int id = 0;
    for (int round = 0; round < 40; ++round) {
        for (unsigned int h : hashes) {
            extremes.insert({id++, h - unsigned(round)}, 0);
        }
        ASSERT_EQ(checkChains(extremes.data()), extremes.size());
    }
    extremes.reserve(5000);
    EXPECT_EQ(checkChains(extremes.data()), 240);
}

TEST(VHash, IteratesInBucketOrderBothWays) {
    VHash<int, std::string> hash;
    for (int key : {20, 3, 16, 5, 37}) {
        hash.insert(key, std::to_string(key));
    }
    // Of 17 buckets, 20, 3 and 37 share bucket 3, in the order they came.
    EXPECT_EQ(keysInOrder(hash), (std::vector<int>{20, 3, 37, 5, 16}));

    std::vector<int> backwards;
    for (auto it = hash.cend(); it != hash.cbegin();) {
        --it;
        backwards.push_back(it.key());
    }
    EXPECT_EQ(backwards, (std::vector<int>{16, 5, 37, 3, 20}));

    std::string joined;
    for (const std::string &value : hash) {
        joined += value + ",";
    }
    EXPECT_EQ(joined, "20,3,37,5,16,");
    EXPECT_EQ(std::distance(hash.cbegin(), hash.cend()), 5);
    auto five = std::find(hash.cbegin(), hash.cend(), "5");
    EXPECT_EQ(five.key(), 5);
    for (std::string &value : hash) {
        value += "!";
    }
    EXPECT_EQ(hash.value(37), "37!");

    VHash<int, std::string> empty;
    EXPECT_TRUE(empty.cbegin() == empty.cend());
    EXPECT_EQ(empty.keys().size(), 0);
    EXPECT_EQ(hash.keys().size(), 5);
    EXPECT_EQ(hash.values().at(0), "20!");
}

TEST(VHash, LookupsAndChanges) {
    VHash<std::string, int> hash{{"one", 1}, {"two", 2}, {"three", 3}};
    EXPECT_EQ(hash.size(), 3);
    EXPECT_TRUE(hash.contains("two"));
    EXPECT_EQ(hash.count("two"), 1);
    EXPECT_EQ(hash.count("four"), 0);
    EXPECT_EQ(hash.value("three"), 3);
    EXPECT_EQ(hash.value("four"), 0);
    EXPECT_EQ(hash.value("four", -4), -4);
    EXPECT_EQ(hash.key(2), "two");
    EXPECT_EQ(hash.key(9, "none"), "none");
    const VHash<std::string, int> &constant = hash;
    EXPECT_EQ(constant["one"], 1);
    EXPECT_FALSE(constant.contains("zero"));
    EXPECT_EQ(hash.size(), 3);  // a const [] never inserts

    hash["four"] += 4;  // inserted default-constructed, then changed
    EXPECT_EQ(hash.value("four"), 4);
    auto it = hash.insert("one", 10);
    EXPECT_EQ(it.key(), "one");
    EXPECT_EQ(*it, 10);
    EXPECT_EQ(hash.size(), 4);

    EXPECT_EQ(hash.find("two").value(), 2);
    EXPECT_TRUE(hash.find("nine") == hash.end());
    EXPECT_TRUE(hash.constFind("nine") == hash.cend());
    *hash.find("two") = 20;
    EXPECT_EQ(hash.value("two"), 20);

    EXPECT_EQ(hash.remove("nine"), 0);
    EXPECT_EQ(hash.remove("two"), 1);
    EXPECT_EQ(hash.take("three"), 3);
    EXPECT_EQ(hash.take("three"), 0);
    EXPECT_EQ(hash.size(), 2);

    VHash<std::string, int> same;
    same.insert("four", 4);
    same.insert("one", 10);
    EXPECT_EQ(hash, same);
    same["one"] = 1;
    EXPECT_NE(hash, same);
    same.remove("one");
    EXPECT_NE(hash, same);

    VHash<std::string, int> merged;
    merged.insert(hash);
    merged.insert("x", 0);
    EXPECT_EQ(merged.size(), 3);
    merged.clear();
    EXPECT_TRUE(merged.isEmpty());
    EXPECT_EQ(&merged.data(), &VHashData::shared_null);
}

TEST(VHash, ErasingWhileIteratingKeepsTheRest) {
    VHash<int, int> hash;
    for (int i = 0; i < 100; ++i) {
        hash.insert(i, i * i);
    }
    for (auto it = hash.begin(); it != hash.end();) {
        it = it.key() % 3 == 0 ? hash.erase(it) : std::next(it);
    }
    EXPECT_EQ(hash.size(), 66);
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(hash.contains(i), i % 3 != 0) << i;
    }
    EXPECT_EQ(checkChains(hash.data()), 66);
    EXPECT_TRUE(hash.erase(hash.cend()) == hash.end());

    // An iterator into a shared block erases from this container's own copy only.
    VHash<int, int> copy(hash);
    auto where = copy.constFind(5);
    auto next = copy.erase(where);
    EXPECT_FALSE(copy.isSharedWith(hash));
    EXPECT_FALSE(copy.contains(5));
    EXPECT_TRUE(hash.contains(5));
    EXPECT_EQ(copy.size(), 65);
    ASSERT_TRUE(next != copy.end());
    EXPECT_TRUE(copy.contains(next.key()));
}

TEST(VHash, EmptyHashesShareTheNullBlockWithoutLeavingACount) {
    const int before = VHashData::shared_null.ref;
    {
        VHash<int, int> a;
        VHash<std::string, std::string> b;
        VHash<int, int> c(a);
        EXPECT_EQ(int(VHashData::shared_null.ref), before + 3);
        EXPECT_EQ(a.remove(3), 0);  // no detach for nothing
        EXPECT_EQ(a.take(3), 0);
        EXPECT_FALSE(a.contains(3));
        EXPECT_EQ(int(VHashData::shared_null.ref), before + 3);
        a.insert(1, 1);
        EXPECT_EQ(int(VHashData::shared_null.ref), before + 2);
    }
    EXPECT_EQ(int(VHashData::shared_null.ref), before);
}

TEST(VHash, CopiesShareWritesDetachAndUnsharableTablesCopyAtOnce) {
    VHash<std::string, std::string> a{{"k1", "v1"}, {"k2", "v2"}};
    const auto original = keysInOrder(a);
    const std::vector<std::function<void(VHash<std::string, std::string> &)>> writes = {
        [](auto &h) { h.insert("k3", "v3"); },   [](auto &h) { h.insert("k1", "changed"); },
        [](auto &h) { h["k1"] = "changed"; },    [](auto &h) { h.remove("k1"); },
        [](auto &h) { h.take("k2"); },           [](auto &h) { *h.find("k1") = "changed"; },
        [](auto &h) { *h.begin() = "changed"; }, [](auto &h) { h.erase(h.constFind("k2")); },
        [](auto &h) { h.reserve(100); },
    };
    for (size_t i = 0; i < writes.size(); ++i) {
        VHash<std::string, std::string> copy(a);
        EXPECT_TRUE(copy.isSharedWith(a));
        EXPECT_EQ(copy.value("k1"), "v1");  // reads share
        EXPECT_TRUE(copy.isSharedWith(a));
        writes[i](copy);
        EXPECT_FALSE(copy.isSharedWith(a)) << "write " << i;
        EXPECT_TRUE(copy.isDetached());
        EXPECT_EQ(a.value("k1"), "v1") << "write " << i;
        EXPECT_EQ(a.value("k2"), "v2") << "write " << i;
        EXPECT_EQ(keysInOrder(a), original);
    }
    EXPECT_TRUE(a.isDetached());

    a.setSharable(false);
    std::string &v1 = a["k1"];
    VHash<std::string, std::string> b(a);
    EXPECT_FALSE(b.isSharedWith(a));
    v1 = "V1";
    EXPECT_EQ(b.value("k1"), "v1");
    EXPECT_EQ(keysInOrder(b), original);  // a copy keeps the chains' order
    VHash<std::string, std::string> c;
    c = a;
    EXPECT_FALSE(c.isSharedWith(a));
    a.setSharable(true);
    VHash<std::string, std::string> d(a);
    EXPECT_TRUE(d.isSharedWith(a));

    VHash<int, int> empty;
    empty.setSharable(false);
    EXPECT_NE(&empty.data(), &VHashData::shared_null);
    VHash<int, int> emptyCopy(empty);
    EXPECT_FALSE(emptyCopy.isSharedWith(empty));
    emptyCopy.insert(1, 1);
    EXPECT_TRUE(empty.isEmpty());
}

TEST(VHash, EveryKeyAndValueItMakesIsDestroyedOnce) {
    Counted::Scope scope;
    {
        VHash<Counted, Counted> hash;
        for (int i = 0; i < 200; ++i) {
            hash.insert(Counted(i), Counted(-i));
        }
        hash.insert(Counted(3), Counted(33));  // replaced value
        hash[Counted(500)] = Counted(5);
        EXPECT_EQ(hash.remove(Counted(7)), 1);
        EXPECT_EQ(hash.take(Counted(8)).value(), -8);
        {
            VHash<Counted, Counted> copy(hash);
            copy.remove(Counted(9));  // detaches: every node copied
            EXPECT_EQ(copy.size(), hash.size() - 1);
        }
        for (auto it = hash.begin(); it != hash.end();) {
            it = it.key().value() % 2 ? hash.erase(it) : std::next(it);
        }
        for (int i = 0; i < 200; i += 4) {
            hash.remove(Counted(i));
        }
        VHash<Counted, Counted> kept = hash;
        kept.setSharable(false);
        VHash<Counted, Counted> deep(kept);
        hash.clear();
        EXPECT_EQ(deep.size(), kept.size());
    }
    EXPECT_EQ(scope.leaked(), 0);
    EXPECT_EQ(scope.badDestructions(), 0);
}

TEST(VHash, MatchesAnUnorderedMapUnderRandomEdits) {
    std::mt19937 random(99);
    VHash<std::string, int> hash;
    std::unordered_map<std::string, int> model;
    for (int step = 0; step < 20000; ++step) {
        const std::string key = "k" + std::to_string(random() % 3000);
        switch (random() % 5) {
            case 0:
            case 1:
                hash.insert(key, step);
                model[key] = step;
                break;
            case 2:
                ASSERT_EQ(hash.remove(key), int(model.erase(key)));
                break;
            case 3: {
                auto found = model.find(key);
                const int expected = found == model.end() ? 0 : found->second;
                ASSERT_EQ(hash.take(key), expected);
                model.erase(key);
                break;
            }
            case 4:
                ASSERT_EQ(hash.value(key, -1), model.count(key) ? model[key] : -1);
                break;
        }
        ASSERT_EQ(hash.size(), int(model.size()));
    }
    EXPECT_EQ(checkChains(hash.data()), int(model.size()));
    int visited = 0;
    for (auto it = hash.cbegin(); it != hash.cend(); ++it, ++visited) {
        ASSERT_EQ(model.at(it.key()), it.value());
    }
    EXPECT_EQ(visited, int(model.size()));
}

TEST(VHash, HoldsAStringRepository) {
    // Interned strings: the value points at a string that outlives its entry's moves.
    VHash<std::string, const std::string *> repository;
    std::vector<std::unique_ptr<std::string>> storage;
    auto intern = [&](const std::string &text) {
        const std::string *&slot = repository[text];
        if (!slot) {
            storage.push_back(std::make_unique<std::string>(text));
            slot = storage.back().get();
        }
        return slot;
    };
    std::vector<const std::string *> first;
    for (int i = 0; i < 1000; ++i) {
        first.push_back(intern("name" + std::to_string(i)));
    }
    for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(intern("name" + std::to_string(i)), first[size_t(i)]);
        ASSERT_EQ(*first[size_t(i)], "name" + std::to_string(i));
    }
    EXPECT_EQ(repository.size(), 1000);
    EXPECT_EQ(repository.value("missing"), nullptr);
    EXPECT_EQ(checkChains(repository.data()), 1000);
}

TEST(VHashConcurrency, SharedTablesSurviveCopiesWritesAndDropsOnManyThreads) {
    Counted::Scope scope;
    {
        VHash<int, Counted> shared;
        VHash<std::string, int> names;
        for (int i = 0; i < 300; ++i) {
            shared.insert(i, Counted(i));
            names.insert("n" + std::to_string(i), i);
        }
        const int threads = 4;
        vort_test::Latch start(threads);
        std::vector<std::thread> workers;
        std::vector<int> failures(threads, 0);
        for (int t = 0; t < threads; ++t) {
            workers.emplace_back([&, t] {
                start.countDown();
                start.wait();
                for (int round = 0; round < 200; ++round) {
                    VHash<int, Counted> copy(shared);
                    VHash<std::string, int> namesCopy = names;
                    const VHash<int, Counted> &reader = copy;
                    failures[t] += reader.value(round).value() != round;
                    failures[t] += namesCopy.value("n" + std::to_string(round)) != round;
                    long sum = 0;
                    for (const Counted &c : reader) {
                        sum += c.value();
                    }
                    failures[t] += sum != 299 * 300 / 2;
                    if (round % 2 == 0) {
                        copy.insert(1000 + t, Counted(t));  // detaches while others read
                        copy.remove(round);
                        namesCopy["extra"] = t;
                        failures[t] += copy.size() != 300 || copy.contains(round);
                    }
                    VHash<int, Counted> again = copy;
                }
            });
        }
        for (std::thread &w : workers) {
            w.join();
        }
        for (int t = 0; t < threads; ++t) {
            EXPECT_EQ(failures[t], 0) << "thread " << t;
        }
        EXPECT_TRUE(shared.isDetached());
        EXPECT_EQ(shared.size(), 300);
    }
    EXPECT_EQ(scope.leaked(), 0);
    EXPECT_EQ(scope.badDestructions(), 0);
}
