// Locked accumulators and named handles used from several threads at once.
#include "support/Latch.h"
#include <vort/instrumentation/TimeAccumulator.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <thread>
#include <vector>

namespace {

using VORT::TimeAccumulator;
using VORT::TimeAccumulatorHandle;
using VORT::TimeAccumulatorManager;
using VORT::TimeAccumulatorMultiThreaded;

const int kThreads = 4;
const int kRounds = 20000;

// Runs `work(index)` on kThreads threads released together.
template <typename Work>
void race(Work work) {
    vort_test::Latch ready(kThreads);
    vort_test::Latch go(1);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            ready.countDown();
            ASSERT_TRUE(go.wait());
            work(t);
        });
    }
    ASSERT_TRUE(ready.wait());
    go.countDown();
    for (std::thread &thread : threads) {
        thread.join();
    }
}

TEST(TimeAccumulatorConcurrency, LockedTicksAndSpansLoseNothing) {
    TimeAccumulatorMultiThreaded shared;
    race([&shared](int t) {
        for (int i = 0; i < kRounds; ++i) {
            const std::uint64_t time = static_cast<std::uint64_t>(i) * 10 + t;
            shared.StartTracking(time);
            shared.StopTracking(time + 1);
            shared.Tick(time + 2, i % 2 == 0);
        }
    });
    EXPECT_EQ(shared.GetTotalTicks(), static_cast<unsigned long>(kThreads * kRounds * 2));
    // The differences between ticks telescope, in whatever order the threads ran: an update lost
    // to a race would break the sum.
    EXPECT_EQ(shared.GetTotalTime(), shared.GetTime());
}

TEST(TimeAccumulatorConcurrency, HandlesOfAKnownNameShareItsAccumulator) {
    const std::string name = "TimeAccumulatorConcurrency.handles";
    { TimeAccumulatorHandle first(name); }
    race([&name](int) {
        for (int i = 0; i < kRounds / 4; ++i) {
            TimeAccumulatorHandle handle(name);
        }
    });
    TimeAccumulator *shared = TimeAccumulatorManager::Instance().GetTimers().value(name);
    ASSERT_NE(shared, nullptr);
    EXPECT_EQ(shared->GetTotalTicks(), static_cast<unsigned long>(1 + kThreads * (kRounds / 4)));
    EXPECT_EQ(shared->GetTotalTime(), shared->GetTime());
}

}  // namespace
