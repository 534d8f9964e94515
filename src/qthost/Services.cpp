#include "Report_p.h"
#include <vort/bones/Library.h>
#include <vort/qthost/ApplicationContext.h>
#include <vort/qthost/MessageThread.h>
#include <vort/qthost/Services.h>
#include <vort/qthost/TimerService.h>
#include <vort/qthost/Translation.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QThread>

namespace VORT {
namespace QtHost {
namespace {

const char *const kWhere = "VORT::QtHost::Services";

// Installs `service` unless the table holds an object under its key already; reports that case.
template <class S>
S *installIfFree(S *service, const char *name) {
    if (VTServices::VTService<S>::get() != nullptr) {
        reportMisuse(kWhere, QStringLiteral("a %1 service is installed already; it stays, and "
                                            "this Services object doesn't install its own")
                                 .arg(QLatin1String(name)));
        delete service;
        return nullptr;
    }
    VTServices::VTService<S>::install(service);
    return service;
}

// Takes out `service` if it is still the installed one.
template <class S>
void uninstall(S *service) {
    if (service != nullptr && VTServices::VTService<S>::get() == service) {
        VTServices::VTService<S>::install(nullptr);
    }
}

}  // namespace

struct Services::Private {
    QThread *owner = nullptr;
    TimerService *timers = nullptr;
    VTServices::ApplicationContext *context = nullptr;
    VTServices::Translation *translation = nullptr;
    std::unique_ptr<MessageThread> thread;
};

Services::Services(const std::string &threadName) : d(new Private) {
    d->owner = QThread::currentThread();
    if (QCoreApplication::instance() == nullptr) {
        reportMisuse(kWhere, QStringLiteral("made before the QCoreApplication; nothing is "
                                            "installed"));
        return;
    }
    initialize_vort_util();
    auto *const timers = new TimerService;
    if (installIfFree<VTServices::TessarTimerService>(timers, "TessarTimerService") != nullptr) {
        d->timers = timers;
    }
    d->context =
        installIfFree<VTServices::ApplicationContext>(new ApplicationContext, "ApplicationContext");
    d->translation = installIfFree<VTServices::Translation>(new Translation, "Translation");
    d->thread.reset(new MessageThread(threadName));
}

Services::~Services() {
    if (QThread::currentThread() != d->owner) {
        reportMisuse(kWhere,
                     QStringLiteral("destroyed on %1, not on %2 that made it")
                         .arg(describeThread(QThread::currentThread()), describeThread(d->owner)));
    }
    d->thread.reset();
    uninstall<VTServices::Translation>(d->translation);
    uninstall<VTServices::ApplicationContext>(d->context);
    uninstall<VTServices::TessarTimerService>(d->timers);
}

bool Services::installed(Service service) const {
    switch (service) {
        case Timers:
            return d->timers != nullptr;
        case Context:
            return d->context != nullptr;
        case Translations:
            return d->translation != nullptr;
    }
    return false;
}

TimerService *Services::timerService() const {
    return d->timers;
}

MessageThread *Services::messageThread() const {
    return d->thread.get();
}

}  // namespace QtHost
}  // namespace VORT
