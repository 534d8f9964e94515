#include <vort/messaging/ReadWriteLock.h>

#include <pthread.h>

namespace VORT {

// glibc's reader-writer lock, asked to prefer writers: a steady stream of readers (senders
// taking a snapshot of their connections) must not starve a thread that connects or
// disconnects.
struct ReadWriteLock::Private {
    Private() {
        pthread_rwlockattr_t attributes;
        pthread_rwlockattr_init(&attributes);
        pthread_rwlockattr_setkind_np(&attributes, PTHREAD_RWLOCK_PREFER_WRITER_NONRECURSIVE_NP);
        pthread_rwlock_init(&lock, &attributes);
        pthread_rwlockattr_destroy(&attributes);
    }
    ~Private() { pthread_rwlock_destroy(&lock); }

    pthread_rwlock_t lock;
};

ReadWriteLock::ReadWriteLock() : d(new Private) {}

ReadWriteLock::~ReadWriteLock() {
    delete d;
}

void ReadWriteLock::readLock() {
    pthread_rwlock_rdlock(&d->lock);
}

void ReadWriteLock::writeLock() {
    pthread_rwlock_wrlock(&d->lock);
}

void ReadWriteLock::unlock() {
    pthread_rwlock_unlock(&d->lock);
}

void ReadWriteLock::assertIsWriteLockedOnThisThread() {}

}  // namespace VORT
