#include <vort/types/Color.h>
#include <vort/types/ColorType.h>

#include <gtest/gtest.h>

#include <limits>
#include <sstream>

using VORT::Color;
using VORT::ColorType;

TEST(Color, ComponentsRoundHalfUpAndClamp) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    struct Row {
        double red, green, blue, alpha;
        unsigned int rgba;
    };
    const Row rows[] = {
        {1.0, 0.0, 0.0, 1.0, 0xFF0000FFu},
        {2.0, -1.0, 0.5, 0.0, 0xFF008000u},
        // 0.998 * 255 = 254.49: plus 0.5 truncates to 254.
        {0.998, 0.999, 1.0 / 255, 0.4999 / 255, 0xFEFF0100u},
        {nan, 1e300, -1e300, 254.5 / 255, 0x00FF00FFu},
    };
    for (Row const &row : rows) {
        EXPECT_EQ(Color(row.red, row.green, row.blue, row.alpha).getAsRgba(), row.rgba);
    }
    for (int byte = 0; byte < 256; ++byte) {
        const Color color(byte / 255.0, 0, 0, byte / 255.0);
        ASSERT_EQ(color.red(), byte);
        ASSERT_EQ(color.alpha(), byte);
        ASSERT_EQ(color.redF(), byte / 255.0);
    }
}

TEST(Color, DefaultIsNearlyTransparentBlackAndWordsCompareRedFirst) {
    EXPECT_TRUE(Color().getAsRgba() == 0x00000001u && Color().alpha() == 1 && Color().red() == 0);
    Color color;
    color.setRGBAFromPackedValue(0x11223344u);
    EXPECT_EQ(color.red() * 1000000 + color.green() * 10000 + color.blue() * 100 + color.alpha(),
              0x11 * 1000000 + 0x22 * 10000 + 0x33 * 100 + 0x44);
    EXPECT_DOUBLE_EQ(color.greenF() + color.blueF() + color.alphaF(), (0x22 + 0x33 + 0x44) / 255.0);

    Color high;
    high.setRGBAFromPackedValue(0x01000000u);
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
}

TEST(ColorType, ComparesByTheAlphaFlag) {
    EXPECT_TRUE(ColorType::Create(false) < ColorType::Create(true) &&
                ColorType::Create(false) == ColorType::Create(false));
    EXPECT_FALSE(ColorType::Create(true) < ColorType::Create(false) ||
                 ColorType::Create(true) < ColorType::Create(true) ||
                 ColorType::Create(true) == ColorType::Create(false));
    // The flag survives the clone that a copy makes.
    const VORT::TypeInfo copy(ColorType::Create(false));
    EXPECT_TRUE(!ColorType::UsesAlpha(copy) && ColorType::UsesAlpha(ColorType::Create(true)));
}
