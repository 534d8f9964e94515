#include <vort/types/Transform.h>

#include <QTransform>

#include <algorithm>
#include <cmath>
#include <istream>
#include <ostream>

namespace VORT {

const Transform Transform::IDENTITY(1.0, 0.0, 0.0, 0.0, 1.0, 0.0, 0.0, 0.0, 1.0);
const Transform Transform::ZERO(0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0);

namespace {

Transform translation(double tx, double ty) {
    return Transform(1.0, 0.0, tx, 0.0, 1.0, ty, 0.0, 0.0, 1.0);
}

Transform scaling(double sx, double sy) {
    return Transform(sx, 0.0, 0.0, 0.0, sy, 0.0, 0.0, 0.0, 1.0);
}

Transform rotation(double angle) {
    const double cosine = std::cos(angle);
    const double sine = std::sin(angle);
    return Transform(cosine, sine, 0.0, -sine, cosine, 0.0, 0.0, 0.0, 1.0);
}

}  // namespace

Transform::Transform(QTransform const &transform)
    : m{{transform.m11(), transform.m21(), transform.m31()},
        {transform.m12(), transform.m22(), transform.m32()},
        {transform.m31(), transform.m32(), transform.m33()}} {}

Transform &Transform::set(double m00, double m01, double m02, double m10, double m11, double m12,
                          double m20, double m21, double m22) {
    *this = Transform(m00, m01, m02, m10, m11, m12, m20, m21, m22);
    return *this;
}

Transform &Transform::set(double const *elements) {
    std::copy(elements, elements + 9, &m[0][0]);
    return *this;
}

bool Transform::operator==(Transform const &other) const {
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            if (!(m[row][column] == other.m[row][column])) {
                return false;
            }
        }
    }
    return true;
}

double Transform::determinant() const {
    return m[0][1] * (m[1][2] * m[2][0] - m[1][0] * m[2][2]) +
           m[0][0] * (m[1][1] * m[2][2] - m[2][1] * m[1][2]) +
           m[0][2] * (m[2][1] * m[1][0] - m[1][1] * m[2][0]);
}

VTPoint<double> Transform::rotatePoint(VTPoint<double> const &point, double angle) {
    const double cosine = std::cos(angle);
    const double sine = std::sin(angle);
    return VTPoint<double>(point.x * cosine - point.y * sine, point.y * cosine + point.x * sine);
}

Transform Transform::operator-() const {
    Transform result;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            result.m[row][column] = -m[row][column];
        }
    }
    return result;
}

Transform Transform::operator+(Transform const &other) const {
    Transform result;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            result.m[row][column] = m[row][column] + other.m[row][column];
        }
    }
    return result;
}

Transform Transform::operator-(Transform const &other) const {
    Transform result;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            result.m[row][column] = m[row][column] - other.m[row][column];
        }
    }
    return result;
}

Transform Transform::operator*(Transform const &other) const {
    // Row by row: each result row is a sum of the other's rows, which the compiler can keep in
    // vector registers.
    Transform result;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            result.m[row][column] = m[row][0] * other.m[0][column] +
                                    m[row][1] * other.m[1][column] + m[row][2] * other.m[2][column];
        }
    }
    return result;
}

Transform Transform::operator*(double factor) const {
    Transform result;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            result.m[row][column] = m[row][column] * factor;
        }
    }
    return result;
}

Transform Transform::transpose() const {
    return Transform(m[0][0], m[1][0], m[2][0], m[0][1], m[1][1], m[2][1], m[0][2], m[1][2],
                     m[2][2]);
}

Transform Transform::inverse() const {
    // The adjugate: result[i][j] is the cofactor of m[j][i].
    Transform result(m[1][1] * m[2][2] - m[1][2] * m[2][1], m[0][2] * m[2][1] - m[0][1] * m[2][2],
                     m[0][1] * m[1][2] - m[0][2] * m[1][1], m[1][2] * m[2][0] - m[1][0] * m[2][2],
                     m[0][0] * m[2][2] - m[0][2] * m[2][0], m[0][2] * m[1][0] - m[0][0] * m[1][2],
                     m[1][0] * m[2][1] - m[1][1] * m[2][0], m[0][1] * m[2][0] - m[0][0] * m[2][1],
                     m[0][0] * m[1][1] - m[0][1] * m[1][0]);
    // The first row of the matrix against its cofactors, the adjugate's first column.
    const double determinant =
        m[0][0] * result.m[0][0] + m[0][1] * result.m[1][0] + m[0][2] * result.m[2][0];
    return result * (1.0 / determinant);
}

VTRect<double> Transform::transformBounds(VTRect<double> const &rect) const {
    if (!(rect.width > 0.0) || !(rect.height > 0.0) || std::isnan(rect.x) || std::isnan(rect.y)) {
        return rect;
    }
    const VTPoint<double> corners[4] = {transform(rect.x, rect.y),
                                        transform(rect.x + rect.width, rect.y),
                                        transform(rect.x, rect.y + rect.height),
                                        transform(rect.x + rect.width, rect.y + rect.height)};
    double left = corners[0].x;
    double right = corners[0].x;
    double top = corners[0].y;
    double bottom = corners[0].y;
    for (VTPoint<double> const &corner : corners) {
        left = std::min(left, corner.x);
        right = std::max(right, corner.x);
        top = std::min(top, corner.y);
        bottom = std::max(bottom, corner.y);
    }
    return VTRect<double>(left, top, right - left, bottom - top);
}

Transform Transform::translateCopy(double tx, double ty) const {
    return *this * translation(tx, ty);
}

Transform Transform::scaleCopy(double sx, double sy) const {
    return *this * scaling(sx, sy);
}

Transform Transform::rotateCopy(double angle) const {
    return *this * rotation(angle);
}

Transform Transform::invTranslateCopy(double tx, double ty) const {
    return translation(-tx, -ty) * *this;
}

Transform Transform::invScaleCopy(double sx, double sy) const {
    return scaling(1.0 / sx, 1.0 / sy) * *this;
}

Transform Transform::invRotateCopy(double angle) const {
    return rotation(-angle) * *this;
}

}  // namespace VORT

std::ostream &operator<<(std::ostream &stream, VORT::Transform const &transform) {
    stream << transform[0][0];
    for (int index = 1; index < 9; ++index) {
        stream << ',' << transform[index / 3][index % 3];
    }
    return stream;
}

std::istream &operator>>(std::istream &stream, VORT::Transform &transform) {
    char separator = '\0';
    stream >> transform[0][0];
    for (int index = 1; index < 9; ++index) {
        stream >> separator >> transform[index / 3][index % 3];
    }
    return stream;
}
