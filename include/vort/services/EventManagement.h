// `VTServices::EventManagement`: the entry points to the host's event loop.
//
// `getUserEventHandle` hands out an integer handle for a user event (the first form for a
// handler that takes a 64-bit datum), `doEvent` raises the event of such a handle with such a
// datum; the rest of the contract is the host's. The plain class does nothing and answers 0.
#ifndef VORT_SERVICES_EVENTMANAGEMENT_H
#define VORT_SERVICES_EVENTMANAGEMENT_H

#include <vort/services/VTService.h>
#include <vort/vort_export.h>

#include <cstdint>
#include <string>

namespace VTServices {

class VORT_EXPORT EventManagement : public VTService<EventManagement> {
public:
    static std::string serviceName();  // "EventManagement"

    ~EventManagement() override;

    virtual int getUserEventHandle(void (*handler)(std::int64_t));
    virtual int getUserEventHandle();
    virtual void doEvent(int handle, std::int64_t datum);
    virtual void doEvent(int handle);
    virtual void doEvent();
    virtual void processPendingEvents();
    virtual void addWorkProc(void (*proc)(void *));
};

extern template class VTService<EventManagement>;

}  // namespace VTServices

#endif  // VORT_SERVICES_EVENTMANAGEMENT_H
