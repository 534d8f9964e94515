// `VTServices::TessarTimerService`: the host's timers, behind `VORT::TessarTimer`.
//
// A concrete service keeps its own native timers, keyed by `getTimerID`, and honours this
// contract, on which `VORT::ThrottledCallback` relies:
// - `startSingleTimer` arranges one call of `signal` after the given time, on the thread on
//   which the timers are used;
// - `startRepeatingTimer` arranges such calls at that period until `stopTimer`;
// - `isTimerActive` tells whether a call is still to come;
// - `terminateService` ends the service.
// The plain class hands out timers that never run out.
//
// Ownership: timers are passed by value, so each call holds its own handle and the timer's
// record lives through the call. Thread safety: the service is used on the host's event thread.
#ifndef VORT_SERVICES_TESSARTIMERSERVICE_H
#define VORT_SERVICES_TESSARTIMERSERVICE_H

#include <vort/messaging/TessarTimer.h>
#include <vort/services/VTService.h>
#include <vort/vort_export.h>

#include <string>

namespace VTServices {

class VORT_EXPORT TessarTimerService : public VTService<TessarTimerService> {
public:
    static std::string serviceName();  // "TessarTimerService"

    ~TessarTimerService() override;

    // A new timer with a fresh id.
    virtual VORT::TessarTimer createTimer();
    virtual void startSingleTimer(VORT::TessarTimer timer, int milliseconds);
    virtual void startRepeatingTimer(VORT::TessarTimer timer, int milliseconds);
    virtual void stopTimer(VORT::TessarTimer timer);
    // False in the plain class.
    virtual bool isTimerActive(VORT::TessarTimer timer);
    virtual void terminateService();

protected:
    // The timer's id, by which a service keeps its table of native timers.
    static unsigned int getTimerID(VORT::TessarTimer timer);
    // Emits the timer's time-out in the timer's default mode, `DirectOrQueue`: listeners
    // without a thread are called before this returns. A timer without listeners returns at
    // once.
    static void signal(VORT::TessarTimer timer);
};

extern template class VTService<TessarTimerService>;

}  // namespace VTServices

#endif  // VORT_SERVICES_TESSARTIMERSERVICE_H
