// What the five containers share through their handle: the null block, copies that share and
// writes that detach, the sharable flag, iteration both ways, and the lifetime of every element,
// also when a copy throws. Each structure's own layout rules are in its own file.
#include "support/Counted.h"
#include "support/Latch.h"
#include <vort/bones/VHash.h>
#include <vort/bones/VLinkedList.h>
#include <vort/bones/VList.h>
#include <vort/bones/VMap.h>
#include <vort/bones/VVector.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <numeric>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace VORT;
using vort_test::Counted;

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
        EXPECT_FALSE(copy.isSharedWith(unsharable) || assigned.isSharedWith(unsharable));
        EXPECT_TRUE(copy.isSharable());
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

namespace {

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

}  // namespace

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
