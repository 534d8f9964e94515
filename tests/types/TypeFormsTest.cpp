// The text and byte forms of the whole type family, in tables: each value with the exact text and
// bytes it gives, the lenient readings, the refusals with their exact messages, the defaults and
// the writers' refusal of other classes.
#include "TypeTesting.h"
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
    Path path;
    for (VTPoint<double> const &point : points) {
        path.addPoint(point);
    }
    return path;
}

const char *const kIdentityHex =
    "00 00 00 00 00 00 F0 3F 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 F0 3F 00 00 00 00 00 00 00 00 "
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 F0 3F";

struct FormRow {
    const char *label;
    TypeInfo type;
    any value;
    std::string text;
    std::string bytes;      // hexadecimal
    bool textReads = true;  // false where the text is write-only or doesn't give the value back
};

std::vector<FormRow> formRows() {
    return {
        {"true", BoolType::Create(), any(true), "true", "01"},
        {"false", BoolType::Create(), any(false), "false", "00"},
        {"int", IntType::Create(), any(1), "1", "01 00 00 00"},
        {"negative int", IntType::Create(), any(-2), "-2", "FE FF FF FF"},
        {"smallest int", IntType::Create(), any(INT_MIN), "-2147483648", "00 00 00 80"},
        {"float", FloatType::Create(), any(1.0f), "1", "00 00 80 3F"},
        {"float tenth", FloatType::Create(), any(0.1f), "0.1", "CD CC CC 3D"},
        {"double", DoubleType::Create(), any(1.0), "1", "00 00 00 00 00 00 F0 3F"},
        {"double tenth", DoubleType::Create(), any(0.1), "0.1", "9A 99 99 99 99 99 B9 3F"},
        {"double in exponent form", DoubleType::Create(), any(1234567.0), "1.23457e+06",
         "00 00 00 00 87 D6 32 41", false},
        {"negative zero", DoubleType::Create(), any(-0.0), "-0", "00 00 00 00 00 00 00 80"},
        {"string", StringType::Create(), any(std::string("a b")), "a b", "61 20 62"},
        {"string with a zero byte", StringType::Create(), any(std::string("a\0b", 3)),
         std::string("a\0b", 3), "61 00 62"},
        {"empty string", StringType::Create(), any(std::string()), "", ""},
        // The text is `toBase64`'s whole string, NUL included; that NUL doesn't read back.
        {"bytes", ByteArrayType::Create(), any(ByteArray("Man", 3u)), std::string("TWFu\0", 5),
         "4D 61 6E", false},
        {"one byte", ByteArrayType::Create(), any(ByteArray("M", 1u)), std::string("TQ==\0", 5),
         "4D", false},
        {"hash", MD5HashType::Create(), any(MD5Hash(1, 2, 3, 4)),
         "00000001000000020000000300000004", "01 00 00 00 02 00 00 00 03 00 00 00 04 00 00 00"},
        {"hash digits", MD5HashType::Create(), any(MD5Hash(0x01ABCDEF, 0, 0xFFFFFFFF, 0x80000000)),
         "01ABCDEF00000000FFFFFFFF80000000", "EF CD AB 01 00 00 00 00 FF FF FF FF 00 00 00 80"},
        {"opaque red", ColorType::Create(true), any(Color(1.0, 0.0, 0.0, 1.0)), "[ 1, 0, 0, 1 ]",
         "FF 00 00 FF", false},
        {"red without alpha", ColorType::Create(false), any(Color(1.0, 0.0, 0.0, 1.0)),
         "[ 1, 0, 0 ]", "FF 00 00 FF", false},
        {"grey 128", ColorType::Create(true), any(Color(128 / 255.0, 0.5, 1.0, 0.0)),
         "[ 0.501961, 0.501961, 1, 0 ]", "80 80 FF 00", false},
        {"packed word", ColorType::Create(false), any(packed(0x11223344u)),
         "[ 0.0666667, 0.133333, 0.2 ]", "11 22 33 44", false},
        {"default colour", ColorType::Create(true), any(Color()), "[ 0, 0, 0, 0.00392157 ]",
         "00 00 00 01", false},
        {"int point", IPointType::Create(), any(VTPoint<int>(1, 2)), "1,2",
         "01 00 00 00 02 00 00 00"},
        {"negative int point", IPointType::Create(), any(VTPoint<int>(-1, INT_MIN)),
         "-1,-2147483648", "FF FF FF FF 00 00 00 80"},
        {"double point", DPointType::Create(), any(VTPoint<double>(1.5, -0.25)), "1.5,-0.25",
         "00 00 00 00 00 00 F8 3F 00 00 00 00 00 00 D0 BF"},
        {"lossy double point", DPointType::Create(), any(VTPoint<double>(1.23456789, 0)),
         "1.23457,0", "1B DE 83 42 CA C0 F3 3F 00 00 00 00 00 00 00 00", false},
        {"int rect", IRectType::Create(), any(VTRect<int>(1, 2, 3, 4)), "1,2,3,4",
         "01 00 00 00 02 00 00 00 03 00 00 00 04 00 00 00"},
        {"double rect", DRectType::Create(), any(VTRect<double>(0, 0, 10, 20)), "0,0,10,20",
         "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
         "00 00 00 00 00 00 24 40 00 00 00 00 00 00 34 40"},
        {"double rect in exponent form", DRectType::Create(),
         any(VTRect<double>(1e-5, -1e21, 1e6, 0.5)), "1e-05,-1e+21,1e+06,0.5",
         "F1 68 E3 88 B5 F8 E4 3E 50 EF E2 D6 E4 1A 4B C4 "
         "00 00 00 00 80 84 2E 41 00 00 00 00 00 00 E0 3F"},
        {"identity", TransformType::Create(), any(Transform()), "1,0,0,0,1,0,0,0,1", kIdentityHex},
        {"translation", TransformType::Create(), any(Transform(1, 0, 5, 0, 1, 6, 0, 0, 1)),
         "1,0,5,0,1,6,0,0,1",
         "00 00 00 00 00 00 F0 3F 00 00 00 00 00 00 00 00 00 00 00 00 00 00 14 40 "
         "00 00 00 00 00 00 00 00 00 00 00 00 00 00 F0 3F 00 00 00 00 00 00 18 40 "
         "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 F0 3F"},
        {"path", PathType::Create(), any(pathOf({{1, 2}, {3, 4}})), "1,2;3,4;",
         "00 00 00 00 00 00 F0 3F 00 00 00 00 00 00 00 40 "
         "00 00 00 00 00 00 08 40 00 00 00 00 00 00 10 40"},
        {"empty path", PathType::Create(), any(Path()), "", ""},
    };
}

}  // namespace

TEST(TypeForms, EachValueGivesItsTextAndBytesAndReadsBack) {
    for (FormRow const &row : formRows()) {
        SCOPED_TRACE(row.label);
        ASSERT_TRUE(row.type.isValid(row.value));
        EXPECT_EQ(row.type.convertToString(row.value), row.text);

        EXPECT_EQ(hexOf(row.type.convertToByteArray(row.value)), row.bytes);
        ErrorHolder error;
        const any fromBytes = row.type.convertFromByteArray(hexBytes(row.bytes), error);
        EXPECT_FALSE(error.hasError()) << error.what();
        ASSERT_FALSE(fromBytes.empty());
        EXPECT_TRUE(fromBytes == row.value);

        if (row.textReads) {
            const vort_test::ReadResult fromText = readText(row.type, row.text);
            EXPECT_EQ(fromText.message, "");
            ASSERT_FALSE(fromText.value.empty());
            EXPECT_TRUE(fromText.value == row.value);
        }
    }
}

TEST(TypeForms, ByteReadersTakeTheirWidthAndIgnoreTheRest) {
    struct Row {
        const char *label;
        TypeInfo type;
        std::string bytes;
        any value;
    };
    const Row rows[] = {
        {"any non-zero byte is true", BoolType::Create(), "02", any(true)},
        {"0xFF is true", BoolType::Create(), "FF 00", any(true)},
        {"only byte 0 counts", BoolType::Create(), "00 01", any(false)},
        {"int", IntType::Create(), "2A 00 00 00 FF", any(42)},
        {"float", FloatType::Create(), "00 00 80 BF 01 02", any(-1.0f)},
        {"double", DoubleType::Create(), "00 00 00 00 00 00 04 40 09", any(2.5)},
        {"hash", MD5HashType::Create(), "01 00 00 00 02 00 00 00 03 00 00 00 04 00 00 00 05",
         any(MD5Hash(1, 2, 3, 4))},
        {"colour", ColorType::Create(false), "01 02 03 04 05", any(packed(0x01020304u))},
        {"int point", IPointType::Create(), "05 00 00 00 FE FF FF FF 99", any(VTPoint<int>(5, -2))},
        {"int rect", IRectType::Create(), "00 00 00 00 01 00 00 00 02 00 00 00 03 00 00 00 07 07",
         any(VTRect<int>(0, 1, 2, 3))},
        {"transform", TransformType::Create(), std::string(kIdentityHex) + " 55", any(Transform())},
        // 40 bytes: two whole points, and the last 8 bytes are ignored.
        {"path", PathType::Create(),
         "00 00 00 00 00 00 F0 3F 00 00 00 00 00 00 00 40 "
         "00 00 00 00 00 00 08 40 00 00 00 00 00 00 10 40 01 02 03 04 05 06 07 08",
         any(pathOf({{1, 2}, {3, 4}}))},
        {"path shorter than a point", PathType::Create(), "01 02 03", any(Path())},
    };
    for (Row const &row : rows) {
        SCOPED_TRACE(row.label);
        ErrorHolder error;
        const any value = row.type.convertFromByteArray(hexBytes(row.bytes), error);
        EXPECT_FALSE(error.hasError());
        ASSERT_FALSE(value.empty());
        EXPECT_TRUE(value == row.value);
    }
}

TEST(TypeForms, ColourBytesRoundTripEveryByteInEveryPlace) {
    const TypeInfo type = ColorType::Create(true);
    for (unsigned int byte = 0; byte < 256; ++byte) {
        for (unsigned int place = 0; place < 4; ++place) {
            ByteArray bytes(4u, static_cast<unsigned char>(0x5A));
            bytes[place] = static_cast<unsigned char>(byte);
            ErrorHolder error;
            const any value = type.convertFromByteArray(bytes, error);
            ASSERT_EQ(type.convertToByteArray(value), bytes) << byte << " at " << place;
        }
    }
}

TEST(TypeForms, LenientReadersTakeWhatAStreamTakes) {
    struct Row {
        const char *label;
        TypeInfo type;
        std::string text;
        any value;
    };
    const Row rows[] = {
        {"int with blanks and a tail", IntType::Create(), "  42abc", any(42)},
        {"int ignores a second number", IntType::Create(), "7 8", any(7)},
        {"int reads decimal only", IntType::Create(), "0x1F", any(0)},
        {"int plus sign", IntType::Create(), "+12", any(12)},
        {"int leading zeros", IntType::Create(), "-000000000000000000000042", any(-42)},
        {"int stops at a point", IntType::Create(), "3.9", any(3)},
        {"largest int", IntType::Create(), "\t2147483647\n", any(INT_MAX)},
        {"double with a unit", DoubleType::Create(), "1.5mm", any(1.5)},
        {"double without leading digit", DoubleType::Create(), "-.5", any(-0.5)},
        {"double without trailing digit", DoubleType::Create(), "5.", any(5.0)},
        {"double exponent", DoubleType::Create(), "1E+2x", any(100.0)},
        {"double stops at a second point", DoubleType::Create(), "1.2.3", any(1.2)},
        {"double reads hexadecimal as zero", DoubleType::Create(), "0x1p3", any(0.0)},
        {"double underflow is zero", DoubleType::Create(), "1e-400", any(0.0)},
        {"double denormal", DoubleType::Create(), "4.9e-324", any(4.9e-324)},
        {"double lossy text", DoubleType::Create(), "1.23457e+06", any(1234570.0)},
        {"float", FloatType::Create(), " 2.5e0 kg", any(2.5f)},
        {"float denormal", FloatType::Create(), "1e-45", any(1e-45f)},
        {"bytes first word", ByteArrayType::Create(), "TWFu second", any(ByteArray("Man", 3u))},
        {"bytes after blanks", ByteArrayType::Create(), " \t\n TWFu\r\n",
         any(ByteArray("Man", 3u))},
        {"bytes padding anywhere", ByteArrayType::Create(), "TW=Fu !!!", any(ByteArray("Man", 3u))},
        {"bytes without their NUL", ByteArrayType::Create(), "TWFu==\vrest",
         any(ByteArray("Man", 3u))},
        {"string as it stands", StringType::Create(), " x\n", any(std::string(" x\n"))},
        {"hash digits past 32", MD5HashType::Create(), "000000010000000200000003000000045 !",
         any(MD5Hash(1, 2, 3, 4))},
        {"hash with blanks", MD5HashType::Create(), "00000001 00000002\t00000003\n00000004",
         any(MD5Hash(1, 2, 3, 4))},
        {"hash repeats its last digit", MD5HashType::Create(), "12",
         any(MD5Hash(0x12222222, 0x22222222, 0x22222222, 0x22222222))},
        {"semicolon", IPointType::Create(), "3;4", any(VTPoint<int>(3, 4))},
        {"slash", IPointType::Create(), "3/4", any(VTPoint<int>(3, 4))},
        {"blanks around", IPointType::Create(), "  3 ,\t4 ", any(VTPoint<int>(3, 4))},
        {"digit as separator", IPointType::Create(), "3 45", any(VTPoint<int>(3, 5))},
        {"trailing text", IPointType::Create(), "3,4,5 and more", any(VTPoint<int>(3, 4))},
        {"letter separator", IPointType::Create(), "1e5", any(VTPoint<int>(1, 5))},
        {"hexadecimal reads its zero", IPointType::Create(), "0x7,2", any(VTPoint<int>(0, 7))},
        {"decimal point as separator", IPointType::Create(), "1.5,2", any(VTPoint<int>(1, 5))},
        {"plus sign", IPointType::Create(), "+3,-4", any(VTPoint<int>(3, -4))},
        {"double separators", DPointType::Create(), ".5x-2.5e1", any(VTPoint<double>(0.5, -25))},
        {"double exponent stops", DPointType::Create(), "1e2e3,4", any(VTPoint<double>(100, 3))},
        {"double point stops", DPointType::Create(), "1.5.5,4", any(VTPoint<double>(1.5, 5))},
        {"underflow reads as zero", DPointType::Create(), "1e-400,4.9e-324",
         any(VTPoint<double>(0, 4.9e-324))},
        {"rect separators", IRectType::Create(), "1;2|3 x 4", any(VTRect<int>(1, 2, 3, 4))},
        {"rect extremes", IRectType::Create(), "-2147483648,2147483647,0,-0",
         any(VTRect<int>(INT_MIN, INT_MAX, 0, 0))},
        {"double rect", DRectType::Create(), "1 ,2 ,3 ,4e0 !", any(VTRect<double>(1, 2, 3, 4))},
        {"transform separators", TransformType::Create(), " 1;0;5 ,0|1 x 6,0,0,1 and more",
         any(Transform(1, 0, 5, 0, 1, 6, 0, 0, 1))},
        {"one point", PathType::Create(), "1,2;", any(pathOf({{1, 2}}))},
        {"path separators", PathType::Create(), " 1 / 2 x3e0,4!", any(pathOf({{1, 2}, {3, 4}}))},
        {"0xFF ends the path", PathType::Create(), "1,2;\xFF garbage", any(pathOf({{1, 2}}))},
        {"0xFF alone is no path", PathType::Create(), "\xFF", any(Path())},
    };
    for (Row const &row : rows) {
        SCOPED_TRACE(row.label);
        const vort_test::ReadResult read = readText(row.type, row.text);
        EXPECT_EQ(read.message, "");
        ASSERT_FALSE(read.value.empty());
        EXPECT_TRUE(read.value == row.value);
    }
}

TEST(TypeForms, ReadersRefuseWithTheirOwnMessage) {
    struct Row {
        TypeInfo type;
        std::string text;
        const char *suffix;
        const char *source;
    };
    const Row rows[] = {
        {BoolType::Create(), "True", "' to bool", ".\\types\\BoolType"},
        {BoolType::Create(), " true", "' to bool", ".\\types\\BoolType"},
        {BoolType::Create(), "false\n", "' to bool", ".\\types\\BoolType"},
        {BoolType::Create(), "1", "' to bool", ".\\types\\BoolType"},
        {BoolType::Create(), "", "' to bool", ".\\types\\BoolType"},
        {BoolType::Create(), std::string("true\0", 5), "' to bool", ".\\types\\BoolType"},
        {IntType::Create(), "", "' to int", ".\\types\\IntType"},
        {IntType::Create(), "  ", "' to int", ".\\types\\IntType"},
        {IntType::Create(), "a1", "' to int", ".\\types\\IntType"},
        {IntType::Create(), "- 1", "' to int", ".\\types\\IntType"},
        {IntType::Create(), "+-1", "' to int", ".\\types\\IntType"},
        {IntType::Create(), "2147483648", "' to int", ".\\types\\IntType"},
        {IntType::Create(), "-2147483649", "' to int", ".\\types\\IntType"},
        {IntType::Create(), "99999999999999999999999", "' to int", ".\\types\\IntType"},
        {FloatType::Create(), "1e39", "' to float", ".\\types\\FloatType"},
        {FloatType::Create(), "e5", "' to float", ".\\types\\FloatType"},
        {DoubleType::Create(), "", "' to double", ".\\types\\DoubleType"},
        {DoubleType::Create(), ".", "' to double", ".\\types\\DoubleType"},
        {DoubleType::Create(), "1e", "' to double", ".\\types\\DoubleType"},
        {DoubleType::Create(), "1e+", "' to double", ".\\types\\DoubleType"},
        {DoubleType::Create(), "1e400", "' to double", ".\\types\\DoubleType"},
        {DoubleType::Create(), "-1e400", "' to double", ".\\types\\DoubleType"},
        {DoubleType::Create(), "inf", "' to double", ".\\types\\DoubleType"},
        {DoubleType::Create(), "nan", "' to double", ".\\types\\DoubleType"},
        {ByteArrayType::Create(), "", "' to ByteArray", ".\\types\\ByteArrayType"},
        {ByteArrayType::Create(), "   ", "' to ByteArray", ".\\types\\ByteArrayType"},
        {ByteArrayType::Create(), "TW*u", "' to ByteArray", ".\\types\\ByteArrayType"},
        {ByteArrayType::Create(), std::string("TWFu\0", 5), "' to ByteArray",
         ".\\types\\ByteArrayType"},
        {ByteArrayType::Create(), "\xC3\xA9t\xC3\xA9", "' to ByteArray", ".\\types\\ByteArrayType"},
        {MD5HashType::Create(), "0123456789abcdef0123456789ABCDEF", "' to MD5Hash",
         ".\\types\\MD5Hash"},
        {MD5HashType::Create(), "", "' to MD5Hash", ".\\types\\MD5Hash"},
        {MD5HashType::Create(), "0x000000000000000000000000000000", "' to MD5Hash",
         ".\\types\\MD5Hash"},
        // The colour's text form is write-only: its own output fails too.
        {ColorType::Create(true), "[ 1, 0, 0, 1 ]", "' to color", ".\\types\\ColorType"},
        {ColorType::Create(false), "", "' to color", ".\\types\\ColorType"},
        {IPointType::Create(), "3", "' to IPoint", ".\\types\\PointType"},
        {IPointType::Create(), "3 4", "' to IPoint", ".\\types\\PointType"},
        {IPointType::Create(), "3,", "' to IPoint", ".\\types\\PointType"},
        {IPointType::Create(), "x,4", "' to IPoint", ".\\types\\PointType"},
        {IPointType::Create(), "2147483648,0", "' to IPoint", ".\\types\\PointType"},
        {DPointType::Create(), "1e,2", "' to DPoint", ".\\types\\PointType"},
        {DPointType::Create(), "1,1e400", "' to DPoint", ".\\types\\PointType"},
        {DPointType::Create(), "nan,0", "' to DPoint", ".\\types\\PointType"},
        {IRectType::Create(), "1,2,3", "' to IRect", ".\\types\\PointType"},
        {IRectType::Create(), "1,2,3,", "' to IRect", ".\\types\\PointType"},
        {DRectType::Create(), "1,2,3,+", "' to DRect", ".\\types\\PointType"},
        {DRectType::Create(), std::string("1,2,3\0,4", 8), "' to DRect", ".\\types\\PointType"},
        {TransformType::Create(), "1,0,0,0,1,0,0,0", "' to transform", ".\\types\\TransformType"},
        {TransformType::Create(), "1,0,0,0,1,0,0,0,x", "' to transform", ".\\types\\TransformType"},
        // The separator after the last point is required, and nothing may follow it.
        {PathType::Create(), "1,2", "' to path", ".\\types\\PathType"},
        {PathType::Create(), "1,2; ", "' to path", ".\\types\\PathType"},
        {PathType::Create(), "1,2;3", "' to path", ".\\types\\PathType"},
        {PathType::Create(), " ", "' to path", ".\\types\\PathType"},
        {PathType::Create(), "x,2;", "' to path", ".\\types\\PathType"},
    };
    for (Row const &row : rows) {
        SCOPED_TRACE(row.text);
        const TypeInfo &type = row.type;
        ErrorHolder error;
        const any value = type.convertFromString(row.text, error);
        EXPECT_TRUE(value.empty());
        ASSERT_TRUE(error.hasError());
        EXPECT_EQ(error.what(), "Can't convert string '" + row.text + row.suffix);
        EXPECT_EQ(error.id(), "Nexlark::GenericError");
        EXPECT_EQ(error.description()->where().file(), row.source);
    }
}

TEST(TypeForms, LastErrorWinsAndSuccessLeavesItInPlace) {
    const TypeInfo types[] = {BoolType::Create(), IntType::Create(), IPointType::Create(),
                              TransformType::Create(), PathType::Create()};
    const char *const good[] = {"true", "1", "1,2", "1,0,0,0,1,0,0,0,1", "1,2;"};
    for (int index = 0; index < 5; ++index) {
        SCOPED_TRACE(good[index]);
        ErrorHolder error;
        types[index].convertFromString("bad", error);
        const std::string first = error.what();
        EXPECT_NE(first, "");
        EXPECT_FALSE(types[index].convertFromString(good[index], error).empty());
        EXPECT_EQ(error.what(), first);
        types[index].convertFromString("worse", error);
        EXPECT_NE(error.what(), first);
        EXPECT_NE(error.what().find("'worse'"), std::string::npos);
    }
}

TEST(TypeForms, WritersRefuseAnotherClassAndDefaultsAreTheFamilys) {
    struct Row {
        const char *label;
        TypeInfo type;
        any defaultValue;
        any neighbour;  // a near miss: no widening, no conversion
    };
    const Row rows[] = {
        {"bool", BoolType::Create(), any(false), any(1)},
        {"int", IntType::Create(), any(0), any(true)},
        {"double", DoubleType::Create(), any(0.0), any(0.0f)},
        {"string", StringType::Create(), any(std::string()), any(ByteArray())},
        {"bytes", ByteArrayType::Create(), any(ByteArray()), any(std::string("TWFu"))},
        {"hash", MD5HashType::Create(), any(MD5Hash()), any(ByteArray(16u, '\0'))},
        {"colour", ColorType::Create(true), any(Color()), any(0x00000001u)},
        {"int point", IPointType::Create(), any(VTPoint<int>(0, 0)), any(VTPoint<double>())},
        {"double point", DPointType::Create(), any(VTPoint<double>(0, 0)), any(VTPoint<float>())},
        {"int rect", IRectType::Create(), any(VTRect<int>(0, 0, 0, 0)), any(VTPoint<int>())},
        {"double rect", DRectType::Create(), any(VTRect<double>(0, 0, 0, 0)), any(VTRect<int>())},
        {"transform", TransformType::Create(), any(Transform::IDENTITY), any(Path())},
        {"path", PathType::Create(), any(Path()), any(Transform())},
    };
    for (Row const &row : rows) {
        SCOPED_TRACE(row.label);
        const any value = row.type.defaultConstruct();
        ASSERT_TRUE(row.type.isValid(value));
        EXPECT_TRUE(value == row.defaultValue);
        for (any const &stranger : {any(), any('x'), row.neighbour}) {
            EXPECT_FALSE(row.type.isValid(stranger));
            EXPECT_THROW(row.type.convertToString(stranger), bad_any_cast);
            EXPECT_THROW(row.type.convertToByteArray(stranger), bad_any_cast);
        }
    }
}

TEST(TypeForms, FloatDefaultIsADoubleThatOnlyDoubleTypeTakes) {
    const TypeInfo floatType = FloatType::Create();
    const any value = floatType.defaultConstruct();
    ASSERT_FALSE(value.empty());
    EXPECT_TRUE(value.type() == typeid(double));
    EXPECT_FALSE(floatType.isValid(value));
    EXPECT_THROW(floatType.convertToString(value), bad_any_cast);
    EXPECT_TRUE(DoubleType::Create().isValid(value));
    EXPECT_EQ(DoubleType::Create().convertToString(value), "0");
}

TEST(TypeForms, ByteArrayTextCarriesTheNulOfItsBase64String) {
    const TypeInfo type = ByteArrayType::Create();
    for (const char *bytes : {"", "M", "Ma", "Man", "any carnal pleasure."}) {
        SCOPED_TRACE(bytes);
        const ByteArray value(bytes, static_cast<unsigned int>(std::string(bytes).size()));
        const std::string text = type.convertToString(any(value));
        EXPECT_EQ(text, value.toBase64());
        ASSERT_FALSE(text.empty());
        EXPECT_EQ(text.back(), '\0');
        // Without its NUL the text reads back, but for the empty array's, which has no word.
        const vort_test::ReadResult read = readText(type, text.c_str());
        if (value.isEmpty()) {
            EXPECT_EQ(read.message, "Can't convert string '' to ByteArray");
        } else {
            ASSERT_EQ(read.message, "");
            EXPECT_TRUE(read.value == any(value));
        }
    }
}
