#include "MessagingTestSupport.h"
#include <vort/messaging/Connection.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

namespace {

using namespace vort_test;

TEST(EmitterBase, CutsTakeEveryConnectionOfThePairAndCopiesStartEmpty) {
    IntEmitter emitter;
    Recorder listener, other;
    for (VTMS::SendMode mode : {VTMS::UseDefaultMode, VTMS::AlwaysQueue, VTMS::BlockAndProcess}) {
        VTMS::Packet packet(new VTMS::Payload1<void, int>(1));
        emitter.sendPacket(packet, mode, false);  // nobody to wait for
    }
    emitter.connect(&other, &Recorder::onInt);
    for (int cut = 0; cut < 4; ++cut) {
        emitter.connect(&listener, &Recorder::onInt);
        emitter.connect(&listener, &Recorder::onInt);
        EXPECT_EQ(emitter.numberOfConnections(), 3);
        emitter.send(5);
        const auto mode = cut % 2 ? VTMS::DropPackets : VTMS::DeliverPackets;
        cut < 2 ? emitter.disconnectFrom(&listener, mode) : listener.disconnectFrom(emitter, mode);
        EXPECT_EQ(emitter.numberOfConnections(), 1);
        emitter.send(6);
    }
    EXPECT_EQ(listener.count() * 100 + other.count(), 808);

    IntEmitter queuing(VTMS::AlwaysQueue);
    queuing.connect(&listener, &Recorder::onInt);
    IntEmitter copy(queuing);
    EXPECT_EQ(copy.numberOfConnections() * 10 + queuing.numberOfConnections(), 1);
    copy.connect(&other, &Recorder::onInt);
    copy.send(1);  // the copied default mode queues
    copy.setDefaultMode(VTMS::DirectOrQueue);
    copy.send(2);
    EXPECT_EQ(other.count(), 9);
    processHere();
    EXPECT_EQ(other.received().back(), "1");
}

TEST(EmitterBase, DeliversInAscendingOrderOfConnectionAddresses) {
    IntEmitter emitter;
    Recorder listeners[16];
    std::vector<std::pair<VTMS::Connection *, Recorder *>> made;
    std::vector<Recorder *> expected, log;
    for (Recorder &listener : listeners) {
        made.emplace_back(CountedConnection::connect(emitter, listener), &listener);
        listener.action = [&log, &listener](int) { log.push_back(&listener); };
    }
    std::sort(made.begin(), made.end());
    for (const auto &entry : made) {
        expected.push_back(entry.second);
    }
    emitter.send(0);
    EXPECT_EQ(log, expected);
}

TEST(EmitterBase, AssignmentSharesOneRecordAndCutsTheOldConnections) {
    auto first = std::make_unique<IntEmitter>(), second = std::make_unique<IntEmitter>();
    Recorder onFirst, onSecond;
    first->connect(&onFirst, &Recorder::onInt);
    second->connect(&onSecond, &Recorder::onInt);
    *first = *second;
    first->send(1);
    second->send(2);
    first->connect(&onFirst, &Recorder::onInt);
    EXPECT_EQ(second->numberOfConnections(), 2);
    first.reset();  // cuts what it connected, not the other's
    second->send(3);
    EXPECT_EQ(onFirst.count(), 0);
    EXPECT_EQ(onSecond.received(), (Texts{"1", "2", "3"}));
}

class Plain : public VTMS::Listener {
public:
    ~Plain() override { disconnect(); }
    void onInt(int) { ++calls; }
    int calls = 0;
};

TEST(Listener, CopiesHaveNoConnectionsAndAssignmentSharesTheSet) {
    IntEmitter a, b, c;
    Plain first;
    Recorder second, third;
    a.connect(&first, &Plain::onInt);
    b.connect(&first, &Plain::onInt);
    Plain copy(first);
    a.send(1);
    EXPECT_EQ(first.calls * 10 + copy.calls, 10);
    copy.disconnect();
    EXPECT_EQ(a.numberOfConnections() + b.numberOfConnections(), 2);
    b.connect(&second, &Recorder::onInt);
    static_cast<VTMS::Listener &>(first) = second;  // first's own connections are cut
    EXPECT_EQ(a.numberOfConnections() * 10 + b.numberOfConnections(), 1);
    a.connect(&first, &Plain::onInt);
    c.connect(&third, &Recorder::onInt);
    static_cast<VTMS::Listener &>(first) = third;  // leaving cuts only the leaver's
    EXPECT_EQ(
        a.numberOfConnections() * 100 + b.numberOfConnections() * 10 + c.numberOfConnections(), 11);
    a.connect(&first, &Plain::onInt);
    third.disconnect();  // one set: cuts both listeners' connections
    EXPECT_EQ(a.numberOfConnections() + c.numberOfConnections(), 0);
}

// Every way of cutting a connection, idle and with a packet queued.
struct Ends {
    Ends() { listener->tally = &tally, CountedConnection::connect(*emitter, *listener); }
    std::atomic<int> tally{0};
    std::unique_ptr<IntEmitter> emitter = std::make_unique<IntEmitter>();
    std::unique_ptr<Recorder> listener = std::make_unique<Recorder>();
    void deliverCut() { emitter->disconnectFrom(listener.get(), VTMS::DeliverPackets); }
};

TEST(ConnectionLifetime, EveryCutWithAndWithoutAPacketQueued) {
    const struct {
        void (*cut)(Ends &);
        bool arrives;
    } rows[] = {
        {[](Ends &e) { e.emitter.reset(); }, true},
        {[](Ends &e) { e.deliverCut(); }, true},
        {[](Ends &e) { e.listener->disconnectFrom(*e.emitter, VTMS::DeliverPackets); }, true},
        {[](Ends &e) { e.listener->disconnect(); }, false},
        {[](Ends &e) { e.listener->disconnectFrom(*e.emitter, VTMS::DropPackets); }, false},
        {[](Ends &e) { e.emitter->disconnectFrom(e.listener.get(), VTMS::DropPackets); }, false},
        {[](Ends &e) { e.listener.reset(); }, false},
        {[](Ends &e) { e.deliverCut(), e.listener.reset(); }, false},
        {[](Ends &e) { e.emitter.reset(), e.listener->disconnect(); }, false},
        {[](Ends &e) { e.listener.reset(), e.emitter.reset(); }, false},
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

TEST(ConnectionLifetime, LastQueuedPacketOrTheThreadsEndFreesTheConnection) {
    const int baseline = CountedConnection::live;
    Ends ends;
    ends.emitter->sendWith(VTMS::AlwaysQueue, 0);
    ends.emitter->sendWith(VTMS::AlwaysQueue, 1);
    ends.deliverCut();
    VTMS::Thread::getCurrentThread()->processOne();
    EXPECT_EQ(CountedConnection::live.load(), baseline + 1);
    VTMS::Thread::getCurrentThread()->processOne();
    EXPECT_EQ(CountedConnection::live.load(), baseline);
    EXPECT_EQ(ends.listener->received(), (Texts{"0", "1"}));

    auto thread = std::make_unique<OwnedThread>();
    Ends other;
    other.deliverCut();
    CountedConnection::connect(*other.emitter, *other.listener, thread.get());
    other.emitter->send(1);
    other.emitter.reset();
    EXPECT_EQ(CountedConnection::live.load(), baseline + 1);
    thread.reset();  // drops the packet undelivered
    EXPECT_EQ(CountedConnection::live.load(), baseline);
    EXPECT_EQ(other.tally.load(), 0);
}

TEST(Send, HandlersMayCutDestroyAndConnectDuringTheSend) {
    IntEmitter emitter;
    Recorder selfCutters[2];
    for (Recorder &listener : selfCutters) {
        emitter.connect(&listener, &Recorder::onInt);
        listener.action = [&listener](int) { listener.disconnect(); };
    }
    emitter.send(1);
    emitter.send(2);
    EXPECT_EQ(selfCutters[0].count() * 10 + selfCutters[1].count(), 11);

    // Two listeners that each destroy the other: only the first in the send is called.
    std::atomic<int> tally{0};
    std::unique_ptr<Recorder> pair[2] = {std::make_unique<Recorder>(),
                                         std::make_unique<Recorder>()};
    for (int i = 0; i < 2; ++i) {
        pair[i]->tally = &tally;
        pair[i]->action = [&pair, i](int) { pair[1 - i].reset(); };
        emitter.connect(pair[i].get(), &Recorder::onInt);
    }
    emitter.send(1);
    EXPECT_EQ(tally * 10 + emitter.numberOfConnections(), 11);

    // A handler that connects and sends: the nested send sees the new connection, the outer
    // send's snapshot does not.
    IntEmitter nesting;
    Recorder connector, late;
    nesting.connect(&connector, &Recorder::onInt);
    connector.action = [&](int value) {
        value == 1 ? nesting.connect(&late, &Recorder::onInt), nesting.send(2) : void();
    };
    nesting.send(1);
    EXPECT_EQ(late.received(), (Texts{"2"}));
    EXPECT_EQ(connector.received(), (Texts{"1", "2"}));

    // The emitter dies in the first handler of a blocking send, which still finishes.
    auto dying = std::make_unique<IntEmitter>();
    Recorder killer, others[3];
    dying->connect(&killer, &Recorder::onInt);
    for (Recorder &other : others) {
        dying->connect(&other, &Recorder::onInt);
    }
    killer.action = [&dying](int) { dying.reset(); };
    dying->sendWith(VTMS::BlockUntilDelivered, 1);
    EXPECT_EQ(others[0].count() + others[1].count() + others[2].count(), 3);
}

}  // namespace
