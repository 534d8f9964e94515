// `VTServices::EventLoopTickling`: nudges the host's event loop awake. The plain class does
// nothing.
#ifndef VORT_SERVICES_EVENTLOOPTICKLING_H
#define VORT_SERVICES_EVENTLOOPTICKLING_H

#include <vort/services/VTService.h>
#include <vort/vort_export.h>

#include <string>

namespace VTServices {

class VORT_EXPORT EventLoopTickling : public VTService<EventLoopTickling> {
public:
    static std::string serviceName();  // "EventLoopTickling"

    ~EventLoopTickling() override;

    virtual void tickle();
};

extern template class VTService<EventLoopTickling>;

}  // namespace VTServices

#endif  // VORT_SERVICES_EVENTLOOPTICKLING_H
