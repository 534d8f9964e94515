#include "MessagingTestSupport.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

using namespace vort_test;
using VTMS::Thread;

// Counts its calls and logs its end; runs `thrower` in `dispatch`.
class Probe : public VTMS::Payload1<void, int> {
public:
    Probe(int value, std::vector<int> *ends) : PayloadN(value), m_value(value), m_ends(ends) {}
    ~Probe() override { m_ends->push_back(m_value); }
    void dispatch(VTMS::Connection *to) override {
        ++dispatched, thrower ? thrower() : PayloadN::dispatch(to);
    }
    int dispatched = 0;
    std::function<void()> thrower;

private:
    int m_value;
    std::vector<int> *m_ends;
};

struct Link {
    IntEmitter emitter;
    Recorder listener;
    VTMS::Connection *connection = CountedConnection::connect(emitter, listener);
};

TEST(Packet, PayloadDeliveryIsNeitherTestedNorGuardedButConnectedDeliveryIs) {
    std::vector<int> ends;
    auto *probe = new Probe(1, &ends);
    const int baseline = CountedConnection::live;
    {
        VTMS::Packet packet(probe);
        auto link = std::make_unique<Link>();
        VTMS::ConnectedPacket bound(packet, link->connection);
        {
            Link other;
            VTMS::ConnectedPacket copy(bound), elsewhere(packet, other.connection);
            copy = elsewhere;
            EXPECT_EQ(probe->refCount(), 4);
            packet.setSynchronous(4);
            probe->thrower = [] { throw 1; };
            EXPECT_NO_THROW(copy.deliver());  // caught, and left uncounted
            probe->thrower = nullptr;
            copy.deliver();
        }
        link->listener.disconnect();
        packet.deliver(link->connection);  // a dead listener is still called through the payload
        packet.deliver(nullptr);           // only counted
        EXPECT_TRUE(packet.wait(1));
        probe->thrower = [] { throw 1; };
        EXPECT_THROW(packet.deliver(link->connection), int);
        link.reset();  // both ends go; the packet keeps the connection
        EXPECT_EQ(CountedConnection::live.load(), baseline + 1);
        VTMS::ConnectedPacket moved(std::move(bound));
        EXPECT_EQ(probe->refCount(), 2);
        moved.deliver();  // the cut listener is skipped and counted as delivered
        EXPECT_EQ(probe->dispatched * 10 + packet.wait(1), 40);
    }
    EXPECT_EQ(CountedConnection::live.load(), baseline);
}

TEST(Thread, ProcessDeliversInOrderAndWhatADeliveryPostsComesInTheSameProcess) {
    IntEmitter emitter;
    Recorder listener;
    std::string processing;
    emitter.connect(&listener, &Recorder::onInt);
    listener.action = [&](int value) {
        processing += Thread::getCurrentThread()->processingMessages() ? "p" : "-";
        value > 1 && value < 4 ? emitter.sendWith(VTMS::AlwaysQueue, value + 1) : void();
    };
    emitter.send(1);
    emitter.sendWith(VTMS::AlwaysQueue, 2);
    emitter.sendWith(VTMS::AlwaysQueue, 6);
    Thread::getCurrentThread()->processOne();
    EXPECT_EQ(listener.count(), 2);
    processHere();
    EXPECT_EQ(listener.received, (std::vector<std::string>{"1", "2", "6", "3", "4"}));
    EXPECT_EQ(processing + (Thread::getCurrentThread()->processingMessages() ? "p" : "-"),
              "-pppp-");
    // A nested process meets the packet in delivery again, since it stays queued meanwhile.
    bool nested = false;
    listener.action = [&nested](int) { nested ? void() : (nested = true, processHere()); };
    emitter.sendWith(VTMS::AlwaysQueue, 1);
    emitter.sendWith(VTMS::AlwaysQueue, 2);
    processHere();
    EXPECT_EQ(listener.count(), 8);
}

TEST(Thread, AssignmentSharesOneQueueAndDestructionDropsItLastToFirst) {
    std::vector<int> ends;
    const int baseline = CountedConnection::live;
    Link link;
    auto post = [&](Thread &thread, int value) {
        thread.post(VTMS::ConnectedPacket(VTMS::Packet(new Probe(value, &ends)), link.connection));
    };
    auto a = std::make_unique<OwnedThread>(), b = std::make_unique<OwnedThread>();
    post(*b, 3);
    *a = *b;
    post(*a, 4);
    a.reset();
    b->process();
    EXPECT_EQ(link.listener.received, (std::vector<std::string>{"3", "4"}));
    for (int value : {5, 6, 7}) {
        post(*b, value);
    }
    link.listener.disconnect();
    EXPECT_EQ(CountedConnection::live.load(), baseline + 1);
    b.reset();
    EXPECT_EQ(ends, (std::vector<int>{3, 4, 7, 6, 5}));
    EXPECT_EQ(CountedConnection::live.load(), baseline);
}

}  // namespace
