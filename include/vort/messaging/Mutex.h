// `VORT::Mutex` and `VORT::MutexLocker`: the library's mutual-exclusion lock, with no Qt or
// standard-library type in the header.
//
// Thread safety: made to be shared between threads. A mutex must not be destroyed while locked.
// Ownership: each `Mutex` owns its lock record; mutexes are not copyable.
#ifndef VORT_MESSAGING_MUTEX_H
#define VORT_MESSAGING_MUTEX_H

#include <vort/vort_export.h>

namespace VORT {

class VORT_EXPORT Mutex {
public:
    // The values run against Qt's own enumeration: 0 is recursive, 1 is not.
    enum RecursiveMode { Recursive = 0, NonRecursive = 1 };

    // Allocates nothing: the lock's record is made at the first `lock`.
    explicit Mutex(RecursiveMode mode = NonRecursive)
        : d(mode == Recursive ? reinterpret_cast<Private *>(kUnbuiltRecursive) : nullptr) {}
    ~Mutex();
    Mutex(const Mutex &) = delete;
    Mutex &operator=(const Mutex &) = delete;

    // A thread that locks a non-recursive mutex twice deadlocks.
    void lock();
    void unlock();

    // Checks nothing in a release of the library.
    void assertIsLockedOnThisThread();

private:
    // Until its first lock a mutex has no record: `d` holds only the mode, null for a
    // non-recursive mutex and this tag for a recursive one.
    static constexpr unsigned long kUnbuiltRecursive = 1;

    struct Private;
    Private *d;
};

// Locks a mutex for the life of a scope.
class VORT_EXPORT MutexLocker {
public:
    explicit MutexLocker(Mutex &mutex) : m_mutex(mutex) { m_mutex.lock(); }
    ~MutexLocker() { m_mutex.unlock(); }
    MutexLocker(const MutexLocker &) = delete;
    MutexLocker &operator=(const MutexLocker &) = delete;

private:
    Mutex &m_mutex;
};

}  // namespace VORT

#endif  // VORT_MESSAGING_MUTEX_H
