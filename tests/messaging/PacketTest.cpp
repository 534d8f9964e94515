#include "MessagingTestSupport.h"
#include <vort/messaging/HostExceptions.h>
#include <vort/messaging/Packet.h>

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

namespace {

using namespace vort_test;

// Counts its calls and its end, and runs `thrower` in `dispatch`.
class Probe : public VTMS::Payload {
public:
    explicit Probe(int *ends) : m_ends(ends) {}
    ~Probe() override { ++*m_ends; }
    void dispatch(VTMS::Connection *) override { ++dispatched, thrower ? thrower() : void(); }
    std::atomic<int> dispatched{0};
    std::function<void()> thrower;

private:
    int *m_ends;
};

struct Link {
    IntEmitter emitter;
    Recorder listener;
    VTMS::Connection *connection = CountedConnection::connect(emitter, listener);
};

TEST(Packet, CountsReferencesAndDeliverIsNeitherTestedNorGuarded) {
    int ends = 0;
    auto *first = new Probe(&ends), *second = new Probe(&ends);
    {
        VTMS::Packet a(first), b(a), c(second);
        b = a;
        EXPECT_EQ(first->refCount(), 2);
        b = c;
        EXPECT_EQ(first->refCount() * 10 + second->refCount(), 12);
        VTMS::Packet moved(std::move(c));
        EXPECT_EQ(second->refCount(), 2);
        a.setSynchronous(3);
        Link link;
        link.listener.disconnect();
        a.deliver(link.connection);  // a dead listener is still called through the payload
        a.deliver(nullptr);          // only counted
        EXPECT_EQ(first->dispatched.load(), 1);
        EXPECT_TRUE(a.wait(1));
        first->thrower = [] { throw 1; };
        EXPECT_THROW(a.deliver(link.connection), int);
        EXPECT_TRUE(a.wait(1));  // the throw skipped the count
        first->thrower = nullptr;
        a.deliver(link.connection);
        EXPECT_FALSE(a.wait(1));
    }
    EXPECT_EQ(ends, 2);
}

TEST(ConnectedPacket, HoldsAReferenceOnThePayloadAndAUseOfTheConnection) {
    const int baseline = CountedConnection::live;
    int ends = 0;
    auto *probe = new Probe(&ends);
    {
        VTMS::Packet packet(probe);
        auto link = std::make_unique<Link>();
        VTMS::ConnectedPacket bound(packet, link->connection);
        {
            VTMS::ConnectedPacket copy(bound);
            Link other;
            VTMS::ConnectedPacket elsewhere(packet, other.connection);
            copy = elsewhere;
            EXPECT_EQ(probe->refCount(), 4);
        }
        link.reset();  // both ends go; the packet keeps the connection
        EXPECT_EQ(CountedConnection::live.load(), baseline + 1);
        VTMS::ConnectedPacket moved(std::move(bound));
        EXPECT_EQ(probe->refCount(), 2);
        moved.deliver();
        EXPECT_EQ(probe->dispatched.load(), 0);
    }
    EXPECT_EQ(CountedConnection::live.load(), baseline);
    EXPECT_EQ(ends, 1);
}

struct UserFailure : Corvane::System::IUserException {
    unsigned long getCode() const override { return 1; }
    const char *getSource() const override { return "UserFailure"; }
    const char *getText() const override { return "shown to the user"; }
};

// A throw is caught and leaves the delivery uncounted; a cut of the listener side (only)
// skips the call and counts it as delivered.
TEST(ConnectedPacket, DeliverCatchesEveryThrowAndSkipsCutListeners) {
    const struct {
        std::function<void()> thrower;
        int cut;  // 0: none, then DropPackets + 1 or DeliverPackets + 1
    } rows[] = {
        {[] { throw UserFailure(); }, 0},
        {[] { throw std::runtime_error("out"); }, 0},
        {[] { throw 42; }, 0},
        {nullptr, 0},
        {nullptr, VTMS::DropPackets + 1},
        {nullptr, VTMS::DeliverPackets + 1},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(&row - rows);
        int ends = 0;
        Link link;
        auto *probe = new Probe(&ends);
        probe->thrower = row.thrower;
        VTMS::Packet packet(probe);
        packet.setSynchronous(1);
        VTMS::ConnectedPacket bound(packet, link.connection);
        row.cut ? link.emitter.disconnectFrom(&link.listener, VTMS::PacketDropMode(row.cut - 1))
                : void();
        EXPECT_EQ(link.connection->isLive(), row.cut != VTMS::DropPackets + 1);
        EXPECT_NO_THROW(bound.deliver());
        EXPECT_EQ(probe->dispatched.load(), row.cut == VTMS::DropPackets + 1 ? 0 : 1);
        EXPECT_EQ(packet.wait(1), row.thrower != nullptr);
    }
}

TEST(Send, ThrowsStopNoSendAndBlockingOnTheSendingThreadIsDirect) {
    IntEmitter emitter;
    Recorder throwers[2], plain[2];
    for (int i = 0; i < 2; ++i) {
        throwers[i].action = [](int) { throw std::runtime_error("out"); };
        emitter.connect(&throwers[i], &Recorder::onInt);
        emitter.connect(&plain[i], &Recorder::onInt, VTMS::Thread::getCurrentThread());
    }
    EXPECT_NO_THROW(emitter.send(1));
    EXPECT_NO_THROW(emitter.sendWith(VTMS::AlwaysQueue, 2));
    EXPECT_EQ(throwers[1].count() * 10 + plain[1].count(), 11);
    EXPECT_NO_THROW(processHere());
    throwers[0].disconnect(), throwers[1].disconnect();  // a throw would block these for good
    emitter.sendWith(VTMS::BlockUntilDelivered, 3);
    emitter.sendWith(VTMS::BlockAndProcess, 4);
    EXPECT_EQ(throwers[0].count() * 10 + plain[0].count(), 24);
}

TEST(Send, PayloadLivesUntilTheLastQueueLetsGo) {
    int ends = 0;
    IntEmitter emitter;
    Recorder a, b;
    emitter.connect(&a, &Recorder::onInt);
    emitter.connect(&b, &Recorder::onInt);
    auto *probe = new Probe(&ends);
    {
        VTMS::Packet packet(probe);
        emitter.sendPacket(packet, VTMS::AlwaysQueue, false);
        EXPECT_EQ(probe->refCount(), 3);
    }
    VTMS::Thread::getCurrentThread()->processOne();
    EXPECT_EQ(ends * 10 + probe->dispatched.load(), 1);
    processHere();
    EXPECT_EQ(ends, 1);
}

}  // namespace
