#include "MessagingTestSupport.h"
#include <vort/messaging/Emitter.h>

#include <gtest/gtest.h>

namespace {

using namespace vort_test;

class Multi : public Recorder {
public:
    void on0() { note("0:"); }
    void on2(int a, const std::string &b) { note("2:" + std::to_string(a) + b); }
    void on3(char a, double b, const std::string &c) { note(a + std::to_string(int(b)) + c); }
    int on4(int a, int b, int c, long long d) { return note(std::to_string(a + b + c + d)), a; }
};

TEST(Emitter, EveryArityDeliversItsArgumentsStoredByValueDirectAndQueued) {
    Multi listener;
    VTMS::Emitter0<void> e0;
    VTMS::Emitter1<void, int> e1;
    VTMS::Emitter2<void, int, const std::string &> e2;
    VTMS::Emitter3<void, char, double, const std::string &> e3;
    VTMS::Emitter4<int, int, int, int, long long> e4;
    e0.connect(&listener, &Multi::on0);
    e1.connect(&listener, &Recorder::onInt);  // declared in a base class
    e2.connect(&listener, &Multi::on2);
    e3.connect(&listener, &Multi::on3);
    e4.connect(&listener, &Multi::on4);
    for (VTMS::SendMode mode : {VTMS::DirectOrQueue, VTMS::AlwaysQueue}) {
        std::string text = "x";
        e0.sendWith(mode);
        e1.sendWith(mode, 7);
        e2.sendWith(mode, 8, text);
        text = "changed";  // the payload holds its own copy
        e3.sendWith(mode, 'c', 9.5, "y");
        e4.sendWith(mode, 1, 2, 3, 1LL << 40);
    }
    processHere();
    const Texts once = {"0:", "7", "2:8x", "c9y", "1099511627782"};
    Texts twice = once;
    twice.insert(twice.end(), once.begin(), once.end());
    EXPECT_EQ(listener.received(), twice);
}

struct Tracked {
    static inline std::atomic<int> copies{0}, live{0};
    Tracked() { ++live; }
    Tracked(const Tracked &) { ++copies, ++live; }
    ~Tracked() { --live; }
};

class TrackedListener : public Recorder {
public:
    void onTracked(const Tracked &) { note("tracked"); }
};

TEST(Emitter, OnlyAQueuedSendCopiesItsPayloadAndItRunsOnTheListenersThread) {
    ServiceThread other;
    VTMS::Emitter1<void, const Tracked &> emitter;
    const Tracked argument;
    emitter.sendWith(VTMS::BlockUntilDelivered, argument);
    EXPECT_EQ(Tracked::copies.load(), 0) << "a payload was built with nobody to get it";
    TrackedListener direct, here, queuedA, queuedB;
    emitter.connect(&direct, &TrackedListener::onTracked);
    emitter.connect(&here, &TrackedListener::onTracked, VTMS::Thread::getCurrentThread());
    emitter.send(argument);  // one copy into the payload on the sender's stack, no other
    EXPECT_EQ(Tracked::copies.load(), 1);
    EXPECT_EQ(here.lastThread(), std::this_thread::get_id());
    emitter.connect(&queuedA, &TrackedListener::onTracked, other.record());
    emitter.connect(&queuedB, &TrackedListener::onTracked, other.record());
    emitter.send(argument);  // one more copy, to the heap, shared by both queued deliveries
    EXPECT_EQ(Tracked::copies.load(), 3);
    EXPECT_EQ(queuedA.count(), 0);
    ASSERT_TRUE(other.process());
    EXPECT_EQ(queuedA.lastThread(), other.id());
    EXPECT_EQ(direct.count() + here.count() + queuedA.count() + queuedB.count(), 6);
    EXPECT_EQ(Tracked::live.load(), 1);
}

}  // namespace
