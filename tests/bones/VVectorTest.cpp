#include "support/Counted.h"
#include "support/Latch.h"
#include <vort/bones/VVector.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <numeric>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using VORT::VVector;
using VORT::VVectorData;
using vort_test::Counted;

namespace {

// Knows its own address, as a handle registered somewhere would: moving its bytes breaks it.
struct Anchored {
    int value;
    const Anchored *self = this;
    Anchored(int v = 0) : value(v) {}  // NOLINT: converting, like an int
    Anchored(const Anchored &other) : value(other.value) { EXPECT_TRUE(other.intact()); }
    Anchored &operator=(const Anchored &other) {
        value = other.value;
        return *this;
    }
    bool intact() const { return self == this; }
    bool operator==(const Anchored &other) const { return value == other.value; }
};

// Logs the value of every copy it is made from.
struct Logged {
    static inline std::vector<int> log;
    int value;
    explicit Logged(int v = 0) : value(v) {}
    Logged(const Logged &other) : value(other.value) { log.push_back(value); }
    Logged &operator=(const Logged &) = default;
};

// Owns a heap object, yet may be moved by its bytes: declared movable below.
struct Owner {
    Counted *c;
    Owner(int v = 0) : c(new Counted(v)) {}  // NOLINT: converting, like an int
    Owner(const Owner &other) : c(new Counted(*other.c)) {}
    Owner &operator=(const Owner &other) {
        *c = *other.c;
        return *this;
    }
    ~Owner() { delete c; }
    bool operator==(const Owner &other) const { return *c == *other.c; }
};

// Throws on a chosen copy.
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

struct Point {
    double x, y;
    bool operator==(const Point &o) const { return x == o.x && y == o.y; }
};

template <typename T>
std::vector<int> capacitiesWhileAppending(int count) {
    VVector<T> v;
    std::vector<int> seen;
    for (int i = 0; i < count; ++i) {
        v.append(T(i));
        if (seen.empty() || seen.back() != v.capacity()) {
            seen.push_back(v.capacity());
        }
    }
    return seen;
}

}  // namespace

template <>
struct VORT::VTypeInfo<Owner> {
    static constexpr bool isMovable = true;
};

TEST(VTypeInfo, PlainDataIsMovableAndClassesWithIdentityAreNot) {
    EXPECT_TRUE(VORT::VTypeInfo<int>::isMovable);
    EXPECT_TRUE(VORT::VTypeInfo<const char *>::isMovable);
    EXPECT_TRUE(VORT::VTypeInfo<Point>::isMovable);
    EXPECT_FALSE(VORT::VTypeInfo<std::string>::isMovable);
    EXPECT_FALSE(VORT::VTypeInfo<Anchored>::isMovable);
    EXPECT_TRUE(VORT::VTypeInfo<Owner>::isMovable);
}

TEST(VVectorData, SharedNullGrowAndMalloc) {
    const VVectorData &null = VVectorData::shared_null;
    EXPECT_GE(int(null.ref), 1);
    EXPECT_EQ(null.capacity, 0);
    EXPECT_EQ(null.size, 0);
    EXPECT_EQ(null.sharable, 1u);
    EXPECT_EQ(null.reserved, 0u);

    // Four-byte elements behind a 16-byte header: typed data is 20 bytes.
    EXPECT_EQ(VVectorData::grow(20, 1, 4, false), 2);
    EXPECT_EQ(VVectorData::grow(20, 3, 4, false), 4);
    EXPECT_EQ(VVectorData::grow(20, 7, 4, false), 8);
    EXPECT_EQ(VVectorData::grow(20, 13, 4, false), 28);      // a 128-byte block
    EXPECT_EQ(VVectorData::grow(20, 1020, 4, false), 1020);  // 4096 exactly
    EXPECT_EQ(VVectorData::grow(20, 1021, 4, false), 2044);
    EXPECT_EQ(VVectorData::grow(24, 0, 8, true), 0);
    EXPECT_EQ(VVectorData::grow(24, 1, 8, true), 1);
    EXPECT_EQ(VVectorData::grow(24, 10, 8, true), 15);

    VVector<int> v{1, 2, 3, 4, 5};
    VVectorData *source = const_cast<VVectorData *>(&v.header());
    VVectorData *bigger = VVectorData::malloc(20, 8, 4, source);
    EXPECT_EQ(bigger->capacity, 5);  // the header as it was: the caller sets its own
    EXPECT_EQ(bigger->size, 5);
    EXPECT_EQ(int(bigger->ref), 1);
    const int *elements = reinterpret_cast<const int *>(reinterpret_cast<char *>(bigger) + 16);
    EXPECT_EQ(std::vector<int>(elements, elements + 5), (std::vector<int>{1, 2, 3, 4, 5}));
    std::free(bigger);
    VVectorData *smaller = VVectorData::malloc(20, 2, 4, source);
    elements = reinterpret_cast<const int *>(reinterpret_cast<char *>(smaller) + 16);
    EXPECT_EQ(elements[0], 1);
    EXPECT_EQ(elements[1], 2);
    std::free(smaller);
}

TEST(VVector, GrowsByBlockSizesWhenMovableAndByHalvesOtherwise) {
    EXPECT_EQ(capacitiesWhileAppending<int>(100),
              (std::vector<int>{2, 4, 6, 8, 10, 12, 28, 60, 124}));
    EXPECT_EQ(capacitiesWhileAppending<Anchored>(30), (std::vector<int>{1, 3, 6, 10, 16, 25, 39}));
}

TEST(VVector, CopiesImmovableElementsLastToFirstIntoANewBlock) {
    VVector<Logged> v;
    v.append(Logged(0));
    v.append(Logged(1));
    v.append(Logged(2));
    ASSERT_EQ(v.capacity(), 3);
    Logged::log.clear();
    v.append(Logged(3));  // the fourth needs a new block
    // The argument is copied aside first, then the old elements, last first, then the new one.
    EXPECT_EQ(Logged::log, (std::vector<int>{3, 2, 1, 0, 3}));

    // Elements that know their address stay whole through every change.
    VVector<Anchored> anchored;
    for (int i = 0; i < 100; ++i) {
        anchored.append(i);
        if (i % 7 == 0) {
            anchored.prepend(-i);
            anchored.insert(anchored.size() / 2, 3, Anchored(1000));
        }
        if (i % 5 == 0) {
            anchored.remove(anchored.size() / 3, 2);
        }
    }
    VVector<Anchored> copy(anchored);
    copy.append(7);
    anchored.resize(300);
    anchored.squeeze();
    for (const Anchored &a : static_cast<const VVector<Anchored> &>(anchored)) {
        ASSERT_TRUE(a.intact());
    }
    for (const Anchored &a : static_cast<const VVector<Anchored> &>(copy)) {
        ASSERT_TRUE(a.intact());
    }
}

TEST(VVector, MovableElementsMoveByBytesUnlessShared) {
    Counted::Scope scope;
    {
        VVector<Owner> v;
        for (int i = 0; i < 100; ++i) {
            v.append(Owner(i));
        }
        const int copiesAfterFill = scope.copied();
        v.reserve(1000);  // relocates by its bytes
        v.insert(10, 5, Owner(-1));
        v.remove(50, 20);
        EXPECT_EQ(scope.copied() - copiesAfterFill, 6);
        EXPECT_EQ(v.size(), 85);

        VVector<Owner> shared(v);
        const int before = scope.copied();
        shared.append(Owner(1));  // a shared block is copied element by element
        EXPECT_EQ(scope.copied() - before, 85 + 2);
        EXPECT_EQ(v.size(), 85);
        EXPECT_EQ(v.at(10).c->value(), -1);
        EXPECT_EQ(v.at(84).c->value(), 99);
    }
    EXPECT_EQ(scope.leaked(), 0);
    EXPECT_EQ(scope.badDestructions(), 0);
}

TEST(VVector, ReserveKeepsCapacityThroughShrinkingUntilSqueezed) {
    VVector<int> v;
    v.reserve(100);
    EXPECT_EQ(v.capacity(), 100);
    EXPECT_EQ(v.header().reserved, 1u);
    for (int i = 0; i < 10; ++i) {
        v.append(i);
    }
    v.resize(2);
    EXPECT_EQ(v.capacity(), 100);
    v.resize(8);  // the old elements' memory comes back as zeros
    EXPECT_EQ(v.toStdVector(), (std::vector<int>{0, 1, 0, 0, 0, 0, 0, 0}));
    v.resize(150);  // growing keeps the mark
    EXPECT_GE(v.capacity(), 150);
    EXPECT_EQ(v.header().reserved, 1u);
    v.squeeze();
    EXPECT_EQ(v.capacity(), 150);
    EXPECT_EQ(v.header().reserved, 0u);

    // Unreserved, shrinking below half the capacity gives memory back.
    VVector<int> w(10);
    EXPECT_EQ(w.capacity(), 10);
    w.resize(4);
    EXPECT_EQ(w.capacity(), 6);
    w.resize(3);  // not below half of 6
    EXPECT_EQ(w.capacity(), 6);
    EXPECT_EQ(w.toStdVector(), (std::vector<int>{0, 0, 0}));

    // A shared vector's reservation is its own copy's.
    VVector<int> x(w);
    x.reserve(50);
    EXPECT_FALSE(x.isSharedWith(w));
    EXPECT_EQ(x.header().reserved, 1u);
    EXPECT_EQ(w.header().reserved, 0u);
}

TEST(VVector, EditsMatchAStdVector) {
    std::mt19937 random(7);
    VVector<std::string> strings;
    VVector<int> ints;
    std::vector<std::string> model;
    for (int step = 0; step < 5000; ++step) {
        const int size = int(model.size());
        const int at = size ? int(random() % unsigned(size + 1)) : 0;
        const std::string text = "s" + std::to_string(step);
        switch (random() % 8) {
            case 0:
            case 1:
                strings.append(text);
                ints.append(step);
                model.push_back(text);
                break;
            case 2:
                strings.prepend(text);
                ints.prepend(step);
                model.insert(model.begin(), text);
                break;
            case 3: {
                const int n = int(random() % 4);
                strings.insert(at, n, text);
                ints.insert(at, n, step);
                model.insert(model.begin() + at, size_t(n), text);
                break;
            }
            case 4:
                if (at < size) {
                    const int n = std::min(int(random() % 4), size - at);
                    strings.remove(at, n);
                    ints.remove(at, n);
                    model.erase(model.begin() + at, model.begin() + at + n);
                }
                break;
            case 5:
                if (at < size) {
                    EXPECT_EQ(strings.takeAt(at), model[size_t(at)]);
                    ints.removeAt(at);
                    model.erase(model.begin() + at);
                }
                break;
            case 6: {
                const int n = int(random() % unsigned(size + 5));
                strings.resize(n);
                ints.resize(n);
                model.resize(size_t(n));
                break;
            }
            case 7:
                if (size && random() % 8 == 0) {
                    strings.squeeze();
                    ints.squeeze();
                }
                break;
        }
        ASSERT_EQ(strings.size(), int(model.size()));
        ASSERT_EQ(ints.size(), int(model.size()));
        ASSERT_LE(strings.size(), strings.capacity());
    }
    EXPECT_EQ(strings.toStdVector(), model);
}

TEST(VVector, ConvenienceOperations) {
    VVector<std::string> v{"c", "a", "b", "a"};
    EXPECT_EQ(v.indexOf("a"), 1);
    EXPECT_EQ(v.indexOf("a", 2), 3);
    EXPECT_EQ(v.lastIndexOf("a"), 3);
    EXPECT_EQ(v.lastIndexOf("a", 2), 1);
    EXPECT_EQ(v.indexOf("z"), -1);
    EXPECT_EQ(v.count("a"), 2);
    EXPECT_TRUE(v.contains("b"));
    EXPECT_TRUE(v.startsWith("c"));
    EXPECT_TRUE(v.endsWith("a"));
    EXPECT_EQ(v.value(9), "");
    EXPECT_EQ(v.value(9, "x"), "x");
    EXPECT_EQ(v.mid(1, 2).toStdVector(), (std::vector<std::string>{"a", "b"}));
    EXPECT_TRUE(v.mid(0).isSharedWith(v));

    std::sort(v.begin(), v.end());
    EXPECT_EQ(v.toStdVector(), (std::vector<std::string>{"a", "a", "b", "c"}));
    EXPECT_EQ(v.removeAll("a"), 2);
    EXPECT_FALSE(v.removeOne("a"));
    EXPECT_TRUE(v.removeOne("b"));
    v << "d"
      << "e";
    v += VVector<std::string>{"f"};
    v.append(v);  // its own copy
    EXPECT_EQ(v.toStdVector(), (std::vector<std::string>{"c", "d", "e", "f", "c", "d", "e", "f"}));
    EXPECT_EQ(v.takeFirst(), "c");
    EXPECT_EQ(v.takeLast(), "f");
    v.pop_back();
    v.pop_front();
    v.push_front("A");
    v.push_back("Z");
    v.replace(1, "R");
    EXPECT_EQ(v.toStdVector(), (std::vector<std::string>{"A", "R", "f", "c", "d", "Z"}));
    auto it = v.erase(v.begin() + 1);
    EXPECT_EQ(*it, "f");
    it = v.insert(v.begin() + 1, 2, "ins");
    EXPECT_EQ(it - v.begin(), 1);
    EXPECT_EQ(v.first(), "A");
    EXPECT_EQ(v.last(), "Z");

    VVector<int> numbers(4, 7);
    EXPECT_EQ(numbers.toStdVector(), (std::vector<int>{7, 7, 7, 7}));
    numbers.fill(2, 6);
    EXPECT_EQ(std::accumulate(numbers.cbegin(), numbers.cend(), 0), 12);
    EXPECT_EQ(VVector<int>::fromStdVector({1, 2, 3}), (VVector<int>{1, 2, 3}));
    EXPECT_NE(numbers, VVector<int>(6, 3));
    int *raw = numbers.data();
    raw[0] = 9;
    EXPECT_EQ(numbers.constData()[0], 9);
    std::vector<int> reversed(numbers.crbegin(), numbers.crend());
    EXPECT_EQ(reversed.back(), 9);

    VVector<Point> points;
    points.append({1.5, 2.5});
    points.resize(3);
    EXPECT_EQ(points.at(2), (Point{0.0, 0.0}));
    EXPECT_EQ(points.first(), (Point{1.5, 2.5}));
}

TEST(VVector, EmptyVectorsShareTheNullBlockWithoutLeavingACount) {
    const int before = VVectorData::shared_null.ref;
    {
        VVector<int> a;
        VVector<std::string> b;
        VVector<int> c = a;
        VVector<int> d(0);
        EXPECT_EQ(int(VVectorData::shared_null.ref), before + 4);
        a.reserve(0);
        c.resize(0);
        EXPECT_EQ(int(VVectorData::shared_null.ref), before + 4);
        a.append(1);
        EXPECT_EQ(int(VVectorData::shared_null.ref), before + 3);
    }
    EXPECT_EQ(int(VVectorData::shared_null.ref), before);
}

TEST(VVector, CopiesShareWritesDetachAndUnsharableVectorsCopyAtOnce) {
    VVector<std::string> a{"x", "y", "z"};
    const std::vector<std::function<void(VVector<std::string> &)>> writes = {
        [](auto &v) { v.append("w"); },           [](auto &v) { v[0] = "changed"; },
        [](auto &v) { v.data()[1] = "changed"; }, [](auto &v) { *v.begin() = "changed"; },
        [](auto &v) { v.insert(1, "i"); },        [](auto &v) { v.remove(0); },
        [](auto &v) { v.removeLast(); },          [](auto &v) { v.resize(1); },
        [](auto &v) { v.reserve(100); },          [](auto &v) { v.fill("f"); },
    };
    for (size_t i = 0; i < writes.size(); ++i) {
        VVector<std::string> copy(a);
        EXPECT_EQ(copy.at(1), "y");
        EXPECT_TRUE(copy.isSharedWith(a));
        writes[i](copy);
        EXPECT_FALSE(copy.isSharedWith(a)) << "write " << i;
        EXPECT_EQ(a.toStdVector(), (std::vector<std::string>{"x", "y", "z"})) << "write " << i;
    }
    EXPECT_TRUE(a.isDetached());

    a.setSharable(false);
    std::string &x = a[0];
    VVector<std::string> b(a);
    EXPECT_FALSE(b.isSharedWith(a));
    x = "X";
    EXPECT_EQ(b.at(0), "x");
    VVector<std::string> c;
    c = a;
    EXPECT_FALSE(c.isSharedWith(a));
    a.setSharable(true);
    VVector<std::string> d(a);
    EXPECT_TRUE(d.isSharedWith(a));
}

TEST(VVector, EveryElementItMakesIsDestroyedOnce) {
    Counted::Scope scope;
    {
        VVector<Counted> v;
        for (int i = 0; i < 100; ++i) {
            v.append(Counted(i));
        }
        const int before = scope.copied();
        v.reserve(500);  // a new block: every element copied once
        EXPECT_EQ(scope.copied() - before, 100);
        v.insert(5, 3, Counted(-1));
        v.remove(20, 10);
        v.resize(50);
        v.resize(70);
        EXPECT_EQ(v.takeAt(3).value(), 3);
        {
            VVector<Counted> copy(v);
            copy.append(Counted(1));
        }
        VVector<Counted> kept = v;
        kept.setSharable(false);
        VVector<Counted> deep(kept);
        v.clear();
        deep.squeeze();
        EXPECT_EQ(deep.size(), 69);

        // A copy failing during a change of capacity leaves the vector as it was.
        VVector<Fragile> fragile;
        for (int i = 0; i < 10; ++i) {
            fragile.append(i);
        }
        fragile.squeeze();
        Fragile::copiesLeft = 5;
        EXPECT_THROW(fragile.append(10), std::runtime_error);
        Fragile::copiesLeft = -1;
        EXPECT_EQ(fragile.size(), 10);
        EXPECT_EQ(fragile.capacity(), 10);
        EXPECT_EQ(fragile.at(9).payload.value(), 9);
        VVector<Fragile> sharer(fragile);
        Fragile::copiesLeft = 3;
        EXPECT_THROW(sharer.insert(0, 2, Fragile(5)), std::runtime_error);
        Fragile::copiesLeft = -1;
        EXPECT_TRUE(sharer.isSharedWith(fragile));
    }
    EXPECT_EQ(scope.leaked(), 0);
    EXPECT_EQ(scope.badDestructions(), 0);
}

TEST(VVectorConcurrency, SharedBlocksSurviveCopiesWritesAndDropsOnManyThreads) {
    Counted::Scope scope;
    {
        VVector<Counted> shared;
        VVector<int> sharedInts;
        for (int i = 0; i < 300; ++i) {
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
                for (int round = 0; round < 200; ++round) {
                    VVector<Counted> copy(shared);
                    VVector<int> ints = sharedInts;
                    long sum = 0;
                    for (const Counted &c : static_cast<const VVector<Counted> &>(copy)) {
                        sum += c.value();
                    }
                    failures[t] += sum != 299 * 300 / 2;
                    if (round % 2 == 0) {
                        copy.append(Counted(t));
                        copy[0] = Counted(-t);
                        ints.prepend(t);
                        failures[t] += copy.size() != 301 || ints.at(0) != t;
                    }
                    VVector<Counted> again = copy;
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
