#include <vort/types/MD5Hash.h>
#include <vort/types/MD5HashType.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>

using VORT::any;
using VORT::any_cast;
using VORT::ByteArray;
using VORT::ErrorHolder;
using VORT::MD5Hash;
using VORT::MD5HashType;
using VORT::TypeInfo;

namespace {

ByteArray bytesOf(std::initializer_list<unsigned char> bytes) {
    return ByteArray(bytes.begin(), static_cast<unsigned int>(bytes.size()));
}

}  // namespace

TEST(MD5Hash, ComparesAllFourWords) {
    const MD5Hash hash(1, 2, 3, 4);
    EXPECT_TRUE(hash == MD5Hash(1, 2, 3, 4));
    EXPECT_FALSE(hash != MD5Hash(1, 2, 3, 4));
    for (const MD5Hash &other : {MD5Hash(0, 2, 3, 4), MD5Hash(1, 0, 3, 4), MD5Hash(1, 2, 0, 4),
                                 MD5Hash(1, 2, 3, 0), MD5Hash()}) {
        EXPECT_FALSE(hash == other);
        EXPECT_TRUE(hash != other);
    }
    EXPECT_EQ(MD5Hash(), MD5Hash(0, 0, 0, 0));
}

TEST(MD5Hash, TextIsWordByWordAndBytesAreLeastSignificantFirst) {
    struct Row {
        MD5Hash hash;
        const char *text;
        ByteArray bytes;
    };
    const Row rows[] = {
        {MD5Hash(1, 2, 3, 4), "00000001000000020000000300000004",
         bytesOf({1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0, 4, 0, 0, 0})},
        {MD5Hash(0x01ABCDEF, 0, 0xFFFFFFFF, 0x80000000), "01ABCDEF00000000FFFFFFFF80000000",
         bytesOf({0xEF, 0xCD, 0xAB, 0x01, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0x80})},
        {MD5Hash(), "00000000000000000000000000000000", ByteArray(16u, '\0')},
        {MD5Hash(0x01234567, 0x89ABCDEF, 0xFEDCBA98, 0x76543210),
         "0123456789ABCDEFFEDCBA9876543210",
         bytesOf({0x67, 0x45, 0x23, 0x01, 0xEF, 0xCD, 0xAB, 0x89, 0x98, 0xBA, 0xDC, 0xFE, 0x10,
                  0x32, 0x54, 0x76})},
    };
    for (Row const &row : rows) {
        EXPECT_EQ(MD5Hash::convertToString(row.hash), row.text);
        EXPECT_EQ(MD5Hash::convertToByteArray(any(row.hash)), row.bytes) << row.text;

        ErrorHolder error;
        EXPECT_EQ(MD5Hash::convertFromString(row.text, error), row.hash);
        EXPECT_EQ(MD5Hash::convertFromByteArray(row.bytes, error), row.hash);
        EXPECT_FALSE(error.hasError());
    }
}

TEST(MD5Hash, ReadingSkipsBlanksIgnoresTheTailAndRepeatsTheLastDigit) {
    struct Row {
        const char *text;
        MD5Hash hash;
    };
    const Row rows[] = {
        // 33 digits: the 33rd is never read.
        {"000000010000000200000003000000045", MD5Hash(1, 2, 3, 4)},
        {"00000001000000020000000300000004 trailing junk", MD5Hash(1, 2, 3, 4)},
        {"00000001000000020000000300000004zz", MD5Hash(1, 2, 3, 4)},
        // Whitespace before any digit is skipped, also inside the text.
        {"00000001 00000002\t00000003\n00000004", MD5Hash(1, 2, 3, 4)},
        {"  0 0 0 0 0 0 0 1000000020000000300000004", MD5Hash(1, 2, 3, 4)},
        // A short text: the last digit read stands in for the missing ones.
        {"1", MD5Hash(0x11111111, 0x11111111, 0x11111111, 0x11111111)},
        {"12", MD5Hash(0x12222222, 0x22222222, 0x22222222, 0x22222222)},
        {"0123456789ABCDEF", MD5Hash(0x01234567, 0x89ABCDEF, 0xFFFFFFFF, 0xFFFFFFFF)},
        {"A   ", MD5Hash(0xAAAAAAAA, 0xAAAAAAAA, 0xAAAAAAAA, 0xAAAAAAAA)},
    };
    for (Row const &row : rows) {
        ErrorHolder error;
        EXPECT_EQ(MD5Hash::convertFromString(row.text, error), row.hash) << row.text;
        EXPECT_FALSE(error.hasError()) << row.text;
    }
}

TEST(MD5Hash, RefusesOtherCharactersWithTheExactMessageAndAZeroHash) {
    const std::string texts[] = {
        "0123456789abcdef0123456789ABCDEF",  // lower case
        "0123456789ABCDEFG123456789ABCDEF",
        "0x000000000000000000000000000000",
        "-0000000000000000000000000000000",
        "",
        "   \t\n",
        std::string("0000\0", 5),
        "0000000100000002000000030000000\xC3",
    };
    const TypeInfo type = MD5HashType::Create();
    for (std::string const &text : texts) {
        ErrorHolder error;
        EXPECT_EQ(MD5Hash::convertFromString(text, error), MD5Hash()) << text;
        ASSERT_TRUE(error.hasError()) << text;
        EXPECT_EQ(error.what(), "Can't convert string '" + text + "' to MD5Hash");
        EXPECT_EQ(error.id(), "Nexlark::GenericError");

        ErrorHolder typeError;
        EXPECT_TRUE(type.convertFromString(text, typeError).empty());
        EXPECT_EQ(typeError.what(), "Can't convert string '" + text + "' to MD5Hash");
    }
}

TEST(MD5HashType, AnEarlierErrorInTheHolderEmptiesEveryRead) {
    const TypeInfo type = MD5HashType::Create();
    ErrorHolder error;
    type.convertFromString("bad", error);
    ASSERT_TRUE(error.hasError());

    EXPECT_TRUE(type.convertFromString("00000001000000020000000300000004", error).empty());
    EXPECT_TRUE(type.convertFromByteArray(ByteArray(16u, '\x01'), error).empty());
    EXPECT_EQ(error.what(), "Can't convert string 'bad' to MD5Hash");
}

TEST(MD5Hash, WritingBytesTakesOnlyAHash) {
    for (any const &other : {any(true), any(), any(ByteArray(16u, '\0'))}) {
        EXPECT_THROW(MD5Hash::convertToByteArray(other), VORT::bad_any_cast);
    }
}

TEST(MD5Hash, StreamsCarryTheTextForm) {
    std::ostringstream out;
    out << MD5Hash(1, 2, 3, 4) << '|';
    EXPECT_EQ(out.str(), "00000001000000020000000300000004|");

    // 32 characters, each after skipped whitespace; the rest stays in the stream.
    std::istringstream in(" 00000001 00000002 00000003 00000004 next");
    MD5Hash hash;
    in >> hash;
    EXPECT_EQ(hash, MD5Hash(1, 2, 3, 4));
    std::string rest;
    in >> rest;
    EXPECT_EQ(rest, "next");

    // A bad text assigns the zero hash and leaves the stream good.
    std::istringstream bad("0000000g000000020000000300000004");
    MD5Hash overwritten(9, 9, 9, 9);
    bad >> overwritten;
    EXPECT_EQ(overwritten, MD5Hash());
    EXPECT_FALSE(bad.fail());

    // A stream that runs dry repeats its last character, as the string reader does, and shows
    // the extraction's failure in its flags.
    std::istringstream shortText("12");
    MD5Hash fromShort;
    shortText >> fromShort;
    EXPECT_EQ(fromShort, MD5Hash(0x12222222, 0x22222222, 0x22222222, 0x22222222));
    EXPECT_TRUE(shortText.fail());
}
