#include <vort/services/VTService.h>

namespace VTServices {

// A namespace-scope object of this library, so it is built when the library is loaded, before
// any host code can install into it.
std::map<std::string, VTServiceBase *> VTServiceBase::g_serviceMap;

VTServiceBase::~VTServiceBase() = default;

}  // namespace VTServices
