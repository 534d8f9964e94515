// What the five containers share through their handle: the null block, copies that share and
// writes that detach, the sharable flag, iteration both ways, and the lifetime of every element,
// also when a copy throws. Then each structure's own layout rules, one table each, and one model
// check against a standard container.
#include "support/Counted.h"
#include "support/Latch.h"
#include <hsl/hsl.h>
#include <vort/bones/VHash.h>
#include <vort/bones/VLinkedList.h>
#include <vort/bones/VList.h>
#include <vort/bones/VMap.h>
#include <vort/bones/VVector.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <deque>
#include <iterator>
#include <map>
#include <numeric>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

using namespace VORT;
using vort_test::Counted;
using Node = VMapData::Node;

namespace {

// Throws on its copy number `copiesLeft`, counted down from when the counter is set.
struct Fragile {
    static inline int copiesLeft = -1;
    Counted payload;
    Fragile(int v = 0) : payload(v) {}  // NOLINT: converting, like an int
    Fragile(const Fragile &other) : payload(other.payload) {
        if (copiesLeft >= 0 && copiesLeft-- == 0) {
            throw std::runtime_error("copy failed");
        }
    }
    Fragile &operator=(const Fragile &) = default;
    int value() const { return payload.value(); }
    bool operator==(const Fragile &o) const { return payload == o.payload; }
};

int valueOf(int v) {
    return v;
}
template <typename T>
int valueOf(const T &t) {
    return t.value();
}

template <typename T>
using IntHash = VHash<int, T>;
template <typename T>
using IntMap = VMap<int, T>;

// A container template, whether it keeps the order in which elements were added, and whether a
// detach that throws leaves nothing behind (a hash loses the copies made so far: the library
// half that makes them can't destroy them).
template <template <typename> class Container, bool Ordered = true, bool UndoesThrow = true>
struct Family {
    template <typename T>
    using C = Container<T>;
    static constexpr bool ordered = Ordered;
    static constexpr bool detachUndoesAThrow = UndoesThrow;
};

template <typename T>
void add(VHash<int, T> &c, int i) {
    c.insert(i, T(i));
}
template <typename T>
void add(VMap<int, T> &c, int i) {
    c.insert(i, T(i));
}
template <typename C>
void add(C &c, int i) {
    c.append(typename C::value_type(i));
}

template <typename T>
const VListData::Data &blockOf(const VList<T> &c) {
    return *c.data().d;
}
template <typename T>
const VVectorData &blockOf(const VVector<T> &c) {
    return c.header();
}
template <typename C>
const auto &blockOf(const C &c) {
    return c.data();
}

template <typename C>
C filled(int n) {
    C c;
    for (int i = 0; i < n; ++i) {
        add(c, i);
    }
    return c;
}

// The values in iteration order, forwards and (checked to agree) backwards.
template <typename C>
std::vector<int> valuesOf(const C &c) {
    std::vector<int> forwards, backwards;
    for (auto it = c.begin(); it != c.end(); ++it) {
        forwards.push_back(valueOf(*it));
    }
    for (auto it = c.end(); it != c.begin();) {
        backwards.insert(backwards.begin(), valueOf(*--it));
    }
    EXPECT_EQ(backwards, forwards);
    EXPECT_EQ(int(forwards.size()), c.size());
    return forwards;
}

template <typename F>
class SharedContainer : public ::testing::Test {};

using Families = ::testing::Types<Family<VList>, Family<VVector>, Family<VLinkedList>,
                                  Family<IntHash, false, false>, Family<IntMap>>;
TYPED_TEST_SUITE(SharedContainer, Families);

// Copies of one block, read, written (which detaches) and dropped on four threads at once.
template <typename C, typename... More>
void raceCopiesOfOneBlock() {
    Counted::Scope scope;
    {
        const C shared = filled<C>(200);
        std::atomic<int> failures{0};
        vort_test::runTogether(4, [&](int t) {
            for (int round = 0; round < 200; ++round) {
                C copy = shared;
                const C &reader = copy;
                long sum = 0;
                for (auto it = reader.begin(); it != reader.end(); ++it) {
                    sum += valueOf(*it);
                }
                failures += sum != 199 * 200 / 2;
                if (round % 2 == 0) {
                    add(copy, 1000 + t);
                    failures += copy.size() != 201;
                }
                C again = copy;
            }
        });
        EXPECT_EQ(failures.load(), 0);
        EXPECT_TRUE(shared.isDetached());
    }
    EXPECT_TRUE(scope.leaked() == 0 && scope.badDestructions() == 0);
    if constexpr (sizeof...(More) > 0) {
        raceCopiesOfOneBlock<More...>();
    }
}

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

// First, last, capacity.
using Layout = std::array<int, 3>;

template <typename T>
Layout layoutOf(const VList<T> &list) {
    const VListData::Data *d = list.data().d;
    return {d->first, d->last, d->capacity};
}

// A list of `capacity` slots holding first, ..., last - 1 in the slots of those numbers.
VList<int> listIn(Layout layout) {
    VList<int> list;
    list.reserve(layout[2]);
    for (int i = 0; i < layout[1]; ++i) {
        list.append(i);
    }
    for (int i = 0; i < layout[0]; ++i) {
        list.removeFirst();
    }
    return list;
}

enum Op { Append, AppendList, Prepend, Insert, RemoveAt, Erase, Move };

// One edit, made to the list and to the deque that models it.
void apply(Op op, int a, int b, int value, VList<int> &list, std::deque<int> &model) {
    switch (op) {
        case Append:
            list.append(value);
            model.push_back(value);
            break;
        case AppendList:
            list.append(listIn({0, a, a}));
            for (int i = 0; i < a; ++i) {
                model.push_back(i);
            }
            break;
        case Prepend:
            list.prepend(value);
            model.push_front(value);
            break;
        case Insert:
            list.insert(a, value);
            model.insert(model.begin() + std::clamp(a, 0, int(model.size())), value);
            break;
        case RemoveAt:
            list.removeAt(a);
            model.erase(model.begin() + a);
            break;
        case Erase:
            list.erase(list.begin() + a, list.begin() + a + b);
            model.erase(model.begin() + a, model.begin() + a + b);
            break;
        case Move:
            list.move(a, b);
            const int moved = model[size_t(a)];
            model.erase(model.begin() + a);
            model.insert(model.begin() + b, moved);
            break;
    }
}

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

template <typename T>
std::vector<int> capacitiesWhileAppending(int count) {
    VVector<T> v;
    std::vector<int> seen;
    for (int i = 0; i < count; ++i) {
        v.append(T());
        if (seen.empty() || seen.back() != v.capacity()) {
            seen.push_back(v.capacity());
        }
    }
    return seen;
}

// Random edits of a vector of `T` (the movable and the copied layouts take different paths)
// against a standard vector.
template <typename T>
void matchesAStdVector(T (*make)(int)) {
    std::mt19937 random(7);
    VVector<T> vector;
    std::vector<T> model;
    for (int step = 0; step < 5000; ++step) {
        const int size = int(model.size());
        const int at = size ? int(random() % unsigned(size + 1)) : 0;
        const int n = std::min(int(random() % 4), size - at);
        switch (random() % 7) {
            case 0:
            case 1:
                vector.append(make(step));
                model.push_back(make(step));
                break;
            case 2:
                vector.insert(at, n, make(step));
                model.insert(model.begin() + at, size_t(n), make(step));
                break;
            case 3:
                vector.remove(at, n);
                model.erase(model.begin() + at, model.begin() + at + n);
                break;
            case 4: {
                const int length = int(random() % unsigned(size + 5));
                vector.resize(length);
                model.resize(size_t(length));
                break;
            }
            case 5:
                vector.squeeze();
                break;
            case 6:
                vector.reserve(size + n * 10);
                break;
        }
        ASSERT_EQ(vector.toStdVector(), model) << step;
        ASSERT_LE(vector.size(), vector.capacity());
    }
}

}  // namespace

TYPED_TEST(SharedContainer, EmptyOnesShareTheNullBlockAndUnsharableOnesCopyAtOnce) {
    using C = typename TypeParam::template C<Counted>;
    const auto *null = &blockOf(C());
    const int before = null->ref;
    {
        C a, b(a), c;
        c = a;
        C moved(std::move(c));
        EXPECT_TRUE(&blockOf(a) == null && int(null->ref) == before + 4);
        add(a, 0);
        EXPECT_EQ(int(null->ref), before + 3);
        b.setSharable(false);  // needs a block of its own
        EXPECT_EQ(int(null->ref), before + 2);
        a.clear();
        EXPECT_EQ(int(null->ref), before + 3);

        C shared = filled<C>(3);
        C unsharable = shared;
        unsharable.setSharable(false);  // detaches first
        EXPECT_FALSE(unsharable.isSharable() || unsharable.isSharedWith(shared));
        Counted &first = *unsharable.begin();
        C copy(unsharable), assigned;
        assigned = unsharable;
        EXPECT_FALSE(copy.isSharedWith(unsharable) || assigned.isSharedWith(unsharable) ||
                     !copy.isSharable());
        first = 7;  // the reference into it is still good, and the copies don't see it
        EXPECT_EQ(valueOf(*unsharable.begin()) * 10 + valueOf(*copy.begin()), 70);
        unsharable.setSharable(true);
        EXPECT_TRUE(C(unsharable).isSharedWith(unsharable));
    }
    EXPECT_EQ(int(null->ref), before);
}

TYPED_TEST(SharedContainer, CopiesShareUntilAWriteAndIterateInOrderBothWays) {
    using C = typename TypeParam::template C<int>;
    const C original = filled<C>(50);
    std::vector<int> values = valuesOf(original);
    if (!TypeParam::ordered) {
        std::sort(values.begin(), values.end());
    }
    std::vector<int> expected(50);
    std::iota(expected.begin(), expected.end(), 0);
    EXPECT_EQ(values, expected);
    const std::vector<int> before = valuesOf(original);
    for (int write = 0; write < 2; ++write) {
        C copy = original;
        valuesOf(copy);  // reads share
        EXPECT_TRUE(copy.isSharedWith(original) && !copy.isDetached());
        write ? add(copy, 99) : void(*copy.begin() = -1);
        EXPECT_TRUE(copy.isDetached()) << "write " << write;
        EXPECT_EQ(valuesOf(original), before) << "write " << write;
    }
    EXPECT_TRUE(original.isDetached());
}

TYPED_TEST(SharedContainer, EveryElementItMakesIsDestroyedOnceEvenWhenACopyThrows) {
    using C = typename TypeParam::template C<Fragile>;
    Counted::Scope scope;
    {
        C c = filled<C>(10);
        C shared = c;
        if (TypeParam::detachUndoesAThrow) {
            Fragile::copiesLeft = 4;  // the detach fails half way
            EXPECT_THROW(add(shared, 10), std::runtime_error);
            EXPECT_TRUE(shared.isSharedWith(c));
        }
        Fragile::copiesLeft = -1;
        shared.detach();
        EXPECT_EQ(scope.leaked(), 20);
        Fragile::copiesLeft = 0;  // now the new element's own copy fails
        EXPECT_THROW(add(shared, 10), std::runtime_error);
        Fragile::copiesLeft = -1;
        EXPECT_EQ(valuesOf(shared).size(), 10u);
        C kept = shared;
        kept.setSharable(false);
        C deep(kept);
        shared.clear();
        EXPECT_EQ(valuesOf(deep).size(), 10u);
    }
    EXPECT_TRUE(scope.leaked() == 0 && scope.badDestructions() == 0);
}

TEST(SharedContainersConcurrency, SharedBlocksSurviveCopiesWritesAndDropsOnManyThreads) {
    raceCopiesOfOneBlock<VList<Counted>, VList<int>, VVector<Counted>, VLinkedList<Counted>,
                         VHash<int, Counted>, VMap<int, Counted>>();

    // Once the count says an owner is alone, it writes without a copy: everything the others
    // did with the block must be over by then.
    for (int round = 0; round < 50; ++round) {
        VList<std::string> list;
        for (int i = 0; i < 100; ++i) {
            list.append("item");
        }
        const VListData::Data *block = list.data().d;
        std::vector<size_t> lengths(3, 0);
        std::vector<std::thread> readers;
        for (size_t &length : lengths) {
            readers.emplace_back([copy = list, &length]() mutable {
                for (const std::string &s : static_cast<const VList<std::string> &>(copy)) {
                    length += s.size();
                }
                copy = VList<std::string>();  // lets go while the owner waits
            });
        }
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (!list.isDetached() && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::yield();
        }
        ASSERT_TRUE(list.isDetached());
        list[0] = "written";
        list[99].clear();
        EXPECT_EQ(list.data().d, block);
        for (std::thread &r : readers) {
            r.join();
        }
        EXPECT_EQ(lengths, std::vector<size_t>(3, 400));
    }
}

TEST(VHashData, HashesFoldAndBucketCountsFollowTheDeltaTable) {
    // Integers fold their high half; strings end at their first NUL.
    EXPECT_EQ(VORT::vHash(-1) + VORT::vHash(0x100000000ULL), 1u);  // 0xFFFFFFFF + 2
    EXPECT_EQ(VORT::vHash(std::string("hello")), hsl_hash_string(0, "hello"));
    EXPECT_EQ(VORT::vHash(std::string("ab\0cd", 5)), VORT::vHash(std::string("ab")));

    const int deltas[31] = {0, 0,  1, 3,  1, 5,  3, 3, 1, 9,  7,  5, 3, 9, 25, 3,
                            1, 21, 3, 21, 7, 15, 9, 5, 3, 29, 15, 0, 0, 0, 0};
    for (int b = 0; b <= 30; ++b) {
        EXPECT_EQ(VHashData::bucketCountOf(b), (1 << b) + deltas[b]) << "class " << b;
    }
    const VHashData &null = VHashData::shared_null;
    EXPECT_TRUE(null.buckets == nullptr && null.minimumBits == 4 && null.sharable == 1 &&
                null.nodeSize + null.bits + null.bucketCount + null.size == 0);
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
    // Keys, the hint, then the floor and the buckets.
    const int rows[][4] = {
        {0, 100, 7, 131},                   // 2^6 + 3 = 67 < 100: class 7
        {0, 131, 7, 131},                   // exactly class 7
        {0, 1, 4, 17},                      // never under class 4
        {0, 200, 8, 257}, {100, 5, 4, 67},  // a full table keeps enough buckets for half its keys
        {34, 1, 4, 17},                     // 17 is exactly half of 34
    };
    for (auto const &[keys, reserved, floor, buckets] : rows) {
        VHash<int, int> hash = upTo(keys);
        hash.reserve(reserved);
        EXPECT_EQ(
            std::make_tuple(hash.data().minimumBits, hash.capacity(), checkChains(hash.data())),
            std::make_tuple(floor, buckets, keys))
            << keys << ", " << reserved;
        // Growth leaves the floor alone, and shrinking stops at it.
        for (int i = keys; i < 300; ++i) {
            hash.insert(i, i);
        }
        for (int i = 0; i < 300; ++i) {
            hash.remove(i);
        }
        EXPECT_EQ(hash.data().bits, floor);
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

    // A lookup compares keys only where the stored hash matches.
    Probe::comparisons = 0;
    EXPECT_EQ(hash.value({4, 35}), 4);
    EXPECT_FALSE(hash.contains({6, 52}));  // bucket 1, a hash nobody has
    EXPECT_EQ(Probe::comparisons, 1);

    hash.reserve(40);  // a rehash moves each run whole and in order
    EXPECT_EQ(idsInOrder(hash), (std::vector<int>{1, 3, 2, 5, 4}));

    // Hashes at the ends of the 32-bit range land in their buckets through every size.
    VHash<Probe, int> extremes;
    int id = 0;
    for (int round = 0; round < 40; ++round) {
        for (unsigned int h : {0u, 1u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFEu, 0xFFFFFFFFu}) {
            extremes.insert({id++, h - unsigned(round)}, 0);
        }
        ASSERT_EQ(checkChains(extremes.data()), extremes.size());
    }
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

TEST(VortAllocMore, SizesBlocksInStepsOfEightThenPowersOfTwo) {
    // (size, header, result)
    // Triples: size, header, block.
    // clang-format off
    const int rows[] = {0, 24, 8,         39, 24, 40,       40, 24, 40,   41, 24, 104,
                        1, 0, 8,          7, 0, 8,          8, 0, 16,     63, 0, 64,
                        64, 0, 64,        65, 0, 128,       4072, 24, 4072,
                        4073, 24, 8168,   4000, 16, 4080,   0x40000000, 0, 0x40000000,
                        0x40000001, 0, 0x7FFFFFFF,          0x7FFFFFF0, 64, 0x7FFFFFFF};
    // clang-format on
    for (size_t r = 0; r < std::size(rows); r += 3) {
        EXPECT_EQ(VORT::vortAllocMore(rows[r], rows[r + 1]), rows[r + 2]) << r / 3;
    }
    EXPECT_EQ(offsetof(VListData::Data, items), 24u);  // the header ends where the slots begin
    const int grown[][2] = {{0, 1}, {1, 2}, {5, 5}, {6, 13}, {509, 509}, {510, 1021}};
    for (const auto &row : grown) {
        EXPECT_EQ(VListData::grow(row[0]), row[1]) << row[0];
    }
    const VListData::Data &null = VListData::shared_null;
    EXPECT_EQ(Layout({null.first, null.last, null.capacity}), Layout({0, 0, 0}));
    EXPECT_EQ(null.sharable, 1u);
}

// Each operation on a list laid out as `before`: the layout it leaves, and (against a deque)
// the contents.
TEST(VList, GrowsSlidesAndMovesTheShorterSideAsLaidDown) {
    // An operation, the layout before, its arguments and the layout after.
    // clang-format off
    const std::tuple<Op, Layout, int, int, Layout> rows[] = {
        {Append, {0, 5, 12}, 0, 0, {0, 6, 12}},
        // mostly free at the front: slides back
        {Append, {9, 12, 12}, 0, 0, {3, 7, 12}},
        // two thirds free is not enough: grows
        {Append, {8, 12, 12}, 0, 0, {8, 13, 13}},
        // fits exactly
        {AppendList, {0, 4, 8}, 4, 0, {0, 8, 8}}, {AppendList, {0, 4, 8}, 5, 0, {0, 9, 13}},
        {Prepend, {2, 5, 8}, 0, 0, {1, 5, 8}}, {Prepend, {0, 0, 0}, 0, 0, {1, 2, 2}},
        // a third free behind, and room for it
        {Prepend, {0, 3, 12}, 0, 0, {5, 9, 12}},
        // a third in use: grows first
        {Prepend, {0, 4, 12}, 0, 0, {8, 13, 13}}, {Insert, {2, 6, 8}, 0, 0, {1, 6, 8}},
        {Insert, {2, 6, 8}, -3, 0, {1, 6, 8}}, {Insert, {2, 6, 8}, 1, 0, {1, 6, 8}},
        {Insert, {2, 6, 8}, 4, 0, {2, 7, 8}}, {Insert, {2, 6, 8}, 9, 0, {2, 7, 8}},
        // as many on each side: rightward
        {Insert, {2, 8, 16}, 3, 0, {2, 9, 16}}, {Insert, {2, 8, 16}, 2, 0, {1, 8, 16}},
        // full at the back: leftward
        {Insert, {2, 8, 8}, 5, 0, {1, 8, 8}},
        // packed at the front: rightward
        {Insert, {0, 4, 8}, 1, 0, {0, 5, 8}}, {Insert, {0, 4, 4}, 1, 0, {0, 5, 5}},
        {RemoveAt, {0, 10, 16}, 2, 0, {1, 10, 16}}, {RemoveAt, {0, 10, 16}, 7, 0, {0, 9, 16}},
        // a tie counting the removed one: the back
        {RemoveAt, {0, 6, 8}, 3, 0, {0, 5, 8}}, {RemoveAt, {2, 7, 8}, 2, 0, {3, 7, 8}},
        {Erase, {0, 12, 16}, 1, 3, {3, 12, 16}}, {Erase, {0, 12, 16}, 6, 4, {0, 8, 16}},
        // the middle of the run decides a tie
        {Erase, {0, 12, 16}, 4, 4, {0, 8, 16}}, {Erase, {2, 12, 16}, 1, 2, {4, 12, 16}},
        // a short hop: the items between shift
        {Move, {2, 8, 16}, 1, 2, {2, 8, 16}}, {Move, {2, 8, 16}, 1, 4, {2, 8, 16}},
        // two thirds of the way: the outer parts move
        {Move, {2, 8, 16}, 0, 4, {3, 9, 16}}, {Move, {2, 11, 16}, 1, 7, {3, 12, 16}},
        {Move, {2, 8, 16}, 4, 3, {2, 8, 16}}, {Move, {2, 8, 16}, 4, 0, {1, 7, 16}},
        {Move, {2, 11, 16}, 7, 1, {1, 10, 16}}, {Move, {2, 8, 16}, 2, 2, {2, 8, 16}},
        // full at the back: the items between shift
        {Move, {2, 8, 8}, 0, 5, {2, 8, 8}},
        // packed at the front: the same
        {Move, {0, 6, 16}, 5, 0, {0, 6, 16}},
    };
    // clang-format on
    for (auto const &[op, before, a, b, after] : rows) {
        VList<int> list = listIn(before);
        std::deque<int> model(list.begin(), list.end());
        // Mark the free slots: an operation may write only where the list was or is now.
        std::vector<char> marks(64);  // a mark of its own for each free slot
        VListData::Data *const block = list.data().d;
        for (int k = 0; k < block->capacity; ++k) {
            block->items[k] =
                k < block->first || k >= block->last ? &marks[size_t(k)] : block->items[k];
        }
        apply(op, a, b, -1, list, model);
        SCOPED_TRACE(std::to_string(op) + " on " + ::testing::PrintToString(before) + " with " +
                     std::to_string(a) + ", " + std::to_string(b));
        EXPECT_EQ(layoutOf(list), after);
        const bool sameBlock = list.data().d == block && after[2] == before[2];
        for (int k = 0; sameBlock && k < after[2]; ++k) {
            const bool used = (k >= before[0] && k < before[1]) || (k >= after[0] && k < after[1]);
            EXPECT_TRUE(used || block->items[k] == &marks[size_t(k)]) << "slot " << k;
        }
        EXPECT_TRUE(std::equal(list.begin(), list.end(), model.begin(), model.end()));
    }
}

TEST(VList, MatchesADequeUnderRandomEdits) {
    std::mt19937 random(1234);
    VList<int> list;
    std::deque<int> model;
    for (int step = 0; step < 20000; ++step) {
        const unsigned int size = unsigned(model.size());
        const int pick = size ? int(random() % size) : 0;
        // Half the draws add one item at an end; removals need an item.
        const Op ops[] = {Append,   Prepend, Append, Prepend,   Insert,
                          RemoveAt, Move,    Erase,  AppendList};
        const Op op = ops[random() % 9];
        if (size || op < RemoveAt) {
            const int other = op == Erase  ? int(random() % (size - unsigned(pick) + 1))
                              : op == Move ? int(random() % size)
                                           : int(random() % 4);
            apply(op, op == AppendList ? other : pick, other, step, list, model);
        }
        const Layout l = layoutOf(list);
        ASSERT_TRUE(0 <= l[0] && l[0] <= l[1] && l[1] <= l[2]) << step;
        ASSERT_TRUE(std::equal(list.begin(), list.end(), model.begin(), model.end())) << step;
    }
}

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

    std::srand(42);
    const unsigned int reseeded = unsigned(std::rand());
    // The counter, the top level and the ordered flag; then the new node's level, the top level
    // and the counter afterwards.
    const std::tuple<int, int, bool, int, int, unsigned int> rows[] = {
        {0, 0, false, 0, 0, 1},
        {6, 0, false, 0, 0, 7},        // 110: the lowest three bits aren't all set
        {7, 0, false, 1, 1, 8},        // 111: one level up
        {0x3F, 0, false, 1, 1, 0x40},  // asks for 2, gets at most one above the top
        {0x3F, 5, false, 2, 5, 0x40},
        {0x1FF, 4, true, 3, 4, 0x200},      // level 3 in an ordered copy keeps counting
        {0x1FF, 3, false, 3, 3, reseeded},  // outside one, it reseeds the counter from rand()
        {-1, 11, false, 11, 11, 0},         // every bit set: the top level, and the count wraps
        {0x7FFFFFFF, 11, false, 10, 11, 0x80000000u}};
    for (auto const &[randomBits, topLevel, inOrder, level, topAfter, bitsAfter] : rows) {
        SCOPED_TRACE(randomBits);
        VMapData *d = VMapData::createData();
        for (int up = 1; up <= topLevel; ++up) {
            d->next[up] = endOf(d);
        }
        d->topLevel = topLevel;
        d->randomBits = randomBits;
        d->insertInOrder = inOrder;
        std::srand(42);
        Node *node = appendRaw(d);
        EXPECT_EQ(std::make_tuple(levelOf(d, node), d->topLevel, d->size),
                  std::make_tuple(level, topAfter, 1));
        EXPECT_EQ(unsigned(d->randomBits), bitsAfter);
        d->continueFreeData(0);
    }
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
                const auto lower = model.lower_bound(key), upper = model.upper_bound(key);
                const auto it = constant.lowerBound(key), above = constant.upperBound(key);
                ASSERT_EQ(lower == model.end() ? -1 : lower->first,
                          it == map.cend() ? -1 : it.key());
                ASSERT_EQ(upper == model.end() ? -1 : upper->first,
                          above == map.cend() ? -1 : above.key());
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
    auto m = model.begin();
    for (auto it = map.cbegin(); it != map.cend(); ++it, ++m) {
        ASSERT_EQ(std::make_pair(it.key(), it.value()), std::make_pair(m->first, m->second));
    }
    ASSERT_TRUE(m == model.end());
    EXPECT_TRUE(map.firstKey() == model.begin()->first && map.lastKey() == model.rbegin()->first);
    EXPECT_TRUE(map.first() == model.begin()->second && map.last() == model.rbegin()->second);

    // A detached copy is built by appending in key order: the counter ran without reseeding.
    VMap<int, std::string> copy(map);
    copy.detach();
    EXPECT_TRUE(copy.data().randomBits == map.size() && copy.data().insertInOrder == 0u);
    EXPECT_TRUE(checkSkipList(copy) == keys && copy == map);
}

TEST(VVector, GrowsByBlockSizesWhenMovableAndByHalvesOtherwiseAndMatchesAStdVector) {
    // Four-byte elements behind a 16-byte header: typed data is 20 bytes.
    const int rows[][5] = {{20, 1, 4, 0, 2},   {20, 3, 4, 0, 4},       {20, 7, 4, 0, 8},
                           {20, 13, 4, 0, 28}, {20, 1020, 4, 0, 1020}, {20, 1021, 4, 0, 2044},
                           {24, 0, 8, 1, 0},   {24, 10, 8, 1, 15}};
    for (const auto &r : rows) {
        EXPECT_EQ(VVectorData::grow(r[0], r[1], size_t(r[2]), r[3] != 0), r[4]) << r[1];
    }
    EXPECT_EQ(capacitiesWhileAppending<int>(100),
              (std::vector<int>{2, 4, 6, 8, 10, 12, 28, 60, 124}));
    EXPECT_EQ(capacitiesWhileAppending<std::string>(30),
              (std::vector<int>{1, 3, 6, 10, 16, 25, 39}));
    matchesAStdVector<int>([](int step) { return step; });
    matchesAStdVector<std::string>([](int step) { return std::to_string(step); });
}
