// `VORT::ModuleObject`, `VORT::ModuleObjectImpl<P, D>` and `VORT::ModuleObjectDeleter`: objects
// that must die before the module whose code they run goes away.
//
// A module keeps one `ModuleObjectDeleter` at file scope and enters in it every object that it
// hands to a longer-lived owner; when the module's statics are destroyed, the deleter releases
// the entries in the order they were entered. A statically linked module does the same work at
// process exit.
//
// Thread safety: none. Entries are made while the module starts and the deleter runs once, at
// its end. Ownership: the deleter releases its entries but counts nothing; copying a deleter
// copies the pointers, and two deleters that share an entry release it twice, so deleters are
// not meant to be copied. Failure: nothing is reported.
#ifndef VORT_BONES_MODULEOBJECT_H
#define VORT_BONES_MODULEOBJECT_H

#include <vort/vort_export.h>

#include <list>

namespace VORT {

class VORT_EXPORT ModuleObject {
public:
    ModuleObject() = default;
    ModuleObject(const ModuleObject &) = default;
    ModuleObject &operator=(const ModuleObject &) { return *this; }
    virtual ~ModuleObject();

    // Ends the entry: ends what it holds, then the entry itself. It is not touched again.
    virtual void release() = 0;
};

// Holds one pointer of type `P` and ends it with a default-constructed `D`, as in
// `ModuleObjectImpl<Item *, boost::checked_deleter<Item>>`.
template <class P, class D>
class ModuleObjectImpl : public ModuleObject {
public:
    explicit ModuleObjectImpl(P pointer) : m_pointer(pointer) {}

    void release() override {
        if (m_pointer) {
            D()(m_pointer);
        }
        delete this;
    }

private:
    P m_pointer;
};

class VORT_EXPORT ModuleObjectDeleter {
public:
    ModuleObjectDeleter() = default;
    ModuleObjectDeleter(const ModuleObjectDeleter &) = default;
    // Takes a copy of the other's list; the entries held before are dropped, not released.
    ModuleObjectDeleter &operator=(const ModuleObjectDeleter &other);
    // Releases every entry, in the order of entry.
    ~ModuleObjectDeleter();

    // Enters an entry (usually a `ModuleObjectImpl` just allocated by the object's owner).
    void append(ModuleObject *object) { m_objects.push_back(object); }

private:
    std::list<ModuleObject *> m_objects;
};

}  // namespace VORT

#endif  // VORT_BONES_MODULEOBJECT_H
