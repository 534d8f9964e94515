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

TEST(EnumType, ReadsNamesIgnoringCaseAndWritesThemAsStored) {
    const TypeInfo type = PaintType::Create();
    for (const char *text : {"Red", "RED", "red", "rEd"}) {
        const vort_test::ReadResult read = vort_test::readText(type, text);
        ASSERT_EQ(read.message, "") << text;
        EXPECT_TRUE(any_cast<Paint>(read.value) == Paint::Red);
        EXPECT_EQ(type.convertToString(read.value), "Red");
    }
    for (const char *text : {"1", "Re", "Red ", "", "Gr\xC3\xBCn"}) {
        const vort_test::ReadResult read = vort_test::readText(type, text);
        EXPECT_TRUE(read.value.empty()) << text;
        EXPECT_EQ(read.message, std::string("Can't convert string '") + text + "' to enum");
    }
    EXPECT_EQ(EnumType::GetValues(type), (std::vector<std::string>{"Red", "Blue"}));
    EXPECT_EQ(EnumType::GetValues(PaintType::Create(true)),
              (std::vector<std::string>{"Red", "Blue", "Purple"}));
}

TEST(EnumType, BytesAndDefaultGoStraightToTheSubclass) {
    const TypeInfo type = PaintType::Create();
    PaintType::fromIntCalls.clear();
    ErrorHolder error;
    const any three = type.convertFromByteArray(vort_test::hexBytes("03 00 00 00 FF"), error);
    EXPECT_FALSE(error.hasError());
    EXPECT_TRUE(any_cast<Paint>(three) == static_cast<Paint>(3));
    const any negative = type.convertFromByteArray(vort_test::hexBytes("FE FF FF FF"), error);
    EXPECT_TRUE(any_cast<Paint>(negative) == static_cast<Paint>(-2));
    const any standard = type.defaultConstruct();
    EXPECT_TRUE(any_cast<Paint>(standard) == Paint::None);
    EXPECT_EQ(PaintType::fromIntCalls, (std::vector<int>{3, -2, 0}));
    EXPECT_FALSE(error.hasError());

    EXPECT_EQ(vort_test::hexOf(type.convertToByteArray(any(Paint::Blue))), "02 00 00 00");
    EXPECT_EQ(EnumType::ConvertToInt(type, any(Paint::Blue)), 2);
    // Every value is refused by the inherited `isValid`.
    EXPECT_FALSE(type.isValid(any(Paint::Red)));
    EXPECT_FALSE(type.isValid(standard));
}

TEST(EnumType, ConvertFromIntIsGuardedByTheTable) {
    vort_test::PlatformCapture platform;
    const TypeInfo type = PaintType::Create();
    ErrorHolder error;
    EXPECT_TRUE(any_cast<Paint>(EnumType::ConvertFromInt(type, 2, error)) == Paint::Blue);
    EXPECT_FALSE(error.hasError());
    for (int value : {0, 3, -1, INT_MIN}) {
        EXPECT_TRUE(EnumType::ConvertFromInt(type, value, error).empty()) << value;
        EXPECT_EQ(error.what(), "Can't convert int to enum");
        EXPECT_EQ(error.description()->where().file(), ".\\types\\EnumType");
    }

    EXPECT_TRUE(any_cast<Paint>(EnumType::ConvertFromInt(type, 1)) == Paint::Red);
    EXPECT_TRUE(platform.assertions().empty());
    EXPECT_TRUE(EnumType::ConvertFromInt(type, 7).empty());
    ASSERT_EQ(platform.assertions().size(), 1u);
    EXPECT_EQ(platform.assertions()[0].expression, ": !error.hasError(),");
}

TEST(EnumType, ComparesTablesAfterClasses) {
    EXPECT_TRUE(PaintType::Create() == PaintType::Create());
    EXPECT_FALSE(PaintType::Create() == PaintType::Create(true));
    // A proper prefix is less.
    EXPECT_TRUE(PaintType::Create() < PaintType::Create(true));
    EXPECT_FALSE(PaintType::Create(true) < PaintType::Create());
    EXPECT_FALSE(PaintType::Create() < PaintType::Create());
    // Equal tables in different classes: unequal, ordered by class.
    EXPECT_FALSE(PaintType::Create() == OtherPaintType::Create());
    EXPECT_NE(PaintType::Create() < OtherPaintType::Create(),
              OtherPaintType::Create() < PaintType::Create());
    EXPECT_TRUE(EnumType::Is(PaintType::Create()));
    EXPECT_TRUE(EnumType::Is(OtherPaintType::Create()));
}

TEST(Enumerations, StreamAsIntsWithNoRangeTest) {
    std::ostringstream out;
    out << TextHAlign::Right << ' ' << static_cast<FontWeight::Type>(-7) << ' ' << RD::RoundJoin
        << ' ' << RD::SquareCap << ' ' << RD::ReflectSpread << ' ' << StrokeStyle::Dot;
    EXPECT_EQ(out.str(), "2 -7 2 1 1 3");

    std::istringstream in("5 -1 2147483647 2 x");
    TextVAlign::Type vertical = TextVAlign::Top;
    FontAngle::Type angle = FontAngle::Upright;
    FontMapMode::Type mode = FontMapMode::Points;
    RD::StrokeCap cap = RD::FlatCap;
    TextFormat::Type format = TextFormat::Rich;
    in >> vertical >> angle >> mode >> cap >> format;
    EXPECT_EQ(vertical, 5);
    EXPECT_EQ(angle, -1);
    EXPECT_EQ(mode, INT_MAX);
    EXPECT_EQ(cap, RD::RoundCap);
    // A failed extraction leaves the target as it was.
    EXPECT_TRUE(in.fail());
    EXPECT_EQ(format, TextFormat::Rich);

    std::istringstream overflow("99999999999 1");
    StrokeStyle::Type style = StrokeStyle::Dash;
    TextFlowStyle::Type flow = TextFlowStyle::WordWrap;
    RD::GradientSpread spread = RD::RepeatSpread;
    TextHAlign::Type horizontal = TextHAlign::Center;
    RD::StrokeJoin join = RD::BevelJoin;
    FontWeight::Type weight = FontWeight::Bold;
    overflow >> style >> flow >> spread >> horizontal >> join >> weight;
    EXPECT_EQ(style, StrokeStyle::Dash);
    EXPECT_EQ(flow, TextFlowStyle::WordWrap);
    EXPECT_EQ(spread, RD::RepeatSpread);
    EXPECT_EQ(horizontal, TextHAlign::Center);
    EXPECT_EQ(join, RD::BevelJoin);
    EXPECT_EQ(weight, FontWeight::Bold);
}
