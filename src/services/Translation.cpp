#include <vort/services/Translation.h>

namespace VTServices {

template class VTService<Translation>;

std::string Translation::serviceName() {
    return "Translation";
}

Translation::~Translation() = default;

const char *Translation::translate(const char *text) {
    return text;
}

}  // namespace VTServices
