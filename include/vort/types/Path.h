// `VORT::Path`: an ordered list of double points, a polyline with no curves and no closing flag.
// Its points live in a `VVector`, so a copy shares them and the first write to a shared path
// copies them (see VVector.h); `PathType` carries it through the type family (see PathType.h).
//
// Index arguments are not checked: an index out of range is a caller fault.
//
// Thread safety: a value. Two threads may use two copies that share storage; one path must not
// be used from two threads at once. Nothing here fails.
#ifndef VORT_TYPES_PATH_H
#define VORT_TYPES_PATH_H

#include <vort/bones/VVector.h>
#include <vort/types/VTPoint.h>
#include <vort/vort_export.h>

class QPolygonF;

namespace VORT {

class VORT_EXPORT Path {
public:
    Path() = default;
    // Shares `points`.
    explicit Path(VVector<VTPoint<double>> const &points) : m_points(points) {}
    // (xs[i], ys[i]) for each i below `count`; a `count` below 1 gives no points.
    Path(double *const xs, double *const ys, int count);

    void clear() { m_points.clear(); }
    void addPoint(VTPoint<double> const &point) { m_points.append(point); }
    // Replaces every point, sharing `points`.
    void setPoints(VVector<VTPoint<double>> const &points) { m_points = points; }
    VVector<VTPoint<double>> const &getPoints() const { return m_points; }

    int size() const { return m_points.size(); }
    bool empty() const { return m_points.isEmpty(); }
    VTPoint<double> operator[](int index) const { return m_points.at(index); }
    // Detaches first, so the reference is to this path's own point.
    VTPoint<double> &operator[](int index) { return m_points[index]; }

    // Equal sizes and, unless the two share their storage, equal points compared exactly, from
    // the last to the first: a NaN makes paths unequal unless they share storage.
    bool operator==(Path const &other) const;

    // The last point minus the first; (0, 0) with fewer than two points.
    VTPoint<double> getDelta() const;
    // Adds `delta` to every point, detaching first.
    void offset(VTPoint<double> const &delta);

    // Resizes `polygon` to the path's size and overwrites it with the points.
    static void PathToQPolygon(Path const &path, QPolygonF &polygon);

private:
    VVector<VTPoint<double>> m_points;
};

}  // namespace VORT

#endif  // VORT_TYPES_PATH_H
