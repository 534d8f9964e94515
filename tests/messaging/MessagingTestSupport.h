// Test support for the messaging suites: a service thread with its own VTMS::Thread record, a
// recording listener, an emitter whose protected parts the tests reach, and a connection that
// counts its live instances.
#ifndef VORT_TESTS_MESSAGING_MESSAGINGTESTSUPPORT_H
#define VORT_TESTS_MESSAGING_MESSAGINGTESTSUPPORT_H

#include "support/Latch.h"
#include <vort/messaging/Emitter.h>
#include <vort/messaging/Thread.h>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <string>
#include <vector>

namespace vort_test {

// A thread that owns a VTMS::Thread record and processes its queue when asked. Given a name, it
// registers as a host thread with an event loop does: its wake function counts posts and, with
// `autoProcess`, has the thread process its queue. One named thread at a time.
class ServiceThread {
public:
    explicit ServiceThread(const std::string &name = "", bool autoProcess = false)
        : m_autoProcess(autoProcess) {
        name.empty() ? void() : void(s_registered = this);
        m_thread = std::thread([this, name] { loop(name); });
        process();
    }
    ~ServiceThread() {
        ServiceThread *self = this;
        s_registered.compare_exchange_strong(self, nullptr);
        request(-1);
        m_thread.join();
    }
    VTMS::Thread *record() const { return m_record; }
    // Has the thread process its queue and waits for it; false if that didn't end in time.
    bool process() {
        const int wanted = request(1);
        std::unique_lock<std::mutex> guard(m_lock);
        return m_changed.wait_for(guard, std::chrono::seconds(10),
                                  [&] { return m_done >= wanted; });
    }
    std::atomic<int> wakes{0};

private:
    static inline std::atomic<ServiceThread *> s_registered{nullptr};

    // Runs on the posting thread, under the record's mutex: it only asks for a process.
    static void woken() {
        if (ServiceThread *const self = s_registered.load()) {
            ++self->wakes, self->m_autoProcess ? void(self->request(1)) : void();
        }
    }
    int request(int more) {
        std::lock_guard<std::mutex> guard(m_lock);
        m_changed.notify_all();
        return m_requested = more < 0 || m_requested < 0 ? -1 : m_requested + more;
    }
    void loop(const std::string &name) {
        m_record = VTMS::Thread::getCurrentThread();
        name.empty() ? void() : VTMS::Thread::registerThread(name, &woken);
        std::unique_lock<std::mutex> guard(m_lock);
        for (int wanted = 0; wanted >= 0; m_done = wanted, m_changed.notify_all()) {
            m_changed.wait(guard, [this] { return m_requested != m_done; });
            wanted = m_requested;
            guard.unlock(), wanted < 0 ? void() : m_record->process(), guard.lock();
        }
    }

    const bool m_autoProcess;
    std::mutex m_lock;
    std::condition_variable m_changed;
    int m_requested = 0, m_done = 0;
    VTMS::Thread *m_record = nullptr;
    std::thread m_thread;
};

// Records what its handlers receive, and runs `action` after each. Tests read it only once the
// calls are known to be done.
class Recorder : public VTMS::Listener {
public:
    ~Recorder() override { disconnect(); }
    void onInt(int value) { note(std::to_string(value)), action ? action(value) : void(); }
    int count() const { return static_cast<int>(received.size()); }
    std::vector<std::string> received;
    std::function<void(int)> action;
    std::atomic<int> *tally = nullptr;  // may outlive the listener
    std::thread::id lastThread;

protected:
    void note(std::string entry) {
        received.push_back(std::move(entry)), lastThread = std::this_thread::get_id();
        tally ? void(++*tally) : void();
    }
};

class IntEmitter : public VTMS::EmitterN<void, int> {
public:
    using VTMS::EmitterN<void, int>::EmitterN;
    using VTMS::EmitterBase::numberOfConnections;
    using VTMS::EmitterBase::sendPacket;
};

inline void processHere() {
    VTMS::Thread::getCurrentThread()->process();
}

// A VTMS::Thread that a test may construct and destroy.
class OwnedThread : public VTMS::Thread {};

// A connection to `Recorder::onInt` that counts its live instances, made by hand as the
// library's own clients may: under the global lock for writing.
struct CountedConnection : VTMS::ConnectionImpl1<Recorder, void, int> {
    static inline std::atomic<int> live{0};
    static CountedConnection *connect(IntEmitter &emitter, Recorder &listener,
                                      VTMS::Thread *thread = nullptr) {
        VORT::WriteLocker lock(VTMS::GetGlobalConnectionLock());
        return new CountedConnection(listener, emitter, thread);
    }
    CountedConnection(Recorder &listener, IntEmitter &emitter, VTMS::Thread *thread)
        : ConnectionImplN(&listener, &Recorder::onInt, &emitter, thread) {
        ++live;
    }
    ~CountedConnection() override { --live; }
};

}  // namespace vort_test

#endif  // VORT_TESTS_MESSAGING_MESSAGINGTESTSUPPORT_H
