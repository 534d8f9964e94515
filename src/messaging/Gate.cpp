#include <vort/messaging/Gate.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>

namespace VORT {

// `wakeups` counts wake-ups handed to threads blocked on the condition and not yet taken, so
// that a spurious return of the condition variable never lets a waiter through: a waiter
// blocks exactly once, and leaves only with a wake-up of its own or at its time limit.
struct Gate::Private {
    explicit Private(int initial) : openCount(initial) {}

    std::mutex lock;
    std::condition_variable condition;
    // Read without the lock by `open(count)`, hence atomic; written under the lock.
    std::atomic<int> waiters{0};
    int openCount;
    int blocked = 0;
    int wakeups = 0;

    // Blocks once; returns false if `limit` ran out first.
    template <typename Wait>
    bool block(std::unique_lock<std::mutex> &held, Wait &&waitFor) {
        ++blocked;
        const bool woken = waitFor(held, [this] { return wakeups > 0; });
        if (woken) {
            --wakeups;
        }
        --blocked;
        return woken;
    }

    void pass() {
        if (openCount > 0) {
            --openCount;
        }
    }

    // A wake-up with nobody blocked is lost, as with any condition variable.
    void wake(bool all) {
        {
            std::lock_guard<std::mutex> guard(lock);
            wakeups = all ? blocked : std::min(blocked, wakeups + 1);
        }
        if (all) {
            condition.notify_all();
        } else {
            condition.notify_one();
        }
    }
};

Gate::Gate(int initial) : d(new Private(initial)) {}

Gate::~Gate() {
    delete d;
}

void Gate::wait() {
    std::unique_lock<std::mutex> held(d->lock);
    d->waiters.fetch_add(1);
    if (d->openCount == 0) {
        d->block(held, [this](std::unique_lock<std::mutex> &h, auto ready) {
            d->condition.wait(h, ready);
            return true;
        });
    }
    d->pass();
    d->waiters.fetch_sub(1);
}

bool Gate::wait(unsigned long milliseconds) {
    std::unique_lock<std::mutex> held(d->lock);
    d->waiters.fetch_add(1);
    bool timedOut = false;
    if (d->openCount == 0) {
        const auto limit = std::chrono::milliseconds(milliseconds);
        timedOut = !d->block(held, [this, limit](std::unique_lock<std::mutex> &h, auto ready) {
            return d->condition.wait_for(h, limit, ready);
        });
    }
    d->pass();
    d->waiters.fetch_sub(1);
    return timedOut;
}

void Gate::open() {
    {
        std::lock_guard<std::mutex> guard(d->lock);
        d->openCount = -1;
    }
    wakeAll();
}

void Gate::open(int count) {
    const int n = std::min(count, d->waiters.load());
    {
        std::lock_guard<std::mutex> guard(d->lock);
        d->openCount = count - n;
    }
    for (int i = 0; i < n; ++i) {
        wakeOne();
    }
}

void Gate::close() {
    std::lock_guard<std::mutex> guard(d->lock);
    d->openCount = 0;
}

int Gate::waiting() const {
    std::lock_guard<std::mutex> guard(d->lock);
    return d->waiters.load();
}

void Gate::wakeOne() {
    d->wake(false);
}

void Gate::wakeAll() {
    d->wake(true);
}

}  // namespace VORT
