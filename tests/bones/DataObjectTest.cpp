#include "support/ProbeType.h"
#include <vort/bones/DataObject.h>
#include <vort/bones/MimeRegistry.h>
#include <vort/types/MD5Hash.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

using VORT::any;
using VORT::any_cast;
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

void expectUnsupported(ErrorHolder const &error) {
    ASSERT_TRUE(error.hasError());
    EXPECT_EQ(error.what(), "Unsupported Mime Type");
    EXPECT_EQ(error.id(), "Nexlark::GenericError");
    EXPECT_EQ(error.description()->where().file(), ".\\bones\\DataObject");
    EXPECT_EQ(error.description()->where().line(), 84u);
}

}  // namespace

TEST(DataObject, MissingNameIsUnsupportedEvenWhenTheRegistryKnowsIt) {
    DataObject data;
    for (StringID const &name : {kBool, kUnknown, StringID()}) {
        EXPECT_FALSE(data.hasData(name));
        ErrorHolder error;
        EXPECT_TRUE(data.getData(name, error).empty());
        expectUnsupported(error);

        ErrorHolder bytesError;
        EXPECT_TRUE(data.getDataAsBytes(name, bytesError).isEmpty());
        expectUnsupported(bytesError);
    }
    EXPECT_TRUE(data.getDataTypes().empty());
}

TEST(DataObject, StoresValuesAsGivenWithoutConverting) {
    DataObject data;
    // Not checked against the name's type: a string under the bool name is kept as it is.
    data.setData(kBool, any(std::string("true")));
    ErrorHolder error;
    const any value = data.getData(kBool, error);
    EXPECT_FALSE(error.hasError());
    EXPECT_EQ(any_cast<std::string>(value), "true");

    // A stored empty value comes back empty, and without an error.
    data.setData(kHash, any());
    EXPECT_TRUE(data.hasData(kHash));
    EXPECT_TRUE(data.getData(kHash, error).empty());
    EXPECT_FALSE(error.hasError());

    // Writing bytes goes through the name's type, which can't take a string.
    EXPECT_THROW(data.getDataAsBytes(kBool, error), VORT::bad_any_cast);
}

TEST(DataObject, ReplacingKeepsOneEntryPerName) {
    DataObject data;
    data.setData(kBool, any(false));
    data.setData(kBool, any(true));
    data.setData(kUnknown, any(ByteArray(3u, 'x')));
    data.setData(kBool, any(true));

    std::vector<StringID> names = data.getDataTypes();
    ASSERT_EQ(names.size(), 2u);
    // The map's order is that of the interned ids.
    EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
    EXPECT_EQ(std::count(names.begin(), names.end(), kBool), 1);
    EXPECT_EQ(std::count(names.begin(), names.end(), kUnknown), 1);

    ErrorHolder error;
    EXPECT_TRUE(any_cast<bool>(data.getData(kBool, error)));

    data.clear();
    EXPECT_TRUE(data.getDataTypes().empty());
    EXPECT_FALSE(data.hasData(kBool));
    EXPECT_FALSE(data.hasData(kUnknown));
}

TEST(DataObject, BytesGoInAndOutThroughTheRegisteredType) {
    DataObject data;
    ErrorHolder error;

    data.setData(kBool, any(true));
    EXPECT_EQ(data.getDataAsBytes(kBool, error), ByteArray(1u, '\x01'));

    const ByteArray hashBytes("\x01\0\0\0\x02\0\0\0\x03\0\0\0\x04\0\0\0", 16u);
    data.setDataFromBytes(kHash, hashBytes, error);
    EXPECT_EQ(any_cast<MD5Hash>(data.getData(kHash, error)), MD5Hash(1, 2, 3, 4));
    EXPECT_EQ(data.getDataAsBytes(kHash, error), hashBytes);

    data.setDataFromBytes(kBytes, ByteArray("abc", 3u), error);
    EXPECT_EQ(any_cast<ByteArray>(data.getData(kBytes, error)), ByteArray("abc", 3u));
    EXPECT_FALSE(error.hasError());
}

TEST(DataObject, UnknownNamesCarryBytesUnchanged) {
    DataObject data;
    ErrorHolder error;
    const ByteArray bytes("\0\x01\xFEpayload", 10u);
    data.setDataFromBytes(kUnknown, bytes, error);
    EXPECT_FALSE(error.hasError());
    EXPECT_EQ(any_cast<ByteArray>(data.getData(kUnknown, error)), bytes);
    EXPECT_EQ(data.getDataAsBytes(kUnknown, error), bytes);
    EXPECT_FALSE(error.hasError());
}

TEST(DataObject, FailedReadStillReplacesTheValue) {
    const StringID refusing("application/x-dataobject-test-refusing");
    VORT::MimeRegistry::registerMimeType(refusing, vort_test::ProbeType::Create(0, true));

    DataObject data;
    data.setData(refusing, any(41));
    ErrorHolder error;
    data.setDataFromBytes(refusing, ByteArray(2u, '\x07'), error);
    ASSERT_TRUE(error.hasError());
    EXPECT_EQ(error.what(), "probe refuses bytes");
    // The store isn't guarded: the name now holds an empty value.
    EXPECT_TRUE(data.hasData(refusing));
    ErrorHolder getError;
    EXPECT_TRUE(data.getData(refusing, getError).empty());
    EXPECT_FALSE(getError.hasError());

    // An error already in the holder empties a read that would succeed, with the same effect.
    data.setData(kHash, any(MD5Hash(5, 6, 7, 8)));
    data.setDataFromBytes(kHash, ByteArray(16u, '\x01'), error);
    EXPECT_TRUE(data.hasData(kHash));
    EXPECT_TRUE(data.getData(kHash, getError).empty());

    // And it makes `getDataAsBytes` give nothing, even for a name that is there.
    data.setData(kBool, any(true));
    EXPECT_TRUE(data.getDataAsBytes(kBool, error).isEmpty());
}

TEST(DataObject, CopiesAreIndependent) {
    DataObject source;
    source.setData(kBool, any(true));
    source.setData(kUnknown, any(ByteArray(2u, 'a')));

    DataObject copy(source);
    copy.setData(kBool, any(false));
    copy.setData(kHash, any(MD5Hash(1, 1, 1, 1)));

    DataObject assigned;
    assigned.setData(kBytes, any(ByteArray()));
    assigned = source;
    assigned.clear();

    ErrorHolder error;
    EXPECT_TRUE(any_cast<bool>(source.getData(kBool, error)));
    EXPECT_FALSE(source.hasData(kHash));
    EXPECT_EQ(source.getDataTypes().size(), 2u);
    EXPECT_FALSE(any_cast<bool>(copy.getData(kBool, error)));
    EXPECT_EQ(any_cast<ByteArray>(copy.getData(kUnknown, error)), ByteArray(2u, 'a'));
    EXPECT_FALSE(error.hasError());
}
