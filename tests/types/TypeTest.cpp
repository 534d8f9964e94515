#include "support/FuzzCorpus.h"
#include "support/Latch.h"
#include "support/PlatformHooks.h"
#include "support/ProbeType.h"
#include <vort/types/BoolType.h>
#include <vort/types/ByteArrayType.h>
#include <vort/types/Color.h>
#include <vort/types/ColorType.h>
#include <vort/types/DoubleType.h>
#include <vort/types/EnumType.h>
#include <vort/types/Enumerations.h>
#include <vort/types/FloatType.h>
#include <vort/types/Gradient.h>
#include <vort/types/GradientType.h>
#include <vort/types/IntType.h>
#include <vort/types/MD5Hash.h>
#include <vort/types/MD5HashType.h>
#include <vort/types/Path.h>
#include <vort/types/PathType.h>
#include <vort/types/PixmapType.h>
#include <vort/types/PointType.h>
#include <vort/types/Shape.h>
#include <vort/types/StringType.h>
#include <vort/types/Transform.h>
#include <vort/types/TransformType.h>
#include <vort/types/Type.h>
#include <vort/types/VTPoint.h>
#include <vort/types/VectorType.h>
#include <vort/xml/Database.h>

#include <QPolygonF>
#include <QTransform>
#include <QtCore/QBuffer>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtGui/QImage>
#include <QtGui/QLinearGradient>

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdlib>
#include <iomanip>
#include <limits>
#include <locale>
#include <new>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

using namespace VORT;
using Point = VORT::VTPoint<double>;
using std::make_tuple;
using vort_test::ProbeType;
using Strings = std::vector<std::string>;

namespace {

// "01 00 ff" -> the three bytes.
VORT::ByteArray hexBytes(std::string const &hex) {
    std::string bytes;
    std::istringstream in(hex);
    for (std::string pair; in >> pair;) {
        bytes += static_cast<char>(std::strtoul(pair.c_str(), nullptr, 16));
    }
    return VORT::ByteArray(bytes.data(), static_cast<unsigned int>(bytes.size()));
}

// The bytes as hexBytes takes them, upper case.
std::string hexOf(VORT::ByteArray const &bytes) {
    std::string text;
    for (unsigned int index = 0; index < bytes.size(); ++index) {
        text += (index > 0 ? " " : "") + std::string(1, "0123456789ABCDEF"[bytes[index] >> 4]) +
                "0123456789ABCDEF"[bytes[index] & 0xF];
    }
    return text;
}

struct ReadResult {
    VORT::any value;
    std::string message;  // empty when the holder has no error
};

ReadResult readText(VORT::TypeInfo const &type, std::string const &text) {
    VORT::ErrorHolder error;
    VORT::any value = type.convertFromString(text, error);
    return ReadResult{value, error.what()};
}

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

enum class Paint { None = 0, Red = 1, Blue = 2 };

// A client enumeration: Red and Blue named, and every int its own enumerator.
class PaintType : public EnumType {
public:
    static TypeInfo Create(bool withPurple = false) {
        return CreateTypeInfo(new PaintType(withPurple));
    }

protected:
    explicit PaintType(bool withPurple) {
        valueNames[1] = "Red";
        valueNames[2] = "Blue";
        if (withPurple) {
            valueNames[3] = "Purple";
        }
    }
    PaintType *clone() const override { return new PaintType(*this); }
    int convertToInt(any const &value) const override {
        return static_cast<int>(any_cast<Paint>(value));
    }
    any convertFromInt(int value) const override { return any(static_cast<Paint>(value)); }
};

// A second subclass with the same table: equal tables, different classes.
class OtherPaintType : public PaintType {
public:
    static TypeInfo Create() { return CreateTypeInfo(new OtherPaintType); }

protected:
    OtherPaintType() : PaintType(false) {}
    OtherPaintType *clone() const override { return new OtherPaintType(*this); }
};

// Sets the global locale for the life of the object.
class GlobalLocale {
public:
    explicit GlobalLocale(std::locale const &locale) : m_previous(std::locale::global(locale)) {}
    ~GlobalLocale() { std::locale::global(m_previous); }

private:
    std::locale m_previous;
};

class CommaPunct : public std::numpunct<char> {
protected:
    char do_decimal_point() const override { return ','; }
};

QImage imageIn(any const &value) {
    const Pixmap pixmap = any_cast<Pixmap>(value);
    return pixmap.getQImage() != nullptr ? *pixmap.getQImage() : QImage();
}

}  // namespace

TEST(TypeInfo, CopiesCloneMovesHandOverAndSelfAssignmentEmpties) {
    const int liveBefore = ProbeType::live;
    {
        const TypeInfo original = ProbeType::Create(7);
        const int clonesBefore = ProbeType::clones;
        const TypeInfo copy(original);
        TypeInfo assigned = ProbeType::Create(1);
        assigned = original;
        EXPECT_EQ(std::make_tuple(ProbeType::clones - clonesBefore, ProbeType::parameterOf(copy),
                                  ProbeType::parameterOf(assigned)),
                  std::make_tuple(2, 7, 7));
        EXPECT_TRUE(ProbeType::objectOf(copy) != ProbeType::objectOf(original) &&
                    ProbeType::objectOf(assigned) != ProbeType::objectOf(original));
        // Assigning an empty handle deletes the held type and leaves the target empty.
        assigned = TypeInfo();
        EXPECT_EQ(ProbeType::objectOf(assigned), nullptr);
        EXPECT_EQ(ProbeType::live, liveBefore + 2);
    }
    EXPECT_EQ(ProbeType::live, liveBefore);

    TypeInfo source = ProbeType::Create(3);
    VORT::Type const *object = ProbeType::objectOf(source);
    const int clonesBefore = ProbeType::clones;
    TypeInfo moved(std::move(source));
    EXPECT_EQ(std::make_pair(ProbeType::objectOf(moved), ProbeType::objectOf(source)),
              std::make_pair(object, static_cast<VORT::Type const *>(nullptr)));
    TypeInfo target = BoolType::Create();
    target = std::move(moved);
    EXPECT_EQ(std::make_pair(ProbeType::objectOf(target), ProbeType::objectOf(moved)),
              std::make_pair(object, static_cast<VORT::Type const *>(nullptr)));
    EXPECT_EQ(ProbeType::clones, clonesBefore);

    // A caller fault by design (delete, then clone): it must not read the freed type.
    TypeInfo &alias = target;
    target = alias;
    EXPECT_EQ(ProbeType::objectOf(target), nullptr);
    EXPECT_EQ(ProbeType::live, liveBefore);
}

TEST(TypeInfo, IsTellsTheFamilyMembersApart) {
    using namespace VORT;
    const TypeInfo strings = SpecificVectorType<std::string>::Create(StringType::Create());
    const std::vector<TypeInfo> types = {
        BoolType::Create(),   ByteArrayType::Create(),  MD5HashType::Create(),
        IntType::Create(),    FloatType::Create(),      DoubleType::Create(),
        StringType::Create(), ColorType::Create(false), IPointType::Create(),
        DPointType::Create(), IRectType::Create(),      DRectType::Create(),
        PathType::Create(),   TransformType::Create(),  strings};
    const std::vector<bool (*)(TypeInfo const &)> tests = {
        &BoolType::Is,   &ByteArrayType::Is, &MD5HashType::Is, &IntType::Is,       &FloatType::Is,
        &DoubleType::Is, &StringType::Is,    &ColorType::Is,   &IPointType::Is,    &DPointType::Is,
        &IRectType::Is,  &DRectType::Is,     &PathType::Is,    &TransformType::Is, &VectorType::Is};
    for (size_t t = 0; t < types.size(); ++t) {
        for (size_t i = 0; i < tests.size(); ++i) {
            EXPECT_EQ(tests[i](types[t]), t == i) << "type " << t << ", test " << i;
        }
        EXPECT_FALSE(ProbeType::Is(types[t]));
        EXPECT_FALSE(EnumType::Is(types[t]));
    }
    // An empty handle, and a copy of one, is of no class at all.
    EXPECT_FALSE(BoolType::Is(TypeInfo()) || VectorType::Is(TypeInfo(TypeInfo())) ||
                 BoolType::Is(static_cast<Type *>(nullptr)));
}

TEST(TypeInfo, EqualityComparesKindsAndOrderingIsStrictAndTotal) {
    // Different classes are never equal, whatever the parameters say; within one class the
    // parameters decide, after the class order.
    EXPECT_TRUE(BoolType::Create() == BoolType::Create() &&
                ProbeType::Create(4) == ProbeType::Create(4) &&
                ProbeType::Create(1) < ProbeType::Create(2));
    EXPECT_FALSE(
        MD5HashType::Create() == ByteArrayType::Create() ||
        ProbeType::Create(4) == ProbeType::Create(5) ||
        BoolType::Create() == ProbeType::Create(0) || ProbeType::Create(0) == BoolType::Create() ||
        ProbeType::Create(2) < ProbeType::Create(1) || ProbeType::Create(2) < ProbeType::Create(2));
    const TypeInfo kinds[] = {BoolType::Create(), ByteArrayType::Create(), MD5HashType::Create()};
    for (TypeInfo const &a : kinds) {
        EXPECT_FALSE(a < TypeInfo(a));
        for (TypeInfo const &b : kinds) {
            EXPECT_TRUE(&a == &b || (a < b) != (b < a));
        }
    }
    const bool probeFirst = ProbeType::Create(0) < BoolType::Create();
    EXPECT_TRUE((ProbeType::Create(-100) < BoolType::Create()) == probeFirst &&
                (ProbeType::Create(100) < BoolType::Create()) == probeFirst);
}

TEST(Type, BaseBodiesReadNothingAndRefuseText) {
    const TypeInfo probe = ProbeType::Create(9);
    ErrorHolder error;

    EXPECT_TRUE(probe.convertFromByteArray(ByteArray("\x01\x02", 2u), error).empty() &&
                probe.convertToByteArray(any(9)).isEmpty() && !probe.isValid(any(9)));
    EXPECT_TRUE(!error.hasError() && probe.convertFromString("nine", error).empty());
    EXPECT_EQ(std::make_tuple(error.what(), error.id(), error.description()->where().file()),
              std::make_tuple("Can't convert string", "Nexlark::GenericError", ".\\types\\Type"));

    // Forwarding reaches the class's own operations.
    EXPECT_EQ(VORT::any_cast<int>(probe.convertFromString("ok", error)) +
                  VORT::any_cast<int>(probe.defaultConstruct()),
              18);
}

TEST(TypeInfo, HolderlessReadersAssertOnFailure) {
    vort_test::PlatformCapture platform;
    const TypeInfo boolType = BoolType::Create();
    EXPECT_TRUE(VORT::any_cast<bool>(boolType.convertFromString("true")) &&
                !VORT::any_cast<bool>(boolType.convertFromByteArray(ByteArray(1u, '\0'))));
    EXPECT_TRUE(platform.assertions().empty());
    EXPECT_TRUE(boolType.convertFromString("yes").empty() &&
                ProbeType::Create(0, true).convertFromByteArray(ByteArray(4u, '\0')).empty());
    ASSERT_EQ(platform.assertions().size(), 2u);
    EXPECT_EQ(platform.assertions()[0].file, ".\\types\\Type");
}

// The text and byte forms of the whole type family, in tables: each value with the exact text and
// bytes it gives, the defaults and the writers' refusal of other classes. The lenient readings and
// the refusals, each message worded exactly, are the fuzz corpus's, replayed with the tests and
// checked against what a default text stream reads.

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
        {IntType::Create(), any(INT_MIN), "-2147483648", "00 00 00 80"},
        {FloatType::Create(), any(0.1f), "0.1", "CD CC CC 3D"},
        {DoubleType::Create(), any(1234567.0), "1.23457e+06", "00 00 00 00 87 D6 32 41", false},
        {DoubleType::Create(), any(-0.0), "-0", "00 00 00 00 00 00 00 80"},
        {StringType::Create(), any(std::string("a\0b", 3)), std::string("a\0b", 3), "61 00 62"},
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
        // The extra byte is ignored by the fixed widths, and kept by strings and byte arrays.
        const any fromBytes = row.type.convertFromByteArray(hexBytes(row.bytes + " 5A"));
        EXPECT_TRUE(StringType::Is(row.type) || ByteArrayType::Is(row.type) ||
                    fromBytes == row.value);
        EXPECT_TRUE(!row.textReads || readText(row.type, row.text).value == row.value);
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
        {DPointType::Create(), any(VTPoint<double>()), any(VTPoint<float>())},
        {IRectType::Create(), any(VTRect<int>()), any(VTPoint<int>())},
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

TEST(EnumType, TextIsTheNameAnyCaseAndBytesGoStraightToTheSubclass) {
    const TypeInfo type = PaintType::Create();
    EXPECT_EQ(type.convertToString(readText(type, "rEd").value), "Red");
    EXPECT_EQ(EnumType::GetValues(PaintType::Create(true)),
              (std::vector<std::string>{"Red", "Blue", "Purple"}));

    ErrorHolder error;
    const any three = type.convertFromByteArray(hexBytes("03 00 00 00 FF"), error);
    EXPECT_TRUE(any_cast<Paint>(three) == static_cast<Paint>(3) &&
                any_cast<Paint>(type.defaultConstruct()) == Paint::None);
    EXPECT_EQ(hexOf(type.convertToByteArray(any(Paint::Blue))), "02 00 00 00");
    EXPECT_EQ(EnumType::ConvertToInt(type, any(Paint::Blue)), 2);
    // Every value is refused by the inherited `isValid`.
    EXPECT_FALSE(error.hasError() || type.isValid(any(Paint::Red)));
}

TEST(EnumType, ConvertFromIntIsGuardedByTheTable) {
    vort_test::PlatformCapture platform;
    const TypeInfo type = PaintType::Create();
    ErrorHolder error;
    EXPECT_TRUE(any_cast<Paint>(EnumType::ConvertFromInt(type, 2, error)) == Paint::Blue &&
                !error.hasError() && EnumType::ConvertFromInt(type, 3, error).empty());
    EXPECT_EQ(error.what(), "Can't convert int to enum");
    EXPECT_TRUE(any_cast<Paint>(EnumType::ConvertFromInt(type, 1)) == Paint::Red &&
                platform.assertions().empty());
    EXPECT_TRUE(EnumType::ConvertFromInt(type, 0).empty());
    EXPECT_EQ(platform.assertions().size(), 1u);
}

TEST(EnumType, ComparesTablesAfterClasses) {
    // A proper prefix is less; equal tables in different classes are unequal, ordered by class.
    EXPECT_TRUE(PaintType::Create() == PaintType::Create() &&
                PaintType::Create() < PaintType::Create(true));
    EXPECT_FALSE(PaintType::Create() == PaintType::Create(true) ||
                 PaintType::Create(true) < PaintType::Create() ||
                 PaintType::Create() == OtherPaintType::Create());
    EXPECT_NE(PaintType::Create() < OtherPaintType::Create(),
              OtherPaintType::Create() < PaintType::Create());
}

// Every enumeration streams through one pair of helpers.
TEST(Enumerations, StreamAsIntsWithNoRangeTest) {
    std::ostringstream out;
    out << TextHAlign::Right << RD::ReflectSpread << ' ' << static_cast<FontWeight::Type>(-7);
    EXPECT_EQ(out.str(), "21 -7");
    std::istringstream in("2147483647 99999999999 x");
    FontMapMode::Type mode = FontMapMode::Points;
    TextFormat::Type format = TextFormat::Rich;
    StrokeStyle::Type style = StrokeStyle::Dash;
    in >> mode >> format;
    in.clear();
    in >> style;
    // A failed extraction, an overflowing one too, leaves the target as it was.
    EXPECT_TRUE(in.fail() && mode == INT_MAX && format == TextFormat::Rich &&
                style == StrokeStyle::Dash);
}

// The escapes and their refusals are the fuzz corpus's.
TEST(VectorType, ElementsGoThroughTheElementTypeAndBytesNowhere) {
    const TypeInfo strings = SpecificVectorType<std::string>::Create(StringType::Create());
    EXPECT_EQ(strings.convertToString(any(Strings{"a;b", "c\\d", ""})), "a\\;b;c\\\\d;");
    // One empty string writes as the empty text, which reads as no items at all.
    EXPECT_EQ(strings.convertToString(any(Strings{""})), "");
    EXPECT_TRUE(any_cast<Strings>(readText(strings, "").value).empty());
    const TypeInfo ints = SpecificVectorType<int>::Create(IntType::Create());
    EXPECT_EQ(any_cast<std::vector<int>>(readText(ints, "1; 2;-3x").value),
              (std::vector<int>{1, 2, -3}));
    const ReadResult bad = readText(ints, "1;two;3");
    EXPECT_TRUE(bad.value.empty() && bad.message == "Can't convert string 'two' to int");

    EXPECT_TRUE(strings.convertToByteArray(any(Strings{"a", "b"})).isEmpty());
    ErrorHolder error;
    EXPECT_TRUE(
        any_cast<Strings>(strings.convertFromByteArray(ByteArray("a;b", 3u), error)).empty());
    EXPECT_FALSE(error.hasError());
    EXPECT_THROW(strings.convertToString(any(std::vector<int>{1})), bad_any_cast);
}

TEST(VectorType, ComparesByElementTypeAndAcceptsOnlyItsVectors) {
    const TypeInfo strings = SpecificVectorType<std::string>::Create(StringType::Create());
    const TypeInfo overInts = SpecificVectorType<std::string>::Create(IntType::Create());
    EXPECT_TRUE(strings == TypeInfo(strings) && !(strings < strings) && !(strings == overInts));
    EXPECT_EQ(strings < overInts, StringType::Create() < IntType::Create());
    EXPECT_NE(strings < overInts, overInts < strings);
    EXPECT_TRUE(any_cast<Strings>(strings.defaultConstruct()).empty() &&
                strings.isValid(any(Strings())) && !strings.isValid(any(std::vector<int>())));
}

TEST(MD5Hash, ComparesAllFourWordsAndReadsItsOwnDigitsOnly) {
    const MD5Hash hash(1, 2, 3, 4);
    for (MD5Hash const &other :
         {MD5Hash(0, 2, 3, 4), MD5Hash(1, 0, 3, 4), MD5Hash(1, 2, 0, 4), MD5Hash(1, 2, 3, 0)}) {
        EXPECT_TRUE(hash != other && !(hash == other) && hash == MD5Hash(1, 2, 3, 4));
    }
    const std::pair<const char *, MD5Hash> rows[] = {
        {"  0 0 0 0 0 0 0 1000000020000000300000004zz", MD5Hash(1, 2, 3, 4)},
        {"0123456789ABCDEF", MD5Hash(0x01234567, 0x89ABCDEF, 0xFFFFFFFF, 0xFFFFFFFF)},
        {"0000000g000000020000000300000004", MD5Hash()},
    };
    for (auto const &row : rows) {
        ErrorHolder error;
        EXPECT_EQ(MD5Hash::convertFromString(row.first, error), row.second) << row.first;
        EXPECT_EQ(error.hasError(), row.second == MD5Hash()) << row.first;
    }
    EXPECT_THROW(MD5Hash::convertToByteArray(any(ByteArray(16u, '\0'))), VORT::bad_any_cast);

    std::ostringstream out;
    out << MD5Hash(1, 2, 3, 4) << '|';
    EXPECT_EQ(out.str(), "00000001000000020000000300000004|");
    // 32 characters, each after skipped whitespace. A bad text assigns the zero hash and leaves
    // the stream good; a stream that runs dry repeats its last character and fails.
    std::istringstream in(" 00000001 00000002 00000003 00000004 0000000g000000020000000300000004");
    MD5Hash overwritten(9, 9, 9, 9);
    MD5Hash read;
    in >> read >> overwritten;
    EXPECT_TRUE(read == MD5Hash(1, 2, 3, 4) && overwritten == MD5Hash() && !in.fail());
    std::istringstream shortText("12");
    shortText >> read;
    EXPECT_TRUE(read == MD5Hash(0x12222222, 0x22222222, 0x22222222, 0x22222222) &&
                shortText.fail());
}

TEST(Color, ComponentsRoundHalfUpAndClamp) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::pair<Color, unsigned int> rows[] = {
        {Color(2.0, -1.0, 0.5, 0.0), 0xFF008000u},
        // 0.998 * 255 = 254.49: plus 0.5 truncates to 254.
        {Color(0.998, 0.999, 1.0 / 255, 0.4999 / 255), 0xFEFF0100u},
        {Color(nan, 1e300, -1e300, 254.5 / 255), 0x00FF00FFu},
    };
    for (auto const &row : rows) {
        EXPECT_EQ(row.first.getAsRgba(), row.second);
    }
    for (int byte = 0; byte < 256; ++byte) {
        const Color color(byte / 255.0, 0, 0, byte / 255.0);
        ASSERT_TRUE(color.red() == byte && color.alpha() == byte && color.redF() == byte / 255.0);
    }
}

TEST(Color, DefaultIsNearlyTransparentBlackAndWordsCompareRedFirst) {
    EXPECT_TRUE(Color().getAsRgba() == 0x00000001u && Color().alpha() == 1 && Color().red() == 0);
    Color high;
    high.setRGBAFromPackedValue(0x01223344u);
    EXPECT_EQ(high.green() * 10000 + high.blue() * 100 + high.alpha(),
              0x22 * 10000 + 0x33 * 100 + 0x44);
    EXPECT_DOUBLE_EQ(high.greenF() + high.blueF() + high.alphaF(), (0x22 + 0x33 + 0x44) / 255.0);
    Color low;
    low.setRGBAFromPackedValue(0x00FFFFFFu);
    EXPECT_TRUE(low < high && high > low && high != low);
    EXPECT_FALSE(high < low || low > high || high == low || high < high || high > high);
}

TEST(Color, StreamsCarryFourDoublesWithAnySeparator) {
    std::ostringstream out;
    out << Color(1.0, 0.0, 128 / 255.0, 1.0);
    EXPECT_EQ(out.str(), "1,0,0.501961,1");
    // A failed read still sets the colour, from the components read so far.
    const std::pair<const char *, unsigned int> rows[] = {
        {" 0 ; 1 / 0 x 0.5", 0x00FF0080u}, {"1,1", 0xFFFF0000u}, {"", 0x00000000u}};
    for (auto const &row : rows) {
        std::istringstream in(row.first);
        Color color;
        in >> color;
        EXPECT_EQ(color.getAsRgba(), row.second) << row.first;
        EXPECT_EQ(in.fail(), row.second != 0x00FF0080u) << row.first;
    }
    EXPECT_TRUE(ColorType::Create(false) < ColorType::Create(true) &&
                ColorType::Create(false) == ColorType::Create(false));
    EXPECT_FALSE(ColorType::Create(true) < ColorType::Create(false) ||
                 ColorType::Create(true) < ColorType::Create(true) ||
                 ColorType::Create(true) == ColorType::Create(false));
    // The flag survives the clone that a copy makes.
    const VORT::TypeInfo copy(ColorType::Create(false));
    EXPECT_TRUE(!ColorType::UsesAlpha(copy) && ColorType::UsesAlpha(ColorType::Create(true)));
}

// Numbers in text are made without a stream while the global locale is the classic one, and by
// a stream otherwise, which follows the locale. (The fuzz corpus checks the classic readings
// against a stream.)

TEST(NumberText, FollowsTheGlobalLocale) {
    GlobalLocale comma(std::locale(std::locale::classic(), new CommaPunct));
    EXPECT_EQ(DoubleType::Create().convertToString(any(1.5)), "1,5");
    EXPECT_EQ(DPointType::Create().convertToString(any(VTPoint<double>(1.5, 2))), "1,5,2");
    EXPECT_EQ(any_cast<double>(readText(DoubleType::Create(), "2,25").value), 2.25);
    // Under the classic locale the comma ends the number.
    std::locale::global(std::locale::classic());
    EXPECT_EQ(any_cast<double>(readText(DoubleType::Create(), "2,25").value), 2.0);
}

// The readers' refusals and what they decode are the PNG and text fuzz targets' corpora.
TEST(PixmapType, KeepsAlphaInBytesAndDropsItInText) {
    const TypeInfo type = PixmapType::Create();
    QImage image(2, 1, QImage::Format_ARGB32);
    image.setPixel(0, 0, qRgba(10, 20, 30, 40));
    image.setPixel(1, 0, qRgba(200, 100, 0, 255));
    const any value{Pixmap(&image)};

    ErrorHolder error;
    const ByteArray bytes = type.convertToByteArray(value);
    EXPECT_EQ(bytes.slice(0u, 8u), ByteArray("\x89PNG\r\n\x1a\n", 8u));
    EXPECT_EQ(imageIn(type.convertFromByteArray(bytes, error)).convertToFormat(image.format()),
              image);
    EXPECT_EQ(type.convertToString(value), "2,1;10,20,30;200,100,0;");
    QImage opaque = image;
    opaque.setPixel(0, 0, qRgb(10, 20, 30));
    EXPECT_EQ(imageIn(type.convertFromString("2,1;10,20,30;200,100,0;", error)), opaque);
    EXPECT_FALSE(error.hasError());

    // Another format decodes to a null image; unset and null pixmaps have no bytes.
    QByteArray bmp;
    QBuffer buffer(&bmp);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "BMP");
    EXPECT_TRUE(
        imageIn(type.convertFromByteArray(ByteArray(bmp.constData(), bmp.size()), error)).isNull());
    const QImage nullImage;
    EXPECT_TRUE(type.convertToByteArray(any(Pixmap(&nullImage))).isEmpty() &&
                type.convertToByteArray(type.defaultConstruct()).isEmpty());
    EXPECT_TRUE(type.isValid(any(Pixmap())) && !type.isValid(any(7)) && PixmapType::Is(type) &&
                type == PixmapType::Create());
    EXPECT_THROW(type.convertToString(any(7)), VORT::bad_any_cast);
}

TEST(Transform, BuildsRowByRowAndComparesExactly) {
    const double elements[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    const Transform a(1, 2, 3, 4, 5, 6, 7, 8, 9);
    Transform assigned;
    assigned = elements;
    EXPECT_TRUE(Transform(elements) == a && assigned == a && a[1][0] == 4.0 && a[2][1] == 8.0);
    EXPECT_EQ(std::make_tuple(Transform(), Transform::IDENTITY, Transform(a).clear(),
                              Transform(a).identity(), Transform().set(9, 8, 7, 6, 5, 4, 3, 2, 1)),
              std::make_tuple(Transform(1, 0, 0, 0, 1, 0, 0, 0, 1), Transform(), Transform::ZERO,
                              Transform::IDENTITY, Transform(9, 8, 7, 6, 5, 4, 3, 2, 1)));
    for (int index = 0; index < 9; ++index) {
        Transform b = a;
        b[index / 3][index % 3] += 1e-12;
        EXPECT_TRUE(a != b && !(a == b)) << index;
        b[index / 3][index % 3] = std::numeric_limits<double>::quiet_NaN();
        EXPECT_TRUE(b != b && !(b == b)) << index;
    }
}

TEST(Transform, AlgebraUsesAllNineElements) {
    const Transform a(1, 2, 3, 4, 5, 6, 7, 8, 9);
    const Transform b(9, 8, 7, 6, 5, 4, 3, 2, 1);
    EXPECT_EQ(std::make_tuple(a + b, a - b, -a, a.transpose(), a * b),
              std::make_tuple(Transform(10, 10, 10, 10, 10, 10, 10, 10, 10),
                              Transform(-8, -6, -4, -2, 0, 2, 4, 6, 8), a * -1.0,
                              Transform(1, 4, 7, 2, 5, 8, 3, 6, 9),
                              Transform(30, 24, 18, 84, 69, 54, 138, 114, 90)));

    // A translation written into the third row changes the determinant.
    const Transform thirdRow(1, 0, 5, 0, 1, 6, 5, 6, 1);
    EXPECT_DOUBLE_EQ(thirdRow.determinant(), -60.0);
    EXPECT_EQ(Transform(1, 2, 3, 0, 1, 4, 5, 6, 0).inverse(),
              Transform(-24, 18, 5, 20, -15, -4, -5, 4, 1));
    // Singular matrices are not reported: the result is not finite.
    EXPECT_FALSE(std::isfinite(Transform::ZERO.inverse()[2][2]));
}

TEST(Transform, MapsPointsAndComposesInTheDesignsOrder) {
    const Transform t(2, 3, 5, 7, 11, 13, 100, 200, 300);
    VTPoint<double> point(1, 10);
    t.transformInPlace(point);
    EXPECT_EQ(
        std::make_pair(point, Transform().scaleCopy(2, 3).translateCopy(1, 1).transform(0, 0)),
        std::make_pair(VTPoint<double>(37, 130), VTPoint<double>(2, 3)));
    const double angle = 0.7;
    const VTPoint<double> byPoint = Transform::rotatePoint(VTPoint<double>(1, 2), angle);
    EXPECT_DOUBLE_EQ(Transform().rotateCopy(angle).transform(VTPoint<double>(1, 0)).y,
                     -std::sin(angle));
    EXPECT_DOUBLE_EQ(byPoint.x + byPoint.y, 3 * std::cos(angle) - std::sin(angle));

    const Transform translation(1, 0, 3, 0, 1, -4, 0, 0, 1);
    const Transform scale(2, 0, 0, 0, -4, 0, 0, 0, 1);
    const Transform turn = Transform().rotateCopy(angle);
    EXPECT_EQ(std::make_tuple(t.translateCopy(3, -4), t.scaleCopy(2, -4), t.invTranslateCopy(-3, 4),
                              t.invScaleCopy(0.5, -0.25), t.invRotateCopy(-angle)),
              std::make_tuple(t * translation, t * scale, translation * t, scale * t, turn * t));
    Transform inPlace = t;
    inPlace.invTranslate(VTPoint<double>(3, -4));
    inPlace.rotate(angle);
    EXPECT_EQ(inPlace, t.invTranslateCopy(3, -4).rotateCopy(angle));
}

TEST(Transform, BoundsOfTransformedRectangles) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const Transform moved = Transform().translateCopy(5, 5);
    // Degenerate rectangles stay where they are, translation or not.
    EXPECT_EQ(
        std::make_tuple(Transform().scaleCopy(-1, 2).transformBounds({1, 1, 2, 3}),
                        Transform(1, 1, 0, -1, 1, 0, 0, 0, 1).transformBounds({0, 0, 1, 1}),
                        moved.transformBounds({1, 2, 0, 4}), moved.transformBounds({1, 2, 3, -1}),
                        moved.transformBounds({0, nan, 1, 1}).x),
        std::make_tuple(VTRect<double>(-3, 2, 2, 6), VTRect<double>(0, -1, 2, 2),
                        VTRect<double>(1, 2, 0, 4), VTRect<double>(1, 2, 3, -1), 0.0));
}

TEST(Transform, TakesQTransformWithItsTranslationInTheThirdRow) {
    EXPECT_EQ(
        std::make_pair(Transform(QTransform(2, 3, 0.5, 4, 5, 0.25, 6, 7, 1)),
                       Transform(QTransform::fromTranslate(5, 6))),
        std::make_pair(Transform(2, 4, 6, 3, 5, 7, 6, 7, 1), Transform(1, 0, 5, 0, 1, 6, 5, 6, 1)));
}

TEST(Transform, StreamsCarryNineNumbers) {
    std::ostringstream out;
    out << Transform(1, 0, 5, 0, 1, 6, 0.5, 1e-7, 1);
    EXPECT_EQ(out.str(), "1,0,5,0,1,6,0.5,1e-07,1");
    std::istringstream in("1;2;3 ,4 x5|6,7,8,9 rest 9,9,9");
    Transform read;
    in >> read;
    EXPECT_TRUE(!in.fail() && read == Transform(1, 2, 3, 4, 5, 6, 7, 8, 9));
    // A failed read leaves the matrix partly overwritten.
    std::istringstream shortText("9,9,9");
    Transform partial;
    shortText >> partial;
    EXPECT_TRUE(shortText.fail() && partial[0][2] == 9.0 && partial[1][1] == 1.0);
    // So does a point's, with zero for the rest.
    std::istringstream shortPoint("9,");
    VTPoint<int> point(5, 5);
    shortPoint >> point;
    EXPECT_TRUE(shortPoint.fail() && point == VTPoint<int>(9, 0));
}

TEST(VTPoint, DoubleToIntRoundsHalfUpTowardZeroInEveryField) {
    const std::pair<double, int> rows[] = {{1.5, 2}, {0.4, 0}, {-1.2, 0}, {-1.6, -1}, {-2.5, -2}};
    for (auto const &row : rows) {
        const double d = row.first;
        const int i = row.second;
        EXPECT_EQ(VORT::DPoint2IPoint(VTPoint<double>(d, 0.6)), VTPoint<int>(i, 1)) << d;
        EXPECT_EQ(VORT::DRect2IRect(VTRect<double>(0, d, d, d)), VTRect<int>(0, i, i, i)) << d;
        EXPECT_EQ(VORT::DSize2ISize(Size<double>(d, -d)), Size<int>(i, int(-d + 0.5))) << d;
    }
    EXPECT_DOUBLE_EQ(VORT::length(VTPoint<double>(3, -4)), 5.0);
}

TEST(Path, BuildsComparesAndDetaches) {
    double xs[] = {1, 3, 5};
    double ys[] = {2, 4, 6};
    const Path original(xs, ys, 3);
    EXPECT_TRUE(original == pathOf({{1, 2}, {3, 4}, {5, 6}}) && Path(xs, ys, -5).empty());
    EXPECT_FALSE(original == pathOf({{1, 2}, {3, 4}}) ||
                 original == pathOf({{0, 2}, {3, 4}, {5, 6}}));
    // Shared storage is equal at once, NaNs and all; separate NaNs are not.
    const Path withNan = pathOf({{std::numeric_limits<double>::quiet_NaN(), 0}});
    const Path sharing = withNan;
    EXPECT_TRUE(withNan == sharing && !(withNan == pathOf({withNan[0]})));

    Path copy = original;
    copy.offset(VTPoint<double>(10, 20));
    copy[0] = VTPoint<double>(-1, -1);
    copy.addPoint(VTPoint<double>(7, 7));
    EXPECT_TRUE(copy == pathOf({{-1, -1}, {13, 24}, {15, 26}, {7, 7}}) &&
                original == pathOf({{1, 2}, {3, 4}, {5, 6}}));
    copy.setPoints(original.getPoints());
    EXPECT_TRUE(copy.getPoints().isSharedWith(original.getPoints()));

    EXPECT_TRUE(pathOf({{5, 5}}).getDelta() == VTPoint<double>(0, 0) &&
                pathOf({{1, 1}, {9, 9}, {3, 5}}).getDelta() == VTPoint<double>(2, 4));

    QPolygonF polygon;
    polygon << QPointF(9, 9) << QPointF(9, 9) << QPointF(9, 9);
    Path::PathToQPolygon(pathOf({{1, 2}, {3, 4}}), polygon);
    EXPECT_EQ(polygon, QPolygonF() << QPointF(1, 2) << QPointF(3, 4));
}

TEST(Shape, EmptyShapesAreUnequalAndCopiesShareUntilOneChanges) {
    const Shape empty;
    Shape a;
    a.addRect(0, 0, 10, 10);
    EXPECT_TRUE(!(empty == empty) && empty != empty && a == a && !(a == empty) && a != empty);
    Shape b = a;
    EXPECT_TRUE(a == b);
    b.addEllipse(20, 20, 5, 5);
    Shape sameAsA;
    sameAsA.addRect(0, 0, 10, 10);
    EXPECT_TRUE(!(a == b) && a == sameAsA);
}

// The shared counts are all that the threads have in common; the originals come through unchanged.
TEST(PathAndShapeConcurrency, CopiesChangeOnTheirOwnThreads) {
    const Path path = pathOf({{1, 2}, {3, 4}});
    Shape shape;
    shape.addRect(0, 0, 1, 1);
    Shape reference;
    reference.addRect(0, 0, 1, 1);
    constexpr int kThreads = 4;
    std::vector<int> agreed(kThreads, 0);
    vort_test::runTogether(kThreads, [&](int t) {
        for (int round = 0; round < 100; ++round) {
            Path pathCopy = path;
            pathCopy.offset(VTPoint<double>(t, round));
            Shape shapeCopy = shape;
            shapeCopy.addEllipse(t, round, 1, 1);
            Shape expected;
            expected.addRect(0, 0, 1, 1);
            expected.addEllipse(t, round, 1, 1);
            if (pathCopy[1] == VTPoint<double>(3 + t, 4 + round) && shapeCopy == expected) {
                ++agreed[t];
            }
        }
    });
    EXPECT_EQ(agreed, std::vector<int>(kThreads, 100));
    EXPECT_TRUE(path == pathOf({{1, 2}, {3, 4}}) && shape == reference);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" int GradientTextFuzzerTestOneInput(const uint8_t *data, size_t size);

TEST(TypeConversionFuzzer, ReplaysTheKeptCorpus) {
    vort_test::replayCorpus(VORT_FUZZ_CORPUS_DIR, "type_conversion_fuzzer",
                            &LLVMFuzzerTestOneInput);
}

TEST(GradientTextFuzzer, ReplaysTheKeptCorpus) {
    vort_test::replayCorpus(VORT_FUZZ_CORPUS_DIR, "gradient_text_fuzzer",
                            &GradientTextFuzzerTestOneInput);
}

namespace {

const unsigned char kOwn = Gradient::StateOwnData;
const unsigned char kFrom = Gradient::StateCopiedFrom;
const unsigned char kTo = Gradient::StateCopiedTo;
const unsigned char kDestroyed = Gradient::StateDestroyed;
const Color kRed(1.0, 0.0, 0.0, 1.0);
const Color kBlue(0.0, 0.0, 1.0, 1.0);

unsigned char stateOf(Gradient const &g) {
    unsigned char bits = 0;
    for (unsigned char bit : {1, 2, 4, 8, 16, 32, 64, 128}) {
        bits = static_cast<unsigned char>(bits | (g.hasState(bit) ? bit : 0));
    }
    return bits;
}

// Kind, spread and coordinate mode.
std::tuple<int, int, int> modesOf(Gradient const &g) {
    return std::make_tuple(static_cast<int>(g.getGradientType()), static_cast<int>(g.getSpread()),
                           static_cast<int>(g.getCoordinateMode()));
}

int kindOf(Gradient const &g) {
    return std::get<0>(modesOf(g));
}

// Ends `g` and makes a new one in its place, so that a case can observe a constructor.
template <class... Arguments>
void rebuild(Gradient &g, Arguments &&...arguments) {
    g.~Gradient();
    new (&g) Gradient(std::forward<Arguments>(arguments)...);
}

// From (0, 0) to (1, 1), Qt's default, and red at the middle.
Gradient linear() {
    Gradient g;
    g.addColorStop(0.5, kRed);
    return g;
}

Gradient radial() {
    Gradient g;
    g.setCenterPoint(Point(0.1, -2.5));
    g.setFocalPoint(Point(1e-3, 7));
    g.setRadius(123.456789);
    g.addColorStop(0.0, packed(0x102030FFu));
    g.addColorStop(0.3333, packed(0x00000000u));
    g.addColorStop(1.0, packed(0xFFFFFF80u));
    g.setSpread(VORT::GradientSpreadType::Reflect);
    g.setCoordinateMode(VORT::GradientCoordinateMode::ObjectBounding);
    return g;
}

Gradient conical() {
    Gradient g;
    g.setAngle(33.25);
    g.setCenterPoint(Point(4, 5));
    g.setSpread(VORT::GradientSpreadType::Repeat);
    return g;
}

std::vector<unsigned char> bytesOf(Gradient const &g) {
    std::vector<unsigned char> bytes(static_cast<std::size_t>(g.getByteStreamSize()), 0xEE);
    g.toByteStream(bytes.data());
    return bytes;
}

std::string hex(std::vector<unsigned char> const &bytes) {
    return hexOf(VORT::ByteArray(bytes.data(), static_cast<unsigned int>(bytes.size())));
}

TEST(GradientByteStream, WritesTheLaidOutFieldsLeastSignificantByteFirst) {
    EXPECT_EQ(hex(bytesOf(Gradient())), "00");
    EXPECT_EQ(hex(bytesOf(linear())),
              "01 00 00 00 00 01 00 00 00 "
              "00 00 00 00 00 00 E0 3F 00 00 FF FF "
              "00 00 00 00 00 00 00 00 "
              "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
              "00 00 00 00 00 00 F0 3F 00 00 00 00 00 00 F0 3F");
    // The fuzz target's corpus reads these back; the sizes are each kind's.
    Gradient emptyRadial;
    emptyRadial.setGradientType(GradientTypes::Radial);
    EXPECT_EQ(std::make_tuple(emptyRadial.getByteStreamSize(), radial().getByteStreamSize(),
                              conical().getByteStreamSize()),
              std::make_tuple(57, 93, 41));
}

TEST(GradientByteStream, ReadsAWholeGradientOverWhateverWasThere) {
    Gradient g = radial();
    const unsigned char null = 0;
    g.fromByteStream(&null);
    EXPECT_EQ(g.getGradient(), nullptr);

    // Stops arrive in any order and Qt sorts them; an unknown spread is ignored.
    Gradient source = conical();
    source.addColorStop(0.2, packed(0x11111111u));
    source.addColorStop(0.8, packed(0x22222222u));
    std::vector<unsigned char> bytes = bytesOf(source);
    std::swap_ranges(bytes.begin() + 9, bytes.begin() + 21, bytes.begin() + 21);
    bytes[33] = 9;
    g.fromByteStream(bytes.data());
    EXPECT_EQ(make_tuple(g.getStopItem(0), g.getStopItem(1), static_cast<int>(g.getSpread()),
                         g.getAngle()),
              make_tuple(std::make_pair(0.2, packed(0x11111111u)),
                         std::make_pair(0.8, packed(0x22222222u)), 0, 33.25));
}

TEST(GradientText, WritesEveryValueWithATrailingComma) {
    EXPECT_EQ(linear().toString(), "1,0,1,0.5,255,0,0,255,0,0,0,0,1,1,");
    EXPECT_EQ(Gradient().toString(), "0,");
    EXPECT_EQ(radial().toString(),
              "1,1,3,0,16,32,48,255,0.3333,0,0,0,0,1,255,255,255,128,1,2,0.1,-2.5,0.001,7,"
              "123.457,");

    // Integers stay decimal whatever the stream's flags; doubles follow its settings.
    std::ostringstream stream;
    stream << std::hex << std::setprecision(9) << radial();
    EXPECT_EQ(stream.str(),
              "1,1,3,0,16,32,48,255,0.3333,0,0,0,0,1,255,255,255,128,1,2,0.1,-2.5,0.001,7,"
              "123.456789,");
}

TEST(GradientText, ReadsBackWithGeometryAtFloatPrecision) {
    const Gradient source = radial();
    std::istringstream in(source.toString() + "ignored");
    Gradient back;
    in >> back;
    EXPECT_FALSE(in.fail());
    EXPECT_EQ(make_tuple(back.getStopItem(2), static_cast<int>(back.getCoordinateMode()),
                         back.getCenterPoint(), back.getFocalPoint(), back.getRadius()),
              make_tuple(source.getStopItem(2), 2, Point(static_cast<double>(0.1f), -2.5),
                         Point(static_cast<double>(0.001f), 7), static_cast<double>(123.457f)));
}

TEST(GradientText, KeepsTheTargetForANullTextAndReportsOnlyThroughTheStream) {
    // Text, failure, then the kind and stop count of a target that was linear with one stop.
    const std::tuple<const char *, bool, int, unsigned long> cases[] = {
        {"0,", false, GradientTypes::Linear, 1},
        {"", true, GradientTypes::Linear, 1},
        {"2,1,0,", false, GradientTypes::Linear, 1},  // a version it doesn't know
        {"1;2;0;0;0;7;8;9;", false, GradientTypes::Conical, 0},
        {"1,7,0,0,0,", false, GradientTypes::None, 0},
        {"1,0,2,0.5,255,0,0,255,", true, GradientTypes::Linear, 1},
        {"1,0,2,0.5,255,0,0,255,0.7,0,0,255,255", true, GradientTypes::Linear, 2},
        {"1,0,1,x", true, GradientTypes::Linear, 0},
    };
    for (auto const &[text, fails, type, stops] : cases) {
        Gradient target = linear();
        std::istringstream in(text);
        Gradient::streamFromFile(in, target);
        EXPECT_EQ(make_tuple(in.fail(), kindOf(target), target.getStopCount()),
                  make_tuple(fails, type, stops))
            << text;
    }
    Gradient conicalRead;
    conicalRead.fromString("1,2,0,0,0,7,8,9,");
    EXPECT_EQ(make_tuple(conicalRead.getCenterPoint(), conicalRead.getAngle()),
              make_tuple(Point(7, 8), 9.0));
}

TEST(GradientType, CarriesGradientsAsTextOnly) {
    const VORT::TypeInfo type = GradientType::Create();
    EXPECT_TRUE(GradientType::Is(type) && type == GradientType::Create() &&
                !(type < GradientType::Create()));
    EXPECT_EQ(type.convertToString(VORT::any(linear())), "1,0,1,0.5,255,0,0,255,0,0,0,0,1,1,");
    EXPECT_THROW(type.convertToString(VORT::any(3)), VORT::bad_any_cast);
    const ReadResult good = readText(type, "1,0,1,0.5,255,0,0,255,0,0,0,0,1,1, extra");
    EXPECT_TRUE(good.message == "" && any_cast<Gradient>(good.value) == linear());

    // No byte form and no validity through the type, by design.
    VORT::ErrorHolder error;
    EXPECT_TRUE(type.convertFromByteArray(hexBytes("01 00"), error).empty());
    EXPECT_FALSE(error.hasError() || type.isValid(VORT::any(linear())));
    EXPECT_EQ(type.convertToByteArray(VORT::any(linear())).size(), 0u);
    EXPECT_EQ(any_cast<Gradient>(type.defaultConstruct()).getGradient(), nullptr);
}

const char kGradients[] = R"(<Gradients>
  <Sky gradient_type="radial"><CoordinateMode>ObjectBounding</CoordinateMode>
    <Spread>reflect</Spread><Focal x="0.25" y="w"/><Center x="0.5" y="0.5"/><Radius>0.75</Radius>
    <Stop percent="0.25" color="1,0,0,1"/><Stop percent="0.5" color="highlight"/>
    <Stop color="0;0;1;0.2"/></Sky>
  <NoRadius gradient_type="Radial"><Stop percent="1" color="0,0,0,1"/></NoRadius>
  <HalfLine gradient_type="LINEAR"><PositionStart x="1" y="2"/><PositionEnd x="3"/>
    <Stop percent="1" color="0,1,0,1"/></HalfLine>
  <Line gradient_type="Linear">
    <PositionStart x="1" y="2"/><PositionEnd x="3" y="4"/><Spread>sideways</Spread></Line>
  <Cone gradient_type="conical"><Angle value="45"/><Center x="w" y="w"/></Cone>
  <NoAngle gradient_type="Conical"/><Nothing gradient_type="None"/>
  <Odd gradient_type="Elliptic"/><Untyped/>
</Gradients>
)";

bool resolveColor(std::string const &text, Color &color) {
    if (text != "highlight") {
        return false;
    }
    color.setRGBAFromPackedValue(0x3366CCFFu);
    return true;
}

// "w" stands for 10 across and -10 down.
bool resolveNumber(std::string const &text, bool isX, double &value) {
    if (text != "w") {
        return false;
    }
    value = isX ? 10 : -10;
    return true;
}

TEST(GradientFromXMLDB, ReadsEachTreeAndAnswersWhetherTheGradientEndedUpValid) {
    QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("gradients.xml")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(kGradients);
    file.close();
    VORT::XMLDB::PathItem item(folder.path().toStdString(), nullptr, nullptr);
    struct : VORT::XMLDB::Database {
    } database;
    database.addPath(&item);
    const auto read = [&](Gradient &g, std::string const &name) {
        return g.fromXMLDB(database, "Gradients/" + name, &resolveColor, &resolveNumber);
    };

    Gradient sky, plain;
    ASSERT_TRUE(read(sky, "Sky"));
    EXPECT_EQ(
        make_tuple(static_cast<int>(sky.getCoordinateMode()), static_cast<int>(sky.getSpread()),
                   sky.getFocalPoint(), sky.getCenterPoint(), sky.getRadius()),
        make_tuple(2, 1, Point(0.25, -10), Point(0.5, 0.5), 0.75));
    // In order; the stop without "percent" lands at 0.0, and the colour texts are fractions.
    EXPECT_EQ(
        make_tuple(sky.getStopCount(), sky.getStopItem(0), sky.getStopItem(1), sky.getStopItem(2)),
        make_tuple(3ul, std::make_pair(0.0, Color(0, 0, 1, 0.2)),
                   std::make_pair(0.25, Color(1, 0, 0, 1)),
                   std::make_pair(0.5, packed(0x3366CCFFu))));
    // Without resolvers the name is no colour and "w" no number.
    ASSERT_TRUE(plain.fromXMLDB(database, "Gradients/Sky", {}, {}));
    EXPECT_EQ(make_tuple(plain.getStopItemColor(2), plain.getFocalPoint()),
              make_tuple(Color(), Point(0.25, 0)));

    // Name, result, then the kind and stop count of a target that was conical with one stop.
    const std::tuple<const char *, bool, int, unsigned long> cases[] = {
        {"NoRadius", false, GradientTypes::Radial, 0},
        {"HalfLine", true, GradientTypes::Linear, 1},
        {"Line", true, GradientTypes::Linear, 0},
        {"Cone", true, GradientTypes::Conical, 0},
        {"NoAngle", false, GradientTypes::Conical, 0},
        {"Nothing", false, GradientTypes::None, 0},
        {"Odd", false, GradientTypes::Conical, 1},
        {"Missing", false, GradientTypes::Conical, 1},
        {"Untyped", false, GradientTypes::Conical, 1},
    };
    for (auto const &[name, result, type, stops] : cases) {
        Gradient g;
        g.setAngle(10);
        g.addColorStop(0.5, Color(1, 1, 1, 1));
        const bool answer = read(g, name);
        EXPECT_EQ(make_tuple(answer, static_cast<int>(g.getGradientType()), g.getStopCount()),
                  make_tuple(result, type, stops))
            << name;
    }
    // A linear tree sets its points only when both read.
    Gradient half, line, cone;
    read(half, "HalfLine");
    read(line, "Line");
    read(cone, "Cone");
    EXPECT_EQ(
        make_tuple(half.getStartPoint(), half.getEndPoint(), line.getStartPoint(),
                   line.getEndPoint(), static_cast<int>(line.getSpread()), cone.getAngle(),
                   cone.getCenterPoint()),
        make_tuple(Point(0, 0), Point(1, 1), Point(1, 2), Point(3, 4), 0, 45.0, Point(10, -10)));
}

TEST(GradientState, FollowsEveryTransitionOfTheTable) {
    // Rows: on-demand creation, from a Qt gradient, copies of a holding and
    // an empty source, assignment (keeping the destroyed mark), copyFrom another, null and itself,
    // a write after a copy (by the copy, by the source), a change of kind, the same kind without
    // reset, no kind, clearAll, and an empty byte stream.
    enum Copy { NoCopy, AFromB, BFromA };
    struct Case {
        bool aHolds, bHolds;  // each given a stop first
        Copy copy;            // then copied
        unsigned char marks;  // then marked on `a`
        void (*act)(Gradient &a, Gradient &b);
        unsigned char a, b;  // the states afterwards
        bool shared;         // a and b hold the same Qt gradient
    };
    const auto nothing = [](Gradient &, Gradient &) {};
    const Case cases[] = {
        {true, false, NoCopy, 0, nothing, kOwn, 0, false},
        {false, false, NoCopy, 0,
         [](Gradient &a, Gradient &) { rebuild(a, QLinearGradient(0, 0, 1, 1)); }, 0, 0, false},
        {false, true, NoCopy, 0, [](Gradient &a, Gradient &b) { rebuild(a, b); }, kFrom, kOwn | kTo,
         true},
        {false, false, NoCopy, 0, [](Gradient &a, Gradient &b) { rebuild(a, b); }, 0, kTo, false},
        {false, true, NoCopy, kDestroyed, [](Gradient &a, Gradient &b) { a = b; },
         kFrom | kDestroyed, kOwn | kTo, true},
        {false, true, NoCopy, 0, [](Gradient &a, Gradient &b) { a.copyFrom(&b); }, kFrom,
         kOwn | kTo, true},
        {true, false, NoCopy, 0, [](Gradient &a, Gradient &) { a.copyFrom(nullptr); }, kOwn, 0,
         false},
        {true, false, NoCopy, 0, [](Gradient &a, Gradient &) { a.copyFrom(&a); }, kOwn, 0, false},
        {false, true, AFromB, 0,
         [](Gradient &a, Gradient &) { a.setSpread(GradientSpreadType::Reflect); }, kOwn,
         kOwn | kTo, false},
        {true, false, BFromA, 0,
         [](Gradient &a, Gradient &) { a.setSpread(GradientSpreadType::Reflect); }, kOwn, kFrom,
         false},
        {true, false, NoCopy, kTo | kDestroyed,
         [](Gradient &a, Gradient &) { a.setGradientType(GradientTypes::Radial, false); },
         kOwn | kDestroyed, 0, false},
        {true, false, BFromA, 0,
         [](Gradient &a, Gradient &) { a.setGradientType(GradientTypes::Linear, false); },
         kOwn | kTo, kFrom, true},
        {true, false, NoCopy, kDestroyed,
         [](Gradient &a, Gradient &) { a.setGradientType(GradientTypes::None); }, kDestroyed, 0,
         false},
        {false, true, AFromB, kDestroyed, [](Gradient &a, Gradient &) { a.clearAll(); }, kDestroyed,
         kOwn | kTo, false},
        {true, false, NoCopy, kDestroyed | kTo,
         [](Gradient &a, Gradient &) {
             a.fromByteStream(reinterpret_cast<const unsigned char *>(""));
         },
         kDestroyed, 0, false},
    };
    for (Case const &c : cases) {
        SCOPED_TRACE(&c - cases);
        Gradient a;
        Gradient b;
        if (c.aHolds) {
            a.addColorStop(0.5, kRed);
        }
        if (c.bHolds) {
            b.addColorStop(0.5, kRed);
        }
        if (c.copy != NoCopy) {
            (c.copy == AFromB ? a : b) = (c.copy == AFromB ? b : a);
        }
        if (c.marks != 0) {
            a.setState(c.marks, true);
        }
        c.act(a, b);
        EXPECT_EQ(std::make_tuple(stateOf(a), stateOf(b)), std::make_tuple(c.a, c.b));
        EXPECT_EQ(a.getGradient() != nullptr && a.getGradient() == b.getGradient(), c.shared);
    }
}

// A write to a copy is covered by the table; what the destroyed mark stops is not.
TEST(GradientState, TheDestroyedMarkStopsCreationButNotWritesToItsOwnKind) {
    Gradient empty;
    empty.setState(kDestroyed, true);
    empty.addColorStop(0.5, kRed);
    empty.setRadius(2.0);
    empty.setCenterPoint(Point(1, 1));
    empty.setStopColor(0, kRed);
    EXPECT_EQ(empty.getGradient(), nullptr);
    Gradient held = linear();
    held.setState(kDestroyed, true);
    held.setRadius(2.0);            // no change of kind
    held.setEndPoint(Point(5, 6));  // but its own kind still takes writes
    held.addColorStop(0.9, kBlue);
    EXPECT_EQ(std::make_tuple(kindOf(held), held.getEndPoint(), held.getStopCount()),
              std::make_tuple(0, Point(5, 6), 2ul));
}

TEST(Gradient, ReadsGiveZerosForNoGradientOrAnotherKindAndCreateNothing) {
    const Gradient g;
    EXPECT_TRUE(!g.isValid() && g.getThis() == &g && !(g == g) && g != g);
    EXPECT_EQ(
        std::make_tuple(modesOf(g), g.getStartPoint(), g.getStopItem(3), g.getStopCount()),
        std::make_tuple(std::make_tuple(3, 0, 0), Point(), std::make_pair(0.0, Color()), 0ul));
    Gradient cleared;
    cleared.clearColorStops();
    cleared.setSpread(7);
    cleared.setCoordinateMode(-1);
    EXPECT_TRUE(cleared.getGradient() == nullptr && Gradient(QGradient()).getGradient() == nullptr);

    Gradient radial;
    radial.setCenterPoint(Point(1, 2));
    radial.setFocalPoint(Point(3, 4));
    radial.setRadius(5);
    EXPECT_EQ(std::make_tuple(radial.getStartPoint(), radial.getEndPoint(), radial.getAngle(),
                              radial.getCenterPoint(), radial.getFocalPoint(), radial.getRadius()),
              std::make_tuple(Point(), Point(), 0.0, Point(1, 2), Point(3, 4), 5.0));
}

TEST(Gradient, ChangesOfKindKeepOnlyWhatTheKindsShare) {
    Gradient g;
    g.addColorStop(0.5, kRed);
    g.setSpread(GradientSpreadType::Reflect);
    g.setCoordinateMode(GradientCoordinateMode::ObjectBounding);
    g.setStartPoint(Point(1, 2));
    g.setEndPoint(Point(3, 4));

    g.setRadius(2.0);
    EXPECT_EQ(std::make_tuple(modesOf(g), g.getStopItem(0), g.getStartPoint()),
              std::make_tuple(std::make_tuple(1, 1, 2), std::make_pair(0.5, kRed), Point()));

    g.setCenterPoint(Point(1, 2));
    g.setFocalPoint(Point(7, 8));
    g.setAngle(45.0);
    EXPECT_EQ(std::make_tuple(kindOf(g), g.getCenterPoint()), std::make_tuple(2, Point(1, 2)));
    g.setCenterPoint(Point(3, 3));
    EXPECT_EQ(kindOf(g), GradientTypes::Conical);

    // A new radial gradient's radius, not the old 2.0.
    g.setFocalPoint(Point(0.5, 0.5));
    EXPECT_EQ(std::make_tuple(kindOf(g), g.getCenterPoint(), g.getRadius()),
              std::make_tuple(1, Point(3, 3), 1.0));

    g.setStartPoint(Point(9, 9));
    EXPECT_EQ(g.getEndPoint(), Point(1, 1));  // Qt's default final stop
    g.setRadius(3.0);
    EXPECT_EQ(g.getCenterPoint(), Point());  // lost on the way through linear
    g.setCenterPoint(Point(2, 2));
    EXPECT_EQ(std::make_tuple(kindOf(g), g.getStopCount()), std::make_tuple(1, 1ul));

    // Setting a kind resets it, or keeps what the gradient holds, as asked.
    g = linear();
    g.setEndPoint(Point(5, 5));
    g.setGradientType(GradientTypes::Linear, false);
    EXPECT_EQ(std::make_tuple(g.getStopCount(), g.getEndPoint()),
              std::make_tuple(1ul, Point(5, 5)));
    g.setGradientType(GradientTypes::Linear);
    EXPECT_EQ(std::make_tuple(g.getStopCount(), g.getEndPoint(), g.isValid()),
              std::make_tuple(0ul, Point(1, 1), true));
    for (int none : {3, 5, -1}) {
        g.setGradientType(GradientTypes::Conical);
        g.setGradientType(none, false);
        EXPECT_TRUE(!g.isValid() && g.getGradient() == nullptr) << none;
    }
}

TEST(Gradient, StopsAreTheOnesThatWereSet) {
    Gradient g;
    g.setGradientType(GradientTypes::Radial);
    // The very pair that Qt answers for a gradient without stops counts when it was set.
    g.addColorStop(0.0, Color(0, 0, 0, 1));
    g.addColorStop(1.0, Color(1, 1, 1, 1));
    EXPECT_EQ(g.getStopCount(), 2u);
    g.clearColorStops();
    g.setStopColor(0, kRed);
    EXPECT_EQ(g.getStopCount(), 0u);

    g.addColorStop(std::make_pair(0.25, kRed));
    g.setStopPercent(0, 0.75);
    ASSERT_EQ(g.getStopCount(), 2u);
    EXPECT_EQ(std::make_tuple(g.getStopItem(0), g.getStopItem(1)),
              std::make_tuple(std::make_pair(0.25, kRed), std::make_pair(0.75, kRed)));
    g.setStopPercent(2, 0.5);
    g.setStopColor(1, kBlue);
    g.setStopColor(2, kRed);
    EXPECT_EQ(std::make_tuple(g.getStopCount(), g.getStopItemColor(1), g.getStopItemPercent(1),
                              g.getStopItem(2)),
              std::make_tuple(2ul, kBlue, 0.75, std::make_pair(0.0, Color())));
}

}  // namespace
