#include <vort/bones/MathUtils.h>

namespace VORT {

namespace {

template <typename T>
T normalized(T x) {
    constexpr T kPi = T(pi);
    constexpr T kTwoPi = T(2) * kPi;
    if (std::fabs(x) < T(14) * kPi) {
        while (x > kPi) {
            x -= kTwoPi;
        }
        while (x < -kPi) {
            x += kTwoPi;
        }
        return x;
    }
    x = std::fmod(x, kTwoPi);
    if (x > kPi) {
        x -= kTwoPi;
    }
    if (x < -kPi) {
        x += kTwoPi;
    }
    return x;
}

}  // namespace

float normalizeAndReturnAngle(float x) {
    return normalized(x);
}

double normalizeAndReturnAngle(double x) {
    return normalized(x);
}

}  // namespace VORT
