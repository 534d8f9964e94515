#include "QtHostTestSupport.h"
#include "support/Latch.h"
#include <vort/messaging/Emitter.h>
#include <vort/messaging/Thread.h>
#include <vort/qthost/MessageThread.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QEvent>
#include <QtCore/QThread>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

using VORT::QtHost::MessageThread;
using vort_test::QtHostWarnings;
using vort_test::runEventsFor;
using vort_test::runEventsUntil;

namespace {

// Records what it was given and on which thread.
class Recorder : public VTMS::Listener {
public:
    ~Recorder() override { disconnect(); }
    void onValue(int value) {
        std::lock_guard<std::mutex> lock(m_mutex);
        values.push_back(value);
        threads.push_back(QThread::currentThread());
    }
    size_t count() {
        std::lock_guard<std::mutex> lock(m_mutex);
        return values.size();
    }
    std::vector<int> values;
    std::vector<QThread *> threads;

private:
    std::mutex m_mutex;
};

// A QThread whose event loop serves a message thread registered by the kit, with a recorder
// that lives and dies on it.
class LoopThread : public QThread {
public:
    explicit LoopThread(std::string name) : m_name(std::move(name)) {}

    VTMS::Thread *record = nullptr;
    Recorder *recorder = nullptr;
    vort_test::Latch ready{1};

protected:
    void run() override {
        MessageThread registration(m_name);
        Recorder local;
        record = registration.thread();
        recorder = &local;
        ready.countDown();
        exec();
        local.disconnect();
    }

private:
    std::string m_name;
};

}  // namespace

TEST(MessageThread, PostsFromOtherThreadsFoldIntoOneQueuedCallOfThisLoop) {
    MessageThread registration("qthost-main");
    ASSERT_TRUE(registration.isValid());
    EXPECT_EQ(registration.name(), "qthost-main");
    EXPECT_EQ(registration.thread(), VTMS::Thread::getCurrentThread());
    EXPECT_EQ(VTMS::Thread::getNamedThread("qthost-main"), registration.thread());
    Recorder recorder;
    VTMS::Emitter1<void, int> values;
    values.connect(&recorder, &Recorder::onValue, registration.thread());
    runEventsFor(10);  // nothing of earlier tests left to deliver
    // Counts the queued calls that reach objects of this thread.
    struct QueuedCalls : QObject {
        int count = 0;
        bool eventFilter(QObject *, QEvent *event) override {
            count += event->type() == QEvent::MetaCall;
            return false;
        }
    } calls;
    QCoreApplication::instance()->installEventFilter(&calls);
    std::thread([&] {
        for (int i = 0; i < 100; ++i) {
            values.send(i);
        }
    }).join();
    EXPECT_EQ(recorder.count(), 0u) << "delivered before the event loop ran";
    EXPECT_TRUE(runEventsUntil([&] { return recorder.count() == 100; }));
    QCoreApplication::instance()->removeEventFilter(&calls);
    EXPECT_LE(calls.count, 2) << "each post woke the loop on its own";
    EXPECT_EQ(recorder.values.front() + recorder.values.back(), 99);
    EXPECT_EQ(
        std::count(recorder.threads.begin(), recorder.threads.end(), QThread::currentThread()),
        100);
}

TEST(MessageThread, WorkerLoopServesQueuedAndBlockingSends) {
    LoopThread worker("qthost-worker");
    worker.start();
    ASSERT_TRUE(worker.ready.wait());
    VTMS::Emitter1<void, int> values;
    values.connect(worker.recorder, &Recorder::onValue, worker.record);

    values.sendWith(VTMS::BlockUntilDelivered, 7);
    EXPECT_EQ(worker.recorder->count(), 1u) << "the blocking send returned before delivery";
    values.send(8);
    values.send(9);
    ASSERT_TRUE(runEventsUntil([&] { return worker.recorder->count() == 3; }));
    worker.quit();
    ASSERT_TRUE(worker.wait(10000));
}

TEST(MessageThread, SecondNameSharesTheWakeUpAndTheLastLeavesPostsToAnExplicitProcess) {
    auto first = std::make_unique<MessageThread>("qthost-first");
    auto second = std::make_unique<MessageThread>("qthost-second");
    ASSERT_TRUE(first->isValid() && second->isValid());
    EXPECT_EQ(first->thread(), second->thread());
    EXPECT_EQ(VTMS::Thread::getNamedThread("qthost-second"), first->thread());
    Recorder recorder;
    VTMS::Emitter1<void, int> values;
    values.connect(&recorder, &Recorder::onValue, first->thread());
    second.reset();
    std::thread([&] { values.send(1); }).join();
    ASSERT_TRUE(runEventsUntil([&] { return recorder.count() == 1; }))
        << "the first registration lost its wake-up with the second";
    first.reset();
    std::thread([&] { values.send(3); }).join();
    runEventsFor(50);
    EXPECT_EQ(recorder.count(), 1u) << "the event loop was woken after unregistering";
    VTMS::Thread::getCurrentThread()->process();
    EXPECT_EQ(recorder.count(), 2u);
}

TEST(MessageThread, MisuseIsReported) {
    QtHostWarnings warnings;
    MessageThread nameless("");
    EXPECT_FALSE(nameless.isValid());
    EXPECT_EQ(nameless.thread(), nullptr);
    EXPECT_TRUE(warnings.has({"MessageThread", "needs a name"}));

    // Made on a worker's loop, destroyed here.
    MessageThread *registration = nullptr;
    vort_test::EventThread worker([&] { registration = new MessageThread("qthost-strayed"); });
    worker.setObjectName(QStringLiteral("registering-worker"));
    worker.start();
    ASSERT_TRUE(worker.waitStarted());
    ASSERT_NE(registration, nullptr);
    ASSERT_TRUE(registration->isValid());
    delete registration;
    EXPECT_TRUE(warnings.has({"'qthost-strayed'", "unregistered on", "registering-worker"}));
    worker.quit();
    ASSERT_TRUE(worker.wait(10000));
}

TEST(MessageThreadConcurrency, ManyPostersOneLoop) {
    MessageThread registration("qthost-busy");
    Recorder recorder;
    VTMS::Emitter1<void, int> values;
    values.connect(&recorder, &Recorder::onValue, registration.thread());
    constexpr int kThreads = 4;
    constexpr int kEach = 250;
    std::vector<std::thread> senders;
    for (int t = 0; t < kThreads; ++t) {
        senders.emplace_back([&values, t] {
            for (int i = 0; i < kEach; ++i) {
                values.send(t * kEach + i);
            }
        });
    }
    // Deliveries run while the posters are still at it.
    ASSERT_TRUE(runEventsUntil([&] { return recorder.count() == kThreads * kEach; }));
    for (auto &sender : senders) {
        sender.join();
    }
    // Each poster's values arrive in its own order.
    std::vector<int> last(kThreads, -1);
    for (int value : recorder.values) {
        const int t = value / kEach;
        EXPECT_GT(value, last[t]);
        last[t] = value;
    }
}
