// Intrusive reference counting: the count base `VORT::ReferencedTemplate<C>`, the handle
// `VORT::Holder<T>` and `VORT::SingletonFactoryBase`.
//
// A shared object carries its own count and is reached through `Holder`s. A fresh object has
// count 0; its first handle raises it to 1, and the handle that drops it back to 0 calls the
// object's virtual `destroy()`, which deletes it unless the class ends its life another way.
//
// Thread safety depends on the count:
// - `ReferencedTemplate<unsigned int>`: plain arithmetic. Handles of one object must not be
//   copied or dropped on two threads at once; nothing checks this.
// - `ReferencedTemplate<AtomicCounter>`: handles may be copied and dropped on any thread. Only
//   the count is atomic; the object's other state is not covered.
// `destroy()` runs on the thread that dropped the last handle.
//
// Copying a counted object follows rules of long standing, kept on purpose: a copy on the
// `unsigned int` base starts at count 0, a copy on the `AtomicCounter` base takes the source's
// count, and assignment on either base overwrites the target's count with the source's. A
// class that derives from these and allows copying writes its own copy operations where that
// matters.
#ifndef VORT_BONES_HOLDER_H
#define VORT_BONES_HOLDER_H

#include <vort/bones/AtomicCounter.h>
#include <vort/vort_export.h>

namespace VORT {

template <typename T>
class Holder;

template <typename C>
class ReferencedTemplate;

// The count for objects that stay on one thread at a time.
template <>
class VORT_EXPORT ReferencedTemplate<unsigned int> {
public:
    ReferencedTemplate() : m_count(0) {}
    // A copy is a new object, with no references.
    ReferencedTemplate(ReferencedTemplate const &) : m_count(0) {}
    // Takes the source's count: the caller's to avoid on an object that has handles.
    ReferencedTemplate &operator=(ReferencedTemplate const &other) {
        m_count = other.m_count;
        return *this;
    }

    // Both return the new count.
    int incrementReference() { return static_cast<int>(++m_count); }
    int decrementReference() { return static_cast<int>(--m_count); }

    // The stump of a development check that release libraries do not make: it raises a forced
    // assertion through the platform (".\bones\Holder", line 47) and returns true. Both
    // arguments are ignored. It exists so that development builds of clients link.
    static bool ensureSingleThread(ReferencedTemplate<unsigned int> *object, bool flag);

protected:
    virtual ~ReferencedTemplate();
    // Called by the handle that drops the last reference.
    virtual void destroy();

private:
    template <typename T>
    friend class Holder;

    unsigned int m_count;
};

// The count for objects whose handles travel between threads.
template <>
class VORT_EXPORT ReferencedTemplate<AtomicCounter> {
public:
    ReferencedTemplate() { m_count.init(0); }
    // Unlike the single-thread base, a copy takes the source's count (a plain read and write).
    ReferencedTemplate(ReferencedTemplate const &other) { m_count = other.m_count; }
    ReferencedTemplate &operator=(ReferencedTemplate const &other) {
        m_count = other.m_count;
        return *this;
    }

    // Atomic; both return the new count.
    int incrementReference() { return ++m_count; }
    int decrementReference() { return --m_count; }

protected:
    virtual ~ReferencedTemplate();
    virtual void destroy();

private:
    template <typename T>
    friend class Holder;

    AtomicCounter m_count;
};

// A handle on a counted object. `T` needs only `incrementReference`, `decrementReference` and
// a `destroy()` that the handle may call (the bases above grant it). A handle itself is not
// synchronised: one handle object belongs to one thread at a time.
template <typename T>
class Holder {
public:
    Holder() : m_pointer(nullptr) {}
    // Implicit, so that a fresh object can be handed over where a handle is expected.
    Holder(T *pointer) : m_pointer(pointer) {
        if (m_pointer != nullptr) {
            m_pointer->incrementReference();
        }
    }
    Holder(Holder const &other) : Holder(other.m_pointer) {}
    ~Holder() {
        if (m_pointer != nullptr && m_pointer->decrementReference() == 0) {
            m_pointer->destroy();
        }
    }

    Holder &operator=(Holder const &other) {
        if (this == &other) {
            return *this;
        }
        return assign(other.m_pointer);
    }
    Holder &operator=(T *pointer) { return assign(pointer); }

    T *get() const { return m_pointer; }
    T *operator->() const { return m_pointer; }
    T &operator*() const { return *m_pointer; }
    explicit operator bool() const { return m_pointer != nullptr; }
    bool operator!() const { return m_pointer == nullptr; }

    bool operator==(Holder const &other) const { return m_pointer == other.m_pointer; }
    bool operator!=(Holder const &other) const { return m_pointer != other.m_pointer; }
    bool operator==(const T *pointer) const { return m_pointer == pointer; }
    bool operator!=(const T *pointer) const { return m_pointer != pointer; }

private:
    // The new object is counted before the old one is released: the old object may hold the
    // last reference to the new one (or own the handle that `pointer` was read from).
    Holder &assign(T *pointer) {
        if (pointer == m_pointer) {
            return *this;
        }
        if (pointer != nullptr) {
            pointer->incrementReference();
        }
        if (m_pointer != nullptr && m_pointer->decrementReference() == 0) {
            m_pointer->destroy();
        }
        m_pointer = pointer;
        return *this;
    }

    T *m_pointer;
};

// The base of factories that hand out one shared instance; the concrete factories belong to
// client code. Packages keep handles of this kind.
class VORT_EXPORT SingletonFactoryBase : public ReferencedTemplate<unsigned int> {
public:
    SingletonFactoryBase();
    ~SingletonFactoryBase() override;
};

}  // namespace VORT

#endif  // VORT_BONES_HOLDER_H
