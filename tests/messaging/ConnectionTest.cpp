#include "MessagingTestSupport.h"
#include <vort/messaging/Connection.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace {

using vort_test::Acting;
using vort_test::CountedConnection;
using vort_test::IntEmitter;
using vort_test::processHere;
using vort_test::Recorder;

TEST(EmitterBase, WithoutConnectionsEverySendReturnsAtOnce) {
    IntEmitter emitter;
    EXPECT_FALSE(emitter.hasConnections());
    EXPECT_EQ(emitter.numberOfConnections(), 0);
    for (VTMS::SendMode mode : {VTMS::UseDefaultMode, VTMS::AlwaysQueue, VTMS::DirectOrQueue,
                                VTMS::BlockUntilDelivered, VTMS::BlockAndProcess}) {
        emitter.sendWith(mode, 1);
        VTMS::Packet packet(new VTMS::Payload1<void, int>(1));
        emitter.sendPacket(packet, mode, false);
    }
}

TEST(EmitterBase, EachCutTakesEveryConnectionOfThePairAndNoOther) {
    IntEmitter emitter;
    Recorder listener;
    Recorder other;
    emitter.connect(&other, &Recorder::onInt);
    using Cut = void (*)(IntEmitter &, Recorder &);
    const Cut cuts[] = {
        [](IntEmitter &e, Recorder &l) { e.disconnectFrom(&l, VTMS::DeliverPackets); },
        [](IntEmitter &e, Recorder &l) { e.disconnectFrom(&l, VTMS::DropPackets); },
        [](IntEmitter &e, Recorder &l) { l.disconnectFrom(e, VTMS::DeliverPackets); },
        [](IntEmitter &e, Recorder &l) { l.disconnectFrom(e, VTMS::DropPackets); },
    };
    for (Cut cut : cuts) {
        // One pair connected twice is two connections, and two calls per send.
        emitter.connect(&listener, &Recorder::onInt);
        emitter.connect(&listener, &Recorder::onInt);
        EXPECT_TRUE(emitter.hasConnections());
        EXPECT_EQ(emitter.numberOfConnections(), 3);
        emitter.send(5);
        cut(emitter, listener);
        EXPECT_EQ(emitter.numberOfConnections(), 1);
        emitter.send(6);
    }
    EXPECT_EQ(listener.count(), 8);
    EXPECT_EQ(other.count(), 8);
}

TEST(EmitterBase, CopyStartsWithoutConnectionsAndWithTheDefaultMode) {
    IntEmitter original(VTMS::AlwaysQueue);
    Recorder listener;
    original.connect(&listener, &Recorder::onInt);

    IntEmitter copy(original);
    EXPECT_EQ(copy.numberOfConnections(), 0);
    EXPECT_EQ(original.numberOfConnections(), 1);

    // The copied default mode shows in the copy's sends: queued, not direct, until it changes.
    copy.connect(&listener, &Recorder::onInt);
    copy.send(1);
    EXPECT_EQ(listener.count(), 0);
    copy.setDefaultMode(VTMS::DirectOrQueue);
    copy.send(2);
    copy.sendWith(VTMS::AlwaysQueue, 3);
    EXPECT_EQ(listener.received(), (std::vector<std::string>{"2"}));
    processHere();
    EXPECT_EQ(listener.received(), (std::vector<std::string>{"2", "1", "3"}));
}

// Connections are delivered to in ascending order of their addresses, whatever the order of
// connecting.
class Tagged : public VTMS::Listener {
public:
    explicit Tagged(std::vector<Tagged *> *log) : m_log(log) {}
    ~Tagged() override { disconnect(); }
    void onInt(int) { m_log->push_back(this); }

private:
    std::vector<Tagged *> *m_log;
};

TEST(EmitterBase, DeliversInAscendingOrderOfConnectionAddresses) {
    std::vector<Tagged *> log;
    std::vector<std::unique_ptr<Tagged>> listeners;
    std::vector<std::pair<VTMS::Connection *, Tagged *>> made;
    IntEmitter emitter;
    for (int i = 0; i < 24; ++i) {
        listeners.push_back(std::make_unique<Tagged>(&log));
        VORT::WriteLocker lock(VTMS::GetGlobalConnectionLock());
        made.emplace_back(new VTMS::ConnectionImpl1<Tagged, void, int>(
                              listeners.back().get(), &Tagged::onInt, &emitter, nullptr),
                          listeners.back().get());
    }
    std::sort(made.begin(), made.end());
    std::vector<Tagged *> expected;
    for (const auto &entry : made) {
        expected.push_back(entry.second);
    }
    emitter.send(0);
    EXPECT_EQ(log, expected);
}

TEST(EmitterBase, AssignmentSharesOneRecordAndCutsTheOldConnections) {
    auto first = std::make_unique<IntEmitter>();
    auto second = std::make_unique<IntEmitter>();
    Recorder onFirst;
    Recorder onSecond;
    first->connect(&onFirst, &Recorder::onInt);
    second->connect(&onSecond, &Recorder::onInt);

    *first = *second;
    EXPECT_EQ(first->numberOfConnections(), 1);
    first->send(1);
    second->send(2);
    EXPECT_EQ(onFirst.count(), 0);
    EXPECT_EQ(onSecond.received(), (std::vector<std::string>{"1", "2"}));

    // Each emitter cuts what it connected when it dies; the shared record goes with the last.
    first->connect(&onFirst, &Recorder::onInt);
    EXPECT_EQ(second->numberOfConnections(), 2);
    first.reset();
    EXPECT_EQ(second->numberOfConnections(), 1);
    second->send(3);
    EXPECT_EQ(onFirst.count(), 0);
    EXPECT_EQ(onSecond.count(), 3);
}

// A listener that can be copied, as listeners with plain fields can.
class Plain : public VTMS::Listener {
public:
    ~Plain() override { disconnect(); }
    void onInt(int) { ++calls; }
    int calls = 0;
};

TEST(Listener, DisconnectCutsItsOwnConnectionsAndACopyHasNone) {
    IntEmitter a;
    IntEmitter b;
    Plain listener;
    Plain other;
    a.connect(&listener, &Plain::onInt);
    b.connect(&listener, &Plain::onInt);
    b.connect(&other, &Plain::onInt);
    Plain copy(listener);
    a.send(1);
    EXPECT_EQ(listener.calls * 10 + copy.calls, 10);
    copy.disconnect();
    listener.disconnect();
    EXPECT_EQ(a.numberOfConnections() * 10 + b.numberOfConnections(), 1);
    b.send(2);
    EXPECT_EQ(listener.calls * 10 + other.calls, 11);
}

TEST(Listener, AssignmentSharesTheSetAndCutsOnlyTheLeaversOwnConnections) {
    IntEmitter a;
    IntEmitter b;
    IntEmitter c;
    Recorder first;
    Recorder second;
    Recorder third;
    a.connect(&first, &Recorder::onInt);
    b.connect(&second, &Recorder::onInt);
    static_cast<VTMS::Listener &>(first) = second;  // first's old connections are cut
    EXPECT_EQ(a.numberOfConnections() * 10 + b.numberOfConnections(), 1);
    a.connect(&first, &Recorder::onInt);
    c.connect(&third, &Recorder::onInt);
    // Leaving the shared set cuts what the leaver made, not what the other listener made.
    static_cast<VTMS::Listener &>(first) = third;
    EXPECT_EQ(
        a.numberOfConnections() * 100 + b.numberOfConnections() * 10 + c.numberOfConnections(), 11);
    // One set now: a disconnect through either listener cuts both listeners' connections.
    a.connect(&first, &Recorder::onInt);
    third.disconnect();
    EXPECT_EQ(a.numberOfConnections() + c.numberOfConnections(), 0);
}

// The lifetime of a connection, for every way of cutting it, with and without a packet queued.
struct Ends {
    Ends() {
        listener->setTally(&tally);
        CountedConnection::connect(*emitter, *listener);
    }

    std::atomic<int> tally{0};
    std::unique_ptr<IntEmitter> emitter = std::make_unique<IntEmitter>();
    std::unique_ptr<Recorder> listener = std::make_unique<Recorder>();
};

struct LifetimeEdge {
    const char *event;
    void (*cut)(Ends &);
    bool queuedPacketArrives;
};

const LifetimeEdge kLifetimeEdges[] = {
    {"emitter dies", [](Ends &ends) { ends.emitter.reset(); }, true},
    {"DeliverPackets cut by the emitter",
     [](Ends &ends) { ends.emitter->disconnectFrom(ends.listener.get(), VTMS::DeliverPackets); },
     true},
    {"DeliverPackets handed to the emitter",
     [](Ends &ends) { ends.listener->disconnectFrom(*ends.emitter, VTMS::DeliverPackets); }, true},
    {"listener disconnects", [](Ends &ends) { ends.listener->disconnect(); }, false},
    {"DropPackets cut by the listener",
     [](Ends &ends) { ends.listener->disconnectFrom(*ends.emitter, VTMS::DropPackets); }, false},
    {"DropPackets handed to the listener",
     [](Ends &ends) { ends.emitter->disconnectFrom(ends.listener.get(), VTMS::DropPackets); },
     false},
    {"listener dies", [](Ends &ends) { ends.listener.reset(); }, false},
    {"DeliverPackets cut, then the listener dies",
     [](Ends &ends) {
         ends.emitter->disconnectFrom(ends.listener.get(), VTMS::DeliverPackets);
         ends.listener.reset();
     },
     false},
    {"emitter dies, then the listener disconnects",
     [](Ends &ends) {
         ends.emitter.reset();
         ends.listener->disconnect();
     },
     false},
    {"listener dies, then the emitter dies",
     [](Ends &ends) {
         ends.listener.reset();
         ends.emitter.reset();
     },
     false},
};

TEST(ConnectionLifetime, EveryCutWithAndWithoutAPacketQueued) {
    const int baseline = CountedConnection::live();
    for (const LifetimeEdge &edge : kLifetimeEdges) {
        for (bool queued : {false, true}) {
            SCOPED_TRACE(std::string(edge.event) + (queued ? ", packet queued" : ", idle"));
            Ends ends;
            ASSERT_EQ(CountedConnection::live(), baseline + 1);
            if (queued) {
                ends.emitter->sendWith(VTMS::AlwaysQueue, 7);
            }
            edge.cut(ends);
            if (ends.emitter) {
                EXPECT_EQ(ends.emitter->numberOfConnections(), 0);
            }
            // Freed at once when idle; kept by the queued packet otherwise.
            EXPECT_EQ(CountedConnection::live(), baseline + (queued ? 1 : 0));
            processHere();
            EXPECT_EQ(ends.tally.load(), queued && edge.queuedPacketArrives ? 1 : 0);
            EXPECT_EQ(CountedConnection::live(), baseline);
            // What is left of either end still works on a clean graph.
            if (ends.listener) {
                ends.listener->disconnect();
            }
            if (ends.emitter) {
                ends.emitter->send(8);
            }
            EXPECT_EQ(ends.tally.load(), queued && edge.queuedPacketArrives ? 1 : 0);
        }
    }
}

TEST(ConnectionLifetime, LastOfSeveralQueuedPacketsFreesTheConnection) {
    const int baseline = CountedConnection::live();
    Ends ends;
    for (int i = 0; i < 3; ++i) {
        ends.emitter->sendWith(VTMS::AlwaysQueue, i);
    }
    ends.emitter->disconnectFrom(ends.listener.get(), VTMS::DeliverPackets);
    VTMS::Thread *const here = VTMS::Thread::getCurrentThread();
    here->processOne();
    here->processOne();
    EXPECT_EQ(CountedConnection::live(), baseline + 1);
    here->processOne();
    EXPECT_EQ(CountedConnection::live(), baseline);
    EXPECT_EQ(ends.listener->received(), (std::vector<std::string>{"0", "1", "2"}));
}

TEST(ConnectionLifetime, DestroyedThreadDropsItsQueuedPacketsUndelivered) {
    const int baseline = CountedConnection::live();
    auto thread = std::make_unique<vort_test::OwnedThread>();
    Ends ends;
    ends.emitter->disconnectFrom(ends.listener.get(), VTMS::DeliverPackets);
    CountedConnection::connect(*ends.emitter, *ends.listener, thread.get());
    ends.emitter->send(1);
    ends.emitter->send(2);
    ends.emitter.reset();
    EXPECT_EQ(CountedConnection::live(), baseline + 1);
    thread.reset();
    EXPECT_EQ(CountedConnection::live(), baseline);
    EXPECT_EQ(ends.tally.load(), 0);
}

// Handlers may change the graph of the send that calls them.

TEST(Send, ListenerThatDisconnectsItselfInItsHandlerLeavesTheSendWhole) {
    IntEmitter emitter;
    Acting listeners[3];
    for (Acting &listener : listeners) {
        emitter.connect(&listener, &Acting::onInt);
        listener.action = [&listener](int) { listener.disconnect(); };
    }
    emitter.send(1);
    for (Acting &listener : listeners) {
        EXPECT_EQ(listener.count(), 1);
    }
    EXPECT_EQ(emitter.numberOfConnections(), 0);
    emitter.send(2);
    for (Acting &listener : listeners) {
        EXPECT_EQ(listener.count(), 1);
    }
}

TEST(Send, ListenerDestroyedByAnEarlierHandlerIsSkipped) {
    // Two listeners that each destroy the other: whichever comes first in the send is called,
    // and the other is found dead.
    IntEmitter emitter;
    std::atomic<int> tally{0};
    std::unique_ptr<Acting> pair[2] = {std::make_unique<Acting>(), std::make_unique<Acting>()};
    for (int i = 0; i < 2; ++i) {
        pair[i]->setTally(&tally);
        pair[i]->action = [&pair, i](int) { pair[1 - i].reset(); };
        emitter.connect(pair[i].get(), &Acting::onInt);
    }
    emitter.send(1);
    EXPECT_EQ(tally.load(), 1);
    EXPECT_EQ(emitter.numberOfConnections(), 1);
}

TEST(Send, EmitterDestroyedByAHandlerFinishesTheSend) {
    auto emitter = std::make_unique<IntEmitter>();
    Acting killer;
    Recorder others[4];
    emitter->connect(&killer, &Acting::onInt);
    for (Recorder &other : others) {
        emitter->connect(&other, &Recorder::onInt);
    }
    killer.action = [&emitter](int) { emitter.reset(); };
    emitter->sendWith(VTMS::BlockUntilDelivered, 1);
    EXPECT_FALSE(emitter);
    for (Recorder &other : others) {
        EXPECT_EQ(other.count(), 1);
    }
}

TEST(Send, HandlerMayConnectAndSendWithoutDisturbingTheSnapshot) {
    IntEmitter emitter;
    Acting connector;
    Recorder late;
    emitter.connect(&connector, &Acting::onInt);
    int depth = 0;
    connector.action = [&](int) {
        if (depth++ == 0) {
            emitter.connect(&late, &Recorder::onInt);
            emitter.send(2);
        }
    };
    emitter.send(1);
    // The nested send saw the new connection; the outer one, taken before, did not.
    EXPECT_EQ(late.received(), (std::vector<std::string>{"2"}));
    EXPECT_EQ(connector.received(), (std::vector<std::string>{"1", "2"}));
}

}  // namespace
