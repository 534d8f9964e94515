#include "TessarTimer_p.h"
#include <vort/messaging/ThrottledCallback.h>

namespace VORT {

ThrottledCallback::ThrottledCallback(int interval)
    : m_timerRunning(false),
      m_interval(interval),
      m_blocked(false),
      m_callPending(false),
      m_timer(TessarTimer::create()) {
    // No thread: time-outs call this object directly on whichever thread the service signals
    // from.
    TessarTimerRecord::of(m_timer)->connect(this, &ThrottledCallback::doTimedOut);
}

ThrottledCallback::ThrottledCallback(const ThrottledCallback &other)
    : VTMS::Listener(other),
      m_timerRunning(other.m_timerRunning),
      m_interval(other.m_interval),
      m_blocked(other.m_blocked),
      m_callPending(other.m_callPending),
      m_timer(other.m_timer) {}

ThrottledCallback &ThrottledCallback::operator=(const ThrottledCallback &other) {
    VTMS::Listener::operator=(other);
    m_timerRunning = other.m_timerRunning;
    m_interval = other.m_interval;
    m_blocked = other.m_blocked;
    m_callPending = other.m_callPending;
    m_timer = other.m_timer;
    return *this;
}

ThrottledCallback::~ThrottledCallback() {
    // While the object is whole: a time-out must not reach a half-destroyed callback.
    disconnect();
}

void ThrottledCallback::unblockCall() {
    m_blocked = false;
    if (!m_callPending || m_timerRunning) {
        return;
    }
    fire();
}

void ThrottledCallback::trigger() {
    if (!m_timerRunning && !m_blocked) {
        fire();
    } else {
        m_callPending = true;
    }
}

void ThrottledCallback::doTimedOut() {
    m_timerRunning = false;
    if (!m_callPending || m_blocked) {
        return;
    }
    fire();
}

void ThrottledCallback::fire() {
    m_timerRunning = true;
    m_timer.startSingle(m_interval);
    m_callPending = false;
    doCall();
}

}  // namespace VORT
