// `VTServices::TWrapperClassRegistry`: finds the host wrapper class that stands for a
// `VORT::TWrappedObject`. The plain class knows none.
#ifndef VORT_SERVICES_TWRAPPERCLASSREGISTRY_H
#define VORT_SERVICES_TWRAPPERCLASSREGISTRY_H

#include <vort/services/VTService.h>
#include <vort/vort_export.h>

#include <string>

namespace VORT {
class TWrapperClass;
class TWrappedObject;
}  // namespace VORT

namespace VTServices {

class VORT_EXPORT TWrapperClassRegistry : public VTService<TWrapperClassRegistry> {
public:
    static std::string serviceName();  // "TWrapperClassRegistry"

    ~TWrapperClassRegistry() override;

    // Null in the plain class.
    virtual VORT::TWrapperClass *getTWrapperClassFor(VORT::TWrappedObject *object);
};

extern template class VTService<TWrapperClassRegistry>;

}  // namespace VTServices

#endif  // VORT_SERVICES_TWRAPPERCLASSREGISTRY_H
