#include "support/ProbeType.h"
#include <vort/bones/Any.h>
#include <vort/bones/ByteArray.h>
#include <vort/bones/DataObject.h>
#include <vort/bones/MimeRegistry.h>
#include <vort/types/MD5Hash.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

using VORT::any;
using VORT::any_cast;
using VORT::bad_any_cast;
using VORT::ByteArray;
using VORT::DataObject;
using VORT::ErrorHolder;
using VORT::MD5Hash;
using VORT::StringID;

namespace {

const StringID kBool("cv-vort-booltype");
const StringID kBytes("cv-vort-bytearraytype");
const StringID kHash("cv-vort-md5hashtype");
const StringID kUnknown("application/x-dataobject-test-unknown");

}  // namespace

TEST(DataObject, StoresValuesAsGivenOnePerNameAndReportsMissingOnes) {
    DataObject data;
    for (StringID const &name : {kBool, kUnknown, StringID()}) {
        ErrorHolder error, bytesError;
        EXPECT_TRUE(!data.hasData(name) && data.getData(name, error).empty());
        EXPECT_TRUE(data.getDataAsBytes(name, bytesError).isEmpty());
        for (ErrorHolder const *e : {&error, &bytesError}) {
            ASSERT_TRUE(e->hasError());
            EXPECT_EQ(e->what() + e->id() + e->description()->where().file() +
                          std::to_string(e->description()->where().line()),
                      "Unsupported Mime TypeNexlark::GenericError.\\bones\\DataObject84");
        }
    }
    // Not checked against the name's type: a string under the bool name is kept as it is, and
    // writing it as bytes goes through the bool type, which can't take it.
    data.setData(kBool, any(false));
    data.setData(kBool, any(std::string("true")));
    data.setData(kUnknown, any(ByteArray(3u, 'x')));
    data.setData(kHash, any());
    ErrorHolder error;
    EXPECT_EQ(any_cast<std::string>(data.getData(kBool, error)), "true");
    EXPECT_TRUE(data.hasData(kHash) && data.getData(kHash, error).empty());
    EXPECT_FALSE(error.hasError());
    EXPECT_THROW(data.getDataAsBytes(kBool, error), VORT::bad_any_cast);
    std::vector<StringID> names = data.getDataTypes();
    EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));  // the order of the interned ids
    std::sort(names.begin(), names.end(),
              [](StringID a, StringID b) { return a.getString() < b.getString(); });
    EXPECT_EQ(names, (std::vector<StringID>{kUnknown, kBool, kHash}));

    DataObject copy(data), assigned;
    copy.setData(kBool, any(false));
    copy.setData(kBytes, any(ByteArray()));
    assigned = data;
    assigned.clear();
    EXPECT_TRUE(assigned.getDataTypes().empty() && !data.hasData(kBytes));
    EXPECT_EQ(any_cast<std::string>(data.getData(kBool, error)), "true");
    EXPECT_EQ(any_cast<ByteArray>(copy.getData(kUnknown, error)), ByteArray(3u, 'x'));
}

TEST(DataObject, BytesGoThroughTheRegisteredTypeAndAFailedReadStillStores) {
    DataObject data;
    ErrorHolder error;
    data.setData(kBool, any(true));
    EXPECT_EQ(data.getDataAsBytes(kBool, error), ByteArray(1u, '\x01'));
    const ByteArray hashBytes("\x01\0\0\0\x02\0\0\0\x03\0\0\0\x04\0\0\0", 16u);
    data.setDataFromBytes(kHash, hashBytes, error);
    EXPECT_EQ(any_cast<MD5Hash>(data.getData(kHash, error)), MD5Hash(1, 2, 3, 4));
    EXPECT_EQ(data.getDataAsBytes(kHash, error), hashBytes);
    const ByteArray raw("\0\x01\xFEpayload", 10u);  // unknown names carry bytes unchanged
    data.setDataFromBytes(kUnknown, raw, error);
    EXPECT_EQ(any_cast<ByteArray>(data.getData(kUnknown, error)), raw);
    EXPECT_EQ(data.getDataAsBytes(kUnknown, error), raw);
    EXPECT_FALSE(error.hasError());

    const StringID refusing("application/x-dataobject-test-refusing");
    VORT::MimeRegistry::registerMimeType(refusing, vort_test::ProbeType::Create(0, true));
    data.setData(refusing, any(41));
    data.setDataFromBytes(refusing, ByteArray(2u, '\x07'), error);
    EXPECT_EQ(error.what(), "probe refuses bytes");
    // The store isn't guarded: the name now holds an empty value.
    ErrorHolder getError;
    EXPECT_TRUE(data.hasData(refusing) && data.getData(refusing, getError).empty());
    // An error already in the holder empties a read that would succeed, and empties the bytes
    // of a name that is there.
    data.setDataFromBytes(kHash, hashBytes, error);
    EXPECT_TRUE(data.hasData(kHash) && data.getData(kHash, getError).empty());
    EXPECT_TRUE(data.getDataAsBytes(kBool, error).isEmpty());
    EXPECT_FALSE(getError.hasError());
}

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

TEST(Any, HoldsDeepCopiesComparedByTypeAndValueAndCastsToTheExactType) {
    const any none;
    any held(std::vector<std::string>{"a", "b"});
    any copy(held);  // a non-const any is copied, not wrapped in another any
    any_cast<std::vector<std::string>>(&copy)->push_back("c");
    EXPECT_EQ(any_cast<std::vector<std::string>>(held).size(), 2u);
    copy = none;
    EXPECT_TRUE(copy.empty() && any(none).empty());
    EXPECT_TRUE(any(1) == any(1));
    EXPECT_FALSE(any(1) == any(2) || any(1) == any(1.0) || any(1) == any());
    const VORT::ByteArray ab("ab", 2), abc("abc", 3);
    EXPECT_TRUE(any(ab) == any(VORT::ByteArray("ab", 2)));
    EXPECT_FALSE(any(ab) == any(abc) || any(abc) == any(ab));

    any value(5);
    EXPECT_THROW(any_cast<unsigned int>(value), bad_any_cast);
    EXPECT_THROW(any_cast<int>(any()), bad_any_cast);
    EXPECT_THROW(any_cast<Base>(any(Derived())), bad_any_cast);
    EXPECT_STREQ(bad_any_cast().what(),
                 "VORT::bad_any_cast: failed conversion using VORT::any_cast");
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
        EXPECT_TRUE(a == b && Tracked::live == 2);
    }
    EXPECT_EQ(Tracked::live, 0);
}
