#include <vort/bones/Any.h>
#include <vort/bones/ByteArray.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

using VORT::any;
using VORT::any_cast;
using VORT::bad_any_cast;

namespace {

// Counts live instances and can be told to fail its next copy.
struct Tracked {
    static inline int live = 0;
    static inline bool failNextCopy = false;
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

struct Base {
    virtual ~Base() = default;
    bool operator==(Base const &) const { return true; }
};
struct Derived : Base {};

}  // namespace

TEST(Any, HoldsDeepCopiesComparedByTypeAndValue) {
    const any none;
    EXPECT_TRUE(none.empty() && any(none).empty());
    any held(std::vector<std::string>{"a", "b"});
    any copy(held);  // a non-const any is copied, not wrapped in another any
    EXPECT_EQ(copy.type(), typeid(std::vector<std::string>));
    any_cast<std::vector<std::string>>(&copy)->push_back("c");
    EXPECT_EQ(any_cast<std::vector<std::string>>(held).size(), 2u);
    copy = none;
    EXPECT_TRUE(copy.empty());

    EXPECT_TRUE(any(1) == any(1));
    EXPECT_FALSE(any(1) == any(2) || any(1) == any(1.0) || any(1) == any());
    const VORT::ByteArray ab("ab", 2), abc("abc", 3);
    EXPECT_TRUE(any(ab) == any(VORT::ByteArray("ab", 2)));
    EXPECT_FALSE(any(ab) == any(abc) || any(abc) == any(ab));
}

TEST(Any, CastNeedsTheExactTypeAndThePointerFormGivesNullInstead) {
    any value(5);
    EXPECT_THROW(any_cast<unsigned int>(value), bad_any_cast);
    EXPECT_THROW(any_cast<int>(any()), bad_any_cast);
    EXPECT_THROW(any_cast<Base>(any(Derived())), bad_any_cast);
    try {
        any_cast<double>(value);
        ADD_FAILURE() << "no exception";
    } catch (std::bad_cast const &error) {
        EXPECT_STREQ(error.what(), "VORT::bad_any_cast: failed conversion using VORT::any_cast");
    }
    EXPECT_TRUE(any_cast<int>(static_cast<any *>(nullptr)) == nullptr &&
                any_cast<int>(static_cast<const any *>(nullptr)) == nullptr &&
                any_cast<double>(&value) == nullptr);
    *any_cast<int>(&value) = 6;
    EXPECT_EQ(*any_cast<int>(static_cast<const any *>(&value)), 6);
}

TEST(Any, AssignmentAndSwapKeepOwnershipStraight) {
    {
        any a(Tracked(1));
        any b(Tracked(2));
        a = a;
        EXPECT_EQ(&a.swap(b), &a);
        EXPECT_EQ(any_cast<Tracked>(&a)->value * 10 + any_cast<Tracked>(&b)->value, 21);
        Tracked::failNextCopy = true;  // a copy that throws leaves the target as it was
        EXPECT_THROW(a = b, std::runtime_error);
        EXPECT_EQ(any_cast<Tracked>(&a)->value, 2);
        a = b;
        EXPECT_TRUE(a == b);
        EXPECT_EQ(Tracked::live, 2);
    }
    EXPECT_EQ(Tracked::live, 0);
}
