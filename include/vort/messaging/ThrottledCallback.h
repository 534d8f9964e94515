// `VORT::ThrottledCallback`: runs a piece of work at once on the first trigger, then at most
// once per interval, however many triggers come in.
//
// A derived class puts the work in `doCall`. The first `trigger` calls it at once and starts a
// single timer of the interval; triggers while the interval runs, or while calls are blocked,
// collapse into one pending call, made at the first moment when neither the interval nor a block
// stands in the way. Nothing pending is ever dropped.
//
// The timer comes from the installed `VTServices::TessarTimerService`, which must be installed
// before the first callback is made (a programming error otherwise). Its time-outs arrive on the
// thread that the service signals from and call the callback directly.
//
// Thread safety: none. A callback, its timer and the service's signals belong to one thread,
// normally the host's event thread.
//
// Copies: a copy shares the timer but is not connected to it, so it never hears a time-out.
// Assignment makes both objects share one connection set, as `VTMS::Listener` assignment does;
// callbacks are not meant to be copied or assigned.
#ifndef VORT_MESSAGING_THROTTLEDCALLBACK_H
#define VORT_MESSAGING_THROTTLEDCALLBACK_H

#include <vort/messaging/Connection.h>
#include <vort/messaging/TessarTimer.h>
#include <vort/vort_export.h>

namespace VORT {

class VORT_EXPORT ThrottledCallback : public VTMS::Listener {
public:
    // `interval` in milliseconds.
    explicit ThrottledCallback(int interval);
    ThrottledCallback(const ThrottledCallback &other);
    ThrottledCallback &operator=(const ThrottledCallback &other);
    ~ThrottledCallback() override;

    // Takes effect at the next start of the interval; a running one isn't altered.
    void setInterval(int interval) { m_interval = interval; }
    int getInterval() const { return m_interval; }

    bool isBlocked() const { return m_blocked; }
    // Holds calls back; triggers meanwhile become one pending call.
    void blockCall() { m_blocked = true; }
    // Ends the block and makes a pending call at once, unless the interval still runs.
    void unblockCall();

    // Calls `doCall` now if neither the interval nor a block stands in the way, else marks a
    // call as pending.
    void trigger();

protected:
    // The throttled work.
    virtual void doCall() = 0;

private:
    // Connected to the timer's record; runs on each time-out.
    void doTimedOut();
    // Starts the interval, then does the work, so that the interval counts from the call's
    // start.
    void fire();

    bool m_timerRunning;
    int m_interval;
    bool m_blocked;
    bool m_callPending;
    TessarTimer m_timer;
};

}  // namespace VORT

#endif  // VORT_MESSAGING_THROTTLEDCALLBACK_H
