// `VORT::QtHost::ApplicationContext`: a `VTServices::ApplicationContext` that takes its answers
// from the running `QCoreApplication`. Part of the Qt host kit (target `Vort::QtHost`).
//
// - preferences directory: `QStandardPaths::AppConfigLocation` (or the directory given to the
//   constructor), made on request when the library asks with `create` true;
// - release: `QCoreApplication::applicationVersion()`;
// - bin/arch directory: `QCoreApplication::applicationDirPath()`, root: its parent;
// - character encoding: "UTF-8".
// Features registered with `registerFeature` are enabled while their value is not 0; names never
// registered count as enabled, as in the plain class.
//
// The texts are read once, when the object is made, so make it after the application has its
// name, organisation and version. They live as long as the object, and may be read from any
// thread; the feature table has a lock of its own.
//
// Failure: made without a `QCoreApplication`, or unable to make the preferences directory, it
// reports a warning in the category "vort.qthost"; in the second case the directory is answered
// as null, which the preferences treat as "no preference file".
#ifndef VORT_QTHOST_APPLICATIONCONTEXT_H
#define VORT_QTHOST_APPLICATIONCONTEXT_H

#include <vort/qthost/qthost_export.h>
#include <vort/services/ApplicationContext.h>

#include <QtCore/QString>

#include <memory>

namespace VORT {
namespace QtHost {

class VORTQTHOST_EXPORT ApplicationContext : public VTServices::ApplicationContext {
public:
    ApplicationContext();
    // With a preferences directory of the host's choosing.
    explicit ApplicationContext(const QString &preferencesDirectory);
    ~ApplicationContext() override;
    ApplicationContext(const ApplicationContext &) = delete;
    ApplicationContext &operator=(const ApplicationContext &) = delete;

    void registerFeature(const char *name, int value, void (*changed)(int)) override;
    bool isFeatureEnabled(const char *name) override;
    const char *getPreferencesDirectory(bool create) override;
    const char *getRelease() override;
    const char *getRoot() override;
    const char *getBinArchDir() override;
    const char *getCharacterEncoding() override;

    // Gives a registered feature a new value and tells its function; false for a name never
    // registered.
    bool setFeatureValue(const char *name, int value);

private:
    struct Private;
    std::unique_ptr<Private> d;
};

}  // namespace QtHost
}  // namespace VORT

#endif  // VORT_QTHOST_APPLICATIONCONTEXT_H
