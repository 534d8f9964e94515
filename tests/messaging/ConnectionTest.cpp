#include "MessagingTestSupport.h"
#include <vort/messaging/Connection.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace {

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

TEST(EmitterBase, SamePairTwiceMakesTwoConnectionsAndOneCutTakesBoth) {
    IntEmitter emitter;
    Recorder listener;
    emitter.connect(&listener, &Recorder::onInt);
    emitter.connect(&listener, &Recorder::onInt);
    EXPECT_TRUE(emitter.hasConnections());
    EXPECT_EQ(emitter.numberOfConnections(), 2);
    emitter.send(5);
    EXPECT_EQ(listener.received(), (std::vector<std::string>{"5", "5"}));

    emitter.disconnectFrom(&listener, VTMS::DeliverPackets);
    EXPECT_EQ(emitter.numberOfConnections(), 0);

    emitter.connect(&listener, &Recorder::onInt);
    emitter.connect(&listener, &Recorder::onInt);
    listener.disconnectFrom(emitter, VTMS::DropPackets);
    EXPECT_EQ(emitter.numberOfConnections(), 0);
    emitter.send(6);
    EXPECT_EQ(listener.count(), 2);
}

TEST(EmitterBase, DisconnectFromTouchesOnlyThatListener) {
    IntEmitter emitter;
    Recorder kept;
    Recorder cut;
    emitter.connect(&kept, &Recorder::onInt);
    emitter.connect(&cut, &Recorder::onInt);
    for (VTMS::PacketDropMode mode : {VTMS::DeliverPackets, VTMS::DropPackets}) {
        emitter.disconnectFrom(&cut, mode);
        EXPECT_EQ(emitter.numberOfConnections(), 1);
        emitter.connect(&cut, &Recorder::onInt);
        cut.disconnectFrom(emitter, mode);
        EXPECT_EQ(emitter.numberOfConnections(), 1);
        emitter.connect(&cut, &Recorder::onInt);
    }
    emitter.send(1);
    EXPECT_EQ(kept.count(), 1);
    EXPECT_EQ(cut.count(), 1);
}

TEST(EmitterBase, CopyStartsWithoutConnectionsAndWithTheDefaultMode) {
    IntEmitter original(VTMS::AlwaysQueue);
    Recorder listener;
    original.connect(&listener, &Recorder::onInt);

    IntEmitter copy(original);
    EXPECT_EQ(copy.numberOfConnections(), 0);
    EXPECT_EQ(original.numberOfConnections(), 1);

    // The copied default mode shows in the copy's own sends: queued, not direct.
    copy.connect(&listener, &Recorder::onInt);
    copy.send(3);
    EXPECT_EQ(listener.count(), 0);
    processHere();
    EXPECT_EQ(listener.received(), (std::vector<std::string>{"3"}));
}

TEST(EmitterBase, SetDefaultModeChangesWhatUseDefaultModeMeans) {
    IntEmitter emitter;
    Recorder listener;
    emitter.connect(&listener, &Recorder::onInt);
    emitter.send(1);
    EXPECT_EQ(listener.count(), 1);
    emitter.setDefaultMode(VTMS::AlwaysQueue);
    emitter.send(2);
    EXPECT_EQ(listener.count(), 1);
    emitter.sendWith(VTMS::DirectOrQueue, 3);
    EXPECT_EQ(listener.count(), 2);
    processHere();
    EXPECT_EQ(listener.received(), (std::vector<std::string>{"1", "3", "2"}));
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

TEST(Listener, DisconnectCutsEveryConnectionOfTheListener) {
    IntEmitter a;
    IntEmitter b;
    Recorder listener;
    Recorder other;
    a.connect(&listener, &Recorder::onInt);
    b.connect(&listener, &Recorder::onInt);
    b.connect(&other, &Recorder::onInt);
    listener.disconnect();
    EXPECT_EQ(a.numberOfConnections(), 0);
    EXPECT_EQ(b.numberOfConnections(), 1);
    a.send(1);
    b.send(2);
    EXPECT_EQ(listener.count(), 0);
    EXPECT_EQ(other.count(), 1);
}

// A listener that can be copied, as listeners with plain fields can.
class Plain : public VTMS::Listener {
public:
    ~Plain() override { disconnect(); }
    void onInt(int) { ++calls; }
    int calls = 0;
};

TEST(Listener, CopyStartsWithoutConnections) {
    IntEmitter emitter;
    Plain original;
    emitter.connect(&original, &Plain::onInt);
    Plain copy(original);
    emitter.send(1);
    EXPECT_EQ(original.calls, 1);
    EXPECT_EQ(copy.calls, 0);
    copy.disconnect();
    EXPECT_EQ(emitter.numberOfConnections(), 1);
}

TEST(Listener, AssignmentCutsTheOldConnectionsAndSharesTheSet) {
    IntEmitter a;
    IntEmitter b;
    auto first = std::make_unique<Recorder>();
    auto second = std::make_unique<Recorder>();
    a.connect(first.get(), &Recorder::onInt);
    b.connect(second.get(), &Recorder::onInt);

    static_cast<VTMS::Listener &>(*first) = *second;
    EXPECT_EQ(a.numberOfConnections(), 0);
    EXPECT_EQ(b.numberOfConnections(), 1);

    // One set now: a disconnect through either listener cuts both listeners' connections.
    a.connect(first.get(), &Recorder::onInt);
    second->disconnect();
    EXPECT_EQ(a.numberOfConnections(), 0);
    EXPECT_EQ(b.numberOfConnections(), 0);
    first.reset();
    second.reset();
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

TEST(ConnectionLifetime, ConnectionLivesWhileBothEndsDoWithNoPacketInFlight) {
    const int baseline = CountedConnection::live();
    Ends ends;
    ends.emitter->send(1);
    ends.emitter->sendWith(VTMS::AlwaysQueue, 2);
    processHere();
    EXPECT_EQ(ends.tally.load(), 2);
    EXPECT_EQ(CountedConnection::live(), baseline + 1);
    EXPECT_EQ(ends.emitter->numberOfConnections(), 1);
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

class Cutter : public Recorder {
public:
    std::function<void()> action;
    void onInt(int value) {
        note(std::to_string(value));
        if (action) {
            action();
        }
    }
};

TEST(Send, ListenerThatDisconnectsItselfInItsHandlerLeavesTheSendWhole) {
    IntEmitter emitter;
    Cutter listeners[3];
    for (Cutter &listener : listeners) {
        emitter.connect(&listener, &Cutter::onInt);
        listener.action = [&listener] { listener.disconnect(); };
    }
    emitter.send(1);
    for (Cutter &listener : listeners) {
        EXPECT_EQ(listener.count(), 1);
    }
    EXPECT_EQ(emitter.numberOfConnections(), 0);
    emitter.send(2);
    for (Cutter &listener : listeners) {
        EXPECT_EQ(listener.count(), 1);
    }
}

TEST(Send, ListenerDestroyedByAnEarlierHandlerIsSkipped) {
    IntEmitter emitter;
    Cutter first;
    std::atomic<int> victimTally{0};
    auto victim = std::make_unique<Recorder>();
    victim->setTally(&victimTally);
    Recorder last;

    // Connect until the victim's connection comes after the first's in delivery order.
    std::vector<std::pair<VTMS::Connection *, int>> made;
    {
        VORT::WriteLocker lock(VTMS::GetGlobalConnectionLock());
        made.emplace_back(
            new VTMS::ConnectionImpl1<Cutter, void, int>(&first, &Cutter::onInt, &emitter, nullptr),
            0);
        made.emplace_back(new VTMS::ConnectionImpl1<Recorder, void, int>(
                              victim.get(), &Recorder::onInt, &emitter, nullptr),
                          1);
    }
    const bool victimFirst = made[1].first < made[0].first;
    first.action = [&victim] { victim.reset(); };
    emitter.connect(&last, &Recorder::onInt);

    emitter.send(1);
    EXPECT_EQ(first.count(), 1);
    EXPECT_EQ(last.count(), 1);
    EXPECT_EQ(victimTally.load(), victimFirst ? 1 : 0);
    EXPECT_EQ(emitter.numberOfConnections(), 2);
}

TEST(Send, EmitterDestroyedByAHandlerFinishesTheSend) {
    auto emitter = std::make_unique<IntEmitter>();
    Cutter killer;
    Recorder others[4];
    emitter->connect(&killer, &Cutter::onInt);
    for (Recorder &other : others) {
        emitter->connect(&other, &Recorder::onInt);
    }
    killer.action = [&emitter] { emitter.reset(); };
    emitter->sendWith(VTMS::BlockUntilDelivered, 1);
    EXPECT_FALSE(emitter);
    for (Recorder &other : others) {
        EXPECT_EQ(other.count(), 1);
    }
}

TEST(Send, HandlerMayConnectAndSendWithoutDisturbingTheSnapshot) {
    IntEmitter emitter;
    Cutter connector;
    Recorder late;
    emitter.connect(&connector, &Cutter::onInt);
    int depth = 0;
    connector.action = [&] {
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
