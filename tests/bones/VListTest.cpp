#include "support/Counted.h"
#include "support/Latch.h"
#include <vort/bones/VList.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <numeric>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using VORT::VList;
using VORT::VListData;
using vort_test::Counted;

namespace {

struct Layout {
    int first, last, capacity;
    bool operator==(const Layout &o) const {
        return first == o.first && last == o.last && capacity == o.capacity;
    }
};

template <typename T>
Layout layoutOf(const VList<T> &list) {
    const VListData::Data *d = list.data().d;
    return {d->first, d->last, d->capacity};
}

std::ostream &operator<<(std::ostream &out, const Layout &l) {
    return out << "{first " << l.first << ", last " << l.last << ", capacity " << l.capacity << "}";
}

template <typename T>
std::vector<T> toVector(const VList<T> &list) {
    return std::vector<T>(list.begin(), list.end());
}

VList<int> range(int n) {
    VList<int> list;
    for (int i = 0; i < n; ++i) {
        list.append(i);
    }
    return list;
}

}  // namespace

TEST(VortAllocMore, SizesBlocksInStepsOfEightThenPowersOfTwo) {
    struct Row {
        int alloc, extra, expected;
    };
    const Row rows[] = {
        {0, 24, 8},     // never exactly full: one step to spare
        {39, 24, 40},   // 63 rounds up to 64
        {40, 24, 40},   // 64 is already a power of two
        {41, 24, 104},  // 65 goes to 128
        {1, 0, 8},
        {7, 0, 8},
        {8, 0, 16},
        {63, 0, 64},
        {64, 0, 64},
        {65, 0, 128},
        {4096 - 24, 24, 4096 - 24},  // a sum of 4096 is a block of 4096
        {4097 - 24, 24, 8192 - 24},  // 4097 starts at 4096 and doubles once
        {4000, 16, 4096 - 16},
        {1 << 30, 0, 1 << 30},           // the largest power of two an int holds
        {(1 << 30) + 1, 0, 0x7FFFFFFF},  // the next doubling overflows: saturate
        {0x7FFFFFF0, 64, 0x7FFFFFFF},
    };
    for (const Row &row : rows) {
        EXPECT_EQ(VORT::vortAllocMore(row.alloc, row.extra), row.expected)
            << "alloc " << row.alloc << ", extra " << row.extra;
    }
}

TEST(VListData, GrowRoundsSlotCountsToBlockSizes) {
    EXPECT_EQ(offsetof(VListData::Data, items), 24u);  // the header ends where the slots begin
    EXPECT_EQ(VListData::grow(0), 1);
    EXPECT_EQ(VListData::grow(1), 2);   // 32-byte block
    EXPECT_EQ(VListData::grow(5), 5);   // 64-byte block
    EXPECT_EQ(VListData::grow(6), 13);  // 128-byte block
    EXPECT_EQ(VListData::grow(509), 509);
    EXPECT_EQ(VListData::grow(510), 1021);
}

TEST(VListData, SharedNullIsAnEmptySharableBlock) {
    const VListData::Data &null = VListData::shared_null;
    EXPECT_GE(int(null.ref), 1);
    EXPECT_EQ(null.capacity, 0);
    EXPECT_EQ(null.first, 0);
    EXPECT_EQ(null.last, 0);
    EXPECT_EQ(null.sharable, 1u);
}

TEST(VListData, DetachCopiesSlotsAndDropsTheOldCount) {
    VList<int> a = range(5);
    VListData raw = a.data();  // a second owner, by hand
    raw.d->ref.ref();
    VListData::Data *original = raw.d;

    EXPECT_EQ(raw.detach(), nullptr);  // `a` still holds the original
    EXPECT_NE(raw.d, original);
    EXPECT_EQ(int(raw.d->ref), 1);
    EXPECT_EQ(int(original->ref), 1);
    EXPECT_EQ(raw.d->sharable, 1u);
    EXPECT_EQ(raw.size(), 5);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(&raw.d->items[raw.d->first + i], raw.at(i));
        EXPECT_EQ(*reinterpret_cast<int *>(raw.at(i)), i);
    }

    // Dropping the last count hands the old block back to be freed.
    VListData again = raw;
    again.d->ref.ref();
    VListData::Data *copy = again.d;
    EXPECT_EQ(again.detach(), nullptr);
    EXPECT_EQ(int(copy->ref), 1);
    VListData::Data *freed = raw.detach();
    EXPECT_EQ(freed, copy);
    std::free(freed);
    std::free(raw.d);
    std::free(again.d);
}

TEST(VList, AppendSlidesBackInsteadOfGrowingWhenTheFrontIsFree) {
    VList<int> list = range(13);
    const int capacity = list.capacity();
    ASSERT_EQ(capacity, 13);
    // Take from the front until more than two thirds of the block is free there.
    int next = 0;
    while (layoutOf(list).first <= 2 * capacity / 3) {
        EXPECT_EQ(list.takeFirst(), next++);
    }
    const int left = list.size();
    EXPECT_EQ(layoutOf(list), (Layout{capacity - left, capacity, capacity}));

    list.append(-1);
    EXPECT_EQ(layoutOf(list), (Layout{left, 2 * left + 1, capacity}));
    for (int i = 0; i < left; ++i) {
        EXPECT_EQ(list.at(i), next + i);
    }
    EXPECT_EQ(list.last(), -1);

    // With the front mostly in use, a full block grows instead.
    VList<int> full = range(capacity);
    full.append(capacity);
    EXPECT_EQ(layoutOf(full).first, 0);
    EXPECT_EQ(layoutOf(full).capacity, VListData::grow(capacity + 1));
}

TEST(VList, PrependKeepsAThirdOfTheBlockFreeAtTheBack) {
    VList<int> list;
    list.prepend(1);  // grows to 2 slots; the item goes to the last slot
    EXPECT_EQ(layoutOf(list), (Layout{1, 2, 2}));
    list.prepend(2);
    EXPECT_EQ(layoutOf(list), (Layout{0, 2, 2}));
    list.prepend(3);  // full at the front: 4 slots, items moved to the back
    EXPECT_EQ(layoutOf(list), (Layout{1, 4, 4}));
    EXPECT_EQ(toVector(list), (std::vector<int>{3, 2, 1}));

    // A list with few items in a large block moves them to leave a third free behind.
    VList<int> roomy;
    roomy.reserve(30);
    roomy.append(7);
    roomy.append(8);
    roomy.prepend(6);
    EXPECT_EQ(layoutOf(roomy), (Layout{30 - 4 - 1, 30 - 2, 30}));
    EXPECT_EQ(toVector(roomy), (std::vector<int>{6, 7, 8}));
}

TEST(VList, InsertAtTheEndsIsPrependOrAppend) {
    auto twin = [] {
        VList<int> l;
        l.reserve(12);
        for (int i = 0; i < 6; ++i) {
            l.append(i);
        }
        l.removeFirst();
        return l;
    };
    VList<int> a = twin(), b = twin();
    a.insert(0, 100);
    b.prepend(100);
    EXPECT_EQ(layoutOf(a), layoutOf(b));
    EXPECT_EQ(a, b);
    a.insert(-3, 101);
    b.prepend(101);
    EXPECT_EQ(layoutOf(a), layoutOf(b));

    VList<int> c = twin(), d = twin();
    c.insert(c.size(), 200);
    d.append(200);
    EXPECT_EQ(layoutOf(c), layoutOf(d));
    EXPECT_EQ(c, d);
    c.insert(c.size() + 5, 201);
    d.append(201);
    EXPECT_EQ(layoutOf(c), layoutOf(d));
    EXPECT_EQ(c.last(), 201);
}

TEST(VList, InsertInTheMiddleMovesTheShorterSideWhenItCan) {
    VList<int> list;
    list.reserve(16);
    for (int i = 0; i < 8; ++i) {
        list.append(i);
    }
    list.removeFirst();  // {1, 8, 16}: room at both ends
    list.removeFirst();  // {2, 8, 16}
    ASSERT_EQ(layoutOf(list), (Layout{2, 8, 16}));

    list.insert(1, 100);  // 1 item before, 5 after: leftward
    EXPECT_EQ(layoutOf(list), (Layout{1, 8, 16}));
    list.insert(5, 101);  // 5 before, 2 after: rightward
    EXPECT_EQ(layoutOf(list), (Layout{1, 9, 16}));
    EXPECT_EQ(toVector(list), (std::vector<int>{2, 100, 3, 4, 5, 101, 6, 7}));

    // With no room at the front the items behind always move.
    VList<int> packed = range(4);
    packed.reserve(8);
    packed.insert(1, 50);
    EXPECT_EQ(layoutOf(packed), (Layout{0, 5, 8}));
    EXPECT_EQ(toVector(packed), (std::vector<int>{0, 50, 1, 2, 3}));

    // A block full at the back but free at the front moves leftward.
    VList<int> backFull = range(5);
    backFull.reserve(5);
    while (backFull.size() < backFull.capacity()) {
        backFull.append(backFull.size());
    }
    const int capacity = backFull.capacity();
    backFull.removeFirst();
    backFull.insert(backFull.size() - 1, 60);
    EXPECT_EQ(layoutOf(backFull), (Layout{0, capacity, capacity}));
    EXPECT_EQ(backFull.at(backFull.size() - 2), 60);
}

TEST(VList, RemoveMovesTheShorterSide) {
    VList<int> list = range(10);  // {0, 10, capacity}
    const int capacity = list.capacity();
    list.removeAt(2);  // 2 before, 7 behind: the front moves up
    EXPECT_EQ(layoutOf(list), (Layout{1, 10, capacity}));
    list.removeAt(7);  // 7 before, 1 behind: the back moves down
    EXPECT_EQ(layoutOf(list), (Layout{1, 9, capacity}));
    EXPECT_EQ(toVector(list), (std::vector<int>{0, 1, 3, 4, 5, 6, 7, 9}));

    // A tie moves the front.
    VList<int> tie = range(5);
    tie.removeAt(2);  // 2 before, 2 behind
    EXPECT_EQ(layoutOf(tie).first, 1);
    EXPECT_EQ(layoutOf(tie).last, 5);

    // Ranges: the middle of the removed run decides.
    VList<int> front = range(12);
    front.erase(front.begin() + 1, front.begin() + 4);  // middle at slot 2
    EXPECT_EQ(layoutOf(front).first, 3);
    EXPECT_EQ(layoutOf(front).last, 12);
    EXPECT_EQ(toVector(front), (std::vector<int>{0, 4, 5, 6, 7, 8, 9, 10, 11}));
    VList<int> back = range(12);
    back.erase(back.begin() + 6, back.begin() + 10);
    EXPECT_EQ(layoutOf(back).first, 0);
    EXPECT_EQ(layoutOf(back).last, 8);
    EXPECT_EQ(toVector(back), (std::vector<int>{0, 1, 2, 3, 4, 5, 10, 11}));
}

TEST(VList, MoveShiftsTheShorterPart) {
    auto roomy = [] {
        VList<int> l;
        l.reserve(16);
        for (int i = 0; i < 8; ++i) {
            l.append(i);
        }
        l.removeFirst();
        l.removeFirst();  // items 2..7 in slots 2..7
        return l;
    };
    struct Row {
        int from, to;
        Layout layout;
    };
    const Row rows[] = {
        {1, 2, {2, 8, 16}},  // a short hop: the items between shift
        {0, 5, {3, 9, 16}},  // a long way up: both outer parts move up
        {5, 0, {1, 7, 16}},  // a long way down: both outer parts move down
        {4, 3, {2, 8, 16}}, {2, 2, {2, 8, 16}},
    };
    for (const Row &row : rows) {
        VList<int> list = roomy();
        std::vector<int> expected = toVector(list);
        const int t = expected[row.from];
        expected.erase(expected.begin() + row.from);
        expected.insert(expected.begin() + row.to, t);
        list.move(row.from, row.to);
        EXPECT_EQ(layoutOf(list), row.layout) << row.from << " -> " << row.to;
        EXPECT_EQ(toVector(list), expected) << row.from << " -> " << row.to;
    }

    // Full at the back, or packed at the front, the items between always shift.
    VList<int> packed = range(6);
    const Layout before = layoutOf(packed);
    packed.move(5, 0);
    EXPECT_EQ(layoutOf(packed), before);
    EXPECT_EQ(toVector(packed), (std::vector<int>{5, 0, 1, 2, 3, 4}));
}

TEST(VList, MatchesADequeUnderRandomEdits) {
    std::mt19937 random(1234);
    VList<int> list;
    std::deque<int> model;
    for (int step = 0; step < 20000; ++step) {
        const int size = int(model.size());
        const int pick = size ? int(random() % unsigned(size)) : 0;
        switch (random() % 9) {
            case 0:
            case 1:
                list.append(step);
                model.push_back(step);
                break;
            case 2:
            case 3:
                list.prepend(step);
                model.push_front(step);
                break;
            case 4:
                list.insert(pick, step);
                model.insert(model.begin() + pick, step);
                break;
            case 5:
                if (size) {
                    list.removeAt(pick);
                    model.erase(model.begin() + pick);
                }
                break;
            case 6:
                if (size) {
                    const int to = int(random() % unsigned(size));
                    list.move(pick, to);
                    const int t = model[pick];
                    model.erase(model.begin() + pick);
                    model.insert(model.begin() + to, t);
                }
                break;
            case 7:
                if (size) {
                    const int n = int(random() % unsigned(size - pick + 1));
                    list.erase(list.begin() + pick, list.begin() + pick + n);
                    model.erase(model.begin() + pick, model.begin() + pick + n);
                }
                break;
            case 8:
                if (size > 1 && random() % 4 == 0) {
                    list.removeFirst();
                    model.pop_front();
                }
                break;
        }
        ASSERT_EQ(list.size(), int(model.size()));
        const Layout l = layoutOf(list);
        ASSERT_TRUE(0 <= l.first && l.first <= l.last && l.last <= l.capacity);
    }
    EXPECT_TRUE(std::equal(list.begin(), list.end(), model.begin(), model.end()));
}

TEST(VList, EmptyListsShareTheNullBlockWithoutLeavingACount) {
    const int before = VListData::shared_null.ref;
    {
        VList<std::string> a;
        VList<int> b;
        VList<std::string> c(a);
        EXPECT_EQ(a.data().d, &VListData::shared_null);
        EXPECT_EQ(int(VListData::shared_null.ref), before + 3);
        c = a;
        VList<std::string> moved(std::move(c));
        EXPECT_EQ(int(VListData::shared_null.ref), before + 4);
    }
    EXPECT_EQ(int(VListData::shared_null.ref), before);

    // Growing away from it and clearing back to it balances as well.
    {
        VList<std::string> list;
        list.append("x");
        EXPECT_EQ(int(VListData::shared_null.ref), before);
        list.clear();
        EXPECT_EQ(int(VListData::shared_null.ref), before + 1);
    }
    EXPECT_EQ(int(VListData::shared_null.ref), before);
}

TEST(VList, CopiesShareAndWritesDetach) {
    VList<std::string> a;
    a << "one"
      << "two"
      << "three";
    VList<std::string> b(a);
    EXPECT_TRUE(b.isSharedWith(a));
    EXPECT_EQ(int(a.data().d->ref), 2);
    EXPECT_FALSE(a.isDetached());

    // Reads don't detach.
    EXPECT_EQ(b.at(1), "two");
    EXPECT_EQ(*static_cast<const VList<std::string> &>(b).begin(), "one");
    EXPECT_TRUE(b.isSharedWith(a));

    // Every kind of write does.
    const std::vector<std::function<void(VList<std::string> &)>> writes = {
        [](VList<std::string> &l) { l[0] = "changed"; },
        [](VList<std::string> &l) { l.append("four"); },
        [](VList<std::string> &l) { l.prepend("zero"); },
        [](VList<std::string> &l) { l.insert(1, "one and a half"); },
        [](VList<std::string> &l) { l.removeAt(1); },
        [](VList<std::string> &l) { l.move(0, 2); },
        [](VList<std::string> &l) { l.swapItemsAt(0, 2); },
        [](VList<std::string> &l) { *l.begin() = "via iterator"; },
        [](VList<std::string> &l) { l.removeAll("two"); },
        [](VList<std::string> &l) { l.takeLast(); },
    };
    for (size_t i = 0; i < writes.size(); ++i) {
        VList<std::string> copy(a);
        writes[i](copy);
        EXPECT_FALSE(copy.isSharedWith(a)) << "write " << i;
        EXPECT_TRUE(copy.isDetached()) << "write " << i;
        EXPECT_EQ(toVector(a), (std::vector<std::string>{"one", "two", "three"})) << "write " << i;
    }
    EXPECT_EQ(int(a.data().d->ref), 2);  // only `b` still shares
}

TEST(VList, UnsharableListsAreCopiedDeeplyAtOnce) {
    VList<std::string> empty;
    empty.setSharable(false);
    EXPECT_NE(empty.data().d, &VListData::shared_null);
    EXPECT_FALSE(empty.isSharable());

    VList<std::string> a;
    a << "alpha"
      << "beta";
    a.setSharable(false);
    std::string &alpha = a[0];
    VList<std::string> b(a);
    EXPECT_FALSE(b.isSharedWith(a));
    EXPECT_TRUE(b.isSharable());
    alpha = "ALPHA";  // the reference into `a` is still good and `b` is untouched
    EXPECT_EQ(a.at(0), "ALPHA");
    EXPECT_EQ(b.at(0), "alpha");

    VList<std::string> c;
    c = a;
    EXPECT_FALSE(c.isSharedWith(a));
    EXPECT_EQ(c.at(0), "ALPHA");

    // Made sharable again, copies share once more.
    a.setSharable(true);
    VList<std::string> d(a);
    EXPECT_TRUE(d.isSharedWith(a));

    // Clearing the flag on a shared list detaches it first.
    VList<std::string> e(d);
    e.setSharable(false);
    EXPECT_FALSE(e.isSharedWith(d));
    EXPECT_EQ(toVector(e), toVector(d));
}

TEST(VList, EveryElementItMakesIsDestroyedOnce) {
    Counted::Scope scope;
    {
        VList<Counted> list;
        for (int i = 0; i < 50; ++i) {
            list.append(Counted(i));
            list.prepend(Counted(-i));
        }
        list.insert(10, Counted(1000));
        list.removeAt(3);
        EXPECT_EQ(list.takeAt(5).value(), -43);
        list.move(0, 40);
        {
            VList<Counted> copy(list);
            const int copiesBefore = scope.copied();
            copy.removeFirst();  // detaches: every element copied once
            EXPECT_EQ(scope.copied() - copiesBefore, list.size());
        }
        EXPECT_EQ(list.removeAll(Counted(7)), 1);
        list.erase(list.begin() + 2, list.begin() + 20);
        list.append(list);  // appends copies of itself
        VList<Counted> other;
        other = list;
        other.append(Counted(5));
        list.clear();
        other.setSharable(false);
        VList<Counted> deep(other);
        EXPECT_EQ(deep.size(), other.size());
    }
    EXPECT_EQ(scope.leaked(), 0);
    EXPECT_EQ(scope.badDestructions(), 0);
}

namespace {

// Throws on its copy number `failAt`, counted from when the counter is set.
struct Fragile {
    static inline int copiesLeft = -1;
    Counted payload;
    explicit Fragile(int v) : payload(v) {}
    Fragile(const Fragile &other) : payload(other.payload) {
        if (copiesLeft >= 0 && copiesLeft-- == 0) {
            throw std::runtime_error("copy failed");
        }
    }
    Fragile &operator=(const Fragile &) = default;
    bool operator==(const Fragile &o) const { return payload == o.payload; }
};

}  // namespace

TEST(VList, AFailingCopyLeavesTheListAsItWas) {
    Counted::Scope scope;
    {
        VList<Fragile> list;
        for (int i = 0; i < 10; ++i) {
            list.append(Fragile(i));
        }
        VList<Fragile> shared(list);
        Fragile::copiesLeft = 4;  // the detach fails half way
        EXPECT_THROW(shared.append(Fragile(99)), std::runtime_error);
        Fragile::copiesLeft = -1;
        EXPECT_TRUE(shared.isSharedWith(list));
        EXPECT_EQ(shared.size(), 10);

        Fragile::copiesLeft = 2;  // appending copies of another list fails half way
        VList<Fragile> target;
        target.append(Fragile(-1));
        EXPECT_THROW(target.append(list), std::runtime_error);
        Fragile::copiesLeft = -1;
        EXPECT_EQ(target.size(), 1);
    }
    EXPECT_EQ(scope.leaked(), 0);
    EXPECT_EQ(scope.badDestructions(), 0);
}

TEST(VList, WorksWithStandardAlgorithmsAndRangeFor) {
    VList<std::string> words{"pear", "apple", "fig", "cherry"};
    std::sort(words.begin(), words.end());
    EXPECT_EQ(toVector(words), (std::vector<std::string>{"apple", "cherry", "fig", "pear"}));
    EXPECT_EQ(std::find(words.cbegin(), words.cend(), "fig") - words.cbegin(), 2);
    std::reverse(words.begin(), words.end());
    EXPECT_EQ(words.first(), "pear");

    std::string joined;
    for (const std::string &w : words) {
        joined += w;
    }
    EXPECT_EQ(joined, "pearfigcherryapple");

    VList<int> numbers = range(6);
    for (int &n : numbers) {
        n *= 10;
    }
    EXPECT_EQ(std::accumulate(numbers.cbegin(), numbers.cend(), 0), 150);
    std::vector<int> reversed(numbers.crbegin(), numbers.crend());
    EXPECT_EQ(reversed, (std::vector<int>{50, 40, 30, 20, 10, 0}));
    auto it = std::lower_bound(numbers.begin(), numbers.end(), 25);
    EXPECT_EQ(*it, 30);
    EXPECT_EQ(it - numbers.begin(), 3);
}

TEST(VList, SearchesAndConvenienceOperations) {
    VList<int> list{3, 1, 4, 1, 5, 9, 2, 6};
    EXPECT_EQ(list.indexOf(1), 1);
    EXPECT_EQ(list.indexOf(1, 2), 3);
    EXPECT_EQ(list.indexOf(7), -1);
    EXPECT_EQ(list.indexOf(6, -1), 7);
    EXPECT_EQ(list.lastIndexOf(1), 3);
    EXPECT_EQ(list.lastIndexOf(1, 2), 1);
    EXPECT_TRUE(list.contains(9));
    EXPECT_FALSE(list.contains(8));
    EXPECT_EQ(list.count(1), 2);
    EXPECT_TRUE(list.startsWith(3));
    EXPECT_TRUE(list.endsWith(6));
    EXPECT_EQ(list.value(100), 0);
    EXPECT_EQ(list.value(-1, 42), 42);
    EXPECT_EQ(toVector(list.mid(2, 3)), (std::vector<int>{4, 1, 5}));
    EXPECT_EQ(toVector(list.mid(6)), (std::vector<int>{2, 6}));
    EXPECT_TRUE(list.mid(0).isSharedWith(list));

    EXPECT_TRUE(list.removeOne(1));
    EXPECT_EQ(list.removeAll(1), 1);
    EXPECT_FALSE(list.removeOne(1));
    EXPECT_EQ(toVector(list), (std::vector<int>{3, 4, 5, 9, 2, 6}));

    VList<int> sum = list + VList<int>{7};
    EXPECT_EQ(sum.size(), 7);
    EXPECT_NE(sum, list);
    sum.removeLast();
    EXPECT_EQ(sum, list);
    sum.replace(0, 30);
    EXPECT_EQ(sum.front(), 30);
    sum.pop_front();
    sum.push_front(-3);
    sum.pop_back();
    sum.push_back(-6);
    EXPECT_EQ(toVector(sum), (std::vector<int>{-3, 4, 5, 9, 2, -6}));
    EXPECT_EQ(sum.takeFirst(), -3);
    EXPECT_EQ(sum.takeLast(), -6);
    auto where = sum.insert(sum.begin() + 1, 44);
    EXPECT_EQ(*where, 44);
    where = sum.erase(where);
    EXPECT_EQ(*where, 5);
    sum.swapItemsAt(0, 3);
    EXPECT_EQ(toVector(sum), (std::vector<int>{2, 5, 9, 4}));

    // Appending a list to itself doubles it.
    sum.append(sum);
    EXPECT_EQ(toVector(sum), (std::vector<int>{2, 5, 9, 4, 2, 5, 9, 4}));
    VList<std::string> strings{"a", "b"};
    strings += strings;
    EXPECT_EQ(toVector(strings), (std::vector<std::string>{"a", "b", "a", "b"}));
}

TEST(VListConcurrency, SharedBlocksSurviveCopiesWritesAndDropsOnManyThreads) {
    Counted::Scope scope;
    {
        VList<Counted> shared;
        VList<int> sharedInts;
        for (int i = 0; i < 200; ++i) {
            shared.append(Counted(i));
            sharedInts.append(i);
        }
        const int threads = 4;
        vort_test::Latch start(threads);
        std::vector<std::thread> workers;
        std::vector<int> failures(threads, 0);
        for (int t = 0; t < threads; ++t) {
            workers.emplace_back([&, t] {
                start.countDown();
                start.wait();
                for (int round = 0; round < 300; ++round) {
                    VList<Counted> copy(shared);  // copied on every thread at once
                    VList<int> ints(sharedInts);
                    long sum = 0;
                    for (const Counted &c : static_cast<const VList<Counted> &>(copy)) {
                        sum += c.value();
                    }
                    failures[t] += sum != 199 * 200 / 2;
                    if (round % 2 == 0) {
                        copy.append(Counted(-1));  // detaches while others read and copy
                        copy[0] = Counted(t);
                        ints.prepend(t);
                        failures[t] += copy.size() != 201 || ints.at(0) != t;
                    }
                    VList<Counted> again = copy;  // dropped in any order
                }
            });
        }
        for (std::thread &w : workers) {
            w.join();
        }
        for (int t = 0; t < threads; ++t) {
            EXPECT_EQ(failures[t], 0) << "thread " << t;
        }
        EXPECT_EQ(int(shared.data().d->ref), 1);
        EXPECT_EQ(shared.at(0).value(), 0);
    }
    EXPECT_EQ(scope.leaked(), 0);
    EXPECT_EQ(scope.badDestructions(), 0);
}

TEST(VListConcurrency, TheOwnerLeftAloneWritesInPlaceAfterTheOthersLetGo) {
    for (int round = 0; round < 50; ++round) {
        VList<std::string> list;
        for (int i = 0; i < 100; ++i) {
            list.append("item " + std::to_string(i));
        }
        const VListData::Data *block = list.data().d;
        std::vector<std::thread> readers;
        std::vector<size_t> lengths(3, 0);
        for (size_t t = 0; t < lengths.size(); ++t) {
            readers.emplace_back([copy = VList<std::string>(list), &length = lengths[t]]() mutable {
                for (const std::string &s : static_cast<const VList<std::string> &>(copy)) {
                    length += s.size();
                }
                copy = VList<std::string>();  // lets go of the block while the owner waits
            });
        }
        // As soon as the count says the owner is alone, it writes without a copy; everything
        // the readers did with the block must be over by then.
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
        for (size_t length : lengths) {
            EXPECT_EQ(length, 690u);
        }
    }
}
