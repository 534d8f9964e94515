// `VTServices::TessarCaller`: hands one command text to the host's interpreter. The plain class
// drops it.
#ifndef VORT_SERVICES_TESSARCALLER_H
#define VORT_SERVICES_TESSARCALLER_H

#include <vort/services/VTService.h>
#include <vort/vort_export.h>

#include <string>

namespace VTServices {

class VORT_EXPORT TessarCaller : public VTService<TessarCaller> {
public:
    static std::string serviceName();  // "TessarCaller"

    ~TessarCaller() override;

    virtual void tessarCallFcn(const std::string &command);
};

extern template class VTService<TessarCaller>;

}  // namespace VTServices

#endif  // VORT_SERVICES_TESSARCALLER_H
