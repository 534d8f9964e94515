#include "support/Counted.h"
#include <vort/bones/VVector.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <string>
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
    static inline std::vector<int> copied;  // the value of every copy made, in order
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
};

struct Point {
    double x, y;
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

TEST(VVectorData, GrowAndMalloc) {
    EXPECT_TRUE(VORT::VTypeInfo<Point>::isMovable && VORT::VTypeInfo<const char *>::isMovable);
    EXPECT_FALSE(VORT::VTypeInfo<std::string>::isMovable || VORT::VTypeInfo<Anchored>::isMovable);
    // Four-byte elements behind a 16-byte header: typed data is 20 bytes.
    const int rows[][5] = {
        {20, 1, 4, 0, 2},   {20, 3, 4, 0, 4},       {20, 7, 4, 0, 8},
        {20, 13, 4, 0, 28}, {20, 1020, 4, 0, 1020}, {20, 1021, 4, 0, 2044},
        {24, 0, 8, 1, 0},   {24, 1, 8, 1, 1},       {24, 10, 8, 1, 15},
    };
    for (const auto &r : rows) {
        EXPECT_EQ(VVectorData::grow(r[0], r[1], size_t(r[2]), r[3] != 0), r[4]) << r[1];
    }
    const VVectorData &null = VVectorData::shared_null;
    EXPECT_EQ(null.capacity + null.size + int(null.reserved), 0);
    EXPECT_EQ(null.sharable, 1u);

    VVector<int> v{1, 2, 3, 4, 5};
    auto *source = const_cast<VVectorData *>(&v.header());
    VVectorData *bigger = VVectorData::malloc(20, 8, 4, source);
    EXPECT_EQ(bigger->capacity, 5);  // the header as it was: the caller sets its own
    EXPECT_EQ(bigger->size, 5);
    EXPECT_EQ(int(bigger->ref), 1);
    const int *elements = reinterpret_cast<const int *>(reinterpret_cast<char *>(bigger) + 16);
    EXPECT_EQ(std::vector<int>(elements, elements + 5), (std::vector<int>{1, 2, 3, 4, 5}));
    std::free(bigger);
    VVectorData *smaller = VVectorData::malloc(20, 2, 4, source);
    elements = reinterpret_cast<const int *>(reinterpret_cast<char *>(smaller) + 16);
    EXPECT_EQ(std::vector<int>(elements, elements + 2), (std::vector<int>{1, 2}));
    std::free(smaller);
}

TEST(VVector, GrowsByBlockSizesWhenMovableAndByHalvesOtherwise) {
    EXPECT_EQ(capacitiesWhileAppending<int>(100),
              (std::vector<int>{2, 4, 6, 8, 10, 12, 28, 60, 124}));
    EXPECT_EQ(capacitiesWhileAppending<Anchored>(30), (std::vector<int>{1, 3, 6, 10, 16, 25, 39}));
}

TEST(VVector, CopiesImmovableElementsOneByOneAndMovesTheRestByBytes) {
    struct Logged {
        int value;
        explicit Logged(int v = 0) : value(v) {}
        Logged(const Logged &other) : value(other.value) { Anchored::copied.push_back(value); }
    };
    VVector<Logged> logged;
    for (int i = 0; i < 3; ++i) {
        logged.append(Logged(i));
    }
    ASSERT_EQ(logged.capacity(), 3);
    Anchored::copied.clear();
    logged.append(Logged(3));  // the argument aside first, the old ones last first, then it
    EXPECT_EQ(Anchored::copied, (std::vector<int>{3, 2, 1, 0, 3}));

    VVector<Anchored> anchored;  // elements that know their address stay whole through all
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
    for (const VVector<Anchored> *v : {&anchored, &copy}) {
        EXPECT_TRUE(
            std::all_of(v->begin(), v->end(), [](const Anchored &a) { return a.intact(); }));
    }

    Counted::Scope scope;
    {
        VVector<Owner> owners;
        for (int i = 0; i < 100; ++i) {
            owners.append(Owner(i));
        }
        const int copiesAfterFill = scope.copied();
        owners.reserve(1000);  // relocates by its bytes
        owners.insert(10, 5, Owner(-1));
        owners.remove(50, 20);
        EXPECT_EQ(scope.copied() - copiesAfterFill, 6);
        VVector<Owner> shared(owners);
        const int before = scope.copied();
        shared.append(Owner(1));  // a shared block is copied element by element
        EXPECT_EQ(scope.copied() - before, 85 + 2);
        EXPECT_EQ(owners.at(10).c->value(), -1);
        EXPECT_EQ(owners.at(84).c->value(), 99);
    }
    EXPECT_EQ(scope.leaked(), 0);
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
    EXPECT_EQ(v.header().reserved, 1u);
    v.squeeze();
    EXPECT_EQ(v.capacity(), 150);
    EXPECT_EQ(v.header().reserved, 0u);

    // Unreserved, shrinking below half the capacity gives memory back.
    VVector<int> w(10);
    w.resize(4);
    EXPECT_EQ(w.capacity(), 6);
    w.resize(3);  // not below half of 6
    EXPECT_EQ(w.capacity(), 6);
    VVector<int> x(w);  // a shared vector's reservation is its own copy's
    x.reserve(50);
    EXPECT_EQ(x.header().reserved, 1u);
    EXPECT_EQ(w.header().reserved, 0u);
}

TEST(VVector, MatchesAStdVectorUnderRandomEdits) {
    std::mt19937 random(7);
    VVector<std::string> strings;
    VVector<int> ints;
    std::vector<std::string> model;
    for (int step = 0; step < 5000; ++step) {
        const int size = int(model.size());
        const int at = size ? int(random() % unsigned(size + 1)) : 0;
        const int n = std::min(int(random() % 4), size - at);
        const std::string text = std::to_string(step);
        switch (random() % 7) {
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
            case 3:
                strings.insert(at, n, text);
                ints.insert(at, n, step);
                model.insert(model.begin() + at, size_t(n), text);
                break;
            case 4:
                strings.remove(at, n);
                ints.remove(at, n);
                model.erase(model.begin() + at, model.begin() + at + n);
                break;
            case 5: {
                const int length = int(random() % unsigned(size + 5));
                strings.resize(length);
                ints.resize(length);
                model.resize(size_t(length));
                break;
            }
            case 6:
                strings.squeeze();
                ints.squeeze();
                break;
        }
        ASSERT_EQ(strings.toStdVector(), model) << step;
        ASSERT_EQ(ints.size(), int(model.size()));
        ASSERT_LE(ints.size(), ints.capacity());
    }
}

TEST(VVector, ConvenienceOperations) {
    VVector<std::string> v{"c", "a", "b", "a"};
    EXPECT_EQ(v.indexOf("a", 2) * 10 + v.lastIndexOf("a", 2) + v.count("a"), 33);
    EXPECT_EQ(v.mid(1, 2).toStdVector(), (std::vector<std::string>{"a", "b"}));
    EXPECT_TRUE(v.mid(0).isSharedWith(v));
    EXPECT_TRUE(v.removeAll("a") == 2 && v.removeOne("b"));
    v.append(v);  // its own copy
    EXPECT_EQ(v.takeFirst() + v.takeLast(), "cc");
    EXPECT_EQ(*v.erase(v.insert(v.begin(), 2, "i")), "i");
    EXPECT_EQ(VVector<int>(4, 7).fill(2, 6), VVector<int>::fromStdVector({2, 2, 2, 2, 2, 2}));
    VVector<Point> points(1);
    points.append({1.5, 2.5});
    EXPECT_EQ(points.at(0).x + points.at(1).y, 2.5);  // new elements are zeros
}
