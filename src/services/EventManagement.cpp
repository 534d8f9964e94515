#include <vort/services/EventManagement.h>

namespace VTServices {

template class VTService<EventManagement>;

std::string EventManagement::serviceName() {
    return "EventManagement";
}

EventManagement::~EventManagement() = default;

int EventManagement::getUserEventHandle(void (*)(std::int64_t)) {
    return 0;
}

int EventManagement::getUserEventHandle() {
    return 0;
}

void EventManagement::doEvent(int, std::int64_t) {}

void EventManagement::doEvent(int) {}

void EventManagement::doEvent() {}

void EventManagement::processPendingEvents() {}

void EventManagement::addWorkProc(void (*)(void *)) {}

}  // namespace VTServices
