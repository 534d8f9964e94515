#include "support/Counted.h"
#include "support/Latch.h"
#include <vort/bones/VMap.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using VORT::VMap;
using VORT::VMapData;
using vort_test::Counted;
using Node = VMapData::Node;

namespace {

Node *endOf(const VMapData *d) {
    return reinterpret_cast<Node *>(const_cast<VMapData *>(d));
}

// Appends a bare node (no payload) behind the last node of every level.
Node *appendRaw(VMapData *d) {
    Node *const e = endOf(d);
    Node *update[VMapData::LastLevel + 1];
    for (int level = 0; level <= d->topLevel; ++level) {
        Node *cur = e;
        while (cur->next[level] != e) {
            cur = cur->next[level];
        }
        update[level] = cur;
    }
    return d->node_create(update, 0);
}

// The highest level on which `node` is linked.
int levelOf(const VMapData *d, const Node *node) {
    Node *const e = endOf(d);
    int found = -1;
    for (int level = 0; level <= d->topLevel; ++level) {
        for (Node *cur = e->next[level]; cur != e; cur = cur->next[level]) {
            if (cur == node) {
                found = level;
            }
        }
    }
    return found;
}

// Every level is sorted and a subsequence of the one below, `previous` mirrors level 0 and the
// size matches. Returns the keys in order.
template <typename K, typename V>
std::vector<K> checkSkipList(const VMap<K, V> &map) {
    const VMapData &d = map.data();
    Node *const e = endOf(&d);
    EXPECT_GE(d.topLevel, 0);
    EXPECT_LE(d.topLevel, int(VMapData::LastLevel));
    std::vector<K> keys;
    Node *previous = e;
    for (auto it = map.cbegin(); it != map.cend(); ++it) {
        EXPECT_EQ(it.i->previous, previous);
        previous = it.i;
        if (!keys.empty()) {
            EXPECT_TRUE(keys.back() < it.key());
        }
        keys.push_back(it.key());
    }
    EXPECT_EQ(d.previous, previous);
    EXPECT_EQ(int(keys.size()), d.size);
    for (int level = 1; level <= d.topLevel; ++level) {
        Node *below = e->next[level - 1];
        for (Node *cur = e->next[level]; cur != e; cur = cur->next[level]) {
            while (below != e && below != cur) {
                below = below->next[level - 1];
            }
            EXPECT_EQ(below, cur) << "level " << level << " is not within the level below";
        }
    }
    return keys;
}

}  // namespace

TEST(VMapData, SharedNullAndNewBlocksAreEmptyLists) {
    const VMapData &null = VMapData::shared_null;
    EXPECT_EQ(null.previous, endOf(&null));
    EXPECT_EQ(null.next[0], endOf(&null));
    for (int i = 1; i <= VMapData::LastLevel; ++i) {
        EXPECT_EQ(null.next[i], nullptr);
    }
    EXPECT_GE(int(null.ref), 1);
    EXPECT_EQ(null.topLevel, 0);
    EXPECT_EQ(null.size, 0);
    EXPECT_EQ(null.randomBits, 0);
    EXPECT_EQ(null.insertInOrder, 0u);
    EXPECT_EQ(null.sharable, 1u);

    VMapData *d = VMapData::createData();
    EXPECT_EQ(d->previous, endOf(d));
    EXPECT_EQ(d->next[0], endOf(d));
    EXPECT_EQ(d->next[1], nullptr);
    EXPECT_EQ(int(d->ref), 1);
    EXPECT_EQ(d->topLevel, 0);
    EXPECT_EQ(d->size, 0);
    EXPECT_EQ(d->randomBits, 0);
    EXPECT_EQ(d->insertInOrder, 0u);
    EXPECT_EQ(d->sharable, 1u);
    d->continueFreeData(0);
}

TEST(VMapData, NodeLevelsComeFromTheCounterAndRiseOneAtATime) {
    struct Row {
        int randomBits, topLevel;
        bool inOrder;
        int level, topAfter;
        unsigned int bitsAfter;  // kept when the level is not 3 or a copy is in order
    };
    const Row rows[] = {
        {0, 0, false, 0, 0, 1},
        {6, 0, false, 0, 0, 7},        // 110: the lowest three bits aren't all set
        {7, 0, false, 1, 1, 8},        // 111: one level up
        {0x3F, 0, false, 1, 1, 0x40},  // asks for 2, gets at most one above the top
        {0x3F, 1, false, 2, 2, 0x40},
        {0x3F, 5, false, 2, 5, 0x40},
        {0x1FF, 4, true, 3, 4, 0x200},  // level 3 in an ordered copy keeps counting
        {-1, 11, false, 11, 11, 0},     // every bit set: the top level, and the count wraps
        {0x7FFFFFFF, 11, false, 10, 11, 0x80000000u},
    };
    for (const Row &row : rows) {
        VMapData *d = VMapData::createData();
        Node *const e = endOf(d);
        for (int level = 1; level <= row.topLevel; ++level) {
            e->next[level] = e;
        }
        d->topLevel = row.topLevel;
        d->randomBits = row.randomBits;
        d->insertInOrder = row.inOrder;
        Node *node = appendRaw(d);
        EXPECT_EQ(levelOf(d, node), row.level) << "bits " << row.randomBits;
        EXPECT_EQ(d->topLevel, row.topAfter) << "bits " << row.randomBits;
        EXPECT_EQ(static_cast<unsigned int>(d->randomBits), row.bitsAfter)
            << "bits " << row.randomBits;
        EXPECT_EQ(d->size, 1);
        d->continueFreeData(0);
    }

    // Outside an ordered copy, a node of level 3 reseeds the counter from rand().
    VMapData *d = VMapData::createData();
    Node *const e = endOf(d);
    for (int level = 1; level <= 3; ++level) {
        e->next[level] = e;
    }
    d->topLevel = 3;
    d->randomBits = 0x1FF;
    std::srand(42);
    const int expected = std::rand();
    std::srand(42);
    appendRaw(d);
    EXPECT_EQ(d->randomBits, expected);
    d->continueFreeData(0);

    // Thousands of nodes: the top never jumps and stays within the 12 levels.
    VMapData *many = VMapData::createData();
    for (int i = 0; i < 5000; ++i) {
        const int top = many->topLevel;
        Node *node = appendRaw(many);
        EXPECT_LE(levelOf(many, node), top + 1);
        ASSERT_LE(many->topLevel, top + 1);
    }
    EXPECT_GE(many->topLevel, 2);
    EXPECT_EQ(many->size, 5000);
    many->continueFreeData(0);
}

TEST(VMapData, NodeDeleteUnlinksOnEveryLevelAndKeepsTheTop) {
    VMapData *d = VMapData::createData();
    Node *const e = endOf(d);
    d->randomBits = 0x3F;  // the first node climbs to level 1
    Node *a = appendRaw(d);
    Node *b = appendRaw(d);
    Node *c = appendRaw(d);
    ASSERT_EQ(levelOf(d, a), 1);
    ASSERT_EQ(d->topLevel, 1);

    Node *update[VMapData::LastLevel + 1] = {e, e};
    d->node_delete(update, 0, a);  // a was first on both levels
    EXPECT_EQ(e->next[0], b);
    EXPECT_EQ(e->next[1], e);
    EXPECT_EQ(b->previous, e);
    EXPECT_EQ(d->size, 2);
    EXPECT_EQ(d->topLevel, 1);  // never lowered

    update[0] = b;
    update[1] = e;
    d->node_delete(update, 0, c);
    EXPECT_EQ(b->next[0], e);
    EXPECT_EQ(d->previous, b);
    EXPECT_EQ(d->size, 1);
    d->continueFreeData(0);
}

TEST(VMap, KeepsKeysInOrder) {
    VMap<int, std::string> map;
    std::mt19937 random(5);
    std::map<int, std::string> model;
    for (int i = 0; i < 2000; ++i) {
        const int key = int(random() % 5000);
        map.insert(key, std::to_string(i));
        model[key] = std::to_string(i);
    }
    const std::vector<int> keys = checkSkipList(map);
    ASSERT_EQ(keys.size(), model.size());
    auto m = model.begin();
    for (auto it = map.cbegin(); it != map.cend(); ++it, ++m) {
        ASSERT_EQ(it.key(), m->first);
        ASSERT_EQ(it.value(), m->second);
    }
    EXPECT_EQ(map.firstKey(), model.begin()->first);
    EXPECT_EQ(map.lastKey(), model.rbegin()->first);
    EXPECT_EQ(map.first(), model.begin()->second);
    EXPECT_EQ(map.last(), model.rbegin()->second);

    std::vector<int> backwards;
    for (auto it = map.cend(); it != map.cbegin();) {
        backwards.push_back((--it).key());
    }
    EXPECT_TRUE(std::equal(backwards.begin(), backwards.end(), keys.rbegin()));
    EXPECT_EQ(map.keys().size(), map.size());
    EXPECT_EQ(map.values().at(0), model.begin()->second);
}

TEST(VMap, LookupsBoundsAndChanges) {
    VMap<std::string, int> map{{"b", 2}, {"d", 4}, {"f", 6}};
    EXPECT_TRUE(map.contains("d"));
    EXPECT_FALSE(map.contains("c"));
    EXPECT_EQ(map.count("d"), 1);
    EXPECT_EQ(map.value("f"), 6);
    EXPECT_EQ(map.value("g"), 0);
    EXPECT_EQ(map.value("g", -1), -1);
    EXPECT_EQ(map.key(4), "d");
    EXPECT_EQ(map.key(5, "none"), "none");
    const VMap<std::string, int> &constant = map;
    EXPECT_EQ(constant["b"], 2);
    EXPECT_EQ(constant["zz"], 0);
    EXPECT_EQ(map.size(), 3);

    EXPECT_EQ(constant.lowerBound("c").key(), "d");
    EXPECT_EQ(constant.lowerBound("d").key(), "d");
    EXPECT_EQ(constant.upperBound("d").key(), "f");
    EXPECT_TRUE(constant.upperBound("f") == constant.cend());
    EXPECT_EQ(constant.lowerBound("a").key(), "b");
    EXPECT_EQ(map.lowerBound("e").value(), 6);
    EXPECT_EQ(map.upperBound("a").value(), 2);

    map["c"] += 3;
    EXPECT_EQ(map.value("c"), 3);
    auto it = map.insert("b", 20);
    EXPECT_EQ(it.key(), "b");
    EXPECT_EQ(map.value("b"), 20);
    *map.find("d") = 40;
    EXPECT_EQ(map.value("d"), 40);
    EXPECT_TRUE(map.find("x") == map.end());
    EXPECT_TRUE(map.constFind("x") == map.cend());

    EXPECT_EQ(map.remove("x"), 0);
    EXPECT_EQ(map.remove("c"), 1);
    EXPECT_EQ(map.take("b"), 20);
    EXPECT_EQ(map.take("b"), 0);
    auto next = map.erase(map.constFind("d"));
    EXPECT_EQ(next.key(), "f");
    EXPECT_TRUE(map.erase(map.cend()) == map.end());
    EXPECT_EQ(map.size(), 1);

    VMap<std::string, int> same{{"f", 6}};
    EXPECT_EQ(map, same);
    same["f"] = 7;
    EXPECT_NE(map, same);
    same.clear();
    EXPECT_EQ(&same.data(), &VMapData::shared_null);
    EXPECT_NE(map, same);
}

TEST(VMap, CopiesInKeyOrderAndShareUntilAWrite) {
    VMap<int, std::string> a;
    for (int i = 0; i < 100; ++i) {
        a.insert(i * 7 % 101, std::to_string(i));
    }
    VMap<int, std::string> b(a);
    EXPECT_TRUE(b.isSharedWith(a));
    EXPECT_EQ(b.value(7), "1");
    EXPECT_TRUE(b.isSharedWith(a));

    const std::vector<std::function<void(VMap<int, std::string> &)>> writes = {
        [](auto &m) { m.insert(1000, "x"); },
        [](auto &m) { m[7] = "changed"; },
        [](auto &m) { m.remove(7); },
        [](auto &m) { m.take(14); },
        [](auto &m) { m.erase(m.constFind(21)); },
        [](auto &m) { *m.begin() = "changed"; },
        [](auto &m) { *m.find(7) = "changed"; },
    };
    for (size_t i = 0; i < writes.size(); ++i) {
        VMap<int, std::string> copy(a);
        writes[i](copy);
        EXPECT_FALSE(copy.isSharedWith(a)) << "write " << i;
        // The copy was built by appending in order: the counter ran without reseeding.
        EXPECT_EQ(copy.data().insertInOrder, 0u);
        EXPECT_EQ(a.value(7), "1");
        EXPECT_EQ(a.size(), 100);
        checkSkipList(copy);
    }
    VMap<int, std::string> fresh(a);
    fresh.detach();
    EXPECT_EQ(fresh.data().randomBits, 100);
    EXPECT_EQ(checkSkipList(fresh), checkSkipList(a));
    EXPECT_EQ(fresh, a);

    a.setSharable(false);
    std::string &one = a[7];
    VMap<int, std::string> c(a);
    EXPECT_FALSE(c.isSharedWith(a));
    one = "ONE";
    EXPECT_EQ(c.value(7), "1");
    a.setSharable(true);
    VMap<int, std::string> d(a);
    EXPECT_TRUE(d.isSharedWith(a));
}

TEST(VMap, EmptyMapsShareTheNullBlockWithoutLeavingACount) {
    const int before = VMapData::shared_null.ref;
    {
        VMap<int, int> a;
        VMap<std::string, int> b;
        VMap<int, int> c = a;
        EXPECT_EQ(int(VMapData::shared_null.ref), before + 3);
        EXPECT_EQ(a.remove(1), 0);
        EXPECT_TRUE(a.cbegin() == a.cend());
        EXPECT_EQ(int(VMapData::shared_null.ref), before + 3);
        a[1] = 1;
        EXPECT_EQ(int(VMapData::shared_null.ref), before + 2);
    }
    EXPECT_EQ(int(VMapData::shared_null.ref), before);
}

namespace {

struct Brittle {
    static inline int copiesLeft = -1;
    Counted payload;
    explicit Brittle(int v) : payload(v) {}
    Brittle(const Brittle &other) : payload(other.payload) {
        if (copiesLeft >= 0 && copiesLeft-- == 0) {
            throw std::runtime_error("copy failed");
        }
    }
    Brittle &operator=(const Brittle &) = default;
    bool operator==(const Brittle &o) const { return payload == o.payload; }
};

}  // namespace

TEST(VMap, EveryKeyAndValueItMakesIsDestroyedOnce) {
    Counted::Scope scope;
    {
        VMap<Counted, Counted> map;
        for (int i = 0; i < 300; ++i) {
            map.insert(Counted(i * 13 % 301), Counted(i));
        }
        map[Counted(5)] = Counted(55);
        map[Counted(1000)] = Counted(1);
        EXPECT_EQ(map.remove(Counted(6)), 1);
        map.take(Counted(8));
        {
            VMap<Counted, Counted> copy(map);
            copy.remove(Counted(9));
        }
        for (auto it = map.begin(); it != map.end();) {
            it = it.key().value() % 2 ? map.erase(it) : std::next(it);
        }
        VMap<Counted, Counted> kept = map;
        kept.setSharable(false);
        VMap<Counted, Counted> deep(kept);
        map.clear();
        EXPECT_EQ(deep.size(), kept.size());

        // A copy that fails half way leaves both maps as they were.
        VMap<int, Brittle> brittle;
        for (int i = 0; i < 20; ++i) {
            brittle.insert(i, Brittle(i));
        }
        VMap<int, Brittle> shared(brittle);
        Brittle::copiesLeft = 10;
        EXPECT_THROW(shared.remove(3), std::runtime_error);
        Brittle::copiesLeft = -1;
        EXPECT_TRUE(shared.isSharedWith(brittle));
        shared.clear();
        Brittle::copiesLeft = 0;  // now the new entry's value fails
        EXPECT_THROW(brittle.insert(50, Brittle(50)), std::runtime_error);
        Brittle::copiesLeft = -1;
        EXPECT_EQ(brittle.size(), 20);
        EXPECT_FALSE(brittle.contains(50));
        checkSkipList(brittle);
    }
    EXPECT_EQ(scope.leaked(), 0);
    EXPECT_EQ(scope.badDestructions(), 0);
}

TEST(VMap, MatchesAStdMapUnderRandomEdits) {
    std::mt19937 random(17);
    VMap<int, int> map;
    std::map<int, int> model;
    for (int step = 0; step < 20000; ++step) {
        const int key = int(random() % 2000);
        switch (random() % 4) {
            case 0:
            case 1:
                map.insert(key, step);
                model[key] = step;
                break;
            case 2:
                ASSERT_EQ(map.remove(key), int(model.erase(key)));
                break;
            case 3: {
                auto lower = model.lower_bound(key);
                auto it = static_cast<const VMap<int, int> &>(map).lowerBound(key);
                ASSERT_EQ(lower == model.end(), it == map.cend());
                if (lower != model.end()) {
                    ASSERT_EQ(it.key(), lower->first);
                }
                break;
            }
        }
    }
    const std::vector<int> keys = checkSkipList(map);
    ASSERT_EQ(keys.size(), model.size());
    EXPECT_TRUE(std::equal(keys.begin(), keys.end(), model.begin(),
                           [](int k, const std::pair<const int, int> &p) { return k == p.first; }));
}

TEST(VMapConcurrency, SharedMapsSurviveCopiesWritesAndDropsOnManyThreads) {
    Counted::Scope scope;
    {
        VMap<int, Counted> shared;
        for (int i = 0; i < 300; ++i) {
            shared.insert(i, Counted(i));
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
                    VMap<int, Counted> copy(shared);
                    const VMap<int, Counted> &reader = copy;
                    failures[t] += reader.value(round).value() != round;
                    long sum = 0;
                    for (const Counted &c : reader) {
                        sum += c.value();
                    }
                    failures[t] += sum != 299 * 300 / 2;
                    if (round % 2 == 0) {
                        copy.insert(1000 + t, Counted(t));
                        copy.remove(round);
                        failures[t] += copy.size() != 300 || copy.contains(round);
                    }
                    VMap<int, Counted> again = copy;
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
    }
    EXPECT_EQ(scope.leaked(), 0);
    EXPECT_EQ(scope.badDestructions(), 0);
}
