#include <vort/types/Transform.h>
#include <vort/types/VTPoint.h>

#include <QPointF>
#include <QTransform>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>
#include <tuple>
#include <utility>

using VORT::Size;
using VORT::Transform;
using VORT::VTPoint;
using VORT::VTRect;

namespace {

bool near(Transform const &a, Transform const &b) {
    for (int index = 0; index < 9; ++index) {
        if (!(std::fabs(a[index / 3][index % 3] - b[index / 3][index % 3]) < 1e-12)) {
            return false;
        }
    }
    return true;
}

}  // namespace

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

    const std::pair<Transform, double> rows[] = {
        {Transform(2, -1, 0, -1, 2, -1, 0, -1, 2), 4.0},
        {Transform(1, 2, 3, 0, 1, 4, 5, 6, 0), 1.0},
        // A translation written into the third row changes the determinant.
        {Transform(1, 0, 5, 0, 1, 6, 5, 6, 1), -60.0},
    };
    for (auto const &row : rows) {
        EXPECT_DOUBLE_EQ(row.first.determinant(), row.second);
        EXPECT_TRUE(near(row.first * row.first.inverse(), Transform::IDENTITY));
    }
    EXPECT_EQ(Transform(1, 2, 3, 0, 1, 4, 5, 6, 0).inverse(),
              Transform(-24, 18, 5, 20, -15, -4, -5, 4, 1));
    // Singular matrices are not reported: the result is not finite.
    for (int index = 0; index < 9; ++index) {
        EXPECT_FALSE(std::isfinite(Transform::ZERO.inverse()[index / 3][index % 3]));
    }
}

TEST(Transform, MapsPointsAndComposesInTheDesignsOrder) {
    const Transform t(2, 3, 5, 7, 11, 13, 100, 200, 300);
    VTPoint<double> point(1, 10);
    t.transformInPlace(point);
    EXPECT_EQ(
        std::make_pair(point, Transform().scaleCopy(2, 3).translateCopy(1, 1).transform(0, 0)),
        std::make_pair(VTPoint<double>(37, 130), VTPoint<double>(2, 3)));
    const double angle = 0.7;
    const VTPoint<double> byMatrix = Transform().rotateCopy(angle).transform(VTPoint<double>(1, 0));
    const VTPoint<double> byPoint = Transform::rotatePoint(VTPoint<double>(1, 2), angle);
    EXPECT_DOUBLE_EQ(byMatrix.y, -std::sin(angle));
    EXPECT_DOUBLE_EQ(byPoint.x, std::cos(angle) - 2 * std::sin(angle));
    EXPECT_DOUBLE_EQ(byPoint.y, 2 * std::cos(angle) + std::sin(angle));

    const Transform translation(1, 0, 3, 0, 1, -4, 0, 0, 1);
    const Transform scale(2, 0, 0, 0, -4, 0, 0, 0, 1);
    const Transform turn = Transform().rotateCopy(angle);
    EXPECT_EQ(std::make_tuple(t.translateCopy(3, -4), t.scaleCopy(2, -4), t.invTranslateCopy(-3, 4),
                              t.invScaleCopy(0.5, -0.25), t.invRotateCopy(-angle)),
              std::make_tuple(t * translation, t * scale, translation * t, scale * t, turn * t));
    EXPECT_NE(t.translateCopy(3, -4).invTranslateCopy(3, -4), t);
    EXPECT_FALSE(std::isfinite(Transform().invScaleCopy(0, 1)[0][0]));
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
    // Mapping points still agrees with Qt's own.
    const QTransform general = QTransform().rotate(30).scale(2, 3).translate(4, -5);
    const QPointF mapped = general.map(QPointF(1.5, -2.5));
    const VTPoint<double> ours = Transform(general).transform(1.5, -2.5);
    EXPECT_TRUE(std::fabs(ours.x - mapped.x()) < 1e-12 && std::fabs(ours.y - mapped.y()) < 1e-12);
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
}

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
