#include <vort/bones/VMap.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <random>
#include <string>
#include <vector>

using VORT::VMap;
using VORT::VMapData;
using Node = VMapData::Node;

namespace {

Node *endOf(const VMapData *d) {
    return reinterpret_cast<Node *>(const_cast<VMapData *>(d));
}

// Appends a bare node (no payload) behind the last node of every level.
Node *appendRaw(VMapData *d) {
    Node *update[VMapData::LastLevel + 1];
    for (int level = 0; level <= d->topLevel; ++level) {
        Node *cur = endOf(d);
        while (cur->next[level] != endOf(d)) {
            cur = cur->next[level];
        }
        update[level] = cur;
    }
    return d->node_create(update, 0);
}

// The highest level on which `node` is linked.
int levelOf(const VMapData *d, const Node *node) {
    int found = -1;
    for (int level = 0; level <= d->topLevel; ++level) {
        for (Node *cur = endOf(d)->next[level]; cur != endOf(d); cur = cur->next[level]) {
            found = cur == node ? level : found;
        }
    }
    return found;
}

// Every level is sorted and within the one below, `previous` mirrors level 0 and the size
// matches. Returns the keys in order.
template <typename K, typename V>
std::vector<K> checkSkipList(const VMap<K, V> &map) {
    const VMapData &d = map.data();
    Node *const e = endOf(&d);
    std::vector<K> keys;
    Node *previous = e;
    for (auto it = map.cbegin(); it != map.cend(); ++it) {
        EXPECT_EQ(it.i->previous, previous);
        previous = it.i;
        EXPECT_TRUE(keys.empty() || keys.back() < it.key());
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

TEST(VMapData, NewBlocksAreEmptyListsWhoseLevelsComeFromTheCounter) {
    for (const VMapData *d : {&VMapData::shared_null, VMapData::createData()}) {
        EXPECT_TRUE(d->previous == endOf(d) && d->next[0] == endOf(d) && !d->next[1]);
        EXPECT_EQ(d->topLevel + d->size + d->randomBits + int(d->insertInOrder), 0);
        EXPECT_EQ(d->sharable, 1u);
        if (d != &VMapData::shared_null) {
            EXPECT_EQ(int(d->ref), 1);
            const_cast<VMapData *>(d)->continueFreeData(0);
        }
    }

    struct Row {
        int randomBits, topLevel;
        bool inOrder;
        int level, topAfter;
        unsigned int bitsAfter;
    };
    const Row rows[] = {
        {0, 0, false, 0, 0, 1},
        {6, 0, false, 0, 0, 7},        // 110: the lowest three bits aren't all set
        {7, 0, false, 1, 1, 8},        // 111: one level up
        {0x3F, 0, false, 1, 1, 0x40},  // asks for 2, gets at most one above the top
        {0x3F, 5, false, 2, 5, 0x40},
        {0x1FF, 4, true, 3, 4, 0x200},  // level 3 in an ordered copy keeps counting
        {-1, 11, false, 11, 11, 0},     // every bit set: the top level, and the count wraps
        {0x7FFFFFFF, 11, false, 10, 11, 0x80000000u}};
    for (const Row &row : rows) {
        VMapData *d = VMapData::createData();
        for (int level = 1; level <= row.topLevel; ++level) {
            d->next[level] = endOf(d);
        }
        d->topLevel = row.topLevel;
        d->randomBits = row.randomBits;
        d->insertInOrder = row.inOrder;
        Node *node = appendRaw(d);
        EXPECT_EQ(levelOf(d, node), row.level) << "bits " << row.randomBits;
        EXPECT_EQ(d->topLevel, row.topAfter) << "bits " << row.randomBits;
        EXPECT_EQ(unsigned(d->randomBits), row.bitsAfter) << "bits " << row.randomBits;
        EXPECT_EQ(d->size, 1);
        d->continueFreeData(0);
    }

    // Outside an ordered copy, a node of level 3 reseeds the counter from rand().
    VMapData *d = VMapData::createData();
    for (int level = 1; level <= 3; ++level) {
        d->next[level] = endOf(d);
    }
    d->topLevel = 3;
    d->randomBits = 0x1FF;
    std::srand(42);
    const int expected = std::rand();
    std::srand(42);
    appendRaw(d);
    EXPECT_EQ(d->randomBits, expected);
    d->continueFreeData(0);
}

TEST(VMapData, NodeDeleteUnlinksOnEveryLevelAndKeepsTheTop) {
    VMapData *d = VMapData::createData();
    Node *const e = endOf(d);
    d->randomBits = 0x3F;  // the first node climbs to level 1
    Node *a = appendRaw(d);
    Node *b = appendRaw(d);
    Node *c = appendRaw(d);
    ASSERT_EQ(levelOf(d, a), 1);
    Node *update[VMapData::LastLevel + 1] = {e, e};
    d->node_delete(update, 0, a);  // a was first on both levels
    EXPECT_TRUE(e->next[0] == b && e->next[1] == e && b->previous == e);
    EXPECT_EQ(d->size * 10 + d->topLevel, 21);  // the top is never lowered
    update[0] = b;
    d->node_delete(update, 0, c);
    EXPECT_TRUE(b->next[0] == e && d->previous == b && d->size == 1);
    d->continueFreeData(0);
}

TEST(VMap, MatchesAStdMapUnderRandomEdits) {
    std::mt19937 random(17);
    VMap<int, std::string> map;
    std::map<int, std::string> model;
    for (int step = 0; step < 20000; ++step) {
        const int key = int(random() % 2000);
        const auto &constant = map;
        switch (random() % 5) {
            case 0:
            case 1:
                map.insert(key, std::to_string(step));
                model[key] = std::to_string(step);
                break;
            case 2:
                ASSERT_EQ(map.remove(key), int(model.erase(key)));
                break;
            case 3: {
                const auto lower = model.lower_bound(key);
                const auto it = constant.lowerBound(key);
                ASSERT_EQ(lower == model.end(), it == map.cend());
                ASSERT_TRUE(lower == model.end() || it.key() == lower->first);
                const auto upper = model.upper_bound(key);
                const auto above = constant.upperBound(key);
                ASSERT_EQ(upper == model.end(), above == map.cend());
                ASSERT_TRUE(upper == model.end() || above.key() == upper->first);
                break;
            }
            case 4: {
                const auto found = model.find(key);
                ASSERT_EQ(map.take(key), found == model.end() ? "" : found->second);
                model.erase(key);
                break;
            }
        }
    }
    const std::vector<int> keys = checkSkipList(map);
    ASSERT_EQ(keys.size(), model.size());
    auto m = model.begin();
    for (auto it = map.cbegin(); it != map.cend(); ++it, ++m) {
        ASSERT_EQ(it.key(), m->first);
        ASSERT_EQ(it.value(), m->second);
    }
    EXPECT_TRUE(map.firstKey() == model.begin()->first && map.lastKey() == model.rbegin()->first);
    EXPECT_TRUE(map.first() == model.begin()->second && map.last() == model.rbegin()->second);

    // A detached copy is built by appending in key order: the counter ran without reseeding.
    VMap<int, std::string> copy(map);
    copy.detach();
    EXPECT_EQ(copy.data().randomBits, map.size());
    EXPECT_EQ(copy.data().insertInOrder, 0u);
    EXPECT_EQ(checkSkipList(copy), keys);
    EXPECT_EQ(copy, map);
}
