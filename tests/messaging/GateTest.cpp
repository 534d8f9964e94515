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

// Polls, with a bound, until `count` threads wait in the gate.
bool blockedInGate(Gate const &gate, int count) {
    const auto deadline = std::chrono::steady_clock::now() + 10s;
    while (gate.waiting() < count && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::yield();
    }
    return gate.waiting() >= count;
}

}  // namespace

TEST(Gate, PassesLetThatManyThroughAndATimedWaitOnAClosedGateRunsOut) {
    Gate gate(2);
    EXPECT_FALSE(gate.wait(10) || gate.wait(10));
    EXPECT_TRUE(gate.wait(10)) << "the third waiter finds the gate closed";
    gate.open();  // open for everyone until closed
    EXPECT_FALSE(gate.wait(10) || gate.wait(10));
    gate.close();
    EXPECT_TRUE(gate.wait(10));
    Gate counted(3);
    counted.open(1);  // replaces the passes rather than adding to them
    EXPECT_FALSE(counted.wait(10));
    EXPECT_TRUE(counted.wait(10));
}

// `open(count)` counts the waiters before it locks, so each single pass is handed out only once
// every thread is blocked: then it wakes exactly one. Wakes release blocked waiters without
// handing out passes.
TEST(GateConcurrency, PassesWakesAndOpeningsReleaseBlockedWaiters) {
    constexpr int kThreads = 3, kPasses = 20;
    Gate gate;
    std::atomic<int> passed{0};
    std::atomic<bool> stop{false};
    auto passes = [&](int count) {
        const auto limit = std::chrono::steady_clock::now() + 10s;
        while (passed < count && std::chrono::steady_clock::now() < limit) {
            std::this_thread::yield();
        }
        return passed.load() == count;
    };
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&] {
            while (!stop) {
                gate.wait();
                ++passed;
            }
        });
    }
    for (int i = 1; i <= kPasses; ++i) {
        ASSERT_TRUE(blockedInGate(gate, kThreads)) << "before pass " << i;
        gate.open(1);
        ASSERT_TRUE(passes(i)) << "after pass " << i;
    }
    EXPECT_TRUE(gate.wait(10)) << "a pass was left over";
    ASSERT_TRUE(blockedInGate(gate, kThreads));
    gate.wakeOne();
    EXPECT_TRUE(passes(kPasses + 1));
    EXPECT_TRUE(gate.wait(10)) << "a wake-up is not a pass";
    ASSERT_TRUE(blockedInGate(gate, kThreads));
    gate.wakeAll();
    EXPECT_TRUE(passes(kPasses + 1 + kThreads));
    stop = true;
    gate.open();
    for (std::thread &thread : threads) {
        thread.join();
    }
    gate.close();
    std::thread one([&] { gate.wait(); });
    ASSERT_TRUE(blockedInGate(gate, 1));
    gate.open(3);  // one for the waiter, which takes another on its way out
    one.join();
    EXPECT_FALSE(gate.wait(10));
    EXPECT_TRUE(gate.wait(10));
}
