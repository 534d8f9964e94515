#include <vort/services/VTRCCreator.h>

namespace VTServices {

template class VTService<VTRCCreator>;

std::string VTRCCreator::serviceName() {
    return "VTRCCreator";
}

VTRCCreator::~VTRCCreator() = default;

VTRetainedCanvas *VTRCCreator::createVTRC(const std::string &, const std::string &, bool) {
    return nullptr;
}

}  // namespace VTServices
