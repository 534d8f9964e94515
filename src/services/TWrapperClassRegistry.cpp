#include <vort/services/TWrapperClassRegistry.h>

namespace VTServices {

template class VTService<TWrapperClassRegistry>;

std::string TWrapperClassRegistry::serviceName() {
    return "TWrapperClassRegistry";
}

TWrapperClassRegistry::~TWrapperClassRegistry() = default;

VORT::TWrapperClass *TWrapperClassRegistry::getTWrapperClassFor(VORT::TWrappedObject *) {
    return nullptr;
}

}  // namespace VTServices
