#include <vort/bones/TWrappedObject.h>

namespace VORT {

TWrappedObject::TWrappedObject() : destroyed(VTMS::DirectOrQueue) {}

TWrappedObject::TWrappedObject(const TWrappedObject &other)
    : destroyed(other.destroyed), m_wrapperClassName(other.m_wrapperClassName) {}

TWrappedObject &TWrappedObject::operator=(const TWrappedObject &other) {
    destroyed = other.destroyed;
    m_wrapperClassName = other.m_wrapperClassName;
    return *this;
}

TWrappedObject::~TWrappedObject() {
    // Before the emitter goes, so that direct listeners still find the object whole.
    destroyed.send(this);
}

}  // namespace VORT
