#include "TypeTesting.h"
#include "support/Latch.h"
#include <vort/types/Path.h>
#include <vort/types/PathType.h>
#include <vort/types/Shape.h>

#include <QPolygonF>

#include <gtest/gtest.h>

#include <limits>
#include <thread>
#include <vector>

using VORT::Path;
using VORT::Shape;
using VORT::VTPoint;
using VORT::VVector;

namespace {

Path pathOf(std::vector<VTPoint<double>> const &points) {
    Path path;
    for (VTPoint<double> const &point : points) {
        path.addPoint(point);
    }
    return path;
}

}  // namespace

TEST(Path, BuildsFromArraysAndVectors) {
    double xs[] = {1, 3, 5};
    double ys[] = {2, 4, 6};
    const Path fromArrays(xs, ys, 3);
    EXPECT_EQ(fromArrays, pathOf({{1, 2}, {3, 4}, {5, 6}}));
    EXPECT_TRUE(Path(xs, ys, 0).empty());
    EXPECT_TRUE(Path(xs, ys, -5).empty());

    VVector<VTPoint<double>> points;
    points.append(VTPoint<double>(7, 8));
    const Path shared(points);
    EXPECT_TRUE(shared.getPoints().isSharedWith(points));
    Path replaced = fromArrays;
    replaced.setPoints(points);
    EXPECT_EQ(replaced.size(), 1);
    EXPECT_EQ(replaced[0], VTPoint<double>(7, 8));
    replaced.clear();
    EXPECT_TRUE(replaced.empty());
    EXPECT_EQ(replaced.size(), 0);
}

TEST(Path, ComparesSizesThenPointsUnlessStorageIsShared) {
    const Path a = pathOf({{1, 2}, {3, 4}});
    EXPECT_TRUE(a == pathOf({{1, 2}, {3, 4}}));
    EXPECT_FALSE(a == pathOf({{1, 2}}));
    EXPECT_FALSE(a == pathOf({{1, 2}, {3, 5}}));
    EXPECT_FALSE(a == pathOf({{0, 2}, {3, 4}}));

    const double nan = std::numeric_limits<double>::quiet_NaN();
    const Path withNan = pathOf({{nan, 0}});
    const Path sharing = withNan;
    EXPECT_TRUE(withNan == sharing);
    EXPECT_FALSE(withNan == pathOf({{nan, 0}}));
}

TEST(Path, WritingDetachesCopies) {
    const Path original = pathOf({{1, 1}, {2, 2}});
    Path copy = original;
    copy.offset(VTPoint<double>(10, 20));
    EXPECT_EQ(copy, pathOf({{11, 21}, {12, 22}}));
    EXPECT_EQ(original, pathOf({{1, 1}, {2, 2}}));

    Path indexed = original;
    indexed[1] = VTPoint<double>(-1, -1);
    EXPECT_EQ(indexed[1], VTPoint<double>(-1, -1));
    EXPECT_EQ(original[1], VTPoint<double>(2, 2));

    Path added = original;
    added.addPoint(VTPoint<double>(3, 3));
    EXPECT_EQ(added.size(), 3);
    EXPECT_EQ(original.size(), 2);
}

TEST(Path, DeltaIsLastMinusFirst) {
    EXPECT_EQ(Path().getDelta(), VTPoint<double>(0, 0));
    EXPECT_EQ(pathOf({{5, 5}}).getDelta(), VTPoint<double>(0, 0));
    EXPECT_EQ(pathOf({{1, 1}, {9, 9}, {3, 5}}).getDelta(), VTPoint<double>(2, 4));
    EXPECT_EQ(pathOf({{3, 5}, {1, 1}}).getDelta(), VTPoint<double>(-2, -4));
}

TEST(Path, FillsAPolygonOverWhatWasThere) {
    QPolygonF polygon;
    polygon << QPointF(9, 9) << QPointF(9, 9) << QPointF(9, 9);
    Path::PathToQPolygon(pathOf({{1, 2}, {3, 4}}), polygon);
    ASSERT_EQ(polygon.size(), 2);
    EXPECT_EQ(polygon[0], QPointF(1, 2));
    EXPECT_EQ(polygon[1], QPointF(3, 4));
    Path::PathToQPolygon(Path(), polygon);
    EXPECT_TRUE(polygon.isEmpty());
}

TEST(Shape, EmptyShapesAreUnequalEvenToThemselves) {
    const Shape empty;
    EXPECT_FALSE(empty == empty);
    EXPECT_TRUE(empty != empty);
    Shape drawn;
    drawn.addRect(0, 0, 1, 1);
    EXPECT_FALSE(empty == drawn);
    EXPECT_FALSE(drawn == empty);
    EXPECT_TRUE(drawn != empty);
    EXPECT_TRUE(drawn == drawn);
}

TEST(Shape, CopiesShareUntilOneChanges) {
    Shape a;
    a.addRect(0, 0, 10, 10);
    Shape b = a;
    EXPECT_TRUE(a == b);

    b.addRect(20, 20, 5, 5);
    EXPECT_FALSE(a == b);
    Shape sameAsA;
    sameAsA.addRect(0, 0, 10, 10);
    EXPECT_TRUE(a == sameAsA);
    Shape sameAsB;
    sameAsB.addRect(0, 0, 10, 10);
    sameAsB.addRect(20, 20, 5, 5);
    EXPECT_TRUE(b == sameAsB);

    Shape ellipse;
    ellipse.addEllipse(0, 0, 10, 10);
    EXPECT_FALSE(ellipse == sameAsA);
    Shape assigned;
    assigned = ellipse;
    assigned.addEllipse(1, 1, 2, 2);
    EXPECT_FALSE(assigned == ellipse);
}

TEST(PathAndShapeConcurrency, CopiesChangeOnTheirOwnThreads) {
    // Every thread copies the same path and shape and changes its copies: the shared counts are
    // all that the threads have in common, and the originals must come through unchanged.
    const Path path = pathOf({{1, 2}, {3, 4}});
    Shape shape;
    shape.addRect(0, 0, 1, 1);
    Shape reference;
    reference.addRect(0, 0, 1, 1);
    constexpr int kThreads = 4;
    vort_test::Latch start(kThreads);
    std::vector<int> agreed(kThreads, 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            start.countDown();
            if (!start.wait()) {
                return;
            }
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
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    for (int t = 0; t < kThreads; ++t) {
        EXPECT_EQ(agreed[t], 200) << "thread " << t;
    }
    EXPECT_EQ(path, pathOf({{1, 2}, {3, 4}}));
    EXPECT_TRUE(shape == reference);
}
