// The text and byte forms of the whole type family, one table: each row is a value with the
// exact text and bytes it must give, read back where the form reads.
#include "TypeTesting.h"
#include <vort/types/ColorType.h>
#include <vort/types/PointType.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace VORT;
using vort_test::hexBytes;
using vort_test::hexOf;
using vort_test::readText;

namespace {

struct FormRow {
    const char *label;
    TypeInfo type;
    any value;
    std::string text;
    std::string bytes;      // hexadecimal
    bool textReads = true;  // false where the text form is write-only or loses the value
};

std::vector<FormRow> formRows() {
    return {
        {"opaque red", ColorType::Create(true), any(Color(1.0, 0.0, 0.0, 1.0)), "[ 1, 0, 0, 1 ]",
         "FF 00 00 FF", false},
        {"red without alpha", ColorType::Create(false), any(Color(1.0, 0.0, 0.0, 1.0)),
         "[ 1, 0, 0 ]", "FF 00 00 FF", false},
        {"grey 128", ColorType::Create(true), any(Color(128 / 255.0, 0.5, 1.0, 0.0)),
         "[ 0.501961, 0.501961, 1, 0 ]", "80 80 FF 00", false},
        {"packed word", ColorType::Create(false),
         [] {
             Color color;
             color.setRGBAFromPackedValue(0x11223344u);
             return any(color);
         }(),
         "[ 0.0666667, 0.133333, 0.2 ]", "11 22 33 44", false},
        {"default colour", ColorType::Create(true), any(Color()), "[ 0, 0, 0, 0.00392157 ]",
         "00 00 00 01", false},

        {"int point", IPointType::Create(), any(VTPoint<int>(1, 2)), "1,2",
         "01 00 00 00 02 00 00 00"},
        {"negative int point", IPointType::Create(), any(VTPoint<int>(-1, -2147483647 - 1)),
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
    };
}

}  // namespace

TEST(TypeForms, EachValueGivesItsTextAndBytesAndReadsBack) {
    for (FormRow const &row : formRows()) {
        SCOPED_TRACE(row.label);
        ASSERT_TRUE(row.type.isValid(row.value));
        EXPECT_EQ(row.type.convertToString(row.value), row.text);

        const ByteArray bytes = row.type.convertToByteArray(row.value);
        EXPECT_EQ(hexOf(bytes), row.bytes);
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
        {"colour", ColorType::Create(false), "01 02 03 04 05",
         [] {
             Color color;
             color.setRGBAFromPackedValue(0x01020304u);
             return any(color);
         }()},
        {"int point", IPointType::Create(), "05 00 00 00 FE FF FF FF 99", any(VTPoint<int>(5, -2))},
        {"int rect", IRectType::Create(), "00 00 00 00 01 00 00 00 02 00 00 00 03 00 00 00 07 07",
         any(VTRect<int>(0, 1, 2, 3))},
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

TEST(TypeForms, LenientReadersAcceptAnySeparatorBlanksAndTrailingText) {
    struct Row {
        const char *label;
        TypeInfo type;
        std::string text;
        any value;
    };
    const Row rows[] = {
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
         any(VTRect<int>(-2147483647 - 1, 2147483647, 0, 0))},
        {"double rect", DRectType::Create(), "1 ,2 ,3 ,4e0 !", any(VTRect<double>(1, 2, 3, 4))},
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
    };
    const Row rows[] = {
        // The colour's text form is write-only: its own output fails too.
        {ColorType::Create(true), "[ 1, 0, 0, 1 ]", "' to color"},
        {ColorType::Create(false), "", "' to color"},
        {ColorType::Create(false), "0xFF0000FF", "' to color"},
        {IPointType::Create(), "3", "' to IPoint"},
        {IPointType::Create(), "3 4", "' to IPoint"},
        {IPointType::Create(), "3,", "' to IPoint"},
        {IPointType::Create(), "", "' to IPoint"},
        {IPointType::Create(), "x,4", "' to IPoint"},
        {IPointType::Create(), "2147483648,0", "' to IPoint"},
        {IPointType::Create(), "0,-2147483649", "' to IPoint"},
        {DPointType::Create(), "1e,2", "' to DPoint"},
        {DPointType::Create(), ".,2", "' to DPoint"},
        {DPointType::Create(), "1,1e400", "' to DPoint"},
        {DPointType::Create(), "inf,0", "' to DPoint"},
        {DPointType::Create(), "nan,0", "' to DPoint"},
        {DPointType::Create(), "- 1,2", "' to DPoint"},
        {IRectType::Create(), "1,2,3", "' to IRect"},
        {IRectType::Create(), "1,2,3,", "' to IRect"},
        {DRectType::Create(), "1,2,3,+", "' to DRect"},
        {DRectType::Create(), std::string("1,2,3\0,4", 8), "' to DRect"},
    };
    for (Row const &row : rows) {
        SCOPED_TRACE(row.text);
        const vort_test::ReadResult read = readText(row.type, row.text);
        EXPECT_TRUE(read.value.empty());
        EXPECT_EQ(read.message, "Can't convert string '" + row.text + row.suffix);
    }
}

TEST(TypeForms, WritersRefuseAnotherClassAndDefaultsAreZero) {
    struct Row {
        const char *label;
        TypeInfo type;
        any defaultValue;
    };
    const Row rows[] = {
        {"colour", ColorType::Create(true), any(Color())},
        {"int point", IPointType::Create(), any(VTPoint<int>(0, 0))},
        {"double point", DPointType::Create(), any(VTPoint<double>(0, 0))},
        {"int rect", IRectType::Create(), any(VTRect<int>(0, 0, 0, 0))},
        {"double rect", DRectType::Create(), any(VTRect<double>(0, 0, 0, 0))},
    };
    const any strangers[] = {any(), any(1), any(VTPoint<float>(0, 0)), any(std::string("1,2"))};
    for (Row const &row : rows) {
        SCOPED_TRACE(row.label);
        const any value = row.type.defaultConstruct();
        ASSERT_TRUE(row.type.isValid(value));
        EXPECT_TRUE(value == row.defaultValue);
        for (any const &stranger : strangers) {
            EXPECT_FALSE(row.type.isValid(stranger));
            EXPECT_THROW(row.type.convertToString(stranger), bad_any_cast);
            EXPECT_THROW(row.type.convertToByteArray(stranger), bad_any_cast);
        }
    }
    // Points and rectangles of the other field class are strangers too.
    EXPECT_FALSE(IPointType::Create().isValid(any(VTPoint<double>())));
    EXPECT_FALSE(DRectType::Create().isValid(any(VTRect<int>())));
}
