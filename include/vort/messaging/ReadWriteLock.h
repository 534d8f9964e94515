// `VORT::ReadWriteLock`: many readers or one writer, writers preferred.
//
// Thread safety: made to be shared between threads. The lock is not recursive: a thread that
// holds it for reading and asks for writing, or locks it twice for writing, deadlocks. A reader
// that asks again while a writer waits deadlocks too, since waiting writers go first.
// Ownership: each lock owns its record; locks are not copyable.
#ifndef VORT_MESSAGING_READWRITELOCK_H
#define VORT_MESSAGING_READWRITELOCK_H

#include <vort/vort_export.h>

namespace VORT {

class VORT_EXPORT ReadWriteLock {
public:
    ReadWriteLock();
    ~ReadWriteLock();
    ReadWriteLock(const ReadWriteLock &) = delete;
    ReadWriteLock &operator=(const ReadWriteLock &) = delete;

    void readLock();
    void writeLock();
    // Ends the caller's read or write hold, whichever it has.
    void unlock();

    // Checks nothing in a release of the library.
    void assertIsWriteLockedOnThisThread();

private:
    struct Private;
    Private *d;
};

}  // namespace VORT

#endif  // VORT_MESSAGING_READWRITELOCK_H
