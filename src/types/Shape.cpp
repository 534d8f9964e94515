#include <vort/types/Shape.h>

#include <QPainterPath>
#include <QRectF>

namespace VORT {

Shape::Shape() = default;

Shape::Shape(Shape const &other) = default;

Shape &Shape::operator=(Shape const &other) = default;

Shape::~Shape() = default;

bool Shape::operator==(Shape const &other) const {
    if (!m_path || !other.m_path) {
        return false;
    }
    return m_path == other.m_path || *m_path == *other.m_path;
}

void Shape::addEllipse(double x, double y, double width, double height) {
    detach();
    getPath().addEllipse(QRectF(x, y, width, height));
}

void Shape::addRect(double x, double y, double width, double height) {
    detach();
    getPath().addRect(QRectF(x, y, width, height));
}

QPainterPath &Shape::getPath() {
    return *m_path;
}

void Shape::createPath() {
    m_path.reset(new QPainterPath);
}

void Shape::clonePath() {
    m_path.reset(new QPainterPath(*m_path));
}

void Shape::detach() {
    if (!m_path) {
        createPath();
    } else if (m_path.use_count() > 1) {
        clonePath();
    }
}

}  // namespace VORT
