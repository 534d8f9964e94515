#include <vort/types/Path.h>

#include <QPolygonF>

namespace VORT {

Path::Path(double *const xs, double *const ys, int count) {
    for (int index = 0; index < count; ++index) {
        m_points.append(VTPoint<double>(xs[index], ys[index]));
    }
}

bool Path::operator==(Path const &other) const {
    if (m_points.size() != other.m_points.size()) {
        return false;
    }
    if (m_points.isSharedWith(other.m_points)) {
        return true;
    }
    for (int index = m_points.size() - 1; index >= 0; --index) {
        if (!(m_points.at(index) == other.m_points.at(index))) {
            return false;
        }
    }
    return true;
}

VTPoint<double> Path::getDelta() const {
    if (m_points.size() < 2) {
        return VTPoint<double>(0.0, 0.0);
    }
    return m_points.last() - m_points.first();
}

void Path::offset(VTPoint<double> const &delta) {
    for (VTPoint<double> &point : m_points) {
        point += delta;
    }
}

void Path::PathToQPolygon(Path const &path, QPolygonF &polygon) {
    polygon.resize(path.size());
    for (int index = 0; index < path.size(); ++index) {
        polygon[index] = QPointF(path.m_points.at(index).x, path.m_points.at(index).y);
    }
}

}  // namespace VORT
