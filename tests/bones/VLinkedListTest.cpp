#include "support/Counted.h"
#include "support/Latch.h"
#include <vort/bones/VLinkedList.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <list>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using VORT::VLinkedList;
using VORT::VLinkedListData;
using vort_test::Counted;

namespace {

template <typename T>
std::vector<T> toVector(const VLinkedList<T> &list) {
    return std::vector<T>(list.begin(), list.end());
}

// Links run both ways around the ring and the count matches.
template <typename T>
void checkRing(const VLinkedList<T> &list) {
    const VLinkedListData *e = &list.data();
    int forward = 0;
    for (const VLinkedListData *n = e->next; n != e; n = n->next) {
        EXPECT_EQ(n->next->previous, n);
        ++forward;
    }
    EXPECT_EQ(e->next->previous, e);
    EXPECT_EQ(forward, list.size());
}

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
};

}  // namespace

TEST(VLinkedListData, SharedNullIsAnEmptyRing) {
    const VLinkedListData &null = VLinkedListData::shared_null;
    EXPECT_EQ(null.next, &null);
    EXPECT_EQ(null.previous, &null);
    EXPECT_GE(int(null.ref), 1);
    EXPECT_EQ(null.size, 0);
    EXPECT_EQ(null.sharable, 1u);
}

TEST(VLinkedList, EditsMatchAStdList) {
    std::mt19937 random(3);
    VLinkedList<std::string> list;
    std::list<std::string> model;
    for (int step = 0; step < 5000; ++step) {
        const std::string text = std::to_string(step);
        const int size = int(model.size());
        const int at = size ? int(random() % unsigned(size)) : 0;
        switch (random() % 7) {
            case 0:
                list.append(text);
                model.push_back(text);
                break;
            case 1:
                list.prepend(text);
                model.push_front(text);
                break;
            case 2: {
                auto it = std::next(list.begin(), at);
                EXPECT_EQ(*list.insert(it, text), text);
                model.insert(std::next(model.begin(), at), text);
                break;
            }
            case 3:
                if (size) {
                    auto next = list.erase(std::next(list.begin(), at));
                    auto expected = model.erase(std::next(model.begin(), at));
                    EXPECT_EQ(next == list.end(), expected == model.end());
                }
                break;
            case 4:
                if (size) {
                    EXPECT_EQ(list.takeFirst(), model.front());
                    model.pop_front();
                }
                break;
            case 5:
                if (size) {
                    EXPECT_EQ(list.takeLast(), model.back());
                    model.pop_back();
                }
                break;
            case 6:
                if (size > 2) {
                    const int n = int(random() % 3);
                    auto from = std::next(list.begin(), at / 2);
                    list.erase(from, std::next(from, std::min(n, size - at / 2)));
                    auto mfrom = std::next(model.begin(), at / 2);
                    model.erase(mfrom, std::next(mfrom, std::min(n, size - at / 2)));
                }
                break;
        }
        ASSERT_EQ(list.size(), int(model.size()));
    }
    checkRing(list);
    EXPECT_TRUE(std::equal(list.cbegin(), list.cend(), model.begin(), model.end()));
    EXPECT_TRUE(std::equal(list.crbegin(), list.crend(), model.rbegin(), model.rend()));
}

TEST(VLinkedList, ConvenienceOperationsAndStableIterators) {
    VLinkedList<int> list{1, 2, 3, 2};
    EXPECT_EQ(list.first(), 1);
    EXPECT_EQ(list.last(), 2);
    EXPECT_TRUE(list.contains(3));
    EXPECT_FALSE(list.contains(9));
    EXPECT_EQ(list.count(2), 2);
    EXPECT_TRUE(list.startsWith(1));
    EXPECT_TRUE(list.endsWith(2));

    auto three = std::find(list.begin(), list.end(), 3);
    list.prepend(0);
    list.append(4);
    list.insert(list.begin(), -1);
    EXPECT_EQ(*three, 3);  // other edits leave an iterator alone
    *three = 30;
    EXPECT_EQ(toVector(list), (std::vector<int>{-1, 0, 1, 2, 30, 2, 4}));

    EXPECT_EQ(list.removeAll(2), 2);
    EXPECT_TRUE(list.removeOne(30));
    EXPECT_FALSE(list.removeOne(30));
    list.pop_front();
    list.pop_back();
    list.push_back(5);
    list.push_front(-5);
    EXPECT_EQ(toVector(list), (std::vector<int>{-5, 0, 1, 5}));
    list += list;
    EXPECT_EQ(toVector(list), (std::vector<int>{-5, 0, 1, 5, -5, 0, 1, 5}));
    VLinkedList<int> sum = VLinkedList<int>{1} + VLinkedList<int>{2, 3};
    sum << 4;
    EXPECT_EQ(sum, (VLinkedList<int>{1, 2, 3, 4}));
    EXPECT_NE(sum, (VLinkedList<int>{1, 2, 3}));
    sum.removeFirst();
    sum.removeLast();
    EXPECT_EQ(sum.front(), 2);
    EXPECT_EQ(sum.back(), 3);
    checkRing(sum);
    sum.clear();
    EXPECT_EQ(&sum.data(), &VLinkedListData::shared_null);
}

TEST(VLinkedList, CopiesShareWritesDetachAndUnsharableListsCopyAtOnce) {
    const int before = VLinkedListData::shared_null.ref;
    {
        VLinkedList<int> empty;
        VLinkedList<int> also(empty);
        EXPECT_EQ(int(VLinkedListData::shared_null.ref), before + 2);
    }
    EXPECT_EQ(int(VLinkedListData::shared_null.ref), before);

    VLinkedList<std::string> a{"x", "y", "z"};
    const std::vector<std::function<void(VLinkedList<std::string> &)>> writes = {
        [](auto &l) { l.append("w"); },          [](auto &l) { l.prepend("w"); },
        [](auto &l) { l.first() = "changed"; },  [](auto &l) { l.removeLast(); },
        [](auto &l) { l.takeFirst(); },          [](auto &l) { l.removeAll("y"); },
        [](auto &l) { *l.begin() = "changed"; },
    };
    for (size_t i = 0; i < writes.size(); ++i) {
        VLinkedList<std::string> copy(a);
        EXPECT_TRUE(copy.isSharedWith(a));
        EXPECT_TRUE(copy.contains("y"));
        writes[i](copy);
        EXPECT_FALSE(copy.isSharedWith(a)) << "write " << i;
        EXPECT_EQ(toVector(a), (std::vector<std::string>{"x", "y", "z"})) << "write " << i;
    }

    // Iterators into a shared block work on this list's own copy, at the same place.
    VLinkedList<std::string> copy(a);
    auto y = std::next(static_cast<const VLinkedList<std::string> &>(copy).begin());
    VLinkedList<std::string>::iterator yy(y.i);
    auto inserted = copy.insert(yy, "before y");
    EXPECT_EQ(*std::next(inserted), "y");
    EXPECT_EQ(toVector(copy), (std::vector<std::string>{"x", "before y", "y", "z"}));
    VLinkedList<std::string> other(a);
    auto z = VLinkedList<std::string>::iterator(
        std::next(static_cast<const VLinkedList<std::string> &>(other).begin(), 2).i);
    auto afterZ = other.erase(z);
    EXPECT_TRUE(afterZ == other.end());
    EXPECT_EQ(toVector(other), (std::vector<std::string>{"x", "y"}));
    EXPECT_EQ(toVector(a), (std::vector<std::string>{"x", "y", "z"}));

    a.setSharable(false);
    std::string &x = a.first();
    VLinkedList<std::string> b(a);
    EXPECT_FALSE(b.isSharedWith(a));
    x = "X";
    EXPECT_EQ(b.first(), "x");
    a.setSharable(true);
    VLinkedList<std::string> c(a);
    EXPECT_TRUE(c.isSharedWith(a));
}

TEST(VLinkedList, EveryElementItMakesIsDestroyedOnce) {
    Counted::Scope scope;
    {
        VLinkedList<Counted> list;
        for (int i = 0; i < 100; ++i) {
            list.append(Counted(i));
            list.prepend(Counted(-i));
        }
        list.removeAll(Counted(0));
        list.takeFirst();
        {
            VLinkedList<Counted> copy(list);
            const int before = scope.copied();
            copy.removeLast();
            EXPECT_EQ(scope.copied() - before, list.size());
        }
        list.erase(std::next(list.begin(), 10), std::next(list.begin(), 50));
        VLinkedList<Counted> kept = list;
        kept.setSharable(false);
        VLinkedList<Counted> deep(kept);
        list.clear();

        VLinkedList<Fragile> fragile;
        for (int i = 0; i < 10; ++i) {
            fragile.append(i);
        }
        VLinkedList<Fragile> sharer(fragile);
        Fragile::copiesLeft = 4;
        EXPECT_THROW(sharer.removeFirst(), std::runtime_error);
        Fragile::copiesLeft = -1;
        EXPECT_TRUE(sharer.isSharedWith(fragile));
        EXPECT_EQ(sharer.size(), 10);
    }
    EXPECT_EQ(scope.leaked(), 0);
    EXPECT_EQ(scope.badDestructions(), 0);
}

TEST(VLinkedListConcurrency, SharedRingsSurviveCopiesWritesAndDropsOnManyThreads) {
    Counted::Scope scope;
    {
        VLinkedList<Counted> shared;
        for (int i = 0; i < 200; ++i) {
            shared.append(Counted(i));
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
                    VLinkedList<Counted> copy(shared);
                    long sum = 0;
                    for (const Counted &c : static_cast<const VLinkedList<Counted> &>(copy)) {
                        sum += c.value();
                    }
                    failures[t] += sum != 199 * 200 / 2;
                    if (round % 2 == 0) {
                        copy.append(Counted(t));
                        copy.removeFirst();
                        failures[t] += copy.size() != 200 || copy.last().value() != t;
                    }
                    VLinkedList<Counted> again = copy;
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
