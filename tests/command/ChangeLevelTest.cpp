#include "support/Latch.h"
#include <vort/command/ChangeLevel.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <thread>
#include <vector>

using VORT::ChangeLevel;

TEST(ChangeLevel, ComparesAsUnsigned32BitNumbers) {
    EXPECT_EQ(ChangeLevel().value(), ChangeLevel::INVALID);
    // Levels past 2^31 must still sort above the small ones, as unsigned numbers do.
    const ChangeLevel low(1), high(0x80000000UL), top(0xFFFFFFFFUL);
    EXPECT_TRUE(low < high && high < top && top > high && high > low && !(low < low));
    EXPECT_TRUE(low <= low && low <= high && !(high <= low) && !(low > low));
    EXPECT_TRUE(top >= top && top >= low && !(low >= top) && low != high);
    EXPECT_TRUE(0UL == ChangeLevel() && ChangeLevel(3) > 2UL);
    EXPECT_EQ(ChangeLevel(0x100000005UL), ChangeLevel(5));  // a wider number keeps its low word
}

TEST(ChangeLevel, FirstLevelsOfAProcessAreOneAndTwo) {
    // In a fresh process (the "threadsafe" style re-executes the test binary), so that no other
    // test has drawn from the series yet.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            const ChangeLevel first = ChangeLevel::next();
            const ChangeLevel second = ChangeLevel::next();
            std::exit(first == ChangeLevel(1) && second == ChangeLevel(2) ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST(ChangeLevelConcurrency, NextStaysStrictlyIncreasingAcrossThreads) {
    constexpr int kThreads = 4;
    constexpr int kDraws = 20000;
    // Every thread publishes the highest level it has drawn. A draw that starts after another
    // has been published must come out above it: the series follows the order of the calls.
    std::atomic<unsigned long> published{0};
    std::atomic<int> outOfOrder{0};
    std::vector<std::vector<unsigned long>> drawn(kThreads);
    vort_test::Latch start(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            start.countDown();
            start.wait();
            for (int i = 0; i < kDraws; ++i) {
                const unsigned long seen = published.load();
                const unsigned long level = ChangeLevel::next().value();
                outOfOrder += level <= seen || (!drawn[t].empty() && level <= drawn[t].back());
                drawn[t].push_back(level);
                unsigned long expected = published.load();
                while (expected < level && !published.compare_exchange_weak(expected, level)) {
                }
            }
        });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(outOfOrder.load(), 0);
    // None handed out twice and none skipped: the draws form one unbroken run.
    std::vector<unsigned long> all;
    for (const auto &mine : drawn) {
        all.insert(all.end(), mine.begin(), mine.end());
    }
    std::sort(all.begin(), all.end());
    EXPECT_EQ(std::adjacent_find(all.begin(), all.end()), all.end());
    EXPECT_EQ(all.back() - all.front(), static_cast<unsigned long>(kThreads * kDraws - 1));
}
