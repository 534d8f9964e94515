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

// Holds a lock for reading for the life of a scope.
class ReadLocker {
public:
    explicit ReadLocker(ReadWriteLock &lock) : m_lock(lock) { m_lock.readLock(); }
    ~ReadLocker() { m_lock.unlock(); }
    ReadLocker(const ReadLocker &) = delete;
    ReadLocker &operator=(const ReadLocker &) = delete;

private:
    ReadWriteLock &m_lock;
};

// Holds a lock for writing for the life of a scope.
class WriteLocker {
public:
    explicit WriteLocker(ReadWriteLock &lock) : m_lock(lock) { m_lock.writeLock(); }
    ~WriteLocker() { m_lock.unlock(); }
    WriteLocker(const WriteLocker &) = delete;
    WriteLocker &operator=(const WriteLocker &) = delete;

private:
    ReadWriteLock &m_lock;
};

}  // namespace VORT

#endif  // VORT_MESSAGING_READWRITELOCK_H
