// `VORT::VTPoint<T>`, `VORT::VTRect<T>` and `VORT::Size<T>`: the plain geometry values of the
// library, with the conversions from double to int geometry and the stream operators.
//
// A rectangle is its top-left corner and its extent, never two corners. The fields are public
// and compared exactly, in declared order. The library uses `VTPoint` of int, float and double,
// `VTRect` and `Size` of int and double; other instantiations follow the templates.
//
// Double to int: every field, the extent included, becomes int(field + 0.5) truncated toward
// zero, a rule that isn't symmetric around zero: 1.5 gives 2, -1.2 gives 0, -1.6 gives -1 and
// -2.5 gives -2. A field whose rounded value doesn't fit an int (or is NaN) is a caller fault.
//
// Streams: `<<` writes the fields in declared order with one comma between them and no blanks,
// with the caller's stream settings. `>>` extracts a number, then one character, and so on,
// ending with a number; the character extraction skips whitespace and takes any character as the
// separator. It tests nothing itself: the fields are assigned from the extracted values whatever
// the flags say (a number that wasn't extracted counts as 0), and the caller reads the flags.
//
// The templates are exported so that the type family's members over them are exported too.
//
// Thread safety: plain values. Nothing here reports failure.
#ifndef VORT_TYPES_VTPOINT_H
#define VORT_TYPES_VTPOINT_H

#include <vort/vort_export.h>

#include <cmath>
#include <istream>
#include <ostream>

namespace VORT {

template <class T>
class VORT_EXPORT VTPoint {
public:
    VTPoint() : x(), y() {}
    VTPoint(T x, T y) : x(x), y(y) {}

    bool operator==(VTPoint const &other) const { return x == other.x && y == other.y; }
    bool operator!=(VTPoint const &other) const { return !(*this == other); }

    VTPoint operator+(VTPoint const &other) const { return VTPoint(x + other.x, y + other.y); }
    VTPoint operator-(VTPoint const &other) const { return VTPoint(x - other.x, y - other.y); }
    VTPoint &operator+=(VTPoint const &other) {
        x += other.x;
        y += other.y;
        return *this;
    }

    T x;
    T y;
};

template <class T>
class VORT_EXPORT Size {
public:
    Size() : width(), height() {}
    Size(T width, T height) : width(width), height(height) {}

    bool operator==(Size const &other) const {
        return width == other.width && height == other.height;
    }
    bool operator!=(Size const &other) const { return !(*this == other); }

    T width;
    T height;
};

template <class T>
class VORT_EXPORT VTRect {
public:
    VTRect() : x(), y(), width(), height() {}
    VTRect(T x, T y, T width, T height) : x(x), y(y), width(width), height(height) {}
    VTRect(VTPoint<T> const &topLeft, Size<T> const &size)
        : x(topLeft.x), y(topLeft.y), width(size.width), height(size.height) {}

    bool operator==(VTRect const &other) const {
        return x == other.x && y == other.y && width == other.width && height == other.height;
    }
    bool operator!=(VTRect const &other) const { return !(*this == other); }

    VTPoint<T> topLeft() const { return VTPoint<T>(x, y); }
    Size<T> size() const { return Size<T>(width, height); }

    T x;
    T y;
    T width;
    T height;
};

namespace GeometryRounding {

// Plus 0.5, truncated toward zero.
inline int toInt(double value) {
    return static_cast<int>(value + 0.5);
}

}  // namespace GeometryRounding

inline VTPoint<int> DPoint2IPoint(VTPoint<double> const &point) {
    return VTPoint<int>(GeometryRounding::toInt(point.x), GeometryRounding::toInt(point.y));
}

inline VTRect<int> DRect2IRect(VTRect<double> const &rect) {
    return VTRect<int>(GeometryRounding::toInt(rect.x), GeometryRounding::toInt(rect.y),
                       GeometryRounding::toInt(rect.width), GeometryRounding::toInt(rect.height));
}

inline Size<int> DSize2ISize(Size<double> const &size) {
    return Size<int>(GeometryRounding::toInt(size.width), GeometryRounding::toInt(size.height));
}

// The distance from the origin, sqrt(y * y + x * x).
inline float length(VTPoint<float> const &point) {
    return std::sqrt(point.y * point.y + point.x * point.x);
}

inline double length(VTPoint<double> const &point) {
    return std::sqrt(point.y * point.y + point.x * point.x);
}

}  // namespace VORT

template <class T>
std::ostream &operator<<(std::ostream &stream, VORT::VTPoint<T> const &point) {
    return stream << point.x << ',' << point.y;
}

template <class T>
std::istream &operator>>(std::istream &stream, VORT::VTPoint<T> &point) {
    T x = T();
    T y = T();
    char separator = '\0';
    stream >> x >> separator >> y;
    point.x = x;
    point.y = y;
    return stream;
}

template <class T>
std::ostream &operator<<(std::ostream &stream, VORT::VTRect<T> const &rect) {
    return stream << rect.x << ',' << rect.y << ',' << rect.width << ',' << rect.height;
}

template <class T>
std::istream &operator>>(std::istream &stream, VORT::VTRect<T> &rect) {
    T x = T();
    T y = T();
    T width = T();
    T height = T();
    char separator = '\0';
    stream >> x >> separator >> y >> separator >> width >> separator >> height;
    rect.x = x;
    rect.y = y;
    rect.width = width;
    rect.height = height;
    return stream;
}

#endif  // VORT_TYPES_VTPOINT_H
