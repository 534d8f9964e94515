// What the five containers share through their handle: the null block, copies that share and
// writes that detach, the sharable flag, iteration, and the lifetime of every element, also when
// a copy throws. Each structure's own layout rules are in its own file.
#include "support/Counted.h"
#include "support/Latch.h"
#include <vort/bones/VHash.h>
#include <vort/bones/VLinkedList.h>
#include <vort/bones/VList.h>
#include <vort/bones/VMap.h>
#include <vort/bones/VVector.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <iterator>
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

// A container template with what the suite must know of it: whether it keeps its elements in
// the order they were added, and whether a detach that throws leaves nothing behind (a hash
// loses the copies made so far: the library half that makes them can't destroy them).
template <template <typename> class Container, bool Ordered = true, bool UndoesThrow = true>
struct Family {
    template <typename T>
    using C = Container<T>;
    static constexpr bool ordered = Ordered;
    static constexpr bool detachUndoesAThrow = UndoesThrow;

    template <typename T>
    static void add(C<T> &c, int i) {
        if constexpr (std::is_same<C<T>, IntHash<T>>::value ||
                      std::is_same<C<T>, IntMap<T>>::value) {
            c.insert(i, T(i));
        } else {
            c.append(T(i));
        }
    }
};

// The block behind a container.
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

// The writes that must detach a shared container of four elements.
template <typename C>
using Writes = std::vector<std::function<void(C &)>>;

Writes<VList<Counted>> writes(const VList<Counted> *) {
    return {[](auto &c) { c[0] = 9; },        [](auto &c) { c.prepend(9); },
            [](auto &c) { c.insert(1, 9); },  [](auto &c) { c.removeAt(1); },
            [](auto &c) { c.move(0, 2); },    [](auto &c) { c.swapItemsAt(0, 2); },
            [](auto &c) { *c.begin() = 9; },  [](auto &c) { c.removeAll(1); },
            [](auto &c) { c.takeLast(); },    [](auto &c) { c.erase(c.begin() + 1); },
            [](auto &c) { c.replace(0, 9); }, [](auto &c) { c.append(c); }};
}
Writes<VVector<Counted>> writes(const VVector<Counted> *) {
    return {[](auto &c) { c[0] = 9; },       [](auto &c) { c.data()[1] = 9; },
            [](auto &c) { *c.begin() = 9; }, [](auto &c) { c.insert(1, 9); },
            [](auto &c) { c.remove(0); },    [](auto &c) { c.removeLast(); },
            [](auto &c) { c.resize(1); },    [](auto &c) { c.reserve(100); },
            [](auto &c) { c.fill(9); },      [](auto &c) { c.prepend(9); }};
}
Writes<VLinkedList<Counted>> writes(const VLinkedList<Counted> *) {
    return {[](auto &c) { c.prepend(9); },       [](auto &c) { c.first() = 9; },
            [](auto &c) { c.last() = 9; },       [](auto &c) { c.removeLast(); },
            [](auto &c) { c.takeFirst(); },      [](auto &c) { c.removeAll(1); },
            [](auto &c) { *c.begin() = 9; },     [](auto &c) { c.insert(c.begin(), 9); },
            [](auto &c) { c.erase(c.begin()); }, [](auto &c) { c.removeOne(2); }};
}
template <typename C>  // the hash and the map
Writes<C> writes(const C *) {
    return {[](auto &c) { c.insert(1, 9); },
            [](auto &c) { c[1] = 9; },
            [](auto &c) { c.remove(1); },
            [](auto &c) { c.take(2); },
            [](auto &c) { *c.find(1) = 9; },
            [](auto &c) { *c.begin() = 9; },
            [](auto &c) { c.erase(c.constFind(2)); }};
}

template <typename F, typename T>
typename F::template C<T> filled(int n) {
    typename F::template C<T> c;
    for (int i = 0; i < n; ++i) {
        F::add(c, i);
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
        backwards.push_back(valueOf(*--it));
    }
    std::reverse(backwards.begin(), backwards.end());
    EXPECT_EQ(backwards, forwards);
    EXPECT_EQ(int(forwards.size()), c.size());
    return forwards;
}

std::vector<int> upTo(int n) {
    std::vector<int> all(size_t(n), 0);
    for (int i = 0; i < n; ++i) {
        all[size_t(i)] = i;
    }
    return all;
}

template <typename F>
class SharedContainer : public ::testing::Test {};

using ListFamily = Family<VList>;
using Families = ::testing::Types<ListFamily, Family<VVector>, Family<VLinkedList>,
                                  Family<IntHash, false, false>, Family<IntMap>>;
TYPED_TEST_SUITE(SharedContainer, Families);

}  // namespace

TYPED_TEST(SharedContainer, EmptyContainersShareTheNullBlockWithoutLeavingACount) {
    using F = TypeParam;
    using C = typename F::template C<Counted>;
    const auto *null = &blockOf(C());
    const int before = null->ref;
    {
        C a;
        C b(a);
        C c;
        c = a;
        C moved(std::move(c));
        EXPECT_EQ(&blockOf(a), null);
        EXPECT_EQ(int(null->ref), before + 4);
        F::add(a, 1);
        EXPECT_EQ(int(null->ref), before + 3);
        a.clear();
        EXPECT_EQ(int(null->ref), before + 4);
        b.setSharable(false);  // an unsharable container needs a block of its own
        EXPECT_NE(&blockOf(b), null);
        EXPECT_EQ(int(null->ref), before + 3);
    }
    EXPECT_EQ(int(null->ref), before);
}

TYPED_TEST(SharedContainer, CopiesShareAndEveryWriteDetaches) {
    using F = TypeParam;
    const auto original = filled<F, Counted>(4);
    const std::vector<int> values = valuesOf(original);
    const auto edits = writes(&original);
    for (size_t i = 0; i < edits.size(); ++i) {
        auto copy = original;
        EXPECT_TRUE(copy.isSharedWith(original));
        EXPECT_FALSE(copy.isDetached());
        valuesOf(copy);  // reads share
        EXPECT_TRUE(copy.isSharedWith(original));
        edits[i](copy);
        EXPECT_FALSE(copy.isSharedWith(original)) << "write " << i;
        EXPECT_TRUE(copy.isDetached()) << "write " << i;
        EXPECT_EQ(valuesOf(original), values) << "write " << i;
    }
    EXPECT_TRUE(original.isDetached());
}

TYPED_TEST(SharedContainer, UnsharableContainersAreCopiedDeeplyAtOnce) {
    using F = TypeParam;
    auto a = filled<F, Counted>(3);
    auto shared = a;
    a.setSharable(false);  // detaches first
    EXPECT_FALSE(a.isSharable());
    EXPECT_FALSE(a.isSharedWith(shared));
    Counted &first = *a.begin();
    auto b(a);
    decltype(a) c;
    c = a;
    EXPECT_FALSE(b.isSharedWith(a));
    EXPECT_FALSE(c.isSharedWith(a));
    EXPECT_TRUE(b.isSharable());
    first = 7;  // the reference into `a` is still good, and the copies don't see it
    EXPECT_EQ(valueOf(*a.begin()), 7);
    EXPECT_EQ(valueOf(*b.begin()), 0);
    EXPECT_EQ(valueOf(*c.begin()), 0);
    a.setSharable(true);
    auto d(a);
    EXPECT_TRUE(d.isSharedWith(a));
}

TYPED_TEST(SharedContainer, IteratesInItsOrderBothWays) {
    using F = TypeParam;
    const auto c = filled<F, int>(50);
    std::vector<int> values = valuesOf(c);
    if (!F::ordered) {
        std::sort(values.begin(), values.end());
    }
    EXPECT_EQ(values, upTo(50));
    EXPECT_TRUE(valuesOf(typename F::template C<int>()).empty());
}

TYPED_TEST(SharedContainer, EveryElementItMakesIsDestroyedOnceEvenWhenACopyThrows) {
    using F = TypeParam;
    Counted::Scope scope;
    {
        auto c = filled<F, Fragile>(10);
        auto shared = c;
        // A hash loses the copies of a failed detach: its library half can't destroy them.
        if (F::detachUndoesAThrow) {
            Fragile::copiesLeft = 4;  // the detach fails half way
            EXPECT_THROW(F::add(shared, 10), std::runtime_error);
            Fragile::copiesLeft = -1;
            EXPECT_TRUE(shared.isSharedWith(c));
            EXPECT_EQ(shared.size(), 10);
        }
        shared.detach();
        EXPECT_EQ(scope.leaked(), 20);
        Fragile::copiesLeft = 0;  // now the new element's own copy fails
        EXPECT_THROW(F::add(shared, 10), std::runtime_error);
        Fragile::copiesLeft = -1;
        EXPECT_EQ(valuesOf(shared).size(), 10u);

        auto kept = shared;
        kept.setSharable(false);
        auto deep(kept);
        shared.clear();
        EXPECT_EQ(valuesOf(deep).size(), 10u);
    }
    EXPECT_EQ(scope.leaked(), 0);
    EXPECT_EQ(scope.badDestructions(), 0);
}

namespace {

// Copies of one block, read, written (which detaches) and dropped on four threads at once.
template <typename F, typename T>
void raceCopiesOfOneBlock() {
    Counted::Scope scope;
    {
        const auto shared = filled<F, T>(200);
        const int threads = 4;
        vort_test::Latch start(threads);
        std::vector<std::thread> workers;
        std::vector<int> failures(threads, 0);
        for (int t = 0; t < threads; ++t) {
            workers.emplace_back([&, t] {
                start.countDown();
                start.wait();
                for (int round = 0; round < 200; ++round) {
                    auto copy = shared;
                    const auto &reader = copy;
                    long sum = 0;
                    for (auto it = reader.begin(); it != reader.end(); ++it) {
                        sum += valueOf(*it);
                    }
                    failures[size_t(t)] += sum != 199 * 200 / 2;
                    if (round % 2 == 0) {
                        F::add(copy, 1000 + t);
                        failures[size_t(t)] += copy.size() != 201;
                    }
                    auto again = copy;
                }
            });
        }
        for (std::thread &w : workers) {
            w.join();
        }
        EXPECT_EQ(std::count(failures.begin(), failures.end(), 0), threads);
        EXPECT_TRUE(shared.isDetached());
    }
    EXPECT_EQ(scope.leaked(), 0);
    EXPECT_EQ(scope.badDestructions(), 0);
}

}  // namespace

TEST(SharedContainersConcurrency, SharedBlocksSurviveCopiesWritesAndDropsOnManyThreads) {
    raceCopiesOfOneBlock<ListFamily, Counted>();
    raceCopiesOfOneBlock<ListFamily, int>();
    raceCopiesOfOneBlock<Family<VVector>, Counted>();
    raceCopiesOfOneBlock<Family<VLinkedList>, Counted>();
    raceCopiesOfOneBlock<Family<IntHash>, Counted>();
    raceCopiesOfOneBlock<Family<IntMap>, Counted>();
}

TEST(SharedContainersConcurrency, TheOwnerLeftAloneWritesInPlaceAfterTheOthersLetGo) {
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
        // Once the count says the owner is alone, it writes without a copy; everything the
        // readers did with the block must be over by then.
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
