#include "support/Latch.h"
#include <vort/types/Path.h>
#include <vort/types/Shape.h>

#include <QPolygonF>

#include <gtest/gtest.h>

#include <limits>
#include <vector>

using VORT::Path;
using VORT::Shape;
using VORT::VTPoint;
using VORT::VVector;

namespace {

Path pathOf(std::vector<VTPoint<double>> const &points) {
    return Path(VVector<VTPoint<double>>::fromStdVector(points));
}

}  // namespace

TEST(Path, BuildsComparesAndDetaches) {
    double xs[] = {1, 3, 5};
    double ys[] = {2, 4, 6};
    const Path original(xs, ys, 3);
    EXPECT_TRUE(original == pathOf({{1, 2}, {3, 4}, {5, 6}}) && Path(xs, ys, -5).empty());
    EXPECT_FALSE(original == pathOf({{1, 2}, {3, 4}}) ||
                 original == pathOf({{0, 2}, {3, 4}, {5, 6}}));
    // Shared storage is equal at once, NaNs and all; separate NaNs are not.
    const Path withNan = pathOf({{std::numeric_limits<double>::quiet_NaN(), 0}});
    const Path sharing = withNan;
    EXPECT_TRUE(withNan == sharing && !(withNan == pathOf({withNan[0]})));

    Path copy = original;
    copy.offset(VTPoint<double>(10, 20));
    copy[0] = VTPoint<double>(-1, -1);
    copy.addPoint(VTPoint<double>(7, 7));
    EXPECT_TRUE(copy == pathOf({{-1, -1}, {13, 24}, {15, 26}, {7, 7}}) &&
                original == pathOf({{1, 2}, {3, 4}, {5, 6}}));
    copy.setPoints(original.getPoints());
    EXPECT_TRUE(copy.getPoints().isSharedWith(original.getPoints()));
    copy.clear();
    EXPECT_TRUE(copy.empty() && copy.size() == 0);

    EXPECT_TRUE(pathOf({{5, 5}}).getDelta() == VTPoint<double>(0, 0) &&
                pathOf({{1, 1}, {9, 9}, {3, 5}}).getDelta() == VTPoint<double>(2, 4));

    QPolygonF polygon;
    polygon << QPointF(9, 9) << QPointF(9, 9) << QPointF(9, 9);
    Path::PathToQPolygon(pathOf({{1, 2}, {3, 4}}), polygon);
    EXPECT_EQ(polygon, QPolygonF() << QPointF(1, 2) << QPointF(3, 4));
}

TEST(Shape, EmptyShapesAreUnequalAndCopiesShareUntilOneChanges) {
    const Shape empty;
    EXPECT_TRUE(!(empty == empty) && empty != empty);
    Shape a;
    a.addRect(0, 0, 10, 10);
    EXPECT_TRUE(a == a && !(a == empty) && !(empty == a) && a != empty);
    Shape b = a;
    EXPECT_TRUE(a == b);
    b.addEllipse(20, 20, 5, 5);
    Shape sameAsA;
    sameAsA.addRect(0, 0, 10, 10);
    EXPECT_TRUE(!(a == b) && a == sameAsA);
    Shape sameAsB = sameAsA;
    sameAsB.addEllipse(20, 20, 5, 5);
    EXPECT_TRUE(b == sameAsB && a == sameAsA);
}

// The shared counts are all that the threads have in common; the originals come through unchanged.
TEST(PathAndShapeConcurrency, CopiesChangeOnTheirOwnThreads) {
    const Path path = pathOf({{1, 2}, {3, 4}});
    Shape shape;
    shape.addRect(0, 0, 1, 1);
    Shape reference;
    reference.addRect(0, 0, 1, 1);
    constexpr int kThreads = 4;
    std::vector<int> agreed(kThreads, 0);
    vort_test::runTogether(kThreads, [&](int t) {
        for (int round = 0; round < 200; ++round) {
            Path pathCopy = path;
            pathCopy.offset(VTPoint<double>(t, round));
            Shape shapeCopy = shape;
            shapeCopy.addEllipse(t, round, 1, 1);
            Shape expected;
            expected.addRect(0, 0, 1, 1);
            expected.addEllipse(t, round, 1, 1);
            if (pathCopy[1] == VTPoint<double>(3 + t, 4 + round) && shapeCopy == expected) {
                ++agreed[t];
            }
        }
    });
    EXPECT_EQ(agreed, std::vector<int>(kThreads, 200));
    EXPECT_TRUE(path == pathOf({{1, 2}, {3, 4}}) && shape == reference);
}
