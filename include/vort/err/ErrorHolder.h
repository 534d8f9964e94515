// `VORT::ErrorHolder`: the last argument of every operation that reports failure without
// throwing.
//
// Such an operation deletes whatever the holder held, stores a new description and returns an
// empty result; the caller asks `hasError()`. A later error replaces an earlier one. A holder
// never throws, neither when set nor when destroyed (short of running out of memory). Copies go
// through the description's `clone()`. A holder belongs to one thread at a time.
#ifndef VORT_ERR_ERRORHOLDER_H
#define VORT_ERR_ERRORHOLDER_H

#include <vort/err/ErrorDescription.h>

#include <string>

namespace VORT {

class VORT_EXPORT ErrorHolder {
public:
    ErrorHolder() = default;
    ErrorHolder(ErrorHolder const &other);
    // Deletes the own description first, then clones the other's; nothing on self-assignment.
    ErrorHolder &operator=(ErrorHolder const &other);
    ~ErrorHolder();

    // Deletes the own description, then clones the other's. No self-check: `h.copy(h)` loses
    // the error and reads freed memory, so callers must not do it.
    void copy(ErrorHolder const &other);
    void clear();

    bool hasError() const { return m_description != nullptr; }
    // Still owned by the holder; null if there is no error.
    ErrorDescription *description() const { return m_description; }
    // Empty strings when there is no error.
    std::string what() const;
    std::string id() const;

    // Compares the held pointers: two distinct holders are equal only when both are empty.
    bool operator==(ErrorHolder const &other) const { return m_description == other.m_description; }
    bool operator!=(ErrorHolder const &other) const { return !(*this == other); }

    // Deletes the current description, then stores a copy of `description` with the exact
    // static type passed (copy construction, not `clone()`).
    template <typename T>
    void setError(T const &description) {
        delete m_description;
        m_description = nullptr;
        m_description = new T(description);
    }

private:
    ErrorDescription *m_description = nullptr;
};

}  // namespace VORT

#endif  // VORT_ERR_ERRORHOLDER_H
