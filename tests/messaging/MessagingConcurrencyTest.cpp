// Sends, cuts and deaths racing on real threads.
#include "MessagingTestSupport.h"
#include <vort/messaging/Emitter.h>
#include <vort/messaging/Thread.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

namespace {

using vort_test::Acting;
using vort_test::IntEmitter;
using vort_test::Latch;
using vort_test::processHere;
using vort_test::Recorder;
using vort_test::ServiceThread;

using Clock = std::chrono::steady_clock;

TEST(MessagingConcurrency, BlockingSendReturnsWhenAnotherThreadHasProcessed) {
    ServiceThread server;
    IntEmitter emitter(VTMS::BlockUntilDelivered);
    Recorder listener;
    emitter.connect(&listener, &Recorder::onInt, server.record());

    // The server gets to its queue only after 250 milliseconds. The clock starts first, so that
    // a slow start of the send cannot make the wait look shorter than the delay.
    const auto start = Clock::now();
    server.run([&server] {
        std::this_thread::sleep_for(std::chrono::milliseconds(250));
        server.record()->process();
    });
    emitter.send(1);
    const auto elapsed = Clock::now() - start;
    EXPECT_EQ(listener.count(), 1);
    EXPECT_GE(elapsed, std::chrono::milliseconds(250));
    // Within the next 100 millisecond slice, with room for a loaded machine.
    EXPECT_LT(elapsed, std::chrono::milliseconds(250 + 100 + 1500));
}

TEST(MessagingConcurrency, BlockingSendOutlivesADropPacketsCutOfItsOnlyListener) {
    ServiceThread server;
    ASSERT_TRUE(server.registerAs("MessagingConcurrency.drop", false));
    ServiceThread sender;
    IntEmitter emitter(VTMS::BlockUntilDelivered);
    Recorder listener;
    emitter.connect(&listener, &Recorder::onInt, server.record());

    Latch returned(1);
    sender.run([&] {
        emitter.send(1);
        returned.countDown();
    });
    ASSERT_TRUE(server.waitForWakes(1));  // the packet is queued
    listener.disconnectFrom(emitter, VTMS::DropPackets);
    EXPECT_FALSE(returned.wait(std::chrono::milliseconds(150)));
    ASSERT_TRUE(server.process());
    EXPECT_TRUE(returned.wait());
    EXPECT_EQ(listener.count(), 0);
}

TEST(MessagingConcurrency, BlockAndProcessWorksThroughItsOwnQueueWhileItWaits) {
    ServiceThread server;
    ASSERT_TRUE(server.registerAs("MessagingConcurrency.own-queue", true));
    IntEmitter local;
    IntEmitter question(VTMS::BlockAndProcess);
    IntEmitter answer;
    Acting waiting;  // a packet for it waits in this thread's queue before the send
    Acting asker;    // the server's answer comes to it through this thread's queue
    Acting helper;   // served on the server
    local.connect(&waiting, &Acting::onInt);
    question.connect(&helper, &Acting::onInt, server.record());
    answer.connect(&asker, &Acting::onInt, VTMS::Thread::getCurrentThread());

    // The server's handler returns only once both packets in the asking thread's queue have
    // been delivered, which only the asking thread's wait can do.
    Latch served(2);
    waiting.action = [&](int) { served.countDown(); };
    asker.action = [&](int) { served.countDown(); };
    bool servedInTime = false;
    helper.action = [&](int value) {
        answer.send(value * 10);
        servedInTime = served.wait();
    };

    local.sendWith(VTMS::AlwaysQueue, 1);
    question.send(4);
    EXPECT_TRUE(servedInTime);
    EXPECT_EQ(waiting.received(), (std::vector<std::string>{"1"}));
    EXPECT_EQ(asker.received(), (std::vector<std::string>{"40"}));
}

TEST(MessagingConcurrency, EmitterDiesWhileItsQueuedPacketsAreDelivered) {
    ServiceThread server;
    ASSERT_TRUE(server.registerAs("MessagingConcurrency.emitter-dies", true));
    std::atomic<int> tally{0};
    Recorder listener;
    listener.setTally(&tally);
    constexpr int kSends = 2000;
    {
        IntEmitter emitter;
        emitter.connect(&listener, &Recorder::onInt, server.record());
        emitter.connect(&listener, &Recorder::onInt);
        for (int i = 0; i < kSends; ++i) {
            emitter.send(i);
        }
    }
    ASSERT_TRUE(server.process());
    EXPECT_EQ(tally.load(), 2 * kSends);
}

TEST(MessagingConcurrency, RegistryLookupsAndRegistrationsRace) {
    constexpr int kThreads = 4;
    std::vector<std::thread> threads;
    std::vector<VTMS::Thread *> records(kThreads);
    Latch start(1);
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([t, &records, &start] {
            records[t] = VTMS::Thread::getCurrentThread();
            start.wait();
            for (int i = 0; i < 200; ++i) {
                const std::string name = "MessagingConcurrency.name." + std::to_string(i % 20);
                if (i % 7 == t) {
                    VTMS::Thread::registerThread(name, nullptr);
                } else {
                    VTMS::Thread::getNamedThread(name);
                }
            }
            VTMS::Thread::registerThread("MessagingConcurrency.own." + std::to_string(t), nullptr);
        });
    }
    start.countDown();
    for (std::thread &thread : threads) {
        thread.join();
    }
    for (int t = 0; t < kThreads; ++t) {
        EXPECT_EQ(VTMS::Thread::getNamedThread("MessagingConcurrency.own." + std::to_string(t)),
                  records[t]);
    }
}

// A mutex makes its record at its first lock; threads that first lock it at once must all end
// up on one record, or they would not exclude each other.
TEST(MutexConcurrency, FirstLockersShareOneRecord) {
    constexpr int kThreads = 4;
    constexpr int kRounds = 50;
    for (int round = 0; round < kRounds; ++round) {
        VORT::Mutex mutex(round % 2 ? VORT::Mutex::Recursive : VORT::Mutex::NonRecursive);
        int guarded = 0;
        Latch start(1);
        std::vector<std::thread> threads;
        for (int t = 0; t < kThreads; ++t) {
            threads.emplace_back([&] {
                start.wait();
                for (int i = 0; i < 100; ++i) {
                    VORT::MutexLocker lock(mutex);
                    ++guarded;
                }
            });
        }
        start.countDown();
        for (std::thread &thread : threads) {
            thread.join();
        }
        ASSERT_EQ(guarded, kThreads * 100);
    }
}

// ----- The soak ---------------------------------------------------------------------------
//
// Worker threads each own listeners, which they create, connect (always to be served on their
// own thread, as the rules for listeners on a thread require), cut and destroy, and process their
// own queues. Emitters are shared: any thread sends on any of them in any mode and drops them
// at random, and an emitter dies with whichever thread lets go of it last. Blocking sends go
// only to emitters whose connections were all made before the race, since a connect racing a
// blocking send may leave it waiting for good, and the race never makes one there. A pure
// sender blocks without processing, so that nobody waits for it.

// Counts its live copies, so that the end can tell that every payload has gone.
struct Token {
    static inline std::atomic<int> live{0};
    Token() { ++live; }
    Token(const Token &) { ++live; }
    ~Token() { --live; }
};

struct SoakMessage {
    int sender;
    int emitter;
    int seq;
    Token token;
};

typedef VTMS::Emitter1<void, const SoakMessage &> SoakEmitter;

struct EmitterSlot {
    std::shared_ptr<SoakEmitter> emitter;
    int id;
};

class SoakListener;

// A connection that counts its live instances, made by hand as the library's clients may.
class SoakConnection : public VTMS::ConnectionImpl1<SoakListener, void, const SoakMessage &> {
public:
    static inline std::atomic<int> live{0};
    static void connect(SoakEmitter &emitter, SoakListener *listener, VTMS::Thread *thread);
    ~SoakConnection() override { --live; }

private:
    SoakConnection(SoakListener *listener, SoakEmitter *emitter, VTMS::Thread *thread);
};

class SoakListener : public VTMS::Listener {
public:
    explicit SoakListener(std::thread::id owner) : m_owner(owner) {}
    ~SoakListener() override { disconnect(); }

    void onMessage(const SoakMessage &message) {
        // Connections are all served on the owner's thread.
        if (std::this_thread::get_id() != m_owner) {
            ++misplaced;
        }
        // From one sender through one emitter, queued deliveries keep their order, and so do
        // direct ones (which only the owner's own sends make).
        const bool queued = VTMS::Thread::getCurrentThread()->processingMessages();
        int &last = m_lastSeq[{2 * message.sender + (queued ? 1 : 0), message.emitter}];
        if (message.seq < last) {
            ++reordered;
        }
        last = message.seq;
        ++delivered;
        if (cutInHandler && message.seq % 61 == 0) {
            disconnect();
            connections.clear();
        }
    }

    // Per emitter id, how many connections this listener has to it, as far as the owner knows.
    std::map<int, int> connections;
    long delivered = 0;
    long expected = 0;
    bool cutInHandler = false;
    static inline std::atomic<int> misplaced{0};
    static inline std::atomic<int> reordered{0};

private:
    std::thread::id m_owner;
    std::map<std::pair<int, int>, int> m_lastSeq;
};

void SoakConnection::connect(SoakEmitter &emitter, SoakListener *listener, VTMS::Thread *thread) {
    VORT::WriteLocker lock(VTMS::GetGlobalConnectionLock());
    new SoakConnection(listener, &emitter, thread);
}

SoakConnection::SoakConnection(SoakListener *listener, SoakEmitter *emitter, VTMS::Thread *thread)
    : VTMS::ConnectionImpl1<SoakListener, void, const SoakMessage &>(
          listener, &SoakListener::onMessage, emitter, thread) {
    ++live;
}

class Soak {
public:
    static constexpr int kWorkers = 4;
    static constexpr int kSteps = 3000;
    static constexpr int kStable = 3;
    static constexpr int kChurn = 5;
    static constexpr int kPhaseSends = 4;

    Soak() : m_phases(kPhases) {
        for (int i = 0; i < kStable; ++i) {
            m_stable.push_back({std::make_shared<SoakEmitter>(), m_nextId++});
        }
        for (int i = 0; i < kChurn; ++i) {
            m_churn.push_back({std::make_shared<SoakEmitter>(), m_nextId++});
        }
        for (auto &phase : m_phases) {
            phase = std::make_unique<Latch>(kWorkers + 1);
        }
    }

    void run() {
        std::vector<std::thread> threads;
        for (int w = 0; w < kWorkers; ++w) {
            threads.emplace_back([this, w] { worker(w); });
        }
        threads.emplace_back([this] { pureSender(); });
        for (std::thread &thread : threads) {
            thread.join();
        }
    }

    std::atomic<int> accountingErrors{0};
    std::atomic<int> phaseTimeouts{0};
    std::atomic<long> deliveries{0};

private:
    enum Phase {
        Connected,
        RaceDone,
        Drained,
        Reset,
        PhaseSent,
        PhaseDrained,
        Checked,
        Ended,
        kPhases
    };

    // Every thread arrives at a phase; the workers process their queues while they wait, so
    // that blocked senders are served.
    void arrive(Phase phase, VTMS::Thread *self) {
        Latch &latch = *m_phases[phase];
        latch.countDown();
        const auto limit = Clock::now() + std::chrono::seconds(60);
        while (!latch.wait(std::chrono::milliseconds(2))) {
            if (self != nullptr) {
                self->process();
            }
            if (Clock::now() > limit) {
                ++phaseTimeouts;
                return;
            }
        }
    }

    EmitterSlot pick(std::vector<EmitterSlot> &pool, std::mt19937 &random) {
        std::lock_guard<std::mutex> guard(m_poolLock);
        return pool[random() % pool.size()];
    }

    void send(const EmitterSlot &slot, VTMS::SendMode mode, int sender) {
        slot.emitter->sendWith(mode, SoakMessage{sender, slot.id, m_seq[sender]++, Token()});
    }

    void worker(int w) {
        std::mt19937 random(1234 + w);
        VTMS::Thread *const self = VTMS::Thread::getCurrentThread();
        std::vector<std::unique_ptr<SoakListener>> mine;
        auto makeListener = [&] {
            mine.push_back(std::make_unique<SoakListener>(std::this_thread::get_id()));
            mine.back()->cutInHandler = random() % 4 == 0;
        };
        auto connect = [&](SoakListener *listener, const EmitterSlot &slot) {
            if (random() % 2 == 0) {
                SoakConnection::connect(*slot.emitter, listener, self);
            } else {
                slot.emitter->connect(listener, &SoakListener::onMessage, self);
            }
            ++listener->connections[slot.id];
        };

        for (int i = 0; i < 4; ++i) {
            makeListener();
            for (const EmitterSlot &slot : m_stable) {
                connect(mine.back().get(), slot);
            }
        }
        arrive(Connected, self);

        for (int step = 0; step < kSteps; ++step) {
            const int roll = static_cast<int>(random() % 100);
            if (roll < 25) {
                static const VTMS::SendMode kModes[] = {VTMS::AlwaysQueue, VTMS::DirectOrQueue,
                                                        VTMS::UseDefaultMode};
                send(pick(m_churn, random), kModes[random() % 3], w);
            } else if (roll < 45) {
                send(pick(m_stable, random), VTMS::DirectOrQueue, w);
            } else if (roll < 47) {
                send(pick(m_stable, random), VTMS::BlockAndProcess, w);
            } else if (roll < 55) {
                if (mine.size() < 12) {
                    makeListener();
                }
            } else if (roll < 72) {
                if (!mine.empty()) {
                    connect(mine[random() % mine.size()].get(), pick(m_churn, random));
                }
            } else if (roll < 78) {
                if (!mine.empty()) {
                    SoakListener *const listener = mine[random() % mine.size()].get();
                    const EmitterSlot slot = pick(random() % 2 ? m_churn : m_stable, random);
                    const auto mode = random() % 2 ? VTMS::DropPackets : VTMS::DeliverPackets;
                    if (random() % 2) {
                        listener->disconnectFrom(*slot.emitter, mode);
                    } else {
                        slot.emitter->disconnectFrom(listener, mode);
                    }
                    listener->connections.erase(slot.id);
                }
            } else if (roll < 82) {
                if (!mine.empty()) {
                    mine.erase(mine.begin() + random() % mine.size());
                }
            } else if (roll < 84) {
                if (!mine.empty()) {
                    SoakListener *const listener = mine[random() % mine.size()].get();
                    listener->disconnect();
                    listener->connections.clear();
                }
            } else if (roll < 87) {
                std::lock_guard<std::mutex> guard(m_poolLock);
                m_churn[random() % m_churn.size()] = {std::make_shared<SoakEmitter>(), m_nextId++};
            } else {
                send(pick(m_churn, random), VTMS::AlwaysQueue, w);
            }
            self->process();
        }
        arrive(RaceDone, self);
        self->process();
        arrive(Drained, self);

        // Exact accounting on a quiet graph: every worker sends a few messages on every
        // emitter, and every listener must get each of them once per connection it has.
        std::vector<EmitterSlot> live = snapshot();
        for (auto &listener : mine) {
            deliveries += listener->delivered;
            listener->delivered = 0;
            // A listener that cuts itself in its handler may get fewer, never more.
            listener->expected = 0;
            for (const EmitterSlot &slot : live) {
                const auto found = listener->connections.find(slot.id);
                if (found != listener->connections.end()) {
                    listener->expected += static_cast<long>(found->second) * kPhaseSends * kWorkers;
                }
            }
        }
        // Nobody sends until every count is reset, and nobody processes meanwhile.
        arrive(Reset, nullptr);
        for (int i = 0; i < kPhaseSends; ++i) {
            for (const EmitterSlot &slot : live) {
                send(slot, i % 2 ? VTMS::AlwaysQueue : VTMS::DirectOrQueue, w);
            }
        }
        arrive(PhaseSent, self);
        self->process();
        arrive(PhaseDrained, self);
        for (auto &listener : mine) {
            if (listener->cutInHandler ? listener->delivered > listener->expected
                                       : listener->delivered != listener->expected) {
                ++accountingErrors;
            }
            deliveries += listener->delivered;
        }
        live.clear();
        arrive(Checked, self);

        // The end: queue a packet to every listener, then both ends die with it in flight.
        for (const EmitterSlot &slot : snapshot()) {
            send(slot, VTMS::AlwaysQueue, w);
        }
        while (!mine.empty()) {
            mine.erase(mine.begin() + random() % mine.size());
        }
        if (w == 0) {
            std::lock_guard<std::mutex> guard(m_poolLock);
            m_churn.clear();
            m_stable.clear();
        }
        self->process();
        arrive(Ended, self);
        self->process();
    }

    void pureSender() {
        std::mt19937 random(99);
        const int sender = kWorkers;
        arrive(Connected, nullptr);
        for (int step = 0; step < kSteps / 3; ++step) {
            if (step % 10 == 0) {
                send(pick(m_stable, random), VTMS::BlockUntilDelivered, sender);
            } else {
                send(pick(m_churn, random), VTMS::DirectOrQueue, sender);
            }
        }
        for (int phase = RaceDone; phase < kPhases; ++phase) {
            arrive(Phase(phase), nullptr);
        }
    }

    std::vector<EmitterSlot> snapshot() {
        std::lock_guard<std::mutex> guard(m_poolLock);
        std::vector<EmitterSlot> all = m_stable;
        all.insert(all.end(), m_churn.begin(), m_churn.end());
        return all;
    }

    std::mutex m_poolLock;
    std::vector<EmitterSlot> m_stable;
    std::vector<EmitterSlot> m_churn;
    int m_nextId = 0;
    int m_seq[kWorkers + 1] = {};
    std::vector<std::unique_ptr<Latch>> m_phases;
};

TEST(MessagingConcurrency, SoakOfSendsCutsAndDeathsAccountsForEveryDelivery) {
    const int connectionsBefore = SoakConnection::live.load();
    const int tokensBefore = Token::live.load();
    {
        Soak soak;
        soak.run();
        EXPECT_EQ(soak.phaseTimeouts.load(), 0);
        EXPECT_EQ(soak.accountingErrors.load(), 0);
        EXPECT_GT(soak.deliveries.load(), 0);
    }
    EXPECT_EQ(SoakListener::misplaced.load(), 0);
    EXPECT_EQ(SoakListener::reordered.load(), 0);
    // Every payload and every counted connection has gone.
    EXPECT_EQ(Token::live.load(), tokensBefore);
    EXPECT_EQ(SoakConnection::live.load(), connectionsBefore);
}

}  // namespace
