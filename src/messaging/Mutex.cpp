#include <vort/messaging/Mutex.h>

#include <mutex>

namespace VORT {

// Both kinds live in the record so that lock and unlock cost one predictable branch, not a
// virtual call.
struct Mutex::Private {
    explicit Private(bool isRecursive) : recursive(isRecursive) {}
    const bool recursive;
    std::mutex plain;
    std::recursive_mutex nested;
};

Mutex::Mutex(RecursiveMode mode) : d(new Private(mode == Recursive)) {}

Mutex::~Mutex() {
    delete d;
}

void Mutex::lock() {
    if (d->recursive) {
        d->nested.lock();
    } else {
        d->plain.lock();
    }
}

void Mutex::unlock() {
    if (d->recursive) {
        d->nested.unlock();
    } else {
        d->plain.unlock();
    }
}

void Mutex::assertIsLockedOnThisThread() {}

}  // namespace VORT
