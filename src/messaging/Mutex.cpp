#include <vort/messaging/Mutex.h>

#include <cstdint>
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

namespace {

// Many mutexes are built and never locked (every message payload has one); they cost no
// allocation.
template <typename Record>
bool isBuilt(Record *record) {
    return reinterpret_cast<std::uintptr_t>(record) > 1;
}

}  // namespace

Mutex::~Mutex() {
    if (isBuilt(d)) {
        delete d;
    }
}

void Mutex::lock() {
    Private *record = __atomic_load_n(&d, __ATOMIC_ACQUIRE);
    if (!isBuilt(record)) {
        // Two first lockers may race: one record wins, the other is dropped.
        Private *const built = new Private(record != nullptr);
        if (__atomic_compare_exchange_n(&d, &record, built, false, __ATOMIC_ACQ_REL,
                                        __ATOMIC_ACQUIRE)) {
            record = built;
        } else {
            delete built;
        }
    }
    if (record->recursive) {
        record->nested.lock();
    } else {
        record->plain.lock();
    }
}

void Mutex::unlock() {
    Private *const record = __atomic_load_n(&d, __ATOMIC_ACQUIRE);
    if (record->recursive) {
        record->nested.unlock();
    } else {
        record->plain.unlock();
    }
}

void Mutex::assertIsLockedOnThisThread() {}

}  // namespace VORT
