#include <vort/bones/Any.h>
#include <vort/bones/ByteArray.h>

#include <gtest/gtest.h>

#include <string>
#include <typeinfo>
#include <vector>

using VORT::any;
using VORT::any_cast;
using VORT::bad_any_cast;

namespace {

// Counts live instances and can be told to fail its next copy.
struct Tracked {
    static int live;
    static bool failNextCopy;

    explicit Tracked(int v) : value(v) { ++live; }
    Tracked(Tracked const &other) : value(other.value) {
        if (failNextCopy) {
            failNextCopy = false;
            throw std::runtime_error("copy refused");
        }
        ++live;
    }
    Tracked &operator=(Tracked const &) = default;
    ~Tracked() { --live; }
    bool operator==(Tracked const &other) const { return value == other.value; }

    int value;
};
int Tracked::live = 0;
bool Tracked::failNextCopy = false;

struct Base {
    virtual ~Base() = default;
    bool operator==(Base const &) const { return true; }
};
struct Derived : Base {};

}  // namespace

TEST(Any, EmptyAndCopies) {
    const any none;
    EXPECT_TRUE(none.empty());
    const any copy(none);
    EXPECT_TRUE(copy.empty());

    any held(std::string("text"));
    EXPECT_FALSE(held.empty());
    EXPECT_EQ(held.type(), typeid(std::string));

    // A non-const `any` is copied, not wrapped in another `any`.
    any again(held);
    EXPECT_EQ(again.type(), typeid(std::string));
    EXPECT_EQ(any_cast<std::string>(again), "text");

    any assigned;
    assigned = held;
    EXPECT_EQ(any_cast<std::string>(assigned), "text");
    assigned = none;
    EXPECT_TRUE(assigned.empty());
}

TEST(Any, CopiesAreDeep) {
    any source(std::vector<std::string>{"a", "b"});
    any copy(source);
    any_cast<std::vector<std::string>>(&copy)->push_back("c");
    EXPECT_EQ(any_cast<std::vector<std::string>>(source).size(), 2u);
    EXPECT_EQ(any_cast<std::vector<std::string>>(copy).size(), 3u);
    EXPECT_NE(any_cast<std::vector<std::string>>(&source),
              any_cast<std::vector<std::string>>(&copy));
}

TEST(Any, EqualityNeedsTheSameTypeAndValue) {
    EXPECT_TRUE(any(1) == any(1));
    EXPECT_FALSE(any(1) == any(2));
    EXPECT_FALSE(any(1) == any(1.0));
    EXPECT_FALSE(any(1) == any());
    EXPECT_FALSE(any(1.0f) == any(1.0));
    EXPECT_TRUE(any(std::string("x")) == any(std::string("x")));

    const VORT::ByteArray ab("ab", 2);
    const VORT::ByteArray abc("abc", 3);
    EXPECT_TRUE(any(ab) == any(VORT::ByteArray("ab", 2)));
    EXPECT_FALSE(any(ab) == any(abc));
    EXPECT_FALSE(any(abc) == any(ab));
}

TEST(Any, CastNeedsTheExactType) {
    const any one(1);
    EXPECT_EQ(any_cast<int>(one), 1);
    EXPECT_THROW(any_cast<double>(one), bad_any_cast);
    EXPECT_THROW(any_cast<unsigned int>(one), bad_any_cast);
    EXPECT_THROW(any_cast<int>(any()), bad_any_cast);

    const any derived = Derived();
    EXPECT_THROW(any_cast<Base>(derived), bad_any_cast);
    EXPECT_EQ(any_cast<Base>(&derived), nullptr);

    try {
        any_cast<double>(one);
        FAIL() << "no exception";
    } catch (std::bad_cast const &error) {
        EXPECT_STREQ(error.what(), "VORT::bad_any_cast: failed conversion using VORT::any_cast");
    }
}

TEST(Any, PointerCastGivesNullInsteadOfThrowing) {
    any value(5);
    EXPECT_EQ(any_cast<int>(static_cast<any *>(nullptr)), nullptr);
    EXPECT_EQ(any_cast<int>(static_cast<const any *>(nullptr)), nullptr);
    any none;
    EXPECT_EQ(any_cast<int>(&none), nullptr);
    EXPECT_EQ(any_cast<double>(&value), nullptr);

    int *inside = any_cast<int>(&value);
    ASSERT_NE(inside, nullptr);
    *inside = 6;
    EXPECT_EQ(any_cast<int>(value), 6);
    const any &view = value;
    EXPECT_EQ(*any_cast<int>(&view), 6);
}

TEST(Any, AssignmentAndSwapKeepOwnershipStraight) {
    ASSERT_EQ(Tracked::live, 0);
    {
        any a(Tracked(1));
        any b(Tracked(2));
        EXPECT_EQ(Tracked::live, 2);

        a = a;
        EXPECT_EQ(any_cast<Tracked>(&a)->value, 1);
        EXPECT_EQ(Tracked::live, 2);

        EXPECT_EQ(&a.swap(b), &a);
        EXPECT_EQ(any_cast<Tracked>(&a)->value, 2);
        EXPECT_EQ(any_cast<Tracked>(&b)->value, 1);

        // A copy that throws leaves the target as it was.
        Tracked::failNextCopy = true;
        EXPECT_THROW(a = b, std::runtime_error);
        EXPECT_EQ(any_cast<Tracked>(&a)->value, 2);
        EXPECT_EQ(Tracked::live, 2);

        a = b;
        EXPECT_EQ(any_cast<Tracked>(&a)->value, 1);
        EXPECT_EQ(Tracked::live, 2);
        EXPECT_TRUE(a == b);
    }
    EXPECT_EQ(Tracked::live, 0);
}
