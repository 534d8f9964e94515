#include "support/Latch.h"
#include <vort/messaging/Emitter.h>
#include <vort/messaging/Thread.h>
#include <vort/services/LumigraphClient.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using VTServices::LumigraphSceneServer;

namespace {

class Server : public LumigraphSceneServer {};

class Counter : public VTMS::Listener {
public:
    ~Counter() override { disconnect(); }
    void onSignal() { ++count; }
    std::atomic<int> count{0};
};

// A thread with a message queue that it works through, once told to go, until told to stop. If
// never told, it goes by itself after the latch's bound, so that a send that wrongly blocks makes
// the test fail instead of hang.
class QueueThread {
public:
    QueueThread()
        : m_thread([this] {
              m_record = VTMS::Thread::getCurrentThread();
              m_started.countDown();
              m_go.wait();
              while (!m_stop.load()) {
                  m_record->process();
                  std::this_thread::yield();
              }
              m_record->process();
          }) {
        m_started.wait();
    }
    ~QueueThread() {
        m_go.countDown();
        m_stop = true;
        m_thread.join();
    }
    VTMS::Thread *record() const { return m_record; }
    void go() { m_go.countDown(); }

private:
    vort_test::Latch m_started{1};
    vort_test::Latch m_go{1};
    std::atomic<bool> m_stop{false};
    VTMS::Thread *m_record = nullptr;
    std::thread m_thread;
};

}  // namespace

// The first three emitters block until delivered by default: when the send to a listener on
// another thread returns, the listener has run. The other four only queue.
TEST(LumigraphSceneServerConcurrency, FirstThreeEmittersBlockTheOtherFourQueue) {
    Server server;
    VTMS::Emitter0<void> *const emitters[] = {
        &server.m_syncSignal1, &server.m_syncSignal2, &server.m_syncSignal3, &server.m_signal1,
        &server.m_signal2,     &server.m_signal3,     &server.m_signal4,
    };
    for (int i = 0; i < 7; ++i) {
        SCOPED_TRACE(i);
        Counter counter;
        {
            QueueThread worker;
            emitters[i]->connect(&counter, &Counter::onSignal, worker.record());
            if (i < 3) {
                worker.go();
                emitters[i]->send();
                EXPECT_EQ(counter.count.load(), 1) << "the send returned before delivery";
            } else {
                emitters[i]->send();
                EXPECT_EQ(counter.count.load(), 0) << "the send waited for the other thread";
                worker.go();
            }
        }
        EXPECT_EQ(counter.count.load(), 1);
    }
}
