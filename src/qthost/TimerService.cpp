#include "Report_p.h"
#include <vort/qthost/TimerService.h>

#include <QtCore/QObject>
#include <QtCore/QThread>
#include <QtCore/QTimer>

#include <map>
#include <optional>
#include <utility>

namespace VORT {
namespace QtHost {

namespace {
const char *const kWhere = "VORT::QtHost::TimerService";
}

struct TimerService::Private {
    struct Entry {
        QTimer *timer = nullptr;
        // Held while a time-out is still to come, so the timer's record outlives its other
        // handles until then.
        std::optional<TessarTimer> running;
    };

    explicit Private(TimerService *service) : q(service), context(new QObject) {}

    // True on the service's own thread; otherwise reports and the caller ignores the call.
    bool onOwnThread(const char *operation, unsigned int id) const {
        QThread *const current = QThread::currentThread();
        if (current == context->thread()) {
            return true;
        }
        reportMisuse(kWhere, QStringLiteral("%1 of timer %2 called on %3, but the timers belong "
                                            "to %4; the call is ignored")
                                 .arg(QLatin1String(operation))
                                 .arg(id)
                                 .arg(describeThread(current), describeThread(context->thread())));
        return false;
    }

    void start(const TessarTimer &timer, unsigned int id, int milliseconds, bool repeating,
               const char *operation) {
        if (!onOwnThread(operation, id)) {
            return;
        }
        if (terminated) {
            reportMisuse(kWhere, QStringLiteral("%1 of timer %2 after terminateService; the call "
                                                "is ignored")
                                     .arg(QLatin1String(operation))
                                     .arg(id));
            return;
        }
        if (milliseconds < 0) {
            reportMisuse(kWhere, QStringLiteral("%1 of timer %2 with %3 ms; started with 0 ms")
                                     .arg(QLatin1String(operation))
                                     .arg(id)
                                     .arg(milliseconds));
            milliseconds = 0;
        }
        Entry &entry = timers[id];
        if (entry.timer == nullptr) {
            entry.timer = new QTimer(context.get());
            entry.timer->setTimerType(Qt::PreciseTimer);
            QObject::connect(entry.timer, &QTimer::timeout, context.get(),
                             [this, id] { timedOut(id); });
        }
        entry.timer->setSingleShot(!repeating);
        entry.timer->start(milliseconds);
        entry.running = timer;
    }

    void timedOut(unsigned int id) {
        const auto found = timers.find(id);
        if (found == timers.end() || !found->second.running) {
            return;
        }
        const TessarTimer timer = *found->second.running;
        if (found->second.timer->isSingleShot()) {
            found->second.running.reset();
        }
        // Listeners run now, directly; they may start, stop or drop this very timer.
        q->timedOut(timer);
        retireIfIdle(id);
    }

    // A timer that nothing runs any more gives back its QTimer. Later, not now: this may be
    // that QTimer's own time-out.
    void retireIfIdle(unsigned int id) {
        const auto found = timers.find(id);
        if (found != timers.end() && !found->second.running) {
            found->second.timer->stop();
            found->second.timer->deleteLater();
            timers.erase(found);
        }
    }

    void stopAll() {
        // Out of the table first: letting go of the last handle of a timer ends its record,
        // which must find the table in order.
        std::map<unsigned int, Entry> stopped;
        stopped.swap(timers);
        for (auto &entry : stopped) {
            entry.second.timer->stop();
            entry.second.timer->deleteLater();
        }
    }

    TimerService *q;
    std::unique_ptr<QObject> context;
    std::map<unsigned int, Entry> timers;
    bool terminated = false;
};

TimerService::TimerService() : d(new Private(this)) {}

TimerService::~TimerService() {
    QThread *const owner = d->context->thread();
    if (QThread::currentThread() == owner || owner->isFinished()) {
        d->stopAll();
        return;
    }
    reportMisuse(kWhere, QStringLiteral("destroyed on %1, but its timers belong to %2; they "
                                        "are stopped and released there")
                             .arg(describeThread(QThread::currentThread()), describeThread(owner)));
    // Handles are not thread-safe: hand them to an object of the owner thread, which lets go of
    // them there, after the timers have gone with their context.
    struct Leftovers : QObject {
        std::map<unsigned int, Private::Entry> timers;
    };
    for (auto const &entry : d->timers) {
        // Disconnecting is thread-safe; from now on no time-out reaches this dying object.
        QObject::disconnect(entry.second.timer, nullptr, nullptr, nullptr);
    }
    auto *const leftovers = new Leftovers;
    leftovers->timers.swap(d->timers);
    leftovers->moveToThread(owner);
    d->context.release()->deleteLater();
    leftovers->deleteLater();
}

void TimerService::startSingleTimer(TessarTimer timer, int milliseconds) {
    d->start(timer, getTimerID(timer), milliseconds, false, "startSingleTimer");
}

void TimerService::startRepeatingTimer(TessarTimer timer, int milliseconds) {
    d->start(timer, getTimerID(timer), milliseconds, true, "startRepeatingTimer");
}

void TimerService::stopTimer(TessarTimer timer) {
    const unsigned int id = getTimerID(timer);
    if (!d->onOwnThread("stopTimer", id)) {
        return;
    }
    const auto found = d->timers.find(id);
    if (found != d->timers.end()) {
        found->second.running.reset();
        d->retireIfIdle(id);
    }
}

bool TimerService::isTimerActive(TessarTimer timer) {
    const unsigned int id = getTimerID(timer);
    if (!d->onOwnThread("isTimerActive", id)) {
        return false;
    }
    const auto found = d->timers.find(id);
    return found != d->timers.end() && found->second.running && found->second.timer->isActive();
}

void TimerService::terminateService() {
    if (!d->onOwnThread("terminateService", 0)) {
        return;
    }
    d->terminated = true;
    d->stopAll();
}

QThread *TimerService::thread() const {
    return d->context->thread();
}

int TimerService::activeTimerCount() const {
    return static_cast<int>(d->timers.size());
}

void TimerService::timedOut(TessarTimer timer) {
    signal(timer);
}

}  // namespace QtHost
}  // namespace VORT
