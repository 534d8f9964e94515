// `VORT::TessarTimer`: a handle on a timer that the host drives.
//
// The library has no timer of its own: every operation goes to the installed
// `VTServices::TessarTimerService`, which calls back (through its protected `signal`) when the
// timer runs out; the timer then emits on its record, an `Emitter0<void>` with the default mode
// `DirectOrQueue`, to which `VORT::ThrottledCallback` and other library code connect.
//
// Ownership: handles share one record, counted; the last handle frees it, and with it the
// emitter, which cuts its connections. Each timer gets a fresh id, the first timer 1, so that a
// service can map ids to its own native timers.
//
// Thread safety: none for a record. The handle count is a plain integer, so all handles of one
// timer live on one thread, normally the host's event thread, which the service signals from.
//
// Failure: nothing is reported. A `TessarTimerService` must be installed before the first
// `create()`; calling it earlier goes through a null service, a programming error.
#ifndef VORT_MESSAGING_TESSARTIMER_H
#define VORT_MESSAGING_TESSARTIMER_H

#include <vort/vort_export.h>

namespace VTServices {
class TessarTimerService;
}

namespace VORT {

class TessarTimerRecord;
class ThrottledCallback;

class VORT_EXPORT TessarTimer {
public:
    // What `createTimer()` of the installed service returns.
    static TessarTimer create();

    // Both share the other's record.
    TessarTimer(const TessarTimer &other);
    TessarTimer &operator=(const TessarTimer &other);
    ~TessarTimer();

    // Forwarded to the installed service with a copy of this handle.
    void startSingle(int milliseconds);
    void startRepeating(int milliseconds);
    void stop();
    bool isActive();

private:
    friend class TessarTimerRecord;
    friend class ThrottledCallback;
    friend class VTServices::TessarTimerService;

    // A new record with a fresh id and one handle.
    TessarTimer();

    unsigned int getID() const;
    void incr();
    // Frees the record with its last handle.
    void decr();

    TessarTimerRecord *m_record;
};

}  // namespace VORT

#endif  // VORT_MESSAGING_TESSARTIMER_H
