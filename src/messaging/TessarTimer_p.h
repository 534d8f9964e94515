// Not public API: the shared record behind `VORT::TessarTimer`, for the timer itself, for
// `VORT::ThrottledCallback`, which listens to it, and for `VTServices::TessarTimerService`,
// which signals on it.
#ifndef VORT_MESSAGING_TESSARTIMER_P_H
#define VORT_MESSAGING_TESSARTIMER_P_H

#include <vort/messaging/Emitter.h>
#include <vort/messaging/TessarTimer.h>

namespace VORT {

class TessarTimerRecord : public VTMS::Emitter0<void> {
public:
    explicit TessarTimerRecord(unsigned int id)
        : VTMS::Emitter0<void>(VTMS::DirectOrQueue), m_id(id), m_handleCount(1) {}

    static TessarTimerRecord *of(TessarTimer const &timer) { return timer.m_record; }

    const unsigned int m_id;
    int m_handleCount;
};

}  // namespace VORT

#endif  // VORT_MESSAGING_TESSARTIMER_P_H
