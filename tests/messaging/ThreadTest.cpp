#include "MessagingTestSupport.h"
#include <vort/messaging/Packet.h>
#include <vort/messaging/Thread.h>

#include <gtest/gtest.h>

#include <memory>

namespace {

using namespace vort_test;
using VTMS::Thread;

TEST(Thread, OneRecordPerThreadAndTheRegistryFindsEachNamesLatest) {
    ServiceThread one, two, unnamed;
    EXPECT_EQ(Thread::getNamedThread("ThreadTest.first"), nullptr);
    EXPECT_EQ(Thread::getCurrentThread(), Thread::getCurrentThread());
    EXPECT_TRUE(one.record() != Thread::getCurrentThread() && one.record() != two.record());
    ASSERT_TRUE(one.call([] { Thread::registerThread("ThreadTest.first", nullptr); }));
    ASSERT_TRUE(one.call([] { Thread::registerThread("ThreadTest.second", nullptr); }));
    EXPECT_EQ(Thread::getNamedThread("ThreadTest.first"), one.record());
    EXPECT_EQ(Thread::getNamedThread("ThreadTest.second"), one.record());
    // The later of two threads holds a name; the earlier keeps it as its own.
    ASSERT_TRUE(two.call([] { Thread::registerThread("ThreadTest.second", nullptr); }));
    EXPECT_EQ(Thread::getNamedThread("ThreadTest.second"), two.record());
    EXPECT_EQ(one.record()->getName() + two.record()->getName() + unnamed.record()->getName(),
              "ThreadTest.secondThreadTest.second");
}

TEST(Thread, ProcessDeliversInOrderAndWhatADeliveryPostsComesInTheSameProcess) {
    IntEmitter emitter;
    Recorder listener;
    std::vector<bool> processing;
    emitter.connect(&listener, &Recorder::onInt);
    listener.action = [&](int value) {
        processing.push_back(Thread::getCurrentThread()->processingMessages());
        value > 1 && value < 4 ? emitter.sendWith(VTMS::AlwaysQueue, value + 1) : void();
    };
    emitter.send(1);
    emitter.sendWith(VTMS::AlwaysQueue, 2);
    emitter.sendWith(VTMS::AlwaysQueue, 6);
    Thread::getCurrentThread()->processOne();
    EXPECT_EQ(listener.received(), (Texts{"1", "2"}));
    processHere();
    EXPECT_EQ(listener.received(), (Texts{"1", "2", "6", "3", "4"}));
    EXPECT_EQ(processing, (std::vector<bool>{false, true, true, true, true}));
    EXPECT_FALSE(Thread::getCurrentThread()->processingMessages());

    // A nested process meets the packet in delivery again, since it stays queued meanwhile.
    bool nested = false;
    listener.action = [&nested](int) { nested ? void() : (nested = true, processHere()); };
    emitter.sendWith(VTMS::AlwaysQueue, 1);
    emitter.sendWith(VTMS::AlwaysQueue, 2);
    processHere();
    EXPECT_EQ(listener.count(), 8);
}

TEST(Thread, WakeFunctionRunsOncePerPost) {
    ServiceThread host;
    ASSERT_TRUE(host.registerAs("ThreadTest.woken", false));
    IntEmitter emitter;
    Recorder listener;
    emitter.connect(&listener, &Recorder::onInt, host.record());
    for (int i = 0; i < 3; ++i) {
        emitter.send(i);  // also when the queue is not empty
    }
    EXPECT_EQ(host.wakes * 10 + listener.count(), 30);
    ASSERT_TRUE(host.process());
    EXPECT_EQ(host.wakes * 10 + listener.count(), 33);
}

class Marked : public VTMS::Payload1<void, int> {
public:
    Marked(int value, std::vector<int> *ends)
        : VTMS::Payload1<void, int>(value), m_value(value), m_ends(ends) {}
    ~Marked() override { m_ends->push_back(m_value); }

private:
    int m_value;
    std::vector<int> *m_ends;
};

TEST(Thread, AssignmentSharesOneQueueAndDestructionDropsItLastToFirst) {
    std::vector<int> ends;
    IntEmitter emitter;
    Recorder listener;
    VTMS::Connection *connection = CountedConnection::connect(emitter, listener);
    auto post = [&](Thread &thread, int value) {
        thread.post(VTMS::ConnectedPacket(VTMS::Packet(new Marked(value, &ends)), connection));
    };
    auto a = std::make_unique<OwnedThread>(), b = std::make_unique<OwnedThread>();
    post(*b, 1);
    *a = *b;
    post(*a, 2);
    a.reset();
    b->process();  // nothing checks which thread processes
    EXPECT_EQ(listener.received(), (Texts{"1", "2"}));
    for (int value : {3, 4, 5}) {
        post(*b, value);
    }
    b.reset();
    EXPECT_EQ(ends, (std::vector<int>{1, 2, 5, 4, 3}));
    EXPECT_EQ(listener.count(), 2);
}

TEST(Thread, RecordOfAnEndedThreadGoesOnCollecting) {
    Thread *record = nullptr;
    std::thread([&record] { record = Thread::getCurrentThread(); }).join();
    IntEmitter emitter;
    Recorder listener;
    emitter.connect(&listener, &Recorder::onInt, record);
    emitter.send(1);
    EXPECT_EQ(listener.count(), 0);
    record->process();
    EXPECT_EQ(listener.received(), (Texts{"1"}));
}

}  // namespace
