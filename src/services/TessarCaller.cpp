#include <vort/services/TessarCaller.h>

namespace VTServices {

template class VTService<TessarCaller>;

std::string TessarCaller::serviceName() {
    return "TessarCaller";
}

TessarCaller::~TessarCaller() = default;

void TessarCaller::tessarCallFcn(const std::string &) {}

}  // namespace VTServices
