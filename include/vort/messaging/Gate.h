// `VORT::Gate`: a wait point with a count of passes.
//
// A gate is closed (count 0), holds a number of passes (count > 0: that many more waiters go
// through without blocking, each taking one), or is open for good (count < 0). A waiter that
// finds the gate closed blocks once; whatever wakes it (an `open`, a `wakeOne`, a `wakeAll`),
// it then passes without testing the count again, taking a pass if there is one.
//
// Thread safety: made to be shared between threads. A gate may be destroyed only when no thread
// is inside `wait`. Ownership: each gate owns its record; gates are not copyable.
#ifndef VORT_MESSAGING_GATE_H
#define VORT_MESSAGING_GATE_H

#include <vort/vort_export.h>

namespace VORT {

class VORT_EXPORT Gate {
public:
    explicit Gate(int initial = 0);
    ~Gate();
    Gate(const Gate &) = delete;
    Gate &operator=(const Gate &) = delete;

    void wait();
    // Like `wait()`, but blocks at most `milliseconds`. True means that the time ran out, not
    // that the gate opened: a pass without blocking returns false.
    bool wait(unsigned long milliseconds);

    // Opens for good and wakes every waiter.
    void open();
    // Hands out `count` passes: one to each of up to `count` present waiters, which it wakes,
    // and what is left to later arrivals. The old count is replaced, not added to.
    void open(int count);
    // Closes; present waiters stay waiting.
    void close();

    // Release blocked waiters without touching the count.
    void wakeOne();
    void wakeAll();

    // How many threads are inside `wait` now. While the gate is closed, those are the threads
    // that block in it; a snapshot, for diagnostics and tests.
    int waiting() const;

private:
    struct Private;
    Private *d;
};

}  // namespace VORT

#endif  // VORT_MESSAGING_GATE_H
