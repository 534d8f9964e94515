#include "support/PlatformHooks.h"
#include <vort/instrumentation/ScopedDebugTimer.h>
#include <vort/instrumentation/TimeAccumulator.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace {

using VORT::TimeAccumulator;
using VORT::TimeAccumulatorHandle;
using VORT::TimeAccumulatorManager;
using VORT::TimeAccumulatorMultiThreaded;
using vort_test::PlatformHooksTest;

const std::uint64_t kAllBits = ~std::uint64_t(0);

std::vector<TimeAccumulator *> g_calls;
unsigned long g_ticksSeen = 0;

void recordCall(TimeAccumulator *accumulator) {
    g_calls.push_back(accumulator);
    g_ticksSeen = accumulator->GetSessionData().m_sessionTicks;
}

TEST(TimeAccumulator, StartsWithNothingPublished) {
    TimeAccumulator a;
    EXPECT_EQ(a.GetAvgMsPerTick(), 0.0);
    EXPECT_EQ(a.GetAvgMsBetweenTick(), 0.0);
    EXPECT_EQ(a.GetBestTickMs(), 0u);
    EXPECT_EQ(a.GetWorstTick(), 0u);
    EXPECT_EQ(a.GetFirstTime(), 0.0);
    EXPECT_EQ(a.GetTotalTicks(), 0u);
    EXPECT_EQ(a.GetSessionData().m_sessionLength, 1000u);
    EXPECT_EQ(a.GetSessionData().m_sessionBest, kAllBits);
    EXPECT_FALSE(a.GetDumpWindowsPerUpdate());
    EXPECT_FALSE(a.GetDumpTessarPerUpdate());
}

// Ticks at 100, 200 and 1000 stay in the first session (its end is not past 1000); the tick at
// 1001 closes it with three ticks and is the first of the next.
TEST(TimeAccumulator, TickPastTheSessionEndPublishesItByNominalOrActualLength) {
    struct Case {
        bool useActualLength;
        double between;
    };
    for (Case const &c : {Case{false, 1000.0 / 3}, Case{true, 1001.0 / 3}}) {
        SCOPED_TRACE(c.useActualLength);
        TimeAccumulator a;
        EXPECT_FALSE(a.Tick(100, c.useActualLength));
        EXPECT_EQ(a.GetFirstTime(), 0.1);
        EXPECT_FALSE(a.Tick(200, c.useActualLength));
        EXPECT_FALSE(a.Tick(1000, c.useActualLength));
        EXPECT_EQ(a.GetAvgMsBetweenTick(), 0.0);
        EXPECT_TRUE(a.Tick(1001, c.useActualLength));
        EXPECT_DOUBLE_EQ(a.GetAvgMsBetweenTick(), c.between);
        EXPECT_EQ(a.GetAvgMsPerTick(), 0.0);
        // No spans were tracked: the best is published as all bits set.
        EXPECT_EQ(a.GetBestTickMs(), kAllBits);
        EXPECT_EQ(a.GetWorstTick(), 0u);

        TimeAccumulator::SessionData const &s = a.GetSessionData();
        EXPECT_EQ(s.m_sessionStart, 1001u);
        EXPECT_EQ(s.m_sessionTicks, 1u);
        EXPECT_EQ(s.m_sessionTotalMs, 1u);
        EXPECT_EQ(a.GetTotalTicks(), 4u);
        EXPECT_EQ(a.GetTotalTime(), 1001u);
        EXPECT_EQ(a.GetTime(), 1001u);
        EXPECT_FALSE(a.Tick(2001, c.useActualLength));
        EXPECT_TRUE(a.Tick(2002, c.useActualLength));
    }
}

TEST(TimeAccumulator, TrackedSpansMakeBestWorstAndAveragePerTick) {
    TimeAccumulator a;
    EXPECT_FALSE(a.StartTracking(100));
    EXPECT_EQ(a.GetSessionData().m_trackStart, 100u);
    a.StopTracking(130);
    TimeAccumulator::SessionData const &s = a.GetSessionData();
    EXPECT_EQ(s.m_sessionWorst, 30u);
    EXPECT_EQ(s.m_sessionBest, 30u);
    EXPECT_EQ(s.m_sessionTrackedMs, 30u);

    // A zero span adds nothing and never counts as best.
    a.StartTracking(200);
    a.StopTracking(200);
    EXPECT_EQ(s.m_sessionBest, 30u);
    a.StartTracking(300);
    a.StopTracking(350);
    a.StartTracking(400);
    a.StopTracking(410);
    EXPECT_EQ(s.m_sessionWorst, 50u);
    EXPECT_EQ(s.m_sessionBest, 10u);
    EXPECT_EQ(s.m_sessionTrackedMs, 90u);

    // The closing tick, through StartTracking, reports it.
    EXPECT_TRUE(a.StartTracking(1500));
    EXPECT_DOUBLE_EQ(a.GetAvgMsPerTick(), 90.0 / 4);
    EXPECT_DOUBLE_EQ(a.GetAvgMsBetweenTick(), 1000.0 / 4);
    EXPECT_EQ(a.GetBestTickMs(), 10u);
    EXPECT_EQ(a.GetWorstTick(), 50u);
    EXPECT_EQ(s.m_sessionBest, kAllBits);
    EXPECT_EQ(s.m_sessionWorst, 0u);
    EXPECT_EQ(s.m_sessionTrackedMs, 0u);
    EXPECT_EQ(s.m_trackStart, 1500u);
}

TEST(TimeAccumulator, CurrentTimeCountsFromTheFirstTick) {
    TimeAccumulator given;
    given.Tick(5000, false);
    EXPECT_EQ(given.GetFirstTime(), 5.0);
    const std::uint64_t before = VORT::ComputeMillisecondTime();
    given.Tick(TimeAccumulator::kNow, false);
    const std::uint64_t after = VORT::ComputeMillisecondTime();
    EXPECT_GE(given.GetTime(), before - 5000);
    EXPECT_LE(given.GetTime(), after - 5000);

    TimeAccumulator automatic;
    const std::uint64_t start = VORT::ComputeMillisecondTime();
    automatic.Tick(TimeAccumulator::kNow, false);
    const std::uint64_t end = VORT::ComputeMillisecondTime();
    EXPECT_GE(automatic.GetFirstTime() * 1000.0, static_cast<double>(start));
    EXPECT_LE(automatic.GetFirstTime() * 1000.0, static_cast<double>(end));
    EXPECT_LE(automatic.GetTime(), end - start);

    // A first tick later than the clock can't make the current time negative.
    TimeAccumulator future;
    future.Tick(VORT::ComputeMillisecondTime() + 3600000, false);
    future.StopTracking(TimeAccumulator::kNow);
    EXPECT_EQ(future.GetSessionData().m_sessionTrackedMs,
              0u - future.GetSessionData().m_trackStart);
}

TEST(TimeAccumulator, CallbackSeesTheFinishedSessionAndResetKeepsOnlyTheName) {
    g_calls.clear();
    TimeAccumulator a;
    a.SetName("frames");
    a.SetOnNewSessionCallback(&recordCall);
    a.Tick(10, false);
    a.Tick(20, false);
    a.Tick(1500, false);
    ASSERT_EQ(g_calls.size(), 1u);
    EXPECT_EQ(g_calls[0], &a);
    EXPECT_EQ(g_ticksSeen, 2u);

    a.SetDumpTessarPerUpdate(true);
    a.Reset();
    EXPECT_EQ(a.GetName(), "frames");
    EXPECT_EQ(a.GetTotalTicks(), 0u);
    EXPECT_EQ(a.GetTime(), 0u);
    EXPECT_EQ(a.GetFirstTime(), 0.0);
    EXPECT_EQ(a.GetAvgMsBetweenTick(), 0.0);
    EXPECT_EQ(a.GetSessionData().m_sessionLength, 1000u);
    EXPECT_EQ(a.GetSessionData().m_sessionStart, 0u);
    EXPECT_FALSE(a.GetDumpTessarPerUpdate());
    a.Tick(10, false);
    a.Tick(1500, false);
    EXPECT_EQ(g_calls.size(), 1u);

    // Copies carry everything, the callback included.
    a.SetOnNewSessionCallback(&recordCall);
    TimeAccumulator copy(a);
    EXPECT_EQ(copy.GetName(), "frames");
    EXPECT_EQ(copy.GetTotalTicks(), 2u);
    copy.Tick(3000, false);
    ASSERT_EQ(g_calls.size(), 2u);
    EXPECT_EQ(g_calls[1], &copy);
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

using TimeAccumulatorReport = PlatformHooksTest;

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
    struct Case {
        bool windows;
        bool tessar;
    };
    for (Case const &c : {Case{true, false}, Case{false, true}, Case{true, true}}) {
        platform.clear();
        TimeAccumulator a;
        a.SetName("paint 100%%");
        a.SetDumpWindowsPerUpdate(c.windows);
        a.SetDumpTessarPerUpdate(c.tessar);
        a.StartTracking(100);
        a.StopTracking(105);
        a.StartTracking(600);
        a.StopTracking(615);
        a.StartTracking(900);
        a.StopTracking(910);
        EXPECT_EQ(platform.debugOutput(), "");
        a.Tick(1500, false);
        EXPECT_EQ(platform.debugOutput(), c.windows ? expected : "");
        // The console takes the block as a format: "%%" comes out as one "%".
        std::string console = expected;
        console.erase(console.find("%%"), 1);
        EXPECT_EQ(platform.consoleOutput(), c.tessar ? console : "");
    }
}

TEST(TimeAccumulatorMultiThreaded, CountsLikeThePlainOne) {
    TimeAccumulatorMultiThreaded a;
    a.SetName("locked");
    EXPECT_FALSE(a.StartTracking(100));
    a.StopTracking(130);
    EXPECT_TRUE(a.Tick(1200, true));
    EXPECT_DOUBLE_EQ(a.GetAvgMsBetweenTick(), 1200.0);
    EXPECT_EQ(a.GetWorstTick(), 30u);
    a.Reset();
    EXPECT_EQ(a.GetTotalTicks(), 0u);
    EXPECT_EQ(a.GetName(), "locked");
}

TEST(TimeAccumulatorHandle, NamesShareOneAccumulatorThatTheManagerKeeps) {
    const VORT::VHash<std::string, TimeAccumulator *> &timers =
        TimeAccumulatorManager::Instance().GetTimers();
    const std::string name = "TimeAccumulatorHandle.shared";
    ASSERT_FALSE(timers.contains(name));
    {
        TimeAccumulatorHandle outer(name);
        TimeAccumulatorHandle inner(name.c_str());
        // The handles' own figures stay untouched.
        EXPECT_EQ(outer.GetTotalTicks(), 0u);
        EXPECT_EQ(inner.GetTotalTicks(), 0u);
    }
    ASSERT_TRUE(timers.contains(name));
    TimeAccumulator *shared = timers.value(name);
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
