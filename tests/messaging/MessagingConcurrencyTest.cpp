// Sends, cuts, deaths and locks racing on real threads.
#include "MessagingTestSupport.h"
#include <vort/messaging/Gate.h>
#include <vort/messaging/Mutex.h>

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <mutex>
#include <random>

namespace {

using namespace vort_test;

// Waits, with a bound, until `done`; processes `queue` meanwhile if given.
template <typename Done>
bool eventually(Done done, VTMS::Thread *queue = nullptr) {
    for (const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(30); !done();) {
        queue ? queue->process() : std::this_thread::yield();
        if (std::chrono::steady_clock::now() > limit) {
            return false;
        }
    }
    return true;
}

TEST(MessagingConcurrency, BlockingSendReturnsOnceProcessedOnTheOtherThreadOrCut) {
    for (bool cut : {false, true}) {
        ServiceThread server("MessagingConcurrency.blocking");
        IntEmitter emitter(VTMS::BlockUntilDelivered);
        Recorder listener;
        emitter.connect(&listener, &Recorder::onInt, server.record());
        Latch returned(1);
        std::thread sender([&] { emitter.send(1), returned.countDown(); });
        ASSERT_TRUE(eventually([&] { return server.wakes > 0; }));
        cut ? listener.disconnectFrom(emitter, VTMS::DropPackets) : void();
        EXPECT_FALSE(returned.wait(std::chrono::milliseconds(150)));
        ASSERT_TRUE(server.process());
        EXPECT_TRUE(returned.wait());
        sender.join();
        EXPECT_EQ(listener.count(), cut ? 0 : 1);
    }
}

// The server's handler returns only once both packets in the asking thread's queue have been
// delivered, which only the asking thread's wait can do.
TEST(MessagingConcurrency, BlockAndProcessWorksThroughItsOwnQueueWhileItWaits) {
    ServiceThread server("MessagingConcurrency.own-queue", true);
    IntEmitter local, question(VTMS::BlockAndProcess), answer;
    Recorder waiting, asker, helper;
    local.connect(&waiting, &Recorder::onInt);
    question.connect(&helper, &Recorder::onInt, server.record());
    answer.connect(&asker, &Recorder::onInt, VTMS::Thread::getCurrentThread());
    Latch served(2);
    waiting.action = asker.action = [&](int) { served.countDown(); };
    bool servedInTime = false;
    helper.action = [&](int value) { answer.send(value), servedInTime = served.wait(); };
    local.sendWith(VTMS::AlwaysQueue, 1);
    question.send(4);
    EXPECT_TRUE(servedInTime);
}

// Workers own listeners, always served on their own thread, which they connect, cut and
// destroy; shared emitters are sent on in every mode and replaced, dying with whichever thread
// lets go last. Blocking sends go to `stable`, which gets no connection during the race, since
// a connect racing a blocking send may leave it waiting for good.
TEST(MessagingConcurrency, SendsRaceCutsAndDeathsOfBothEnds) {
    constexpr int kWorkers = 3;
    const int baseline = CountedConnection::live;
    IntEmitter stable;
    std::mutex poolLock;
    std::shared_ptr<IntEmitter> pool[3];
    auto pick = [&](unsigned i) {
        std::lock_guard<std::mutex> guard(poolLock);
        return pool[i % 3] ? pool[i % 3] : (pool[i % 3] = std::make_shared<IntEmitter>());
    };
    std::atomic<int> misplaced{0}, finished{0}, stuck{0};
    Latch connected(kWorkers);
    runTogether(kWorkers + 1, [&](int t) {
        std::mt19937 random(t);
        if (t == kWorkers) {
            connected.wait();
            for (int i = 0; i < 200; ++i) {
                i % 10 ? pick(random())->send(i) : stable.sendWith(VTMS::BlockUntilDelivered, i);
            }
            return void(++finished);
        }
        VTMS::Thread *const self = VTMS::Thread::getCurrentThread();
        std::vector<std::unique_ptr<Recorder>> mine(3);
        auto make = [&, me = std::this_thread::get_id()](std::unique_ptr<Recorder> &slot) {
            slot = std::make_unique<Recorder>();
            slot->action = [&misplaced, me](int) { misplaced += std::this_thread::get_id() != me; };
        };
        for (auto &slot : mine) {
            make(slot), stable.connect(slot.get(), &Recorder::onInt, self);
        }
        connected.countDown(), connected.wait();
        const std::string name = "MessagingConcurrency." + std::to_string(t);
        for (int step = 0; step < 400; ++step) {
            // Registrations race lookups; each thread holds its own name.
            VTMS::Thread::registerThread(name, nullptr);
            EXPECT_EQ(VTMS::Thread::getNamedThread(name), self);
            VTMS::Thread::getNamedThread("MessagingConcurrency." + std::to_string(step % 4));
            const auto mode = random() % 2 ? VTMS::DropPackets : VTMS::DeliverPackets;
            std::unique_ptr<Recorder> &listener = mine[random() % 3];
            const std::shared_ptr<IntEmitter> emitter = pick(random());
            const int roll = random() % 8;
            roll == 0   ? emitter->sendWith(VTMS::AlwaysQueue, step)
            : roll == 1 ? stable.sendWith(VTMS::BlockAndProcess, step)
            : roll == 2 ? void(CountedConnection::connect(*emitter, *listener, self))
            : roll == 3 ? emitter->connect(listener.get(), &Recorder::onInt, self)
            : roll == 4 ? emitter->disconnectFrom(listener.get(), mode)
            : roll == 5 ? listener->disconnectFrom(*emitter, mode)
            : roll == 6 ? make(listener)
                        : (std::lock_guard<std::mutex>(poolLock), pool[step % 3].reset());
            emitter->send(step);
            self->process();
        }
        ++finished;
        stuck += !eventually([&] { return finished == kWorkers + 1; }, self);
        self->process();
    });
    EXPECT_EQ(misplaced.load() * 10 + stuck.load(), 0);
    for (auto &emitter : pool) {
        emitter.reset();
    }
    EXPECT_EQ(CountedConnection::live.load(), baseline);
}

// `open(count)` counts the waiters before it locks, so each single pass is handed out only once
// every thread is blocked: then it wakes exactly one.
TEST(GateConcurrency, PassesAndOpeningsReleaseBlockedWaiters) {
    VORT::Gate gate(2);
    EXPECT_FALSE(gate.wait(10) || gate.wait(10));
    EXPECT_TRUE(gate.wait(10)) << "the third waiter finds the gate closed";
    constexpr int kThreads = 3, kPasses = 10;
    std::atomic<int> passed{0};
    std::atomic<bool> stop{false};
    auto blocked = [&](int count) { return eventually([&] { return gate.waiting() >= count; }); };
    auto passes = [&](int count) { return eventually([&] { return passed >= count; }); };
    runTogether(kThreads + 1, [&](int t) {
        for (int i = 1; t == kThreads && i <= kPasses; ++i) {
            EXPECT_TRUE(blocked(kThreads) && (gate.open(1), passes(i))) << "pass " << i;
            EXPECT_EQ(passed.load(), i);
        }
        if (t == kThreads) {
            EXPECT_TRUE(blocked(kThreads) && gate.wait(10)) << "a pass was left over";
            stop = true;
            gate.open();  // for everyone until closed
        }
        while (!stop) {
            gate.wait(), ++passed;
        }
    });
    gate.close();
    std::thread one([&] { gate.wait(); });
    ASSERT_TRUE(blocked(1));
    gate.open(3);  // one for the waiter, which takes another on its way out
    one.join();
    EXPECT_TRUE(!gate.wait(10) && gate.wait(10));
}

// Both kinds build their record at the first lock, where all first lockers must end up on one
// record; a recursive one nests.
TEST(MutexConcurrency, FirstLockersShareOneRecordAndRecursiveOnesNest) {
    for (int round = 0; round < 10; ++round) {
        const bool recursive = round % 2;
        VORT::Mutex mutex(recursive ? VORT::Mutex::Recursive : VORT::Mutex::NonRecursive);
        int guarded = 0;
        runTogether(3, [&](int) {
            for (int i = 0; i < 100; ++i) {
                VORT::MutexLocker lock(mutex);
                recursive ? VORT::MutexLocker(mutex), void() : void();
                ++guarded;
            }
        });
        ASSERT_EQ(guarded, 300);
    }
}

}  // namespace
