// Sends, cuts and deaths racing on real threads.
#include "MessagingTestSupport.h"
#include <vort/messaging/Emitter.h>
#include <vort/messaging/Thread.h>

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <mutex>
#include <random>

namespace {

using namespace vort_test;
using Clock = std::chrono::steady_clock;

template <typename Done>
bool eventually(Done done, VTMS::Thread *processing = nullptr) {
    for (const auto limit = Clock::now() + std::chrono::seconds(30); !done();) {
        processing ? processing->process() : std::this_thread::yield();
        if (Clock::now() > limit) {
            return false;
        }
    }
    return true;
}

TEST(MessagingConcurrency, BlockingSendReturnsOnceProcessedOnTheOtherThreadOrCut) {
    for (bool cut : {false, true}) {
        ServiceThread server, sender;
        ASSERT_TRUE(server.registerAs("MessagingConcurrency.blocking", false));
        IntEmitter emitter(VTMS::BlockUntilDelivered);
        Recorder listener;
        emitter.connect(&listener, &Recorder::onInt, server.record());
        Latch returned(1);
        sender.run([&] { emitter.send(1), returned.countDown(); });
        ASSERT_TRUE(eventually([&] { return server.wakes > 0; }));
        cut ? listener.disconnectFrom(emitter, VTMS::DropPackets) : void();
        EXPECT_FALSE(returned.wait(std::chrono::milliseconds(150)));
        ASSERT_TRUE(server.process());
        EXPECT_TRUE(returned.wait());
        EXPECT_EQ(listener.lastThread(), cut ? std::thread::id() : server.id());
    }
}

TEST(MessagingConcurrency, BlockAndProcessWorksThroughItsOwnQueueWhileItWaits) {
    ServiceThread server;
    ASSERT_TRUE(server.registerAs("MessagingConcurrency.own-queue", true));
    IntEmitter local, question(VTMS::BlockAndProcess), answer;
    Recorder waiting, asker, helper;
    local.connect(&waiting, &Recorder::onInt);
    question.connect(&helper, &Recorder::onInt, server.record());
    answer.connect(&asker, &Recorder::onInt, VTMS::Thread::getCurrentThread());
    // The server's handler returns only once both packets in the asking thread's queue have
    // been delivered, which only the asking thread's wait can do.
    Latch served(2);
    waiting.action = asker.action = [&](int) { served.countDown(); };
    bool servedInTime = false;
    helper.action = [&](int value) { answer.send(value * 10), servedInTime = served.wait(); };
    local.sendWith(VTMS::AlwaysQueue, 1);
    question.send(4);
    EXPECT_TRUE(servedInTime);
    EXPECT_EQ(asker.received(), (Texts{"40"}));
}

TEST(MessagingConcurrency, EmitterDiesWhileItsQueuedPacketsAreDelivered) {
    ServiceThread server;
    ASSERT_TRUE(server.registerAs("MessagingConcurrency.emitter-dies", true));
    std::atomic<int> tally{0};
    Recorder listener;
    listener.tally = &tally;
    {
        IntEmitter emitter;
        emitter.connect(&listener, &Recorder::onInt, server.record());
        for (int i = 0; i < 300; ++i) {
            emitter.send(i);
        }
    }
    ASSERT_TRUE(server.process());
    EXPECT_EQ(tally.load(), 300);
}

TEST(MessagingConcurrency, RegistryLookupsAndRegistrationsRace) {
    VTMS::Thread *records[4];
    runTogether(4, [&records](int t) {
        records[t] = VTMS::Thread::getCurrentThread();
        for (int i = 0; i < 100; ++i) {
            const std::string name = "MessagingConcurrency." + std::to_string(i % 10);
            i % 4 == t ? VTMS::Thread::registerThread(name, nullptr)
                       : void(VTMS::Thread::getNamedThread(name));
        }
        VTMS::Thread::registerThread("MessagingConcurrency.own." + std::to_string(t), nullptr);
    });
    for (int t = 0; t < 4; ++t) {
        EXPECT_EQ(VTMS::Thread::getNamedThread("MessagingConcurrency.own." + std::to_string(t)),
                  records[t]);
    }
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
    for (auto &emitter : pool) {
        emitter = std::make_shared<IntEmitter>();
    }
    auto pick = [&](unsigned i) {
        std::lock_guard<std::mutex> guard(poolLock);
        return pool[i % 3];
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
        std::vector<std::unique_ptr<Recorder>> mine;
        auto make = [&, me = std::this_thread::get_id()] {
            mine.push_back(std::make_unique<Recorder>());
            mine.back()->action = [&misplaced, me](int) {
                misplaced += std::this_thread::get_id() != me;
            };
        };
        for (int i = 0; i < 3; ++i) {
            make(), stable.connect(mine.back().get(), &Recorder::onInt, self);
        }
        connected.countDown();
        for (int step = 0; step < 400; ++step) {
            const auto mode = random() % 2 ? VTMS::DropPackets : VTMS::DeliverPackets;
            const size_t index = random() % mine.size();
            Recorder &listener = *mine[index];
            const std::shared_ptr<IntEmitter> emitter = pick(random());
            switch (random() % 8) {
                case 0:
                    emitter->sendWith(VTMS::AlwaysQueue, step);
                    break;
                case 1:
                    stable.sendWith(VTMS::BlockAndProcess, step);
                    break;
                case 2:
                    CountedConnection::connect(*emitter, listener, self);
                    break;
                case 3:
                    emitter->connect(&listener, &Recorder::onInt, self);
                    break;
                case 4:
                    emitter->disconnectFrom(&listener, mode);
                    break;
                case 5:
                    listener.disconnectFrom(*emitter, mode);
                    break;
                case 6:
                    mine.erase(mine.begin() + index), make();
                    break;
                default: {
                    std::lock_guard<std::mutex> guard(poolLock);
                    pool[step % 3] = std::make_shared<IntEmitter>();
                }
            }
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

}  // namespace
