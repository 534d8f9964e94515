#include "../messaging/TessarTimer_p.h"
#include <vort/services/TessarTimerService.h>

namespace VTServices {

template class VTService<TessarTimerService>;

std::string TessarTimerService::serviceName() {
    return "TessarTimerService";
}

TessarTimerService::~TessarTimerService() = default;

VORT::TessarTimer TessarTimerService::createTimer() {
    return VORT::TessarTimer();
}

void TessarTimerService::startSingleTimer(VORT::TessarTimer, int) {}

void TessarTimerService::startRepeatingTimer(VORT::TessarTimer, int) {}

void TessarTimerService::stopTimer(VORT::TessarTimer) {}

bool TessarTimerService::isTimerActive(VORT::TessarTimer) {
    return false;
}

void TessarTimerService::terminateService() {}

unsigned int TessarTimerService::getTimerID(VORT::TessarTimer timer) {
    return timer.getID();
}

void TessarTimerService::signal(VORT::TessarTimer timer) {
    VORT::TessarTimerRecord::of(timer)->send();
}

}  // namespace VTServices
