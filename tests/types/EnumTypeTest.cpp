#include "TypeTesting.h"
#include "support/PlatformHooks.h"
#include <vort/types/EnumType.h>
#include <vort/types/Enumerations.h>

#include <gtest/gtest.h>

#include <climits>
#include <sstream>
#include <string>
#include <vector>

using namespace VORT;

namespace {

enum class Paint { None = 0, Red = 1, Blue = 2 };

// A client enumeration: Red and Blue named, and every int its own enumerator.
class PaintType : public EnumType {
public:
    static TypeInfo Create(bool withPurple = false) {
        return CreateTypeInfo(new PaintType(withPurple));
    }
    static std::vector<int> fromIntCalls;

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
    any convertFromInt(int value) const override {
        fromIntCalls.push_back(value);
        return any(static_cast<Paint>(value));
    }
};

std::vector<int> PaintType::fromIntCalls;

// A second subclass with the same table: equal tables, different classes.
class OtherPaintType : public PaintType {
public:
    static TypeInfo Create() { return CreateTypeInfo(new OtherPaintType); }

protected:
    OtherPaintType() : PaintType(false) {}
    OtherPaintType *clone() const override { return new OtherPaintType(*this); }
};

}  // namespace

TEST(EnumType, TextIsTheNameAnyCaseAndBytesGoStraightToTheSubclass) {
    const TypeInfo type = PaintType::Create();
    const vort_test::ReadResult red = vort_test::readText(type, "rEd");
    EXPECT_TRUE(any_cast<Paint>(red.value) == Paint::Red);
    EXPECT_EQ(type.convertToString(red.value), "Red");
    EXPECT_EQ(vort_test::readText(type, "").message, "Can't convert string '' to enum");
    EXPECT_EQ(EnumType::GetValues(PaintType::Create(true)),
              (std::vector<std::string>{"Red", "Blue", "Purple"}));

    PaintType::fromIntCalls.clear();
    ErrorHolder error;
    const any three = type.convertFromByteArray(vort_test::hexBytes("03 00 00 00 FF"), error);
    EXPECT_TRUE(any_cast<Paint>(three) == static_cast<Paint>(3) &&
                any_cast<Paint>(type.defaultConstruct()) == Paint::None);
    EXPECT_EQ(PaintType::fromIntCalls, (std::vector<int>{3, 0}));
    EXPECT_EQ(vort_test::hexOf(type.convertToByteArray(any(Paint::Blue))), "02 00 00 00");
    EXPECT_EQ(EnumType::ConvertToInt(type, any(Paint::Blue)), 2);
    // Every value is refused by the inherited `isValid`.
    EXPECT_FALSE(error.hasError() || type.isValid(any(Paint::Red)));
}

TEST(EnumType, ConvertFromIntIsGuardedByTheTable) {
    vort_test::PlatformCapture platform;
    const TypeInfo type = PaintType::Create();
    ErrorHolder error;
    EXPECT_TRUE(any_cast<Paint>(EnumType::ConvertFromInt(type, 2, error)) == Paint::Blue);
    EXPECT_FALSE(error.hasError());
    EXPECT_TRUE(EnumType::ConvertFromInt(type, 3, error).empty());
    EXPECT_EQ(error.what(), "Can't convert int to enum");
    EXPECT_TRUE(any_cast<Paint>(EnumType::ConvertFromInt(type, 1)) == Paint::Red &&
                platform.assertions().empty());
    EXPECT_TRUE(EnumType::ConvertFromInt(type, 0).empty());
    ASSERT_EQ(platform.assertions().size(), 1u);
    EXPECT_EQ(platform.assertions()[0].expression, ": !error.hasError(),");
}

TEST(EnumType, ComparesTablesAfterClasses) {
    // A proper prefix is less; equal tables in different classes are unequal, ordered by class.
    EXPECT_TRUE(PaintType::Create() == PaintType::Create() &&
                PaintType::Create() < PaintType::Create(true) &&
                EnumType::Is(OtherPaintType::Create()));
    EXPECT_FALSE(PaintType::Create() == PaintType::Create(true) ||
                 PaintType::Create(true) < PaintType::Create() ||
                 PaintType::Create() == OtherPaintType::Create());
    EXPECT_NE(PaintType::Create() < OtherPaintType::Create(),
              OtherPaintType::Create() < PaintType::Create());
}

TEST(Enumerations, StreamAsIntsWithNoRangeTest) {
    std::ostringstream out;
    out << TextHAlign::Right << StrokeStyle::Dot << TextVAlign::Bottom << FontAngle::Italic
        << FontMapMode::Pixels << TextFormat::Rich << TextFlowStyle::WordWrap << RD::RoundJoin
        << RD::SquareCap << RD::ReflectSpread << ' ' << static_cast<FontWeight::Type>(-7);
    EXPECT_EQ(out.str(), "2321111211 -7");

    std::istringstream in("5 -1 2147483647 2 1 3 4 1 2 99999999999 x");
    TextVAlign::Type vertical = TextVAlign::Top;
    FontAngle::Type angle = FontAngle::Upright;
    FontMapMode::Type mode = FontMapMode::Points;
    RD::StrokeCap cap = RD::FlatCap;
    TextFlowStyle::Type flow = TextFlowStyle::SingleLine;
    RD::GradientSpread spread = RD::PadSpread;
    TextHAlign::Type horizontal = TextHAlign::Left;
    RD::StrokeJoin join = RD::MiterJoin;
    FontWeight::Type weight = FontWeight::Light;
    TextFormat::Type format = TextFormat::Rich;
    StrokeStyle::Type style = StrokeStyle::Dash;
    in >> vertical >> angle >> mode >> cap >> flow >> spread >> horizontal >> join >> weight;
    EXPECT_TRUE(vertical == 5 && angle == -1 && mode == INT_MAX && cap == 2 && flow == 1 &&
                spread == 3 && horizontal == 4 && join == 1 && weight == 2);
    // A failed extraction, an overflowing one too, leaves the target as it was.
    in >> format;
    in.clear();
    in >> style;
    EXPECT_TRUE(in.fail() && format == TextFormat::Rich && style == StrokeStyle::Dash);
}
