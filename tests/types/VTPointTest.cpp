#include <vort/types/VTPoint.h>

#include <gtest/gtest.h>

#include <sstream>

using VORT::Size;
using VORT::VTPoint;
using VORT::VTRect;

TEST(VTPoint, DoubleToIntRoundsHalfUpTowardZeroInEveryField) {
    const std::pair<double, int> rows[] = {{1.5, 2},   {0.4, 0},   {-0.4, 0}, {-1.2, 0},
                                           {-1.6, -1}, {-2.5, -2}, {2.5, 3},  {-0.5, 0}};
    for (auto const &row : rows) {
        const double d = row.first;
        const int i = row.second;
        EXPECT_EQ(VORT::DPoint2IPoint(VTPoint<double>(d, 0.6)), VTPoint<int>(i, 1)) << d;
        EXPECT_EQ(VORT::DRect2IRect(VTRect<double>(0, d, d, d)), VTRect<int>(0, i, i, i)) << d;
        EXPECT_EQ(VORT::DSize2ISize(Size<double>(d, -d)), Size<int>(i, int(-d + 0.5))) << d;
    }
    EXPECT_DOUBLE_EQ(VORT::length(VTPoint<double>(3, -4)), 5.0);
    EXPECT_FLOAT_EQ(VORT::length(VTPoint<float>(-5, 12)), 13.0f);
    EXPECT_TRUE(VTRect<int>(1, 2, 3, 4) == VTRect<int>(VTPoint<int>(1, 2), Size<int>(3, 4)) &&
                VTRect<int>(1, 2, 3, 4) != VTRect<int>(1, 2, 3, 5) &&
                VTPoint<int>(1, 2) - VTPoint<int>(10, 20) == VTPoint<int>(-9, -18));
}

TEST(VTPoint, AFailedStreamReadStillAssignsWhatWasReadAndZeroForTheRest) {
    std::istringstream shortText("9,");
    VTPoint<int> partial(5, 5);
    shortText >> partial;
    EXPECT_TRUE(shortText.fail());
    EXPECT_EQ(partial, VTPoint<int>(9, 0));
}
