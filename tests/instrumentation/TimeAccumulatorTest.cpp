#include "support/PlatformHooks.h"
#include <vort/instrumentation/ScopedDebugTimer.h>
#include <vort/instrumentation/TimeAccumulator.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

namespace {

using VORT::TimeAccumulator;
using VORT::TimeAccumulatorHandle;
using VORT::TimeAccumulatorMultiThreaded;

const std::uint64_t kAllBits = ~std::uint64_t(0);

std::vector<TimeAccumulator *> g_calls;
unsigned long g_ticksSeen = 0;

void recordCall(TimeAccumulator *accumulator) {
    g_calls.push_back(accumulator);
    g_ticksSeen = accumulator->GetSessionData().m_sessionTicks;
}

// Every figure that an accumulator publishes or keeps, but the name.
auto figures(TimeAccumulator const &a) {
    TimeAccumulator::SessionData const &s = a.GetSessionData();
    return std::make_tuple(a.GetAvgMsPerTick(), a.GetAvgMsBetweenTick(), a.GetBestTickMs(),
                           a.GetWorstTick(), a.GetTime(), a.GetFirstTime(), a.GetTotalTicks(),
                           a.GetTotalTime(), a.GetDumpWindowsPerUpdate(),
                           a.GetDumpTessarPerUpdate(), s.m_sessionTicks, s.m_sessionTotalMs,
                           s.m_sessionTrackedMs, s.m_sessionStart, s.m_sessionLength,
                           s.m_trackStart, s.m_sessionWorst, s.m_sessionBest);
}

// Ticks at 100, 200 and 1000 stay in the first session (its end is not past 1000); the tick at
// 1001 closes it with three ticks and is the first of the next.
TEST(TimeAccumulator, TickPastTheSessionEndPublishesItByNominalOrActualLength) {
    for (bool actual : {false, true}) {
        SCOPED_TRACE(actual);
        TimeAccumulator a;
        EXPECT_EQ(a.GetBestTickMs(), 0u);
        EXPECT_FALSE(a.Tick(100, actual));
        EXPECT_EQ(a.GetFirstTime(), 0.1);
        EXPECT_FALSE(a.Tick(200, actual));
        EXPECT_FALSE(a.Tick(1000, actual));
        EXPECT_EQ(a.GetAvgMsBetweenTick(), 0.0);
        EXPECT_TRUE(a.Tick(1001, actual));
        EXPECT_DOUBLE_EQ(a.GetAvgMsBetweenTick(), (actual ? 1001.0 : 1000.0) / 3);
        EXPECT_EQ(a.GetAvgMsPerTick(), 0.0);
        // No span was tracked: the best is published as all bits set.
        EXPECT_EQ(a.GetBestTickMs(), kAllBits);
        TimeAccumulator::SessionData const &s = a.GetSessionData();
        EXPECT_EQ(std::make_tuple(s.m_sessionStart, s.m_sessionTicks, s.m_sessionTotalMs),
                  std::make_tuple(std::uint64_t(1001), 1ul, std::uint64_t(1)));
        EXPECT_EQ(std::make_tuple(a.GetTotalTicks(), a.GetTotalTime(), a.GetTime()),
                  std::make_tuple(4ul, std::uint64_t(1001), std::uint64_t(1001)));
        EXPECT_FALSE(a.Tick(2001, actual));
        EXPECT_TRUE(a.Tick(2002, actual));
    }
}

TEST(TimeAccumulator, TrackedSpansMakeBestWorstAndAveragePerTick) {
    TimeAccumulator a;
    TimeAccumulator::SessionData const &s = a.GetSessionData();
    EXPECT_FALSE(a.StartTracking(100));
    a.StopTracking(130);
    EXPECT_EQ(
        std::make_tuple(s.m_trackStart, s.m_sessionWorst, s.m_sessionBest, s.m_sessionTrackedMs),
        std::make_tuple(std::uint64_t(100), std::uint64_t(30), std::uint64_t(30),
                        std::uint64_t(30)));
    // A zero span adds nothing and never counts as best.
    const std::uint64_t spans[][2] = {{200, 200}, {300, 350}, {400, 410}};
    for (auto const &span : spans) {
        a.StartTracking(span[0]);
        a.StopTracking(span[1]);
    }
    EXPECT_EQ(std::make_tuple(s.m_sessionWorst, s.m_sessionBest, s.m_sessionTrackedMs),
              std::make_tuple(std::uint64_t(50), std::uint64_t(10), std::uint64_t(90)));

    EXPECT_TRUE(a.StartTracking(1500));
    EXPECT_DOUBLE_EQ(a.GetAvgMsPerTick(), 90.0 / 4);
    EXPECT_DOUBLE_EQ(a.GetAvgMsBetweenTick(), 1000.0 / 4);
    EXPECT_EQ(a.GetBestTickMs(), 10u);
    EXPECT_EQ(a.GetWorstTick(), 50u);
    EXPECT_EQ(
        std::make_tuple(s.m_sessionWorst, s.m_sessionBest, s.m_sessionTrackedMs, s.m_trackStart),
        std::make_tuple(std::uint64_t(0), kAllBits, std::uint64_t(0), std::uint64_t(1500)));
}

TEST(TimeAccumulator, CurrentTimeCountsFromTheFirstTick) {
    TimeAccumulator given;
    given.Tick(5000, false);
    EXPECT_EQ(given.GetFirstTime(), 5.0);
    std::uint64_t before = VORT::ComputeMillisecondTime();
    given.Tick(TimeAccumulator::kNow, false);
    std::uint64_t after = VORT::ComputeMillisecondTime();
    EXPECT_GE(given.GetTime(), before - 5000);
    EXPECT_LE(given.GetTime(), after - 5000);

    TimeAccumulator automatic;
    before = VORT::ComputeMillisecondTime();
    automatic.Tick(TimeAccumulator::kNow, false);
    after = VORT::ComputeMillisecondTime();
    EXPECT_GE(automatic.GetFirstTime() * 1000.0, static_cast<double>(before));
    EXPECT_LE(automatic.GetFirstTime() * 1000.0, static_cast<double>(after));
    EXPECT_LE(automatic.GetTime(), after - before);

    // A first tick later than the clock can't make the current time negative.
    TimeAccumulator future;
    future.Tick(after + 3600000, false);
    future.StopTracking(TimeAccumulator::kNow);
    EXPECT_EQ(future.GetSessionData().m_sessionTrackedMs, 0 - future.GetSessionData().m_trackStart);
}

TEST(TimeAccumulator, CallbackSeesTheFinishedSessionAndResetKeepsOnlyTheName) {
    g_calls.clear();
    TimeAccumulatorMultiThreaded a;
    a.SetName("frames");
    a.SetOnNewSessionCallback(&recordCall);
    a.Tick(10, false);
    a.Tick(20, false);
    a.Tick(1500, false);
    ASSERT_EQ(g_calls, std::vector<TimeAccumulator *>{&a});
    EXPECT_EQ(g_ticksSeen, 2u);

    // Copies carry everything, the callback included.
    TimeAccumulator copy(a);
    EXPECT_EQ(copy.GetName(), "frames");
    EXPECT_EQ(figures(copy), figures(a));
    copy.Tick(3000, false);
    EXPECT_EQ(g_calls.back(), &copy);

    a.SetDumpTessarPerUpdate(true);
    a.Reset();
    EXPECT_EQ(a.GetName(), "frames");
    EXPECT_EQ(figures(a), figures(TimeAccumulator()));
    a.Tick(10, false);
    a.Tick(1500, false);
    EXPECT_EQ(g_calls.size(), 2u);
}

TEST(TimeAccumulator, DumpSwitchesShareTheOneCallbackSlot) {
    g_calls.clear();
    TimeAccumulator a;
    a.SetOnNewSessionCallback(&recordCall);
    a.SetDumpWindowsPerUpdate(true);
    a.Tick(1, false);
    a.Tick(1500, false);
    EXPECT_TRUE(g_calls.empty());

    // Setting the same flag again changes nothing; switching the other off silences both.
    a.SetOnNewSessionCallback(&recordCall);
    a.SetDumpWindowsPerUpdate(true);
    a.Tick(3000, false);
    EXPECT_EQ(g_calls.size(), 1u);
    a.SetDumpTessarPerUpdate(true);
    a.SetDumpTessarPerUpdate(false);
    a.SetOnNewSessionCallback(nullptr);
    EXPECT_TRUE(a.GetDumpWindowsPerUpdate());
    a.Tick(5000, false);
    EXPECT_EQ(g_calls.size(), 1u);
}

using TimeAccumulatorReport = vort_test::PlatformHooksTest;

TEST_F(TimeAccumulatorReport, WritesTheSessionBlockWhereAsked) {
    const std::string expected =
        "\n---------------\n"
        "Timer: paint 100%%\n"
        "Session at time: 900\n"
        "FPS            : 3\n"
        "AvgMsBetween   : 333.333\n"
        "AvgMsPerTick   : 10\n"
        "Best Tick      : 5\n"
        "Worst Tick     : 15\n"
        "Session Start  : 0\n"
        "Session TotalMS: 900\n"
        "Total Ticks    : 4\n"
        "Total Minutes  : 0.015\n\n";
    // The console takes the block as a format: "%%" comes out as one "%".
    std::string console = expected;
    console.erase(console.find("%%"), 1);
    for (int where = 1; where <= 3; ++where) {
        platform.clear();
        TimeAccumulator a;
        a.SetName("paint 100%%");
        a.SetDumpWindowsPerUpdate((where & 1) != 0);
        a.SetDumpTessarPerUpdate((where & 2) != 0);
        const std::uint64_t spans[][2] = {{100, 105}, {600, 615}, {900, 910}};
        for (auto const &span : spans) {
            a.StartTracking(span[0]);
            a.StopTracking(span[1]);
        }
        EXPECT_EQ(platform.debugOutput(), "");
        a.Tick(1500, false);
        EXPECT_EQ(platform.debugOutput(), (where & 1) != 0 ? expected : "");
        EXPECT_EQ(platform.consoleOutput(), (where & 2) != 0 ? console : "");
    }
}

TEST(TimeAccumulatorHandle, NamesShareOneAccumulatorThatTheManagerKeeps) {
    const VORT::VHash<std::string, TimeAccumulator *> &timers =
        VORT::TimeAccumulatorManager::Instance().GetTimers();
    const std::string name = "TimeAccumulatorHandle.shared";
    ASSERT_FALSE(timers.contains(name));
    {
        TimeAccumulatorHandle outer(name);
        TimeAccumulatorHandle inner(name.c_str());
        // The handles' own figures stay untouched.
        EXPECT_EQ(outer.GetTotalTicks() + inner.GetTotalTicks(), 0u);
    }
    TimeAccumulator *shared = timers.value(name);
    ASSERT_NE(shared, nullptr);
    EXPECT_EQ(shared->GetName(), name);
    EXPECT_EQ(shared->GetTotalTicks(), 2u);
    EXPECT_NE(dynamic_cast<TimeAccumulatorMultiThreaded *>(shared), nullptr);

    // An empty name with no accumulator tracks nothing and adds nothing.
    const int before = timers.size();
    { TimeAccumulatorHandle nothing(""); }
    { TimeAccumulatorHandle none(static_cast<const char *>(nullptr)); }
    EXPECT_EQ(timers.size(), before);
}

}  // namespace
