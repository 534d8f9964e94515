#include <vort/types/MD5Hash.h>
#include <vort/types/MD5HashType.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>

using namespace VORT;

TEST(MD5Hash, ComparesAllFourWordsAndReadsItsOwnDigitsOnly) {
    const MD5Hash hash(1, 2, 3, 4);
    EXPECT_TRUE(hash == MD5Hash(1, 2, 3, 4) && !(hash != MD5Hash(1, 2, 3, 4)));
    for (MD5Hash const &other :
         {MD5Hash(0, 2, 3, 4), MD5Hash(1, 0, 3, 4), MD5Hash(1, 2, 0, 4), MD5Hash(1, 2, 3, 0)}) {
        EXPECT_TRUE(hash != other && !(hash == other));
    }
    const std::pair<const char *, MD5Hash> rows[] = {
        {"  0 0 0 0 0 0 0 1000000020000000300000004zz", MD5Hash(1, 2, 3, 4)},
        {"0123456789ABCDEF", MD5Hash(0x01234567, 0x89ABCDEF, 0xFFFFFFFF, 0xFFFFFFFF)},
        {"12", MD5Hash(0x12222222, 0x22222222, 0x22222222, 0x22222222)},
        {"0000000g000000020000000300000004", MD5Hash()},
    };
    for (auto const &row : rows) {
        ErrorHolder error;
        EXPECT_EQ(MD5Hash::convertFromString(row.first, error), row.second) << row.first;
        EXPECT_EQ(error.hasError(), row.second == MD5Hash()) << row.first;
    }
    EXPECT_THROW(MD5Hash::convertToByteArray(any(ByteArray(16u, '\0'))), VORT::bad_any_cast);
}

TEST(MD5HashType, AnEarlierErrorInTheHolderEmptiesEveryRead) {
    const VORT::TypeInfo type = VORT::MD5HashType::Create();
    ErrorHolder error;
    type.convertFromString("bad", error);
    EXPECT_TRUE(type.convertFromString("00000001000000020000000300000004", error).empty());
    EXPECT_TRUE(type.convertFromByteArray(ByteArray(16u, '\x01'), error).empty());
    EXPECT_EQ(error.what(), "Can't convert string 'bad' to MD5Hash");
}

TEST(MD5Hash, StreamsCarryTheTextForm) {
    std::ostringstream out;
    out << MD5Hash(1, 2, 3, 4) << '|';
    EXPECT_EQ(out.str(), "00000001000000020000000300000004|");

    // 32 characters, each after skipped whitespace; the rest stays in the stream. A bad text
    // assigns the zero hash and leaves the stream good.
    std::istringstream in(" 00000001 00000002 00000003 00000004 0000000g000000020000000300000004");
    MD5Hash hash;
    MD5Hash overwritten(9, 9, 9, 9);
    in >> hash >> overwritten;
    EXPECT_TRUE(hash == MD5Hash(1, 2, 3, 4) && overwritten == MD5Hash() && !in.fail());

    // A stream that runs dry repeats its last character and shows the failure in its flags.
    std::istringstream shortText("12");
    shortText >> hash;
    EXPECT_TRUE(hash == MD5Hash(0x12222222, 0x22222222, 0x22222222, 0x22222222) &&
                shortText.fail());
}
