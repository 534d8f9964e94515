#include <vort/services/ApplicationContext.h>

namespace VTServices {

template class VTService<ApplicationContext>;

std::string ApplicationContext::serviceName() {
    return "ApplicationContext";
}

ApplicationContext::~ApplicationContext() = default;

void ApplicationContext::registerFeature(const char *, int, void (*)(int)) {}

bool ApplicationContext::isFeatureEnabled(const char *) {
    return true;
}

const char *ApplicationContext::getPreferencesDirectory(bool) {
    return nullptr;
}

const char *ApplicationContext::getRelease() {
    return nullptr;
}

const char *ApplicationContext::getRoot() {
    return nullptr;
}

const char *ApplicationContext::getBinArchDir() {
    return nullptr;
}

const char *ApplicationContext::getCharacterEncoding() {
    return nullptr;
}

}  // namespace VTServices
