// `VORT::QtHost::Services`: working services for a Qt application in one object. Part of the Qt
// host kit (target `Vort::QtHost`).
//
//     QCoreApplication app(argc, argv);
//     VORT::QtHost::Services services;   // timers, paths, translation, "main" message thread
//     ...
//     return app.exec();
//
// Made on the thread that runs the application's event loop, after the `QCoreApplication`, it
// starts the library (`initialize_vort_util`), installs a `TimerService` that belongs to this
// thread, an `ApplicationContext` and a `Translation`, and registers this thread as the message
// thread of the given name. Its destructor takes out again what it installed (and is still
// installed), on the same thread, before the application ends.
//
// Failure: a service that is already installed is left in place and reported as a warning in the
// category "vort.qthost" (so a second `Services` installs nothing twice); `installed` tells what
// this object installed. Made without a `QCoreApplication`, it reports and installs nothing.
//
// Thread safety: the service table has no lock, so make and destroy this object while no other
// thread uses services.
#ifndef VORT_QTHOST_SERVICES_H
#define VORT_QTHOST_SERVICES_H

#include <vort/qthost/qthost_export.h>

#include <memory>
#include <string>

namespace VORT {
namespace QtHost {

class MessageThread;
class TimerService;

class VORTQTHOST_EXPORT Services {
public:
    enum Service { Timers = 1, Context = 2, Translations = 4 };

    explicit Services(const std::string &threadName = "main");
    ~Services();
    Services(const Services &) = delete;
    Services &operator=(const Services &) = delete;

    // Whether this object installed `service`.
    bool installed(Service service) const;
    // The timer service this object installed, or null.
    TimerService *timerService() const;
    // The registration of the thread that made this object; null if nothing was installed.
    MessageThread *messageThread() const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};

}  // namespace QtHost
}  // namespace VORT

#endif  // VORT_QTHOST_SERVICES_H
