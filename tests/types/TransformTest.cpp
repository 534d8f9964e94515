#include <vort/types/Transform.h>

#include <QPointF>
#include <QTransform>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>

using VORT::Transform;
using VORT::VTPoint;
using VORT::VTRect;

namespace {

const double kNan = std::numeric_limits<double>::quiet_NaN();

void expectNear(Transform const &actual, Transform const &expected) {
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            EXPECT_NEAR(actual[row][column], expected[row][column], 1e-12)
                << "at " << row << "," << column;
        }
    }
}

bool allNonFinite(Transform const &transform) {
    for (int index = 0; index < 9; ++index) {
        if (std::isfinite(transform[index / 3][index % 3])) {
            return false;
        }
    }
    return true;
}

}  // namespace

TEST(Transform, ConstructsAndSetsRowByRow) {
    const double elements[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    const Transform fromNine(1, 2, 3, 4, 5, 6, 7, 8, 9);
    EXPECT_EQ(Transform(elements), fromNine);
    EXPECT_EQ(fromNine[1][0], 4.0);
    EXPECT_EQ(fromNine[0][2], 3.0);
    EXPECT_EQ(fromNine[2][1], 8.0);

    Transform set;
    EXPECT_EQ(&set.set(elements), &set);
    EXPECT_EQ(set, fromNine);
    Transform assigned;
    assigned = elements;
    EXPECT_EQ(assigned, fromNine);
    EXPECT_EQ(set.set(9, 8, 7, 6, 5, 4, 3, 2, 1), Transform(9, 8, 7, 6, 5, 4, 3, 2, 1));

    EXPECT_EQ(Transform(), Transform::IDENTITY);
    EXPECT_EQ(Transform::IDENTITY, Transform(1, 0, 0, 0, 1, 0, 0, 0, 1));
    EXPECT_EQ(Transform::ZERO, Transform(0, 0, 0, 0, 0, 0, 0, 0, 0));
    EXPECT_EQ(Transform(fromNine).identity(), Transform::IDENTITY);
    EXPECT_EQ(Transform(fromNine).clear(), Transform::ZERO);
    Transform rows = Transform::ZERO;
    rows[2][0] = 5;
    EXPECT_EQ(rows, Transform(0, 0, 0, 0, 0, 0, 5, 0, 0));
}

TEST(Transform, ComparesExactlyAndNanIsUnequal) {
    const Transform a(1, 2, 3, 4, 5, 6, 7, 8, 9);
    for (int index = 0; index < 9; ++index) {
        Transform b = a;
        b[index / 3][index % 3] += 1e-12;
        EXPECT_FALSE(a == b) << index;
        EXPECT_TRUE(a != b) << index;
        b[index / 3][index % 3] = kNan;
        EXPECT_FALSE(b == b) << index;
        EXPECT_TRUE(b != b) << index;
    }
    EXPECT_TRUE(Transform(-0.0, 0, 0, 0, 0, 0, 0, 0, 0) == Transform::ZERO);
}

TEST(Transform, ElementwiseArithmetic) {
    const Transform a(1, 2, 3, 4, 5, 6, 7, 8, 9);
    const Transform b(9, 8, 7, 6, 5, 4, 3, 2, 1);
    EXPECT_EQ(a + b, Transform(10, 10, 10, 10, 10, 10, 10, 10, 10));
    EXPECT_EQ(a - b, Transform(-8, -6, -4, -2, 0, 2, 4, 6, 8));
    EXPECT_EQ(-a, Transform(-1, -2, -3, -4, -5, -6, -7, -8, -9));
    EXPECT_EQ(a * 2.0, Transform(2, 4, 6, 8, 10, 12, 14, 16, 18));
    EXPECT_EQ(a.transpose(), Transform(1, 4, 7, 2, 5, 8, 3, 6, 9));
    // The plain matrix product over all nine elements, third row included.
    EXPECT_EQ(a * b, Transform(30, 24, 18, 84, 69, 54, 138, 114, 90));
    EXPECT_EQ(a * Transform::IDENTITY, a);
    EXPECT_EQ(Transform::IDENTITY * a, a);
}

TEST(Transform, DeterminantAndInverseUseAllNineElements) {
    struct Row {
        Transform matrix;
        double determinant;
    };
    const Row rows[] = {
        {Transform(), 1.0},
        {Transform(2, 0, 5, 0, 4, 6, 0, 0, 1), 8.0},
        {Transform(1, 2, 3, 0, 1, 4, 5, 6, 0), 1.0},
        {Transform(2, -1, 0, -1, 2, -1, 0, -1, 2), 4.0},
        // The third row counts: a translation written into it changes the determinant.
        {Transform(1, 0, 5, 0, 1, 6, 5, 6, 1), -60.0},
    };
    for (Row const &row : rows) {
        EXPECT_DOUBLE_EQ(row.matrix.determinant(), row.determinant);
        expectNear(row.matrix * row.matrix.inverse(), Transform::IDENTITY);
        expectNear(row.matrix.inverse() * row.matrix, Transform::IDENTITY);
    }
    EXPECT_EQ(Transform(1, 2, 3, 0, 1, 4, 5, 6, 0).inverse(),
              Transform(-24, 18, 5, 20, -15, -4, -5, 4, 1));

    // Singular matrices are not reported: the result is not finite.
    EXPECT_TRUE(allNonFinite(Transform::ZERO.inverse()));
    const Transform singular(1, 2, 3, 2, 4, 6, 0, 0, 1);
    EXPECT_EQ(singular.determinant(), 0.0);
    EXPECT_FALSE(std::isfinite(singular.inverse()[0][0]));
}

TEST(Transform, MapsPointsThroughTheFirstTwoRowsOnly) {
    const Transform t(2, 3, 5, 7, 11, 13, 100, 200, 300);
    EXPECT_EQ(t.transform(1, 10), VTPoint<double>(2 + 30 + 5, 7 + 110 + 13));
    EXPECT_EQ(t.transform(VTPoint<double>(-1, 0)), VTPoint<double>(3, 6));
    VTPoint<double> point(1, 10);
    t.transformInPlace(point);
    EXPECT_EQ(point, VTPoint<double>(37, 130));

    EXPECT_EQ(Transform().translateCopy(1, 2).transform(0, 0), VTPoint<double>(1, 2));
    // The translation acts first, then the scale.
    EXPECT_EQ(Transform().scaleCopy(2, 3).translateCopy(1, 1).transform(0, 0),
              VTPoint<double>(2, 3));
    EXPECT_EQ(Transform().translateCopy(1, 1).scaleCopy(2, 3).transform(0, 0),
              VTPoint<double>(1, 1));
}

TEST(Transform, RotationsTurnOppositeWays) {
    for (double angle : {0.3, 1.0, -2.0, 1.5707963267948966}) {
        SCOPED_TRACE(angle);
        const VTPoint<double> byMatrix = Transform().rotateCopy(angle).transform(1, 0);
        EXPECT_DOUBLE_EQ(byMatrix.x, std::cos(angle));
        EXPECT_DOUBLE_EQ(byMatrix.y, -std::sin(angle));
        const VTPoint<double> byPoint = Transform::rotatePoint(VTPoint<double>(1, 0), angle);
        EXPECT_DOUBLE_EQ(byPoint.x, std::cos(angle));
        EXPECT_DOUBLE_EQ(byPoint.y, std::sin(angle));
        const VTPoint<double> up = Transform::rotatePoint(VTPoint<double>(0, 2), angle);
        EXPECT_DOUBLE_EQ(up.x, -2 * std::sin(angle));
        EXPECT_DOUBLE_EQ(up.y, 2 * std::cos(angle));
    }
}

TEST(Transform, CopyFormsMultiplyRightAndInverseFormsLeft) {
    const Transform t(1, 2, 3, 4, 5, 6, 7, 8, 9);
    const Transform translation(1, 0, 3, 0, 1, -4, 0, 0, 1);
    const Transform scale(2, 0, 0, 0, -4, 0, 0, 0, 1);
    const double angle = 0.7;
    const Transform rotation(std::cos(angle), std::sin(angle), 0, -std::sin(angle), std::cos(angle),
                             0, 0, 0, 1);
    const Transform backRotation(std::cos(-angle), std::sin(-angle), 0, -std::sin(-angle),
                                 std::cos(-angle), 0, 0, 0, 1);

    EXPECT_EQ(t.translateCopy(3, -4), t * translation);
    EXPECT_EQ(t.scaleCopy(2, -4), t * scale);
    EXPECT_EQ(t.rotateCopy(angle), t * rotation);
    EXPECT_EQ(t.invTranslateCopy(-3, 4), translation * t);
    EXPECT_EQ(t.invScaleCopy(0.5, -0.25), scale * t);
    EXPECT_EQ(t.invRotateCopy(angle), backRotation * t);

    // An inverse form undoes only what was applied last from the left.
    const Transform there = t.translateCopy(3, -4);
    EXPECT_NE(there.invTranslateCopy(3, -4), t);
    expectNear(Transform(translation * t).invTranslateCopy(3, -4), t);
    EXPECT_FALSE(std::isfinite(Transform().invScaleCopy(0, 1)[0][0]));

    // The in-place forms become their copies.
    Transform inPlace = t;
    inPlace.translate(3, -4);
    EXPECT_EQ(inPlace, t.translateCopy(3, -4));
    inPlace = t;
    inPlace.translate(VTPoint<double>(3, -4));
    EXPECT_EQ(inPlace, t.translateCopy(3, -4));
    inPlace = t;
    inPlace.scale(2, -4);
    EXPECT_EQ(inPlace, t.scaleCopy(2, -4));
    inPlace = t;
    inPlace.rotate(angle);
    EXPECT_EQ(inPlace, t.rotateCopy(angle));
    inPlace = t;
    inPlace.invTranslate(3, -4);
    EXPECT_EQ(inPlace, t.invTranslateCopy(3, -4));
    inPlace = t;
    inPlace.invTranslate(VTPoint<double>(3, -4));
    EXPECT_EQ(inPlace, t.invTranslateCopy(3, -4));
    inPlace = t;
    inPlace.invScale(2, -4);
    EXPECT_EQ(inPlace, t.invScaleCopy(2, -4));
    inPlace = t;
    inPlace.invRotate(angle);
    EXPECT_EQ(inPlace, t.invRotateCopy(angle));
}

TEST(Transform, BoundsOfTransformedRectangles) {
    struct Row {
        Transform transform;
        VTRect<double> in;
        VTRect<double> out;
    };
    const Row rows[] = {
        {Transform().translateCopy(1, 2), {0, 0, 3, 4}, {1, 2, 3, 4}},
        {Transform().scaleCopy(-1, 2), {1, 1, 2, 3}, {-3, 2, 2, 6}},
        {Transform(0, 1, 0, 1, 0, 0, 0, 0, 1), {1, 2, 3, 4}, {2, 1, 4, 3}},
        {Transform(1, 1, 0, -1, 1, 0, 0, 0, 1), {0, 0, 1, 1}, {0, -1, 2, 2}},
        // Degenerate rectangles stay where they are, translation or not.
        {Transform().translateCopy(5, 5), {1, 2, 0, 4}, {1, 2, 0, 4}},
        {Transform().translateCopy(5, 5), {1, 2, 3, -1}, {1, 2, 3, -1}},
    };
    for (Row const &row : rows) {
        EXPECT_EQ(row.transform.transformBounds(row.in), row.out);
    }
    const VTRect<double> withNan(kNan, 0, 1, 1);
    const VTRect<double> bounds = Transform().translateCopy(5, 5).transformBounds(withNan);
    EXPECT_TRUE(std::isnan(bounds.x));
    EXPECT_EQ(bounds.y, 0.0);
    EXPECT_EQ(Transform().translateCopy(5, 5).transformBounds(VTRect<double>(0, kNan, 1, 1)).x,
              0.0);
}

TEST(Transform, TakesQTransformWithItsTranslationInTheThirdRow) {
    QTransform q(2, 3, 0.5, 4, 5, 0.25, 6, 7, 1);
    const Transform t(q);
    EXPECT_EQ(t, Transform(2, 4, 6, 3, 5, 7, 6, 7, 1));

    const Transform translating(QTransform::fromTranslate(5, 6));
    EXPECT_EQ(translating, Transform(1, 0, 5, 0, 1, 6, 5, 6, 1));
    // Mapping points still agrees with Qt's own.
    const QTransform general = QTransform().rotate(30).scale(2, 3).translate(4, -5);
    const QPointF mapped = general.map(QPointF(1.5, -2.5));
    const VTPoint<double> ours = Transform(general).transform(1.5, -2.5);
    EXPECT_DOUBLE_EQ(ours.x, mapped.x());
    EXPECT_DOUBLE_EQ(ours.y, mapped.y());
}

TEST(Transform, StreamsCarryNineNumbers) {
    std::ostringstream out;
    out << Transform(1, 0, 5, 0, 1, 6, 0.5, 1e-7, 1);
    EXPECT_EQ(out.str(), "1,0,5,0,1,6,0.5,1e-07,1");

    std::istringstream in("1;2;3 ,4 x5|6,7,8,9 rest");
    Transform read;
    in >> read;
    EXPECT_FALSE(in.fail());
    EXPECT_EQ(read, Transform(1, 2, 3, 4, 5, 6, 7, 8, 9));

    // A failed read leaves the matrix partly overwritten.
    std::istringstream shortText("9,9,9");
    Transform partial;
    shortText >> partial;
    EXPECT_TRUE(shortText.fail());
    EXPECT_EQ(partial[0][0], 9.0);
    EXPECT_EQ(partial[0][2], 9.0);
    EXPECT_EQ(partial[1][1], 1.0);
}
