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
    EXPECT_EQ(ChangeLevel(), ChangeLevel(ChangeLevel::INVALID));
    EXPECT_EQ(ChangeLevel().value(), 0UL);
    EXPECT_EQ(ChangeLevel(7), ChangeLevel(7));
    EXPECT_NE(ChangeLevel(7), ChangeLevel(8));

    // Levels past 2^31 must still sort above the small ones, as unsigned numbers do.
    ChangeLevel const low(1);
    ChangeLevel const high(0x80000000UL);
    ChangeLevel const top(0xFFFFFFFFUL);
    EXPECT_TRUE(low < high && high < top);
    EXPECT_TRUE(top > high && high > low);
    EXPECT_TRUE(low <= low && low <= high && !(high <= low));
    EXPECT_TRUE(top >= top && top >= low && !(low >= top));
    EXPECT_FALSE(low < low);
    EXPECT_FALSE(low > low);

    // A number converts on either side of a comparison.
    EXPECT_TRUE(0UL == ChangeLevel());
    EXPECT_TRUE(ChangeLevel(3) > 2UL);

    // The width is 32 bits: a wider number keeps its low word.
    EXPECT_EQ(ChangeLevel(0x100000005UL), ChangeLevel(5));
    EXPECT_EQ(ChangeLevel(0x100000005UL).value(), 5UL);

    ChangeLevel assigned;
    assigned = top;
    EXPECT_EQ(assigned, top);
}

TEST(ChangeLevel, FirstLevelsOfAProcessAreOneAndTwo) {
    // Run in a fresh process (the "threadsafe" style re-executes the test binary), so that no
    // other test has drawn from the series yet.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            ChangeLevel const first = ChangeLevel::next();
            ChangeLevel const second = ChangeLevel::next();
            std::exit(first == ChangeLevel(1) && second == ChangeLevel(2) ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST(ChangeLevel, NextRisesByOneWithoutOtherDraws) {
    ChangeLevel const a = ChangeLevel::next();
    ChangeLevel const b = ChangeLevel::next();
    ChangeLevel const c = ChangeLevel::next();
    EXPECT_NE(a, ChangeLevel());
    EXPECT_EQ(b.value(), a.value() + 1);
    EXPECT_EQ(c.value(), b.value() + 1);
}

TEST(ChangeLevelConcurrency, NextStaysStrictlyIncreasingAcrossThreads) {
    constexpr int kThreads = 4;
    constexpr int kDraws = 20000;

    // Every thread publishes the highest level it has drawn. A draw that starts after another
    // has been published must come out above it: the series follows the order of the calls,
    // not just each thread's own order.
    std::atomic<unsigned long> published{0};
    std::atomic<int> outOfOrder{0};
    std::vector<std::vector<unsigned long>> drawn(kThreads);
    vort_test::Latch start(kThreads);

    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            std::vector<unsigned long> &mine = drawn[t];
            mine.reserve(kDraws);
            start.countDown();
            start.wait();
            for (int i = 0; i < kDraws; ++i) {
                unsigned long const seen = published.load();
                unsigned long const level = ChangeLevel::next().value();
                if (level <= seen || (!mine.empty() && level <= mine.back())) {
                    outOfOrder.fetch_add(1);
                }
                mine.push_back(level);
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

    // No level was handed out twice, and none was skipped: the draws form one unbroken run.
    std::vector<unsigned long> all;
    for (auto const &mine : drawn) {
        all.insert(all.end(), mine.begin(), mine.end());
    }
    std::sort(all.begin(), all.end());
    ASSERT_EQ(all.size(), static_cast<size_t>(kThreads * kDraws));
    EXPECT_EQ(std::adjacent_find(all.begin(), all.end()), all.end());
    EXPECT_EQ(all.back() - all.front(), static_cast<unsigned long>(kThreads * kDraws - 1));
}
