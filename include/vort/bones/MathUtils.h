// Number functions: `pi`, angle conversions, `interpolate`, `int_rnd`, `sqrt<float>` and
// `normalizeAndReturnAngle`. The two that take points, `DPoint2IPoint` (`int_rnd`'s rule on each
// coordinate) and `length`, stand beside `VTPoint` and come with it from <vort/types/VTPoint.h>.
//
// Each function computes in the exact order of operations it states, so that results match to
// the last bit wherever they are computed; none of them allocates or holds state, and any
// thread may call them.
//
// Failure: none is reported. `int_rnd` trusts its caller: `d + 0.5` must lie within the range
// of `int` (a NaN or a value outside it is undefined behaviour, as for any cast to `int`).
#ifndef VORT_BONES_MATHUTILS_H
#define VORT_BONES_MATHUTILS_H

#include <vort/types/VTPoint.h>
#include <vort/vort_export.h>

#include <cmath>

namespace VORT {

constexpr double pi = 3.141592653589793;

inline double deg_to_rad(double d) {
    return d * pi / 180.0;
}
inline double rad_to_deg(double r) {
    return r * 180.0 / pi;
}
// Sixteenths of a degree, the unit of QPainter's arcs.
inline double rad_to_16th_deg(double r) {
    return r * 16.0 * 180.0 / pi;
}

// `(b - a) * t + a`: `t` 0 gives `a`, 1 gives `b`; the fraction comes first.
inline double interpolate(double t, double a, double b) {
    return (b - a) * t + a;
}

// `d + 0.5` truncated towards zero, not floored: 2.5 gives 3, but -2.5 gives -2 and -1.4 gives 0.
inline int int_rnd(double d) {
    return static_cast<int>(d + 0.5);
}

// Only the `float` form exists; other types are refused at compile time (use `std::sqrt`).
template <typename T>
T sqrt(T value) = delete;
template <>
inline float sqrt<float>(float value) {
    return std::sqrt(value);
}

// The angle `x` (radians) brought into [-pi, pi]. Below 14 pi in size it is stepped by 2 pi,
// which is cheaper than `fmod` for the small multiples that occur; larger angles go through
// `fmod`, whose results differ from the steps in the last bits. `float` uses `float` constants.
// A NaN or an infinity gives a NaN.
VORT_EXPORT float normalizeAndReturnAngle(float x);
VORT_EXPORT double normalizeAndReturnAngle(double x);

}  // namespace VORT

#endif  // VORT_BONES_MATHUTILS_H
