#include <vort/services/EventLoopTickling.h>

namespace VTServices {

template class VTService<EventLoopTickling>;

std::string EventLoopTickling::serviceName() {
    return "EventLoopTickling";
}

EventLoopTickling::~EventLoopTickling() = default;

void EventLoopTickling::tickle() {}

}  // namespace VTServices
