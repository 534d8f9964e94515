#include "MessagingDemo.h"

#include <vort/messaging/Emitter.h>
#include <vort/messaging/Thread.h>
#include <vort/messaging/ThrottledCallback.h>
#include <vort/qthost/MessageThread.h>
#include <vort/qthost/Services.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QDeadlineTimer>
#include <QtCore/QElapsedTimer>
#include <QtCore/QEventLoop>
#include <QtCore/QThread>
#include <QtCore/QTimer>

#include <atomic>
#include <cstdarg>
#include <functional>
#include <mutex>
#include <string>

namespace vort_demo {
namespace {

// Writes "[   12.3 ms] <thread>  <text>" lines from both threads, whole.
class Log {
public:
    explicit Log(std::FILE *out) : m_out(out) { m_clock.start(); }

    void line(const char *format, ...) __attribute__((format(printf, 2, 3))) {
        char text[256];
        va_list arguments;
        va_start(arguments, format);
        std::vsnprintf(text, sizeof text, format, arguments);
        va_end(arguments);
        std::string thread = VTMS::Thread::getCurrentThread()->getName();
        if (thread.empty()) {
            thread = "?";
        }
        std::lock_guard<std::mutex> lock(m_mutex);
        std::fprintf(m_out, "[%8.1f ms] %-7s %s\n", m_clock.nsecsElapsed() / 1e6, thread.c_str(),
                     text);
        std::fflush(m_out);
    }

private:
    std::FILE *m_out;
    std::mutex m_mutex;
    QElapsedTimer m_clock;
};

// Runs the event loop of the calling thread until `done` or the deadline; a ticking timer makes
// sure the loop comes back to look at `done` now and then.
bool waitFor(const std::function<bool()> &done, int milliseconds = 5000) {
    const QDeadlineTimer deadline(milliseconds);
    QTimer tick;
    tick.start(10);
    while (!done()) {
        if (deadline.hasExpired()) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

// Lives on the worker thread: answers every request on the reply emitter.
class WorkerSide : public VTMS::Listener {
public:
    WorkerSide(Log &log, VTMS::Emitter1<void, const std::string &> &replies,
               std::atomic<int> &handled)
        : m_log(log), m_replies(replies), m_handled(handled) {}
    ~WorkerSide() override { disconnect(); }

    void onRequest(const std::string &text) {
        m_log.line("got '%s'", text.c_str());
        ++m_handled;
        m_replies.send("done: " + text);
    }

private:
    Log &m_log;
    VTMS::Emitter1<void, const std::string &> &m_replies;
    std::atomic<int> &m_handled;
};

// Lives on the main thread.
class MainSide : public VTMS::Listener {
public:
    explicit MainSide(Log &log) : m_log(log) {}
    ~MainSide() override { disconnect(); }

    void onReply(const std::string &text) {
        m_log.line("reply '%s'", text.c_str());
        ++replies;
    }

    int replies = 0;

private:
    Log &m_log;
};

class Worker : public QThread {
public:
    Worker(Log &log, VTMS::Emitter1<void, const std::string &> &requests,
           VTMS::Emitter1<void, const std::string &> &replies)
        : m_log(log), m_requests(requests), m_replies(replies) {}

    std::atomic<bool> ready{false};
    std::atomic<int> handled{0};

protected:
    void run() override {
        VORT::QtHost::MessageThread registration("worker");
        WorkerSide listener(m_log, m_replies, handled);
        m_requests.connect(&listener, &WorkerSide::onRequest, registration.thread());
        ready = true;
        m_log.line("worker thread up, event loop running");
        exec();
        // The listener goes on its own thread, where its deliveries run.
        listener.disconnect();
        m_log.line("worker event loop ended");
    }

private:
    Log &m_log;
    VTMS::Emitter1<void, const std::string &> &m_requests;
    VTMS::Emitter1<void, const std::string &> &m_replies;
};

class Redraw : public VORT::ThrottledCallback {
public:
    Redraw(Log &log, const int &triggers)
        : VORT::ThrottledCallback(100), m_log(log), m_triggers(triggers) {}
    ~Redraw() override { disconnect(); }
    int calls = 0;

protected:
    void doCall() override {
        ++calls;
        m_log.line("throttled call %d, after %d trigger(s)", calls, m_triggers);
    }

private:
    Log &m_log;
    const int &m_triggers;
};

}  // namespace

int runMessagingDemo(std::FILE *out) {
    if (QCoreApplication::instance() == nullptr ||
        QThread::currentThread() != QCoreApplication::instance()->thread()) {
        std::fprintf(out, "the demo runs on the thread of an existing QCoreApplication\n");
        return 1;
    }
    Log log(out);
    VORT::QtHost::Services services("main");
    if (!services.installed(VORT::QtHost::Services::Timers)) {
        std::fprintf(out, "the demo needs the kit's timer service\n");
        return 1;
    }
    log.line("services installed, main thread registered");

    VTMS::Emitter1<void, const std::string &> requests;
    VTMS::Emitter1<void, const std::string &> replies;
    MainSide mainSide(log);
    replies.connect(&mainSide, &MainSide::onReply, services.messageThread()->thread());

    Worker worker(log, requests, replies);
    worker.start();
    bool ok = waitFor([&] { return worker.ready.load(); });

    // Queued: the send returns at once, the worker's loop delivers, and its replies come back
    // through the main loop.
    for (int i = 1; i <= 3 && ok; ++i) {
        const std::string text = "job " + std::to_string(i);
        log.line("queue '%s'", text.c_str());
        requests.send(text);
    }
    ok = ok && waitFor([&] { return mainSide.replies == 3; });

    // Blocking: the send returns once the worker has handled it. Its reply is queued to this
    // thread, which is busy here, and arrives when the loop runs again.
    if (ok) {
        log.line("blocking send 'sync'");
        requests.sendWith(VTMS::BlockUntilDelivered, std::string("sync"));
        log.line("blocking send returned; the worker has handled %d", worker.handled.load());
        ok = worker.handled == 4;
        ok = ok && waitFor([&] { return mainSide.replies == 4; });
    }

    // A burst of 40 triggers, 5 ms apart, into a callback throttled to one call per 100 ms.
    int triggers = 0;
    Redraw redraw(log, triggers);
    QTimer burst;
    burst.setTimerType(Qt::PreciseTimer);
    QObject::connect(&burst, &QTimer::timeout, [&] {
        ++triggers;
        redraw.trigger();
        if (triggers == 40) {
            burst.stop();
        }
    });
    if (ok) {
        log.line("burst of 40 triggers, 5 ms apart");
        burst.start(5);
        ok = waitFor([&] { return triggers == 40; });
        // Let the last interval run out, so the pending trigger is served.
        ok = ok && waitFor([&] { return !burst.isActive() && redraw.calls >= 2; });
        QDeadlineTimer settle(250);
        waitFor([&] { return settle.hasExpired(); }, 1000);
    }

    worker.quit();
    const bool stopped = worker.wait(5000);
    log.line("delivered %d requests and %d replies; %d triggers became %d calls",
             worker.handled.load(), mainSide.replies, triggers, redraw.calls);
    const bool clean = ok && stopped && redraw.calls >= 2 && redraw.calls < triggers;
    log.line(clean ? "clean shutdown" : "demo FAILED");
    return clean ? 0 : 1;
}

}  // namespace vort_demo
