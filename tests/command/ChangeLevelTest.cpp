#include "support/Latch.h"
#include <vort/command/ChangeLevel.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
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

TEST(ChangeLevelConcurrency, NextHandsOutOneUnbrokenRunAcrossThreads) {
    constexpr int kThreads = 4;
    constexpr int kDraws = 20000;
    std::vector<std::vector<unsigned long>> drawn(kThreads);
    vort_test::runTogether(kThreads, [&](int t) {
        for (int i = 0; i < kDraws; ++i) {
            drawn[t].push_back(ChangeLevel::next().value());
        }
    });
    std::vector<unsigned long> all;
    for (int t = 0; t < kThreads; ++t) {
        // Each thread sees its own draws rise.
        EXPECT_TRUE(std::is_sorted(drawn[t].begin(), drawn[t].end()));
        all.insert(all.end(), drawn[t].begin(), drawn[t].end());
    }
    // None handed out twice and none skipped.
    std::sort(all.begin(), all.end());
    EXPECT_EQ(std::adjacent_find(all.begin(), all.end()), all.end());
    EXPECT_EQ(all.back() - all.front(), static_cast<unsigned long>(kThreads * kDraws - 1));
}
