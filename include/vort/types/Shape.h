// `VORT::Shape`: a copy-on-write handle on a `QPainterPath`. It is not a member of the type
// family.
//
// A default `Shape` owns no path at all. Copies share the path; a change (`addEllipse`,
// `addRect`) first gives the shape a path of its own: a new empty one if it had none, a copy if
// it shares one, the same path if it is the only owner.
//
// Comparison: a shape without a path is unequal to every shape, itself included, and `!=` is
// true for it; two shapes that share a path are equal, and otherwise the paths compare as
// `QPainterPath`s do.
//
// Thread safety: a value. The path's owner count is atomic, so two threads may use two copies
// that share a path; one shape must not be used from two threads at once. Nothing here fails.
#ifndef VORT_TYPES_SHAPE_H
#define VORT_TYPES_SHAPE_H

#include <vort/vort_export.h>

#include <boost/shared_ptr.hpp>

class QPainterPath;

namespace VORT {

class VORT_EXPORT Shape {
public:
    Shape();
    Shape(Shape const &other);
    Shape &operator=(Shape const &other);
    ~Shape();

    bool operator==(Shape const &other) const;
    bool operator!=(Shape const &other) const { return !(*this == other); }

    void addEllipse(double x, double y, double width, double height);
    void addRect(double x, double y, double width, double height);

private:
    QPainterPath &getPath();
    void createPath();
    void clonePath();
    void detach();

    boost::shared_ptr<QPainterPath> m_path;
};

}  // namespace VORT

#endif  // VORT_TYPES_SHAPE_H
