#include "MessagingTestSupport.h"
#include <vort/messaging/HostExceptions.h>
#include <vort/messaging/Packet.h>

#include <gtest/gtest.h>

#include <chrono>
#include <exception>
#include <functional>
#include <memory>

namespace {

using vort_test::CountedConnection;
using vort_test::IntEmitter;
using vort_test::processHere;
using vort_test::Recorder;

// A payload that counts its calls and its end, and can be told to throw from `dispatch`.
class Probe : public VTMS::Payload {
public:
    explicit Probe(int *ends) : m_ends(ends) {}
    ~Probe() override { ++*m_ends; }

    void dispatch(VTMS::Connection *) override {
        ++dispatched;
        if (thrower) {
            thrower();
        }
    }

    std::atomic<int> dispatched{0};
    std::function<void()> thrower;

private:
    int *m_ends;
};

// A listener and its emitter, with a connection to reach the listener through.
struct Link {
    IntEmitter emitter;
    Recorder listener;
    VTMS::Connection *connection = CountedConnection::connect(emitter, listener);
};

TEST(Packet, TakesOverTheFirstReferenceAndFreesWithTheLast) {
    int ends = 0;
    auto *first = new Probe(&ends);
    auto *second = new Probe(&ends);
    // The payload's own count deletes nothing.
    first->incRef();
    EXPECT_EQ(first->decRef(), 1);
    EXPECT_EQ(first->refCount(), 1);
    {
        VTMS::Packet a(first);
        EXPECT_EQ(first->refCount(), 1);
        {
            VTMS::Packet b(a);
            EXPECT_EQ(first->refCount(), 2);
            b = a;
            EXPECT_EQ(first->refCount(), 2);
            VTMS::Packet c(second);
            b = c;
            EXPECT_EQ(first->refCount(), 1);
            EXPECT_EQ(second->refCount(), 2);
            VTMS::Packet moved(std::move(c));
            EXPECT_EQ(second->refCount(), 2);
        }
        EXPECT_EQ(ends, 1);
        EXPECT_EQ(first->refCount(), 1);
    }
    EXPECT_EQ(ends, 2);
}

TEST(Packet, DeliverIsNeitherTestedNorGuarded) {
    int ends = 0;
    Link link;
    auto *probe = new Probe(&ends);
    VTMS::Packet packet(probe);
    packet.setSynchronous(3);

    link.listener.disconnect();
    packet.deliver(link.connection);  // a dead listener is still called through the payload
    EXPECT_EQ(probe->dispatched.load(), 1);
    packet.deliver(nullptr);  // no connection: only counted
    EXPECT_EQ(probe->dispatched.load(), 1);
    EXPECT_TRUE(packet.wait(1));

    probe->thrower = [] { throw std::runtime_error("out"); };
    EXPECT_THROW(packet.deliver(link.connection), std::runtime_error);
    EXPECT_TRUE(packet.wait(1));  // the throw skipped the count
    probe->thrower = nullptr;
    packet.deliver(link.connection);
    EXPECT_FALSE(packet.wait(1));
    packet.wait();
}

TEST(ConnectedPacket, HoldsAReferenceOnThePayloadAndAUseOfTheConnection) {
    const int baseline = CountedConnection::live();
    int ends = 0;
    auto *probe = new Probe(&ends);
    {
        VTMS::Packet packet(probe);
        auto link = std::make_unique<Link>();
        VTMS::ConnectedPacket bound(packet, link->connection);
        EXPECT_EQ(probe->refCount(), 2);
        {
            VTMS::ConnectedPacket copy(bound);
            EXPECT_EQ(probe->refCount(), 3);
            Link other;
            VTMS::ConnectedPacket elsewhere(packet, other.connection);
            copy = elsewhere;
            EXPECT_EQ(probe->refCount(), 4);
        }
        EXPECT_EQ(probe->refCount(), 2);

        // Both ends go; the packet keeps the connection until it goes itself.
        link.reset();
        EXPECT_EQ(CountedConnection::live(), baseline + 1);
        VTMS::ConnectedPacket moved(std::move(bound));
        EXPECT_EQ(probe->refCount(), 2);
        moved.deliver();
        EXPECT_EQ(probe->dispatched.load(), 0);
    }
    EXPECT_EQ(CountedConnection::live(), baseline);
    EXPECT_EQ(ends, 1);
}

// The host's exceptions, and a standard one, each counting the reads of its text.
int g_textReads = 0;
int g_whatReads = 0;

struct UserFailure : Corvane::System::IUserException, std::exception {
    unsigned long getCode() const override { return 1; }
    const char *getSource() const override { return "UserFailure"; }
    const char *getText() const override {
        ++g_textReads;
        return "shown to the user";
    }
    const char *what() const noexcept override {
        ++g_whatReads;
        return "standard";
    }
};

struct HostFailure : Corvane::System::IException, std::exception {
    unsigned long getCode() const override { return 2; }
    const char *getSource() const override { return "HostFailure"; }
    const char *what() const noexcept override {
        ++g_whatReads;
        return "standard";
    }
};

struct StandardFailure : std::exception {
    const char *what() const noexcept override {
        ++g_whatReads;
        return "standard";
    }
};

struct ThrowCase {
    const char *name;
    std::function<void()> thrower;
    int textReads;
    int whatReads;
};

TEST(ConnectedPacket, DeliverCatchesInTheHostsOrderAndSkipsTheCount) {
    const ThrowCase cases[] = {
        {"IUserException first", [] { throw UserFailure(); }, 1, 0},
        {"IException before std::exception", [] { throw HostFailure(); }, 0, 0},
        {"std::exception", [] { throw StandardFailure(); }, 0, 1},
        {"anything else", [] { throw 42; }, 0, 0},
        {"nothing thrown", nullptr, 0, 0},
    };
    for (const ThrowCase &c : cases) {
        SCOPED_TRACE(c.name);
        g_textReads = 0;
        g_whatReads = 0;
        int ends = 0;
        Link link;
        auto *probe = new Probe(&ends);
        probe->thrower = c.thrower;
        VTMS::Packet packet(probe);
        packet.setSynchronous(1);
        VTMS::ConnectedPacket bound(packet, link.connection);
        EXPECT_NO_THROW(bound.deliver());
        EXPECT_EQ(probe->dispatched.load(), 1);
        EXPECT_EQ(g_textReads, c.textReads);
        EXPECT_EQ(g_whatReads, c.whatReads);
        // A throw leaves the delivery uncounted: the gate stays closed.
        EXPECT_EQ(packet.wait(1), c.thrower != nullptr);
    }
}

TEST(ConnectedPacket, OnlyACutOfTheListenerSideSkipsTheCall) {
    for (VTMS::PacketDropMode mode : {VTMS::DeliverPackets, VTMS::DropPackets}) {
        int ends = 0;
        Link link;
        auto *probe = new Probe(&ends);
        VTMS::Packet packet(probe);
        packet.setSynchronous(1);
        VTMS::ConnectedPacket bound(packet, link.connection);
        EXPECT_TRUE(link.connection->isLive());
        link.emitter.disconnectFrom(&link.listener, mode);
        EXPECT_EQ(link.connection->isLive(), mode == VTMS::DeliverPackets);
        bound.deliver();
        EXPECT_EQ(probe->dispatched.load(), mode == VTMS::DeliverPackets ? 1 : 0);
        EXPECT_FALSE(packet.wait(1));  // a dead listener counts as delivered
    }
}

TEST(Send, ThrowingListenerDoesNotStopADirectSend) {
    class Thrower : public Recorder {
    public:
        void onInt(int) {
            note("threw");
            throw StandardFailure();
        }
    };
    IntEmitter emitter;
    Thrower throwers[3];
    Recorder plain[3];
    for (int i = 0; i < 3; ++i) {
        emitter.connect(&throwers[i], &Thrower::onInt);
        emitter.connect(&plain[i], &Recorder::onInt);
    }
    EXPECT_NO_THROW(emitter.send(1));
    EXPECT_NO_THROW(emitter.sendWith(VTMS::AlwaysQueue, 2));
    EXPECT_NO_THROW(processHere());
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(throwers[i].count(), 2);
        EXPECT_EQ(plain[i].count(), 2);
    }
}

TEST(Send, BlockingToTheSendingThreadIsDirectAndDoesNotWait) {
    IntEmitter emitter;
    Recorder onThisThread;
    Recorder withoutThread;
    emitter.connect(&onThisThread, &Recorder::onInt, VTMS::Thread::getCurrentThread());
    emitter.connect(&withoutThread, &Recorder::onInt);
    for (VTMS::SendMode mode : {VTMS::BlockUntilDelivered, VTMS::BlockAndProcess}) {
        const auto start = std::chrono::steady_clock::now();
        emitter.sendWith(mode, 1);
        // Both were called inside the send, so the gate was open before the first wait slice.
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(100));
    }
    EXPECT_EQ(onThisThread.count(), 2);
    EXPECT_EQ(withoutThread.count(), 2);
}

TEST(Send, PayloadLivesUntilTheLastQueueLetsGo) {
    int ends = 0;
    IntEmitter emitter;
    Recorder a;
    Recorder b;
    emitter.connect(&a, &Recorder::onInt);
    emitter.connect(&b, &Recorder::onInt);
    auto *probe = new Probe(&ends);
    {
        VTMS::Packet packet(probe);
        emitter.sendPacket(packet, VTMS::AlwaysQueue, false);
        EXPECT_EQ(probe->refCount(), 3);
    }
    EXPECT_EQ(ends, 0);
    EXPECT_EQ(probe->refCount(), 2);
    VTMS::Thread::getCurrentThread()->processOne();
    EXPECT_EQ(ends, 0);
    EXPECT_EQ(probe->dispatched.load(), 1);
    processHere();
    EXPECT_EQ(ends, 1);
}

}  // namespace
