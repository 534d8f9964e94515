#include <vort/types/VTPoint.h>

#include <gtest/gtest.h>

#include <sstream>

using VORT::Size;
using VORT::VTPoint;
using VORT::VTRect;

TEST(VTPoint, DoubleToIntRoundsHalfUpTowardZero) {
    struct Row {
        double value;
        int rounded;
    };
    const Row rows[] = {{1.5, 2},   {0.4, 0},   {-0.4, 0},         {-1.2, 0},
                        {-1.6, -1}, {-2.5, -2}, {2.5, 3},          {0.49999, 0},
                        {-0.5, 0},  {-0.6, 0},  {1e9, 1000000000}, {-1e9 - 0.6, -1000000000}};
    for (Row const &row : rows) {
        SCOPED_TRACE(row.value);
        EXPECT_EQ(VORT::DPoint2IPoint(VTPoint<double>(row.value, -row.value)),
                  VTPoint<int>(row.rounded, static_cast<int>(-row.value + 0.5)));
        // Every field, the extent included.
        EXPECT_EQ(VORT::DRect2IRect(VTRect<double>(row.value, 0, row.value, -row.value)),
                  VTRect<int>(row.rounded, 0, row.rounded, static_cast<int>(-row.value + 0.5)));
        EXPECT_EQ(VORT::DSize2ISize(Size<double>(0.0, row.value)), Size<int>(0, row.rounded));
    }
}

TEST(VTPoint, LengthIsTheDistanceFromTheOrigin) {
    EXPECT_DOUBLE_EQ(VORT::length(VTPoint<double>(3, -4)), 5.0);
    EXPECT_FLOAT_EQ(VORT::length(VTPoint<float>(-5, 12)), 13.0f);
    EXPECT_EQ(VORT::length(VTPoint<double>()), 0.0);
}

TEST(VTPoint, ComparesEveryFieldExactly) {
    EXPECT_EQ(VTPoint<double>(1, 2), VTPoint<double>(1, 2));
    EXPECT_NE(VTPoint<double>(1, 2), VTPoint<double>(1, 2.0000001));
    EXPECT_NE(VTPoint<int>(1, 2), VTPoint<int>(2, 2));
    const VTRect<int> rect(1, 2, 3, 4);
    EXPECT_EQ(rect, VTRect<int>(VTPoint<int>(1, 2), Size<int>(3, 4)));
    for (VTRect<int> const &other : {VTRect<int>(0, 2, 3, 4), VTRect<int>(1, 0, 3, 4),
                                     VTRect<int>(1, 2, 0, 4), VTRect<int>(1, 2, 3, 0)}) {
        EXPECT_NE(rect, other);
    }
    EXPECT_EQ(rect.topLeft(), VTPoint<int>(1, 2));
    EXPECT_EQ(rect.size(), Size<int>(3, 4));
    EXPECT_NE(Size<int>(3, 4), Size<int>(4, 3));
    EXPECT_EQ(VTPoint<int>(1, 2) + VTPoint<int>(10, 20), VTPoint<int>(11, 22));
    EXPECT_EQ(VTPoint<int>(1, 2) - VTPoint<int>(10, 20), VTPoint<int>(-9, -18));
}

TEST(VTPoint, StreamsWriteCommasAndReadAnySeparator) {
    std::ostringstream out;
    out << VTPoint<int>(1, -2) << ' ' << VTPoint<double>(1.23456789, 0.5) << ' '
        << VTRect<int>(0, 0, 10, 20) << ' ' << VTRect<double>(0.5, 1, 2, 1e21);
    EXPECT_EQ(out.str(), "1,-2 1.23457,0.5 0,0,10,20 0.5,1,2,1e+21");

    // The caller's settings apply.
    std::ostringstream precise;
    precise.precision(9);
    precise << VTPoint<double>(1.23456789, 0);
    EXPECT_EQ(precise.str(), "1.23456789,0");

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
