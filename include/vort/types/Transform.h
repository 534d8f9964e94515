// `VORT::Transform`: a 3 by 3 matrix of doubles, row-major, for 2-D geometry. Points are columns:
// the translation sits in the third column, and the third row plays no part in mapping points
// (x' = m[0][0] x + m[0][1] y + m[0][2], y' = m[1][0] x + m[1][1] y + m[1][2], no homogeneous
// divide). It does take part in products, the determinant, the inverse, the transpose and the
// comparisons.
//
// `A * B` is the plain matrix product, so in `(A * B).transform(p)` B acts first. The `...Copy`
// forms multiply on the right (`translateCopy(tx, ty)` is `*this * T(tx, ty)`), the `inv...Copy`
// forms multiply their inverse on the left (`invTranslateCopy(tx, ty)` is `T(-tx, -ty) *
// *this`), so an inverse form undoes only an operation that was the last applied from the
// left. The rotation R(a) has cos a, sin a in its first row and -sin a, cos a in its second;
// `rotatePoint` turns the other way. Angles are in radians.
//
// Nothing is checked and nothing fails: a singular matrix inverts to infinities and NaNs, a zero
// factor in `invScaleCopy` divides by zero, and comparison is exact, so a matrix with a NaN is
// unequal to itself.
//
// The streams carry the nine elements row by row, joined by single commas: `<<` with the caller's
// settings; `>>` extracts a number, then eight times any one non-blank character and a number,
// straight into the matrix, testing nothing itself: a failed read leaves the matrix partly
// overwritten and the caller reads the stream's flags.
//
// Thread safety: a plain value. `IDENTITY` and `ZERO` are constants, made before any code runs.
#ifndef VORT_TYPES_TRANSFORM_H
#define VORT_TYPES_TRANSFORM_H

#include <vort/types/VTPoint.h>
#include <vort/vort_export.h>

#include <iosfwd>

class QTransform;

namespace VORT {

class VORT_EXPORT Transform {
public:
    static const Transform IDENTITY;
    // All nine elements zero.
    static const Transform ZERO;

    // The identity.
    constexpr Transform() : m{{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}} {}
    // The nine elements row by row.
    constexpr Transform(double m00, double m01, double m02, double m10, double m11, double m12,
                        double m20, double m21, double m22)
        : m{{m00, m01, m02}, {m10, m11, m12}, {m20, m21, m22}} {}
    // Nine doubles row by row, copied from `elements`.
    explicit Transform(double const *elements) { set(elements); }
    // Row 0 is m11, m21, m31; row 1 m12, m22, m32; row 2 m31, m32, m33, as Qt names them: the
    // translation goes into the third row as well as the third column, and m13 and m23 are
    // dropped. Mapping points is unaffected; the determinant, the inverse and products are not.
    explicit Transform(QTransform const &transform);

    Transform &set(double m00, double m01, double m02, double m10, double m11, double m12,
                   double m20, double m21, double m22);
    Transform &set(double const *elements);
    Transform &operator=(double const *elements) { return set(elements); }
    Transform &identity() { return *this = IDENTITY; }
    Transform &clear() { return *this = ZERO; }

    // The three doubles of a row; not checked.
    double *operator[](int row) { return m[row]; }
    double const *operator[](int row) const { return m[row]; }

    // Element by element, exactly.
    bool operator==(Transform const &other) const;
    bool operator!=(Transform const &other) const { return !(*this == other); }

    // The full 3 by 3 determinant, expanded along the first row.
    double determinant() const;

    VTPoint<double> transform(double x, double y) const {
        return VTPoint<double>(m[0][0] * x + m[0][1] * y + m[0][2],
                               m[1][0] * x + m[1][1] * y + m[1][2]);
    }
    VTPoint<double> transform(VTPoint<double> const &point) const {
        return transform(point.x, point.y);
    }
    void transformInPlace(VTPoint<double> &point) const { point = transform(point.x, point.y); }
    // x cos a - y sin a, y cos a + x sin a: the other sense from `rotateCopy`.
    static VTPoint<double> rotatePoint(VTPoint<double> const &point, double angle);

    Transform operator-() const;
    Transform operator+(Transform const &other) const;
    Transform operator-(Transform const &other) const;
    Transform operator*(Transform const &other) const;
    Transform operator*(double factor) const;
    Transform transpose() const;
    // The adjugate times 1 / determinant, with no test for a singular matrix.
    Transform inverse() const;

    // The axis-aligned bounds of the four transformed corners. A rectangle whose width or height
    // isn't greater than 0, or with a NaN field, comes back unchanged and unmoved.
    VTRect<double> transformBounds(VTRect<double> const &rect) const;

    Transform translateCopy(double tx, double ty) const;
    Transform scaleCopy(double sx, double sy) const;
    Transform rotateCopy(double angle) const;
    Transform invTranslateCopy(double tx, double ty) const;
    Transform invScaleCopy(double sx, double sy) const;
    Transform invRotateCopy(double angle) const;

    void translate(double tx, double ty) { *this = translateCopy(tx, ty); }
    void translate(VTPoint<double> const &offset) { *this = translateCopy(offset.x, offset.y); }
    void scale(double sx, double sy) { *this = scaleCopy(sx, sy); }
    void rotate(double angle) { *this = rotateCopy(angle); }
    void invTranslate(double tx, double ty) { *this = invTranslateCopy(tx, ty); }
    void invTranslate(VTPoint<double> const &offset) {
        *this = invTranslateCopy(offset.x, offset.y);
    }
    void invScale(double sx, double sy) { *this = invScaleCopy(sx, sy); }
    void invRotate(double angle) { *this = invRotateCopy(angle); }

private:
    double m[3][3];
};

}  // namespace VORT

VORT_EXPORT std::ostream &operator<<(std::ostream &stream, VORT::Transform const &transform);
VORT_EXPORT std::istream &operator>>(std::istream &stream, VORT::Transform &transform);

#endif  // VORT_TYPES_TRANSFORM_H
