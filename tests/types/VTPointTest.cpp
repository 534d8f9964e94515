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
    EXPECT_EQ(VTRect<int>(1, 2, 3, 4), VTRect<int>(VTPoint<int>(1, 2), Size<int>(3, 4)));
    EXPECT_NE(VTRect<int>(1, 2, 3, 4), VTRect<int>(1, 2, 3, 5));
    EXPECT_EQ(VTPoint<int>(1, 2) - VTPoint<int>(10, 20), VTPoint<int>(-9, -18));
}

TEST(VTPoint, StreamsWriteCommasAndReadAnySeparator) {
    std::ostringstream out;
    out << VTPoint<int>(1, -2) << ' ' << VTPoint<double>(1.23456789, 0.5) << ' '
        << VTRect<double>(0.5, 1, 2, 1e21);
    EXPECT_EQ(out.str(), "1,-2 1.23457,0.5 0.5,1,2,1e+21");

    std::istringstream in("3;4 5 x 6/7 ,8 rest");
    VTPoint<int> point;
    VTRect<double> rect;
    in >> point >> rect;
    EXPECT_FALSE(in.fail());
    EXPECT_EQ(point, VTPoint<int>(3, 4));
    EXPECT_EQ(rect, VTRect<double>(5, 6, 7, 8));

    // A failed read still assigns: what was read, and zero for what wasn't.
    std::istringstream shortText("9,");
    VTPoint<int> partial(5, 5);
    shortText >> partial;
    EXPECT_TRUE(shortText.fail());
    EXPECT_EQ(partial, VTPoint<int>(9, 0));
}
