#include <vort/bones/MathUtils.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using VORT::pi;

TEST(MathUtils, RoundsTowardsZeroAfterAddingAHalf) {
    EXPECT_EQ(VORT::rad_to_16th_deg(pi), 2880.0);
    EXPECT_EQ(VORT::interpolate(0.25, 2.0, 10.0), 4.0);
    const double inputs[][2] = {{2.5, 3},   {-2.5, -2}, {-0.6, 0}, {-1.4, 0},
                                {-1.6, -1}, {1.49, 1},  {-0.5, 0}};
    for (auto const &in : inputs) {
        EXPECT_EQ(VORT::int_rnd(in[0]), int(in[1])) << in[0];
    }
}

TEST(MathUtils, NormalizesAnglesIntoTheClosedRange) {
    const double cases[][2] = {{-pi, -pi},
                               {pi, pi},
                               {0, 0},
                               {1.5 * pi, -0.5 * pi},
                               {-1.5 * pi, 0.5 * pi},
                               {13.5 * pi, -0.5 * pi}};
    for (auto const &c : cases) {
        EXPECT_NEAR(VORT::normalizeAndReturnAngle(c[0]), c[1], 1e-12) << c[0];
        EXPECT_NEAR(VORT::normalizeAndReturnAngle(float(c[0])), float(c[1]), 1e-5f) << c[0];
    }
    // Past 14 pi the remainder is taken instead of stepping.
    EXPECT_NEAR(VORT::normalizeAndReturnAngle(100 * pi), 0.0, 1e-12);
    EXPECT_EQ(VORT::normalizeAndReturnAngle(14 * pi + 1.0), std::fmod(14 * pi + 1.0, 2 * pi));
    for (double x = -2000.0; x < 2000.0; x += 0.987654321) {
        const double d = VORT::normalizeAndReturnAngle(x);
        const float f = VORT::normalizeAndReturnAngle(float(x));
        ASSERT_TRUE(d >= -pi && d <= pi) << x;
        ASSERT_TRUE(f >= -float(pi) && f <= float(pi)) << x;
        const double turns = (x - d) / (2 * pi);
        ASSERT_NEAR(turns, std::round(turns), 1e-9) << x;
    }
    EXPECT_TRUE(std::isnan(VORT::normalizeAndReturnAngle(std::numeric_limits<double>::infinity())));
    EXPECT_TRUE(std::isnan(VORT::normalizeAndReturnAngle(std::nanf(""))));
}
