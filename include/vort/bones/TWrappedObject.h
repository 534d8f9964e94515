// `VORT::TWrappedObject`: the base of objects that a host wrapper can stand for. It carries the
// name of its wrapper class (the host finds the class itself through the
// `VTServices::TWrapperClassRegistry` service) and announces its own end on `destroyed`.
//
// The destructor sends `this` on `destroyed` in the emitter's default mode, `DirectOrQueue`: a
// listener without a thread, or on the destroying thread, hears of the end while the object is
// still whole; a listener on another thread gets the pointer queued and may only compare it, never
// follow it.
//
// Copies: a copy has a new emitter without connections and the original's name. Assignment is
// member by member, so both objects then share one emitter record; a class that assigns these
// objects keeps that in mind.
//
// Thread safety: as for any emitter (connect and send from any thread); the name is plain data.
#ifndef VORT_BONES_TWRAPPEDOBJECT_H
#define VORT_BONES_TWRAPPEDOBJECT_H

#include <vort/bones/StringID.h>
#include <vort/messaging/Emitter.h>
#include <vort/vort_export.h>

namespace VORT {

class VORT_EXPORT TWrappedObject {
public:
    TWrappedObject();
    TWrappedObject(const TWrappedObject &other);
    TWrappedObject &operator=(const TWrappedObject &other);
    virtual ~TWrappedObject();

    void setTWrapperClassName(StringID name) { m_wrapperClassName = name; }
    StringID getTWrapperClassName() const { return m_wrapperClassName; }

    // Sent once, from the destructor, with the dying object.
    VTMS::Emitter1<void, TWrappedObject *> destroyed;

private:
    StringID m_wrapperClassName;
};

}  // namespace VORT

#endif  // VORT_BONES_TWRAPPEDOBJECT_H
