#include "MessagingTestSupport.h"
#include <vort/messaging/Emitter.h>

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <vector>

namespace {

using vort_test::processHere;
using vort_test::Recorder;
using vort_test::ServiceThread;

class Base : public Recorder {
public:
    void inherited(int a) { note("1:" + std::to_string(a)); }
};
class Multi : public Base {
public:
    void on0() { note("0:"); }
    void on2(int a, const std::string &b) { note("2:" + std::to_string(a) + b); }
    void on3(char a, double b, const std::string &c) {
        note("3:" + std::string(1, a) + std::to_string(static_cast<int>(b)) + c);
    }
    int on4(int a, int b, int c, long long d) {
        note("4:" + std::to_string(a + b + c) + "/" + std::to_string(d));
        return a;  // dropped by the send
    }
};

TEST(Emitter, EveryArityDeliversItsArgumentsStoredByValueDirectAndQueued) {
    Multi listener;
    VTMS::Emitter0<void> e0;
    VTMS::Emitter1<void, int> e1;
    VTMS::Emitter2<void, int, const std::string &> e2;
    VTMS::Emitter3<void, char, double, const std::string &> e3;
    VTMS::Emitter4<int, int, int, int, long long> e4;
    e0.connect(&listener, &Multi::on0);
    e1.connect(&listener, &Multi::inherited);  // declared in a base class
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
    const std::vector<std::string> once = {"0:", "1:7", "2:8x", "3:c9y", "4:6/1099511627776"};
    std::vector<std::string> twice = once;
    twice.insert(twice.end(), once.begin(), once.end());
    EXPECT_EQ(listener.received(), twice);
}

TEST(Emitter, ListenerOnAnotherThreadIsCalledOnThatThread) {
    ServiceThread other;
    VTMS::Emitter1<void, int> emitter;
    Recorder there;
    Recorder here;
    emitter.connect(&there, &Recorder::onInt, other.record());
    emitter.connect(&here, &Recorder::onInt, VTMS::Thread::getCurrentThread());
    emitter.send(1);
    EXPECT_EQ(here.lastThread(), std::this_thread::get_id());
    EXPECT_EQ(there.count(), 0);
    ASSERT_TRUE(other.process());
    EXPECT_EQ(there.lastThread(), other.id());
}

// An argument that counts its copies.
struct Tracked {
    static inline std::atomic<int> copies{0};
    static inline std::atomic<int> live{0};
    Tracked() { ++live; }
    Tracked(const Tracked &) {
        ++copies;
        ++live;
    }
    ~Tracked() { --live; }
};

class TrackedListener : public Recorder {
public:
    void onTracked(const Tracked &) { note("tracked"); }
};

TEST(Emitter, OnlyAQueuedSendCopiesItsPayloadToTheHeap) {
    ServiceThread other;
    VTMS::Emitter1<void, const Tracked &> emitter;
    const Tracked argument;
    emitter.send(argument);
    emitter.sendWith(VTMS::BlockUntilDelivered, argument);
    EXPECT_EQ(Tracked::copies.load(), 0) << "a payload was built with nobody to get it";
    TrackedListener direct;
    emitter.connect(&direct, &TrackedListener::onTracked);
    emitter.send(argument);  // one copy into the payload on the sender's stack, no other
    EXPECT_EQ(Tracked::copies.load(), 1);
    TrackedListener queuedA;
    TrackedListener queuedB;
    emitter.connect(&queuedA, &TrackedListener::onTracked, other.record());
    emitter.connect(&queuedB, &TrackedListener::onTracked, other.record());
    emitter.send(argument);  // one more copy, to the heap, shared by both queued deliveries
    EXPECT_EQ(Tracked::copies.load(), 3);
    ASSERT_TRUE(other.process());
    EXPECT_EQ(direct.count() + queuedA.count() + queuedB.count(), 4);
    EXPECT_EQ(Tracked::live.load(), 1);
}

}  // namespace
