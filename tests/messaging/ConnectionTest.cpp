#include "MessagingTestSupport.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using namespace vort_test;

TEST(EmitterBase, CutsTakeEveryConnectionOfThePair) {
    IntEmitter emitter;
    Recorder listener, other;
    VTMS::Packet packet(new VTMS::Payload1<void, int>(1));
    emitter.sendPacket(packet, VTMS::BlockAndProcess, false);  // nobody to wait for
    emitter.connect(&other, &Recorder::onInt);
    for (int cut = 0; cut < 4; ++cut) {
        emitter.connect(&listener, &Recorder::onInt);
        emitter.connect(&listener, &Recorder::onInt);
        emitter.send(5);
        const auto mode = cut % 2 ? VTMS::DropPackets : VTMS::DeliverPackets;
        cut < 2 ? emitter.disconnectFrom(&listener, mode) : listener.disconnectFrom(emitter, mode);
    }
    EXPECT_EQ(listener.count() * 100 + other.count(), 804);
}

// Assigning an end makes it share the other's record; it first cuts what it connected itself.
TEST(EmitterBase, CopiesAndAssignmentsOfBothEnds) {
    auto first = std::make_unique<IntEmitter>(), second = std::make_unique<IntEmitter>();
    Recorder onFirst, onSecond;
    first->connect(&onFirst, &Recorder::onInt);
    second->connect(&onSecond, &Recorder::onInt);
    *first = *second;
    first->send(1);
    first->connect(&onFirst, &Recorder::onInt);
    first.reset();  // cuts what it connected, not the other's
    second->send(3);
    EXPECT_EQ(onFirst.count() * 100 + onSecond.count() * 10 + second->numberOfConnections(), 21);

    IntEmitter a, b;
    Recorder listener;
    a.connect(&listener, &Recorder::onInt);
    Recorder copy(listener);
    a.send(1);
    copy.disconnect();
    EXPECT_EQ(listener.count() * 10 + a.numberOfConnections(), 11);
    Recorder shared, third;
    b.connect(&shared, &Recorder::onInt);
    static_cast<VTMS::Listener &>(listener) = shared;
    a.connect(&listener, &Recorder::onInt);
    b.connect(&third, &Recorder::onInt);
    static_cast<VTMS::Listener &>(listener) = third;  // leaving cuts only the leaver's own
    EXPECT_EQ(a.numberOfConnections() * 10 + b.numberOfConnections(), 2);
    a.connect(&listener, &Recorder::onInt);
    third.disconnect();  // one set: cuts both listeners' connections
    EXPECT_EQ(a.numberOfConnections() * 10 + b.numberOfConnections(), 1);
}

// Every way of cutting a connection, idle and with a packet queued.
struct Ends {
    Ends() { listener->tally = &tally, CountedConnection::connect(*emitter, *listener); }
    std::atomic<int> tally{0};
    std::unique_ptr<IntEmitter> emitter = std::make_unique<IntEmitter>();
    std::unique_ptr<Recorder> listener = std::make_unique<Recorder>();
    void cut(VTMS::PacketDropMode mode) { emitter->disconnectFrom(listener.get(), mode); }
};

TEST(ConnectionLifetime, EveryCutWithAndWithoutAPacketQueued) {
    const struct {
        void (*cut)(Ends &);
        bool arrives;
    } rows[] = {
        {[](Ends &e) { e.emitter.reset(); }, true},
        {[](Ends &e) { e.cut(VTMS::DeliverPackets); }, true},
        {[](Ends &e) { e.listener->disconnectFrom(*e.emitter, VTMS::DeliverPackets); }, true},
        {[](Ends &e) { e.listener->disconnect(); }, false},
        {[](Ends &e) { e.listener->disconnectFrom(*e.emitter, VTMS::DropPackets); }, false},
        {[](Ends &e) { e.cut(VTMS::DropPackets); }, false},
        {[](Ends &e) { e.cut(VTMS::DeliverPackets), e.listener.reset(); }, false},
    };
    const int baseline = CountedConnection::live;
    for (const auto &row : rows) {
        for (bool queued : {false, true}) {
            SCOPED_TRACE(testing::Message() << &row - rows << (queued ? " queued" : " idle"));
            Ends ends;
            queued ? ends.emitter->sendWith(VTMS::AlwaysQueue, 7) : void();
            row.cut(ends);
            EXPECT_EQ(ends.emitter ? ends.emitter->numberOfConnections() : 0, 0);
            EXPECT_EQ(CountedConnection::live.load(), baseline + (queued ? 1 : 0));
            processHere();
            EXPECT_EQ(CountedConnection::live.load(), baseline);
            ends.listener ? ends.listener->disconnect() : void();
            ends.emitter ? ends.emitter->send(8) : void();
            EXPECT_EQ(ends.tally.load(), queued && row.arrives ? 1 : 0);
        }
    }
}

TEST(Send, HandlersMayCutTheirConnectionAndDestroyTheEmitterDuringTheSend) {
    IntEmitter emitter;
    Recorder selfCutter;
    emitter.connect(&selfCutter, &Recorder::onInt);
    selfCutter.action = [&selfCutter](int) { selfCutter.disconnect(); };
    emitter.send(1);
    emitter.send(2);
    EXPECT_EQ(selfCutter.count() * 10 + emitter.numberOfConnections(), 10);
    // The emitter dies in the first handler of a blocking send, which still finishes.
    auto dying = std::make_unique<IntEmitter>();
    Recorder killer, others[2];
    for (Recorder *listener : {&killer, &others[0], &others[1]}) {
        dying->connect(listener, &Recorder::onInt);
    }
    killer.action = [&dying](int) { dying.reset(); };
    dying->sendWith(VTMS::BlockUntilDelivered, 1);
    EXPECT_EQ(others[0].count() + others[1].count(), 2);
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

// Only a send with a queued delivery copies its payload to the heap, once for all its queues.
TEST(Emitter, OnlyAQueuedSendCopiesItsPayload) {
    ServiceThread other;
    Tracked::copies = 0;
    VTMS::Emitter1<void, const Tracked &> emitter;
    const Tracked argument;
    TrackedListener direct, here, queuedA, queuedB;
    emitter.connect(&direct, &TrackedListener::onTracked);
    emitter.connect(&here, &TrackedListener::onTracked, VTMS::Thread::getCurrentThread());
    emitter.send(argument);  // one copy into the payload on the sender's stack, no other
    EXPECT_EQ(Tracked::copies.load(), 1);
    emitter.connect(&queuedA, &TrackedListener::onTracked, other.record());
    emitter.connect(&queuedB, &TrackedListener::onTracked, other.record());
    emitter.send(argument);  // one more copy, to the heap, shared by both queued deliveries
    EXPECT_EQ(Tracked::copies.load() * 10 + queuedA.count(), 30);
    ASSERT_TRUE(other.process());
    EXPECT_NE(queuedB.lastThread, std::this_thread::get_id());
    EXPECT_EQ(here.count() + queuedA.count() + Tracked::live.load(), 4);
}

}  // namespace
