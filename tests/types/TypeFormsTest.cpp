// The text and byte forms of the whole type family, in tables: each value with the exact text and
// bytes it gives, the defaults and the writers' refusal of other classes. The lenient readings and
// the refusals, each message worded exactly, are the fuzz corpus's, replayed with the tests and
// checked against what a default text stream reads.
#include "TypeTesting.h"
#include "support/Latch.h"
#include <vort/types/BoolType.h>
#include <vort/types/ByteArrayType.h>
#include <vort/types/ColorType.h>
#include <vort/types/DoubleType.h>
#include <vort/types/FloatType.h>
#include <vort/types/IntType.h>
#include <vort/types/MD5HashType.h>
#include <vort/types/PathType.h>
#include <vort/types/PointType.h>
#include <vort/types/StringType.h>
#include <vort/types/TransformType.h>

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

using namespace VORT;
using vort_test::hexBytes;
using vort_test::hexOf;
using vort_test::readText;

namespace {

Color packed(unsigned int rgba) {
    Color color;
    color.setRGBAFromPackedValue(rgba);
    return color;
}

Path pathOf(std::vector<VTPoint<double>> const &points) {
    return Path(VVector<VTPoint<double>>::fromStdVector(points));
}

const std::string kZero8 = "00 00 00 00 00 00 00 00 ";
const std::string kOne8 = "00 00 00 00 00 00 F0 3F ";

}  // namespace

TEST(TypeForms, EachValueGivesItsTextAndBytesAndReadsBack) {
    struct Row {
        TypeInfo type;
        any value;
        std::string text;
        std::string bytes;      // hexadecimal
        bool textReads = true;  // false where the text is write-only or loses the value
    };
    const Row rows[] = {
        {BoolType::Create(), any(true), "true", "01"},
        {BoolType::Create(), any(false), "false", "00"},
        {IntType::Create(), any(-2), "-2", "FE FF FF FF"},
        {IntType::Create(), any(INT_MIN), "-2147483648", "00 00 00 80"},
        {FloatType::Create(), any(1.0f), "1", "00 00 80 3F"},
        {FloatType::Create(), any(0.1f), "0.1", "CD CC CC 3D"},
        {DoubleType::Create(), any(1.0), "1", "00 00 00 00 00 00 F0 3F"},
        {DoubleType::Create(), any(1234567.0), "1.23457e+06", "00 00 00 00 87 D6 32 41", false},
        {DoubleType::Create(), any(-0.0), "-0", "00 00 00 00 00 00 00 80"},
        {StringType::Create(), any(std::string("a\0b", 3)), std::string("a\0b", 3), "61 00 62"},
        {StringType::Create(), any(std::string()), "", ""},
        // `toBase64`'s whole string, NUL included; that NUL doesn't read back.
        {ByteArrayType::Create(), any(ByteArray("Man", 3u)), std::string("TWFu\0", 5), "4D 61 6E",
         false},
        {ByteArrayType::Create(), any(ByteArray()), std::string(1, '\0'), "", false},
        {MD5HashType::Create(), any(MD5Hash(0x01ABCDEF, 0, 0xFFFFFFFF, 0x80000000)),
         "01ABCDEF00000000FFFFFFFF80000000", "EF CD AB 01 00 00 00 00 FF FF FF FF 00 00 00 80"},
        {ColorType::Create(true), any(Color(1.0, 0.0, 0.0, 1.0)), "[ 1, 0, 0, 1 ]", "FF 00 00 FF",
         false},
        {ColorType::Create(false), any(packed(0x80FF1101u)), "[ 0.501961, 1, 0.0666667 ]",
         "80 FF 11 01", false},
        {IPointType::Create(), any(VTPoint<int>(-1, 2)), "-1,2", "FF FF FF FF 02 00 00 00"},
        {DPointType::Create(), any(VTPoint<double>(1.23456789, -0.25)), "1.23457,-0.25",
         "1B DE 83 42 CA C0 F3 3F 00 00 00 00 00 00 D0 BF", false},
        {IRectType::Create(), any(VTRect<int>(1, 2, 3, 4)), "1,2,3,4",
         "01 00 00 00 02 00 00 00 03 00 00 00 04 00 00 00"},
        {DRectType::Create(), any(VTRect<double>(1e-5, -1e21, 1e6, 0.5)), "1e-05,-1e+21,1e+06,0.5",
         "F1 68 E3 88 B5 F8 E4 3E 50 EF E2 D6 E4 1A 4B C4 "
         "00 00 00 00 80 84 2E 41 00 00 00 00 00 00 E0 3F"},
        {TransformType::Create(), any(Transform()), "1,0,0,0,1,0,0,0,1",
         kOne8 + kZero8 + kZero8 + kZero8 + kOne8 + kZero8 + kZero8 + kZero8 +
             "00 00 00 00 00 00 F0 3F"},
        {TransformType::Create(), any(Transform(1, 0, 5, 0, 1, 6, 0, 0, 1)), "1,0,5,0,1,6,0,0,1",
         kOne8 + kZero8 + "00 00 00 00 00 00 14 40 " + kZero8 + kOne8 + "00 00 00 00 00 00 18 40 " +
             kZero8 + kZero8 + "00 00 00 00 00 00 F0 3F"},
        {PathType::Create(), any(pathOf({{1, 2}, {3, 4}})), "1,2;3,4;",
         kOne8 + "00 00 00 00 00 00 00 40 00 00 00 00 00 00 08 40 00 00 00 00 00 00 10 40"},
        {PathType::Create(), any(Path()), "", ""},
    };
    for (Row const &row : rows) {
        SCOPED_TRACE(row.text);
        ASSERT_TRUE(row.type.isValid(row.value));
        EXPECT_EQ(row.type.convertToString(row.value), row.text);
        EXPECT_EQ(hexOf(row.type.convertToByteArray(row.value)), row.bytes);
        ErrorHolder error;
        const any fromBytes = row.type.convertFromByteArray(hexBytes(row.bytes + " 5A"), error);
        EXPECT_FALSE(error.hasError());
        // The extra byte is ignored by the fixed widths, and kept by strings and byte arrays.
        if (!StringType::Is(row.type) && !ByteArrayType::Is(row.type)) {
            EXPECT_TRUE(!fromBytes.empty() && fromBytes == row.value);
        }
        if (row.textReads) {
            const vort_test::ReadResult fromText = readText(row.type, row.text);
            EXPECT_EQ(fromText.message, "");
            EXPECT_TRUE(!fromText.value.empty() && fromText.value == row.value);
        }
    }
    // A byte array reads one word, past blanks of any kind.
    for (const char *text : {"TWFu AAAA", " \tTWFu\tAAAA", "\nTWFu\r"}) {
        EXPECT_EQ(readText(ByteArrayType::Create(), text).value, any(ByteArray("Man", 3u))) << text;
    }
}

TEST(TypeForms, WritersRefuseAnotherClassAndDefaultsAreTheFamilys) {
    struct Row {
        TypeInfo type;
        any defaultValue;
        any neighbour;  // a near miss: no widening, no conversion
    };
    const Row rows[] = {
        {BoolType::Create(), any(false), any(1)},
        {IntType::Create(), any(0), any(true)},
        {DoubleType::Create(), any(0.0), any(0.0f)},
        {StringType::Create(), any(std::string()), any(ByteArray())},
        {ByteArrayType::Create(), any(ByteArray()), any(std::string())},
        {MD5HashType::Create(), any(MD5Hash()), any(ByteArray(16u, '\0'))},
        {ColorType::Create(true), any(Color()), any(0x00000001u)},
        {IPointType::Create(), any(VTPoint<int>()), any(VTPoint<double>())},
        {DPointType::Create(), any(VTPoint<double>()), any(VTPoint<float>())},
        {IRectType::Create(), any(VTRect<int>()), any(VTPoint<int>())},
        {DRectType::Create(), any(VTRect<double>()), any(VTRect<int>())},
        {TransformType::Create(), any(Transform::IDENTITY), any(Path())},
        {PathType::Create(), any(Path()), any(Transform())},
    };
    for (Row const &row : rows) {
        const any value = row.type.defaultConstruct();
        ASSERT_TRUE(row.type.isValid(value));
        EXPECT_TRUE(value == row.defaultValue) << row.type.convertToString(value);
        for (any const &stranger : {any(), row.neighbour}) {
            EXPECT_FALSE(row.type.isValid(stranger));
            EXPECT_THROW(row.type.convertToString(stranger), bad_any_cast);
            EXPECT_THROW(row.type.convertToByteArray(stranger), bad_any_cast);
        }
    }
    // FloatType's default is a double, which only DoubleType takes.
    const any floatDefault = FloatType::Create().defaultConstruct();
    EXPECT_TRUE(floatDefault.type() == typeid(double));
    EXPECT_FALSE(FloatType::Create().isValid(floatDefault));
    EXPECT_THROW(FloatType::Create().convertToString(floatDefault), bad_any_cast);
    EXPECT_EQ(DoubleType::Create().convertToString(floatDefault), "0");
}

TEST(TypeFormsConcurrency, OneSharedTypeConvertsOnManyThreads) {
    const TypeInfo types[] = {DoubleType::Create(), DRectType::Create(), PathType::Create()};
    const std::string texts[] = {"-1.25e-07", "1,2.5,-3,4e+10", "1,2;3,4;"};
    constexpr int kThreads = 4;
    std::vector<int> agreed(kThreads, 0);
    vort_test::runTogether(kThreads, [&](int t) {
        for (int round = 0; round < 300; ++round) {
            TypeInfo const &type = types[round % 3];
            ErrorHolder error;
            const any value = type.convertFromString(texts[round % 3], error);
            const ByteArray bytes = type.convertToByteArray(value);
            agreed[t] +=
                type.convertToString(type.convertFromByteArray(bytes, error)) == texts[round % 3];
        }
    });
    EXPECT_EQ(agreed, std::vector<int>(kThreads, 300));
}
