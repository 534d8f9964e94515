// `VTServices::VTRCCreator`: makes retained canvases, a class of the tools above this library
// that is only named here.
//
// Thread safety and ownership are the host's; the plain class makes nothing.
#ifndef VORT_SERVICES_VTRCCREATOR_H
#define VORT_SERVICES_VTRCCREATOR_H

#include <vort/services/VTService.h>
#include <vort/vort_export.h>

#include <string>

class VTRetainedCanvas;

namespace VTServices {

class VORT_EXPORT VTRCCreator : public VTService<VTRCCreator> {
public:
    static std::string serviceName();  // "VTRCCreator"

    ~VTRCCreator() override;

    // The plain class returns null.
    virtual VTRetainedCanvas *createVTRC(const std::string &, const std::string &, bool);
};

extern template class VTService<VTRCCreator>;

}  // namespace VTServices

#endif  // VORT_SERVICES_VTRCCREATOR_H
