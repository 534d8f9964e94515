#include "TessarTimer_p.h"
#include <vort/messaging/TessarTimer.h>
#include <vort/services/TessarTimerService.h>

#include <atomic>

namespace VORT {
namespace {

// Handles belong to one thread, but two threads may each make timers of their own; the id
// counter is the one thing they share.
std::atomic<unsigned int> g_lastTimerID{0};

VTServices::TessarTimerService *service() {
    return VTServices::VTService<VTServices::TessarTimerService>::get();
}

}  // namespace

TessarTimer TessarTimer::create() {
    return service()->createTimer();
}

TessarTimer::TessarTimer() : m_record(new TessarTimerRecord(++g_lastTimerID)) {}

TessarTimer::TessarTimer(const TessarTimer &other) : m_record(other.m_record) {
    incr();
}

TessarTimer &TessarTimer::operator=(const TessarTimer &other) {
    if (this != &other) {
        decr();
        m_record = other.m_record;
        incr();
    }
    return *this;
}

TessarTimer::~TessarTimer() {
    decr();
}

void TessarTimer::startSingle(int milliseconds) {
    service()->startSingleTimer(*this, milliseconds);
}

void TessarTimer::startRepeating(int milliseconds) {
    service()->startRepeatingTimer(*this, milliseconds);
}

void TessarTimer::stop() {
    service()->stopTimer(*this);
}

bool TessarTimer::isActive() {
    return service()->isTimerActive(*this);
}

unsigned int TessarTimer::getID() const {
    return m_record->m_id;
}

void TessarTimer::incr() {
    ++m_record->m_handleCount;
}

void TessarTimer::decr() {
    if (--m_record->m_handleCount == 0) {
        delete m_record;
    }
    m_record = nullptr;
}

}  // namespace VORT
