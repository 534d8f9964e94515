// `VTServices::ApplicationContext`: where the host lives (preferences directory, release, root,
// binaries) and which of its features are enabled.
//
// The preferences (`VTPreferences`) read `getPreferencesDirectory(true)` and `getRelease()`.
// Ownership: the returned strings stay owned by the host and must outlive the service's use.
// Failure: a null string means the host doesn't know; the plain class knows nothing and enables
// every feature.
#ifndef VORT_SERVICES_APPLICATIONCONTEXT_H
#define VORT_SERVICES_APPLICATIONCONTEXT_H

#include <vort/services/VTService.h>
#include <vort/vort_export.h>

#include <string>

namespace VTServices {

class VORT_EXPORT ApplicationContext : public VTService<ApplicationContext> {
public:
    static std::string serviceName();  // "ApplicationContext"

    ~ApplicationContext() override;

    // Registers a feature under its name, with a value and a function that is told of changes.
    virtual void registerFeature(const char *name, int value, void (*changed)(int));
    // True for every name in the plain class, known or not.
    virtual bool isFeatureEnabled(const char *name);
    // `create` asks the host to make the directory if it doesn't exist yet; the library passes
    // true, since it is about to write there.
    virtual const char *getPreferencesDirectory(bool create);
    virtual const char *getRelease();
    virtual const char *getRoot();
    virtual const char *getBinArchDir();
    virtual const char *getCharacterEncoding();
};

extern template class VTService<ApplicationContext>;

}  // namespace VTServices

#endif  // VORT_SERVICES_APPLICATIONCONTEXT_H
