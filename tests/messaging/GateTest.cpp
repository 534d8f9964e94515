#include "support/Latch.h"
#include <vort/messaging/Gate.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

using VORT::Gate;
using namespace std::chrono_literals;

namespace {

// Runs `wait()` on a thread of its own and tells whether it came out.
class Waiter {
public:
    explicit Waiter(Gate &gate)
        : m_thread([this, &gate] {
              m_started.countDown();
              gate.wait();
              m_passed.countDown();
          }) {
        m_started.wait();
    }
    ~Waiter() { m_thread.join(); }

    bool passedWithin(std::chrono::milliseconds limit) { return m_passed.wait(limit); }

private:
    vort_test::Latch m_started{1};
    vort_test::Latch m_passed{1};
    std::thread m_thread;
};

// Polls, with a bound, until `count` threads block in the closed gate.
bool blockedInGate(Gate const &gate, int count) {
    const auto deadline = std::chrono::steady_clock::now() + 10s;
    while (gate.waiting() < count) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}

}  // namespace

TEST(Gate, PassesLetThatManyThroughAndATimedWaitOnAClosedGateRunsOut) {
    Gate gate(2);
    EXPECT_FALSE(gate.wait(10));
    EXPECT_FALSE(gate.wait(10));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(gate.wait(20)) << "the third waiter finds the gate closed";
    EXPECT_GE(std::chrono::steady_clock::now() - start, 19ms);
    gate.open();  // open for everyone until closed
    for (int i = 0; i < 5; ++i) {
        EXPECT_FALSE(gate.wait(10));
    }
    gate.wait();
    gate.close();
    EXPECT_TRUE(gate.wait(10));
    Gate counted(3);
    counted.open(1);  // replaces the passes rather than adding to them
    EXPECT_FALSE(counted.wait(10));
    EXPECT_TRUE(counted.wait(10));
}

TEST(GateConcurrency, WakesAndOpeningsReleaseBlockedWaiters) {
    Gate gate;
    {
        // Of three passes, one is handed to the present waiter, which takes another on its way
        // out, leaving one for later arrivals.
        Waiter waiter(gate);
        ASSERT_TRUE(blockedInGate(gate, 1));
        gate.open(3);
        ASSERT_TRUE(waiter.passedWithin(10s));
        EXPECT_FALSE(gate.wait(10));
        EXPECT_TRUE(gate.wait(10));
    }
    {
        Waiter waiter(gate);
        ASSERT_TRUE(blockedInGate(gate, 1));
        gate.wakeOne();
        ASSERT_TRUE(waiter.passedWithin(10s));
        EXPECT_TRUE(gate.wait(10)) << "a wake-up is not a pass";
    }
    {
        Waiter a(gate), b(gate), c(gate);
        ASSERT_TRUE(blockedInGate(gate, 3));
        gate.wakeAll();
        EXPECT_TRUE(a.passedWithin(10s) && b.passedWithin(10s) && c.passedWithin(10s));
        EXPECT_TRUE(gate.wait(10));
    }
    Waiter waiter(gate);
    ASSERT_TRUE(blockedInGate(gate, 1));
    gate.close();
    EXPECT_FALSE(waiter.passedWithin(30ms));
    gate.open();
    EXPECT_TRUE(waiter.passedWithin(10s));
}

TEST(GateConcurrency, EachSinglePassReleasesExactlyOneBlockedWaiter) {
    constexpr int kThreads = 3;
    constexpr int kRounds = 100;
    Gate gate;
    std::atomic<int> passed{0};
    std::atomic<int> finished{0};
    std::vector<std::thread> threads;
    // Whatever the outcome, let every thread out before joining it.
    struct ReleaseAndJoin {
        Gate &gate;
        std::vector<std::thread> &threads;
        ~ReleaseAndJoin() {
            gate.open();
            for (auto &thread : threads) {
                thread.join();
            }
        }
    } releaseAndJoin{gate, threads};
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < kRounds; ++i) {
                gate.wait();
                if (i == kRounds - 1) {
                    finished.fetch_add(1);
                }
                passed.fetch_add(1);
            }
        });
    }
    // `open(count)` counts the waiters before it locks, so a pass handed out while a thread is
    // on its way into `wait` may be stored while that thread blocks. Each pass is therefore
    // handed out only once every thread with rounds left is blocked: then it wakes exactly one.
    for (int i = 0; i < kThreads * kRounds; ++i) {
        ASSERT_TRUE(blockedInGate(gate, kThreads - finished.load())) << "before pass " << i;
        gate.open(1);
        const auto deadline = std::chrono::steady_clock::now() + 10s;
        while (passed.load() <= i && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::yield();
        }
        ASSERT_EQ(passed.load(), i + 1) << "after pass " << i;
    }
    EXPECT_TRUE(gate.wait(10)) << "no pass is left over";
}
