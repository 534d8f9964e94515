// Test support for the messaging suites: a service thread with its own VTMS::Thread record, a
// recording listener, an emitter whose protected parts the tests reach, and a connection that
// counts its live instances.
#ifndef VORT_TESTS_MESSAGING_MESSAGINGTESTSUPPORT_H
#define VORT_TESTS_MESSAGING_MESSAGINGTESTSUPPORT_H

#include "support/Latch.h"
#include <vort/messaging/Emitter.h>
#include <vort/messaging/Thread.h>

#include <atomic>
#include <deque>
#include <functional>
#include <string>
#include <vector>

namespace vort_test {

// A thread that runs the tasks given to it, in order, and owns the VTMS::Thread record of that
// thread. The record lives on after the thread ends, as every record does.
class ServiceThread {
public:
    ServiceThread() : m_thread([this] { loop(); }) {
        call([this] { m_record = VTMS::Thread::getCurrentThread(); });
    }
    ~ServiceThread() {
        ServiceThread *self = this;
        s_registered.compare_exchange_strong(self, nullptr);
        run(nullptr);
        m_thread.join();
    }
    VTMS::Thread *record() const { return m_record; }
    std::thread::id id() const { return m_thread.get_id(); }
    // A null task ends the thread.
    void run(std::function<void()> task) {
        std::lock_guard<std::mutex> guard(m_lock);
        m_tasks.push_back(std::move(task));
        m_ready.notify_one();
    }
    // Runs `task` and waits for it; false if it didn't finish within the limit.
    bool call(std::function<void()> task) {
        auto done = std::make_shared<Latch>(1);
        run([task, done] { task(), done->countDown(); });
        return done->wait();
    }
    bool process() {
        return call([this] { m_record->process(); });
    }
    // Registers the thread under `name` as a host thread with an event loop: its wake function
    // counts posts and, with `autoProcess`, has the thread process its queue. One at a time.
    bool registerAs(const std::string &name, bool autoProcess) {
        s_registered = this;
        m_autoProcess = autoProcess;
        return call([name] { VTMS::Thread::registerThread(name, &woken); });
    }
    std::atomic<int> wakes{0};

private:
    static inline std::atomic<ServiceThread *> s_registered{nullptr};

    // Runs on the posting thread, under the record's mutex: it only queues a task.
    static void woken() {
        if (ServiceThread *const self = s_registered.load()) {
            ++self->wakes;
            self->m_autoProcess ? self->run([self] { self->m_record->process(); }) : void();
        }
    }
    void loop() {
        for (std::function<void()> task; true; task()) {
            std::unique_lock<std::mutex> guard(m_lock);
            m_ready.wait(guard, [this] { return !m_tasks.empty(); });
            task = std::move(m_tasks.front());
            m_tasks.pop_front();
            if (!task) {
                return;
            }
        }
    }

    std::mutex m_lock;
    std::condition_variable m_ready;
    std::deque<std::function<void()>> m_tasks;
    bool m_autoProcess = false;
    VTMS::Thread *m_record = nullptr;
    std::thread m_thread;
};

// Records what its handlers receive, and runs `action` after each. Callable from any thread.
class Recorder : public VTMS::Listener {
public:
    ~Recorder() override { disconnect(); }
    void onNothing() { note("()"); }
    void onInt(int value) { note(std::to_string(value)), action ? action(value) : void(); }
    std::vector<std::string> received() const {
        std::lock_guard<std::mutex> guard(m_lock);
        return m_received;
    }
    int count() const { return static_cast<int>(received().size()); }
    std::function<void(int)> action;
    std::atomic<int> *tally = nullptr;  // may outlive the listener
    std::atomic<std::thread::id> lastThread{};

protected:
    void note(std::string entry) {
        std::lock_guard<std::mutex> guard(m_lock);
        m_received.push_back(std::move(entry));
        lastThread = std::this_thread::get_id();
        tally ? void(++*tally) : void();
    }

private:
    mutable std::mutex m_lock;
    std::vector<std::string> m_received;
};

typedef std::vector<std::string> Texts;

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
class CountedConnection : public VTMS::ConnectionImpl1<Recorder, void, int> {
public:
    static CountedConnection *connect(IntEmitter &emitter, Recorder &listener,
                                      VTMS::Thread *thread = nullptr) {
        VORT::WriteLocker lock(VTMS::GetGlobalConnectionLock());
        return new CountedConnection(&listener, &emitter, thread);
    }
    static inline std::atomic<int> live{0};
    ~CountedConnection() override { --live; }

private:
    CountedConnection(Recorder *listener, VTMS::EmitterBase *emitter, VTMS::Thread *thread)
        : VTMS::ConnectionImpl1<Recorder, void, int>(listener, &Recorder::onInt, emitter, thread) {
        ++live;
    }
};

}  // namespace vort_test

#endif  // VORT_TESTS_MESSAGING_MESSAGINGTESTSUPPORT_H
