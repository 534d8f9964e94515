#include <hsl/hsl.h>
#include <vort/bones/VHash.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <random>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

using VORT::VHash;
using VORT::VHashData;

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
// are adjacent. Returns the number of nodes.
int checkChains(const VHashData &d) {
    const auto *e = reinterpret_cast<const VHashData::Node *>(&d);
    int nodes = 0;
    for (int b = 0; b < d.bucketCount; ++b) {
        std::vector<unsigned int> runs;
        for (const VHashData::Node *n = d.buckets[b]; n != e; n = n->next, ++nodes) {
            EXPECT_EQ(int(n->h % unsigned(d.bucketCount)), b);
            if (runs.empty() || runs.back() != n->h) {
                EXPECT_EQ(std::count(runs.begin(), runs.end(), n->h), 0) << "split run " << n->h;
                runs.push_back(n->h);
            }
        }
    }
    EXPECT_EQ(d.sentinelNext, nullptr);
    return nodes;
}

template <typename K, typename V>
std::vector<int> idsInOrder(const VHash<K, V> &hash) {
    std::vector<int> ids;
    for (auto it = hash.cbegin(); it != hash.cend(); ++it) {
        ids.push_back(it.key().id);
    }
    return ids;
}

VHash<int, int> upTo(int n) {
    VHash<int, int> hash;
    for (int i = 0; i < n; ++i) {
        hash.insert(i, i);
    }
    return hash;
}

// The table behind a container, for the calls that the container makes only under its own tests.
VHashData &tableOf(const VHash<int, int> &hash) {
    return const_cast<VHashData &>(hash.data());
}

}  // namespace

TEST(VHashFunctions, IntegersFoldTheirHighHalfAndStringsEndAtTheirFirstNul) {
    EXPECT_EQ(VORT::vHash(-1) + VORT::vHash(0x100000000ULL), 1u);  // 0xFFFFFFFF + 2
    EXPECT_EQ(VORT::vHash(std::string("hello")), hsl_hash_string(0, "hello"));
    EXPECT_EQ(VORT::vHash(std::string("ab\0cd", 5)), VORT::vHash(std::string("ab")));
}

TEST(VHashData, BucketCountsFollowTheDeltaTable) {
    const int deltas[31] = {0, 0,  1, 3,  1, 5,  3, 3, 1, 9,  7,  5, 3, 9, 25, 3,
                            1, 21, 3, 21, 7, 15, 9, 5, 3, 29, 15, 0, 0, 0, 0};
    for (int b = 0; b <= 30; ++b) {
        EXPECT_EQ(VHashData::bucketCountOf(b), (1 << b) + deltas[b]) << "class " << b;
    }
    const VHashData &null = VHashData::shared_null;
    EXPECT_TRUE(null.buckets == nullptr && null.minimumBits == 4 && null.sharable == 1);
    EXPECT_EQ(null.nodeSize + null.bits + null.bucketCount + null.size, 0);
}

TEST(VHash, GrowsAClassWhenEveryBucketHasANodeAndShrinksTwoAtATime) {
    VHash<int, int> hash = upTo(1);
    EXPECT_EQ(hash.capacity(), 17);
    EXPECT_EQ(hash.data().nodeSize, int(sizeof(VORT::VHashNode<int, int>)));
    hash = upTo(17);
    hash.insert(5, 50);  // replacing a value never grows
    EXPECT_EQ(hash.capacity(), 17);
    hash.insert(17, 17);  // the eighteenth key, at size 17
    EXPECT_EQ(hash.capacity(), 37);

    // The steps themselves, as the container's own tests would not reach them.
    VHashData &table = tableOf(hash = upTo(16));
    table.mightGrow();
    EXPECT_FALSE(table.willGrow());
    EXPECT_EQ(table.bits, 4);
    hash.insert(16, 16);
    table.mightGrow();
    EXPECT_EQ(table.bucketCount, 37);
    EXPECT_TRUE(tableOf(hash = upTo(17)).willGrow());
    EXPECT_EQ(hash.capacity(), 37);
    EXPECT_EQ(checkChains(hash.data()), 17);

    VHashData &sparse = tableOf(hash = upTo(17));
    sparse.rehash(7);  // 131 buckets: 16 keys is an eighth, 17 is more
    sparse.hasShrunk();
    EXPECT_EQ(sparse.bits, 7);
    hash.remove(0);
    EXPECT_EQ(sparse.bits, 5);
    EXPECT_EQ(checkChains(hash.data()), 16);

    // Removal shrinks as it goes; erasing never does.
    std::vector<std::pair<int, int>> steps;  // (size after removal, new class)
    hash = upTo(300);
    for (int key = 0; key < 300; ++key) {
        const int bits = hash.data().bits;
        key % 2 ? hash.remove(key) : hash.take(key);
        if (hash.data().bits != bits) {
            steps.emplace_back(hash.size(), hash.data().bits);
        }
    }
    EXPECT_EQ(steps, (std::vector<std::pair<int, int>>{{65, 7}, {16, 5}, {4, 4}}));
    hash = upTo(40);
    for (auto it = hash.begin(); it != hash.end();) {
        it = hash.erase(it);
    }
    EXPECT_EQ(hash.capacity(), 67);
    EXPECT_TRUE(hash.cbegin() == hash.cend()) << "an empty table with buckets has a first node";
}

TEST(VHash, ANegativeRehashHintFixesTheFloor) {
    struct Row {
        int keys, reserved, floor, buckets;
    };
    const Row rows[] = {
        {0, 100, 7, 131},                   // 2^6 + 3 = 67 < 100: class 7
        {0, 131, 7, 131},                   // exactly class 7
        {0, 1, 4, 17},                      // never under class 4
        {0, 200, 8, 257}, {100, 5, 4, 67},  // a full table keeps enough buckets for half its keys
        {34, 1, 4, 17},                     // 17 is exactly half of 34
    };
    for (const Row &row : rows) {
        VHash<int, int> hash = upTo(row.keys);
        hash.reserve(row.reserved);
        EXPECT_EQ(hash.data().minimumBits, row.floor) << row.keys << ", " << row.reserved;
        EXPECT_EQ(hash.capacity(), row.buckets) << row.keys << ", " << row.reserved;
        EXPECT_EQ(checkChains(hash.data()), row.keys);
        // Growth leaves the floor alone, and shrinking stops at it.
        for (int i = row.keys; i < 300; ++i) {
            hash.insert(i, i);
        }
        for (int i = 0; i < 300; ++i) {
            hash.remove(i);
        }
        EXPECT_EQ(hash.data().bits, row.floor);
    }
}

TEST(VHash, ChainsKeepEqualHashesTogetherInOrderThroughEveryRehash) {
    VHash<Probe, int> hash;
    // 1, 18 and 35 share bucket 1 of 17; a new node goes behind the last of its own hash.
    for (const Probe &p : {Probe{1, 1}, Probe{2, 18}, Probe{3, 1}, Probe{4, 35}, Probe{5, 18}}) {
        hash.insert(p, p.id);
    }
    ASSERT_EQ(hash.capacity(), 17);
    EXPECT_EQ(idsInOrder(hash), (std::vector<int>{1, 3, 2, 5, 4}));
    std::vector<int> backwards;
    for (auto it = hash.cend(); it != hash.cbegin();) {
        backwards.push_back((--it).key().id);
    }
    EXPECT_EQ(backwards, (std::vector<int>{4, 5, 2, 3, 1}));

    // A lookup compares keys only where the stored hash matches.
    Probe::comparisons = 0;
    EXPECT_EQ(hash.value({4, 35}), 4);
    EXPECT_FALSE(hash.contains({6, 52}));  // bucket 1, a hash nobody has
    EXPECT_EQ(Probe::comparisons, 1);

    hash.reserve(40);  // a rehash moves each run whole and in order
    EXPECT_EQ(idsInOrder(hash), (std::vector<int>{1, 3, 2, 5, 4}));

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

TEST(VHash, MatchesAnUnorderedMapUnderRandomEdits) {
    std::mt19937 random(99);
    VHash<std::string, int> hash;
    std::unordered_map<std::string, int> model;
    for (int step = 0; step < 20000; ++step) {
        const std::string key = "k" + std::to_string(random() % 3000);
        const auto found = model.find(key);
        const int expected = found == model.end() ? -1 : found->second;
        switch (random() % 5) {
            case 0:
            case 1:
                hash.insert(key, step);
                model[key] = step;
                break;
            case 2:
                ASSERT_EQ(hash.remove(key), int(model.erase(key)));
                break;
            case 3:
                ASSERT_EQ(hash.take(key), std::max(expected, 0));
                model.erase(key);
                break;
            case 4:
                ASSERT_EQ(hash.value(key, -1), expected);
                break;
        }
        if (step % 5000 == 4999) {  // erasing while iterating keeps the rest
            for (auto it = hash.begin(); it != hash.end();) {
                it = it.value() % 3 ? std::next(it) : hash.erase(it);
            }
            for (auto it = model.begin(); it != model.end();) {
                it = it->second % 3 ? std::next(it) : model.erase(it);
            }
        }
        ASSERT_EQ(hash.size(), int(model.size()));
    }
    EXPECT_EQ(checkChains(hash.data()), int(model.size()));
    for (auto it = hash.cbegin(); it != hash.cend(); ++it) {
        ASSERT_EQ(model.at(it.key()), it.value());
    }
}
