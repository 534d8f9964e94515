// `VORT::QtHost::TimerService`: a `VTServices::TessarTimerService` on `QTimer`, part of the Qt
// host kit (library `vortqthost`, target `Vort::QtHost`).
//
// The service belongs to the thread that makes it, which must run a Qt event loop: its timers
// live there, and every time-out is signalled there, so `VORT::ThrottledCallback`s used on that
// thread hear their time-outs on it. Timers are started, stopped and asked about on that thread
// only; a call from any other thread is reported as a warning in the category "vort.qthost" and
// ignored (`isTimerActive` then answers false), since timer handles are not thread-safe.
//
// Ownership: a running timer holds a handle on its record until it stops or runs out, so the
// record outlives every other handle while a time-out is still to come. `terminateService` (also
// run by the destructor) stops every timer and lets go of those handles; later starts are
// reported and ignored. Destroy the service on its own thread, or after that thread has ended.
#ifndef VORT_QTHOST_TIMERSERVICE_H
#define VORT_QTHOST_TIMERSERVICE_H

#include <vort/messaging/TessarTimer.h>
#include <vort/qthost/qthost_export.h>
#include <vort/services/TessarTimerService.h>

#include <memory>

class QThread;

namespace VORT {
namespace QtHost {

class VORTQTHOST_EXPORT TimerService : public VTServices::TessarTimerService {
public:
    // Belongs to the calling thread from now on.
    TimerService();
    ~TimerService() override;
    TimerService(const TimerService &) = delete;
    TimerService &operator=(const TimerService &) = delete;

    void startSingleTimer(TessarTimer timer, int milliseconds) override;
    void startRepeatingTimer(TessarTimer timer, int milliseconds) override;
    void stopTimer(TessarTimer timer) override;
    bool isTimerActive(TessarTimer timer) override;
    void terminateService() override;

    // The thread on which the timers run and signal.
    QThread *thread() const;
    // Timers that are running now.
    int activeTimerCount() const;

protected:
    // Called on the service's thread when `timer` runs out; signals it. An override may look on
    // and must call this to let the timer's listeners hear of it.
    virtual void timedOut(TessarTimer timer);

private:
    struct Private;
    std::unique_ptr<Private> d;
};

}  // namespace QtHost
}  // namespace VORT

#endif  // VORT_QTHOST_TIMERSERVICE_H
