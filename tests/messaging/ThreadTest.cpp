#include "MessagingTestSupport.h"
#include <vort/messaging/Packet.h>
#include <vort/messaging/Thread.h>

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

using vort_test::Acting;
using vort_test::CountedConnection;
using vort_test::IntEmitter;
using vort_test::OwnedThread;
using vort_test::processHere;
using vort_test::Recorder;
using vort_test::ServiceThread;

// A ConnectedPacket carrying `value` to `connection`.
VTMS::ConnectedPacket packetOf(int value, VTMS::Connection *connection) {
    return VTMS::ConnectedPacket(VTMS::Packet(new VTMS::Payload1<void, int>(value)), connection);
}

TEST(Thread, OneRecordPerThreadAndTheRegistryFindsEachNamesLatest) {
    EXPECT_EQ(VTMS::Thread::getNamedThread("ThreadTest.never"), nullptr);
    EXPECT_EQ(VTMS::Thread::getNamedThread("ThreadTest.never"), nullptr);
    EXPECT_EQ(VTMS::Thread::getNamedThread("ThreadTest.first"), nullptr);

    ServiceThread one;
    ServiceThread two;
    // One record per thread, the same at every call.
    VTMS::Thread *const here = VTMS::Thread::getCurrentThread();
    EXPECT_EQ(VTMS::Thread::getCurrentThread(), here);
    EXPECT_TRUE(here != nullptr && one.record() != nullptr && one.record() != here &&
                one.record() != two.record());
    VTMS::Thread *seen = nullptr;
    ASSERT_TRUE(one.call([&seen] { seen = VTMS::Thread::getCurrentThread(); }));
    EXPECT_EQ(seen, one.record());
    ASSERT_TRUE(one.call([] { VTMS::Thread::registerThread("ThreadTest.first", nullptr); }));
    EXPECT_EQ(VTMS::Thread::getNamedThread("ThreadTest.first"), one.record());
    EXPECT_EQ(one.record()->getName(), "ThreadTest.first");

    // A second name on the same thread: both find it, and it carries the later name.
    ASSERT_TRUE(one.call([] { VTMS::Thread::registerThread("ThreadTest.second", nullptr); }));
    EXPECT_EQ(VTMS::Thread::getNamedThread("ThreadTest.first"), one.record());
    EXPECT_EQ(VTMS::Thread::getNamedThread("ThreadTest.second"), one.record());
    EXPECT_EQ(one.record()->getName(), "ThreadTest.second");

    // The later of two threads holds a name; the earlier keeps it as its own.
    ASSERT_TRUE(two.call([] { VTMS::Thread::registerThread("ThreadTest.second", nullptr); }));
    EXPECT_EQ(VTMS::Thread::getNamedThread("ThreadTest.second"), two.record());
    EXPECT_EQ(VTMS::Thread::getNamedThread("ThreadTest.first"), one.record());
    EXPECT_EQ(one.record()->getName(), "ThreadTest.second");
    EXPECT_EQ(two.record()->getName(), "ThreadTest.second");

    ServiceThread unnamed;
    EXPECT_EQ(unnamed.record()->getName(), "");
}

TEST(Thread, ProcessDeliversInTheOrderOfPostingAndProcessOneOnlyTheFirst) {
    OwnedThread thread;
    IntEmitter emitter;
    Recorder listener;
    VTMS::Connection *connection = CountedConnection::connect(emitter, listener);
    for (int value : {3, 1, 2, 4}) {
        thread.post(packetOf(value, connection));
    }
    EXPECT_EQ(listener.count(), 0);
    thread.processOne();
    EXPECT_EQ(listener.received(), (std::vector<std::string>{"3"}));
    thread.process();
    thread.process();  // empty: returns at once
    EXPECT_EQ(listener.received(), (std::vector<std::string>{"3", "1", "2", "4"}));
}

TEST(Thread, AQueuedDeliveryIsProcessingAndWhatItPostsComesInTheSameProcess) {
    IntEmitter emitter;
    Acting listener;
    std::vector<bool> processing;
    emitter.connect(&listener, &Acting::onInt);
    listener.action = [&](int value) {
        processing.push_back(VTMS::Thread::getCurrentThread()->processingMessages());
        if (value > 1 && value < 4) {
            emitter.sendWith(VTMS::AlwaysQueue, value + 1);
        }
    };
    emitter.send(1);
    emitter.sendWith(VTMS::AlwaysQueue, 2);
    processHere();
    EXPECT_EQ(listener.received(), (std::vector<std::string>{"1", "2", "3", "4"}));
    EXPECT_EQ(processing, (std::vector<bool>{false, true, true, true}));
    EXPECT_FALSE(VTMS::Thread::getCurrentThread()->processingMessages());
}

std::atomic<int> g_wakes{0};
void countWake() {
    ++g_wakes;
}

TEST(Thread, WakeFunctionRunsOncePerPost) {
    ServiceThread host;
    ASSERT_TRUE(host.call([] { VTMS::Thread::registerThread("ThreadTest.woken", &countWake); }));
    IntEmitter emitter;
    Recorder listener;
    emitter.connect(&listener, &Recorder::onInt, host.record());
    g_wakes = 0;
    for (int i = 0; i < 3; ++i) {
        emitter.send(i);
    }
    EXPECT_EQ(g_wakes.load(), 3);  // also for the posts that found the queue not empty
    EXPECT_EQ(listener.count(), 0);
    ASSERT_TRUE(host.process());
    EXPECT_EQ(listener.count(), 3);
    EXPECT_EQ(g_wakes.load(), 3);

    // Without a wake function a post just waits for the next process.
    OwnedThread quiet;
    quiet.post(packetOf(9, CountedConnection::connect(emitter, listener)));
    EXPECT_EQ(g_wakes.load(), 3);
    quiet.process();
    EXPECT_EQ(listener.count(), 4);
}

TEST(Thread, NestedProcessMeetsThePacketInDeliveryAgain) {
    IntEmitter emitter;
    Acting listener;
    emitter.connect(&listener, &Acting::onInt);
    bool nested = false;
    listener.action = [&nested](int) {
        if (!nested) {
            nested = true;
            processHere();
        }
    };
    emitter.sendWith(VTMS::AlwaysQueue, 1);
    emitter.sendWith(VTMS::AlwaysQueue, 2);
    processHere();
    // The first packet stays queued during its delivery, so the nested call delivers it again,
    // then the rest; the outer call then finds the queue empty.
    EXPECT_EQ(listener.received(), (std::vector<std::string>{"1", "1", "2"}));
}

// A payload that logs its end.
class Marked : public VTMS::Payload1<void, int> {
public:
    Marked(int value, std::vector<int> *ends)
        : VTMS::Payload1<void, int>(value), m_value(value), m_ends(ends) {}
    ~Marked() override { m_ends->push_back(m_value); }

private:
    int m_value;
    std::vector<int> *m_ends;
};

TEST(Thread, DestructionDropsQueuedPacketsLastToFirstUndelivered) {
    std::vector<int> ends;
    IntEmitter emitter;
    Recorder listener;
    VTMS::Connection *connection = CountedConnection::connect(emitter, listener);
    auto thread = std::make_unique<OwnedThread>();
    for (int value : {1, 2, 3}) {
        thread->post(VTMS::ConnectedPacket(VTMS::Packet(new Marked(value, &ends)), connection));
    }
    EXPECT_TRUE(ends.empty());
    thread.reset();
    EXPECT_EQ(ends, (std::vector<int>{3, 2, 1}));
    EXPECT_EQ(listener.count(), 0);
}

TEST(Thread, AssignmentSharesOneQueue) {
    IntEmitter emitter;
    Recorder listener;
    VTMS::Connection *connection = CountedConnection::connect(emitter, listener);
    auto a = std::make_unique<OwnedThread>();
    auto b = std::make_unique<OwnedThread>();
    b->post(packetOf(1, connection));
    *a = *b;
    a->post(packetOf(2, connection));
    a.reset();
    b->process();
    EXPECT_EQ(listener.received(), (std::vector<std::string>{"1", "2"}));
}

TEST(Thread, RecordOfAnEndedThreadGoesOnCollecting) {
    VTMS::Thread *record = nullptr;
    std::thread([&record] { record = VTMS::Thread::getCurrentThread(); }).join();
    IntEmitter emitter;
    Recorder listener;
    emitter.connect(&listener, &Recorder::onInt, record);
    emitter.send(1);
    emitter.send(2);
    EXPECT_EQ(listener.count(), 0);
    record->process();  // nothing checks which thread processes
    EXPECT_EQ(listener.received(), (std::vector<std::string>{"1", "2"}));
}

}  // namespace
