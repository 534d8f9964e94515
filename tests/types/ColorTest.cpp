#include <vort/types/Color.h>
#include <vort/types/ColorType.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>

using VORT::Color;
using VORT::ColorType;

TEST(Color, ComponentsRoundHalfUpAndClamp) {
    struct Row {
        double red, green, blue, alpha;
        unsigned int rgba;
    };
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    const Row rows[] = {
        {1.0, 0.0, 0.0, 1.0, 0xFF0000FFu},
        {2.0, -1.0, 0.5, 0.0, 0xFF008000u},
        // 0.998 * 255 = 254.49: plus 0.5 truncates to 254.
        {0.998, 0.999, 1.0 / 255, 0.5 / 255, 0xFEFF0101u},
        {0.4999 / 255, 254.5 / 255, -0.001, 1e300, 0x00FF00FFu},
        {nan, inf, -inf, 1e-300, 0x00FF0000u},
    };
    for (Row const &row : rows) {
        const Color color(row.red, row.green, row.blue, row.alpha);
        EXPECT_EQ(color.getAsRgba(), row.rgba) << std::hex << row.rgba;
        Color set;
        set.setRGBA(row.red, row.green, row.blue, row.alpha);
        EXPECT_EQ(set, color);
    }
    // Every byte survives its own fraction.
    for (int byte = 0; byte < 256; ++byte) {
        const Color color(byte / 255.0, byte / 255.0, byte / 255.0, byte / 255.0);
        ASSERT_EQ(color.red(), byte);
        ASSERT_EQ(color.alpha(), byte);
    }
}

TEST(Color, DefaultIsNearlyTransparentBlackAndBytesReadOut) {
    const Color standard;
    EXPECT_EQ(standard.getAsRgba(), 0x00000001u);
    EXPECT_EQ(standard.red(), 0);
    EXPECT_EQ(standard.alpha(), 1);
    EXPECT_DOUBLE_EQ(standard.alphaF(), 1 / 255.0);

    Color color;
    color.setRGBAFromPackedValue(0x11223344u);
    EXPECT_EQ(color.red(), 0x11);
    EXPECT_EQ(color.green(), 0x22);
    EXPECT_EQ(color.blue(), 0x33);
    EXPECT_EQ(color.alpha(), 0x44);
    EXPECT_DOUBLE_EQ(color.redF(), 0x11 / 255.0);
    EXPECT_DOUBLE_EQ(color.greenF(), 0x22 / 255.0);
    EXPECT_DOUBLE_EQ(color.blueF(), 0x33 / 255.0);
    EXPECT_DOUBLE_EQ(color.alphaF(), 0x44 / 255.0);
}

TEST(Color, ComparesTheWordsRedFirst) {
    Color high;
    high.setRGBAFromPackedValue(0x01000000u);
    Color low;
    low.setRGBAFromPackedValue(0x00FFFFFFu);
    EXPECT_TRUE(low < high);
    EXPECT_TRUE(high > low);
    EXPECT_FALSE(high < low);
    EXPECT_FALSE(low > high);
    EXPECT_TRUE(high != low);
    EXPECT_FALSE(high == low);
    EXPECT_FALSE(high < high);
    EXPECT_FALSE(high > high);
    EXPECT_TRUE(high == Color(1 / 255.0, 0, 0, 0));
}

TEST(Color, StreamsCarryFourDoublesWithAnySeparator) {
    std::ostringstream out;
    out << Color(1.0, 0.0, 128 / 255.0, 1.0);
    EXPECT_EQ(out.str(), "1,0,0.501961,1");

    struct Row {
        const char *text;
        unsigned int rgba;
        bool fails;
    };
    const Row rows[] = {
        {"1,0,0.501961,1", 0xFF0080FFu, false},
        {" 0 ; 1 / 0 x 0.5", 0x00FF0080u, false},
        // A failed read still sets the colour, from the components read so far.
        {"1,1", 0xFFFF0000u, true},
        {"", 0x00000000u, true},
    };
    for (Row const &row : rows) {
        std::istringstream in(row.text);
        Color color;
        in >> color;
        EXPECT_EQ(color.getAsRgba(), row.rgba) << row.text;
        EXPECT_EQ(in.fail(), row.fails) << row.text;
    }
}

TEST(ColorType, ComparesByTheAlphaFlag) {
    EXPECT_TRUE(ColorType::Create(false) < ColorType::Create(true));
    EXPECT_FALSE(ColorType::Create(true) < ColorType::Create(false));
    EXPECT_FALSE(ColorType::Create(true) < ColorType::Create(true));
    EXPECT_FALSE(ColorType::Create(false) < ColorType::Create(false));
    EXPECT_TRUE(ColorType::Create(true) == ColorType::Create(true));
    EXPECT_TRUE(ColorType::Create(false) == ColorType::Create(false));
    EXPECT_FALSE(ColorType::Create(true) == ColorType::Create(false));

    EXPECT_TRUE(ColorType::UsesAlpha(ColorType::Create(true)));
    EXPECT_FALSE(ColorType::UsesAlpha(ColorType::Create(false)));
    // The flag survives the clone that a copy makes.
    const VORT::TypeInfo copy(ColorType::Create(false));
    EXPECT_FALSE(ColorType::UsesAlpha(copy));
    EXPECT_TRUE(ColorType::Is(copy));
}
