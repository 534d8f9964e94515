// Test support for the messaging suites: a service thread with its own VTMS::Thread record, a
// recording listener, an emitter and a thread whose protected parts the tests reach, and a
// connection that counts its live instances.
#ifndef VORT_TESTS_MESSAGING_MESSAGINGTESTSUPPORT_H
#define VORT_TESTS_MESSAGING_MESSAGINGTESTSUPPORT_H

#include "support/Latch.h"
#include <vort/messaging/Emitter.h>
#include <vort/messaging/Thread.h>

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
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
        if (s_registered == this) {
            s_registered = nullptr;
        }
        run([this] { m_stop = true; });
        m_thread.join();
    }
    ServiceThread(const ServiceThread &) = delete;
    ServiceThread &operator=(const ServiceThread &) = delete;

    VTMS::Thread *record() const { return m_record; }
    std::thread::id id() const { return m_thread.get_id(); }

    void run(std::function<void()> task) {
        {
            std::lock_guard<std::mutex> guard(m_lock);
            m_tasks.push_back(std::move(task));
        }
        m_ready.notify_one();
    }

    // Runs `task` and waits for it; false if it didn't finish within the limit.
    bool call(std::function<void()> task) {
        auto done = std::make_shared<Latch>(1);
        run([task, done] {
            task();
            done->countDown();
        });
        return done->wait();
    }

    // Processes the record's queue on this thread and waits for it.
    bool process() {
        return call([this] { m_record->process(); });
    }

    // Registers the thread under `name`, as a host thread with an event loop does: its wake
    // function notes every post and, with `autoProcess`, has the thread process its queue. One
    // service thread at a time is registered so.
    bool registerAs(const std::string &name, bool autoProcess) {
        s_registered = this;
        m_autoProcess = autoProcess;
        return call([name] { VTMS::Thread::registerThread(name, &woken); });
    }

    // Waits until the wake function has run `count` times in all.
    bool waitForWakes(int count) {
        std::unique_lock<std::mutex> guard(m_lock);
        return m_woken.wait_for(guard, std::chrono::seconds(10),
                                [this, count] { return m_wakes >= count; });
    }

private:
    static inline std::atomic<ServiceThread *> s_registered{nullptr};

    // Runs on the posting thread, under the record's mutex: it only queues a task.
    static void woken() {
        ServiceThread *const self = s_registered.load();
        if (self == nullptr) {
            return;
        }
        {
            std::lock_guard<std::mutex> guard(self->m_lock);
            ++self->m_wakes;
            if (self->m_autoProcess) {
                self->m_tasks.push_back([self] { self->m_record->process(); });
            }
        }
        self->m_woken.notify_all();
        self->m_ready.notify_one();
    }

    void loop() {
        while (!m_stop) {
            std::function<void()> task;
            {
                std::unique_lock<std::mutex> guard(m_lock);
                m_ready.wait(guard, [this] { return !m_tasks.empty(); });
                task = std::move(m_tasks.front());
                m_tasks.pop_front();
            }
            task();
        }
    }

    std::mutex m_lock;
    std::condition_variable m_ready;
    std::condition_variable m_woken;
    std::deque<std::function<void()>> m_tasks;
    bool m_stop = false;
    bool m_autoProcess = false;
    int m_wakes = 0;
    VTMS::Thread *m_record = nullptr;
    std::thread m_thread;
};

// Records what its handlers receive. Callable from any thread.
class Recorder : public VTMS::Listener {
public:
    ~Recorder() override { disconnect(); }

    void onNothing() { note("()"); }
    void onInt(int value) { note(std::to_string(value)); }
    void onText(const std::string &text) { note(text); }

    std::vector<std::string> received() const {
        std::lock_guard<std::mutex> guard(m_lock);
        return m_received;
    }
    int count() const {
        std::lock_guard<std::mutex> guard(m_lock);
        return static_cast<int>(m_received.size());
    }
    // Counts every call into `tally` as well, which may outlive the listener.
    void setTally(std::atomic<int> *tally) { m_tally = tally; }

    // The thread of the last call.
    std::thread::id lastThread() const {
        std::lock_guard<std::mutex> guard(m_lock);
        return m_lastThread;
    }

protected:
    void note(std::string entry) {
        std::lock_guard<std::mutex> guard(m_lock);
        m_received.push_back(std::move(entry));
        m_lastThread = std::this_thread::get_id();
        if (m_tally != nullptr) {
            ++*m_tally;
        }
    }

private:
    mutable std::mutex m_lock;
    std::vector<std::string> m_received;
    std::thread::id m_lastThread;
    std::atomic<int> *m_tally = nullptr;
};

// An emitter whose protected parts the tests reach.
template <typename... A>
class OpenEmitter : public VTMS::EmitterN<void, A...> {
public:
    using VTMS::EmitterN<void, A...>::EmitterN;
    using VTMS::EmitterBase::numberOfConnections;
    using VTMS::EmitterBase::sendPacket;
    using VTMS::EmitterBase::setDefaultMode;
};
typedef OpenEmitter<int> IntEmitter;

// A recorder whose handler then runs `action` with the value.
class Acting : public Recorder {
public:
    std::function<void(int)> action;
    void onInt(int value) {
        note(std::to_string(value));
        if (action) {
            action(value);
        }
    }
};

// Delivers what the calling thread's own queue holds.
inline void processHere() {
    VTMS::Thread::getCurrentThread()->process();
}

// A VTMS::Thread that a test may construct and destroy.
class OwnedThread : public VTMS::Thread {
public:
    OwnedThread() = default;
    ~OwnedThread() = default;
};

// A connection to `Recorder::onInt` that counts its live instances, made as the library's own
// clients make one by hand: under the global lock for writing.
class CountedConnection : public VTMS::ConnectionImpl1<Recorder, void, int> {
public:
    static CountedConnection *connect(IntEmitter &emitter, Recorder &listener,
                                      VTMS::Thread *thread = nullptr) {
        VORT::WriteLocker lock(VTMS::GetGlobalConnectionLock());
        return new CountedConnection(&listener, &emitter, thread);
    }

    static int live() { return s_live.load(); }

    ~CountedConnection() override { --s_live; }

private:
    CountedConnection(Recorder *listener, VTMS::EmitterBase *emitter, VTMS::Thread *thread)
        : VTMS::ConnectionImpl1<Recorder, void, int>(listener, &Recorder::onInt, emitter, thread) {
        ++s_live;
    }

    static inline std::atomic<int> s_live{0};
};

}  // namespace vort_test

#endif  // VORT_TESTS_MESSAGING_MESSAGINGTESTSUPPORT_H
