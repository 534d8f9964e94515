#include <vort/services/ErrorHandling.h>

namespace VTServices {

template class VTService<ErrorHandling>;

std::string ErrorHandling::serviceName() {
    return "ErrorHandling";
}

ErrorHandling::~ErrorHandling() = default;

ErrorHandling::ErrorMode ErrorHandling::setErrorMode(ErrorMode) {
    return ErrorMode(0);
}

void ErrorHandling::printMachineConfiguration(int (*)(const char *)) {}

void ErrorHandling::printStackTrace(int (*)(const char *)) {}

}  // namespace VTServices
