#include "support/Latch.h"
#include "support/PlatformHooks.h"
#include <vort/instrumentation/ScopedDebugTimer.h>
#include <vort/instrumentation/TimeAccumulator.h>

#include <gtest/gtest.h>

#include <tuple>

namespace {

using namespace VORT;
using namespace VORT::TimeHelpers;
using Timer = vort_test::PlatformHooksTest;
using U64 = std::uint64_t;

TEST_F(Timer, DumpWritesTheReportOnBothSinksOnlyForANonZeroTime) {
    // start, end, file, message, in milliseconds, threshold, report
    const std::tuple<U64, U64, const char *, const char *, bool, unsigned, const char *> cases[] = {
        {1000, 1250, "f.cpp", "drawn", true, 0, "f.cpp (12) : Time was (250) ms. drawn\n"},
        {0, 1500, nullptr, "", false, 0, " (12) : Time was (1) ms (1500) us. \n"},
        {0, 999, "f.cpp", nullptr, false, 0, "f.cpp (12) : Time was (0) ms (999) us. \n"},
        {0, 40, "f.cpp", "", true, 40, "f.cpp (12) : Time was (40) ms. \n"},
        {0, 40, "f.cpp", "", true, 41, ""},
        {7, 7, "f.cpp", "m", true, 0, "m\n"},
        {0, 0x100000000ull, "f.cpp", "z", true, 0, "z\n"},  // only the low 32 bits count
    };
    for (auto const &[start, end, file, message, ms, threshold, report] : cases) {
        platform.clear();
        DumpTimeTrackingData(file, 12, start, end, message, ms, threshold);
        EXPECT_EQ(platform.debugOutput(), report);
        EXPECT_EQ(platform.consoleOutput(), report[0] == 'f' || report[0] == ' ' ? report : "");
    }
}

TEST_F(Timer, ScopedTimersReportAndScoreARunningMeasurementOnce) {
    getMapScores().clear();
    for (const char *name : {"draw", "draw", "redraw", "load"}) {
        addToScore(name, 2.0);
    }
    EXPECT_EQ(fetchScoreData("draw").m_average, 2.0);
    std::vector<std::pair<std::string, ScoreData>> found;
    getMapScoresForSubstring("draw", found);
    EXPECT_EQ(found.size(), 2u);
    ScoreData wrapped;  // a count that wraps to 0 averages to 0 rather than dividing by it
    wrapped.m_count = 0xFFFFFFFFu;
    wrapped.addTime(1.0);
    EXPECT_EQ(wrapped.m_average, 0.0);

    { ScopedDebugTimer idle("idle.cpp", 1, nullptr, 0, false, false, true); }
    {
        ScopedDebugTimer timer("src/paint.cpp", 42, "ignored", 0, true, false, true);
        ScopedDebugTimer copy(timer);  // a copy of a running timer ends on its own
        timer.endTimer(0);
        timer.endTimer(0);
    }
    EXPECT_EQ(fetchScoreData("Line(42) in file: src/paint.cpp").m_count + getMapScores().size(),
              2u + 4u);
    platform.clear();
    { ScopedDebugTimer quiet(nullptr, 3, nullptr, ScopedDebugTimer::kNoReport, true, false, true); }
    EXPECT_EQ(platform.debugOutput() + platform.consoleOutput(), "");
    EXPECT_EQ(fetchScoreData("Line(3) in file: ").m_count, 1u);
}

// Ticks at 100, 200 and 1000 stay in the first session (its end is not past 1000); the tick at
// 1001 closes it with three ticks and is the first of the next.
TEST(TimeAccumulator, TicksPastTheSessionEndPublishItByNominalOrActualLength) {
    for (bool actual : {false, true}) {
        TimeAccumulator a;
        EXPECT_FALSE(a.Tick(100, actual) || a.Tick(200, actual) || a.Tick(1000, actual));
        EXPECT_TRUE(a.Tick(1001, actual) && a.GetFirstTime() == 0.1);
        EXPECT_DOUBLE_EQ(a.GetAvgMsBetweenTick(), (actual ? 1001.0 : 1000.0) / 3);
        TimeAccumulator::SessionData const &s = a.GetSessionData();
        EXPECT_EQ(std::make_tuple(s.m_sessionStart, s.m_sessionTicks, s.m_sessionTotalMs,
                                  a.GetTotalTicks(), a.GetTotalTime(), a.GetAvgMsPerTick(),
                                  a.GetBestTickMs()),
                  std::make_tuple(U64(1001), 1ul, U64(1), 4ul, U64(1001), 0.0, ~U64(0)));
        EXPECT_TRUE(!a.Tick(2001, actual) && a.Tick(2002, actual));
    }
    TimeAccumulator none;  // a session closed without ticks averages to 0
    EXPECT_TRUE(none.Tick(5000, false) && none.GetAvgMsBetweenTick() == 0.0);
}

TEST(TimeAccumulator, TrackedSpansMakeBestWorstAndAveragePerTickAndNowCountsFromTheFirstTick) {
    TimeAccumulator a;
    for (U64 start : {100, 200, 300, 400}) {  // spans of 30, 0 (never best), 50 and 10
        EXPECT_FALSE(a.StartTracking(start));
        a.StopTracking(start + (start == 100 ? 30 : start == 200 ? 0 : start == 300 ? 50 : 10));
    }
    EXPECT_EQ(a.GetSessionData().m_sessionTrackedMs, 90u);
    EXPECT_TRUE(a.StartTracking(1500));
    EXPECT_EQ(std::make_tuple(a.GetAvgMsPerTick(), a.GetBestTickMs(), a.GetWorstTick()),
              std::make_tuple(90.0 / 4, 10u, 50u));

    const U64 before = ComputeMillisecondTime();
    TimeAccumulator clock;
    clock.Tick(TimeAccumulator::kNow, false);
    clock.Tick(TimeAccumulator::kNow, false);
    EXPECT_GE(clock.GetFirstTime() * 1000.0, static_cast<double>(before));
    EXPECT_LE(clock.GetTime(), ComputeMillisecondTime() - before);
    TimeAccumulator future;  // a first tick later than the clock reads the clock as time 0
    future.Tick(before + 3600000, false);
    future.StopTracking(TimeAccumulator::kNow);
    EXPECT_EQ(future.GetSessionData().m_sessionTrackedMs, 0 - future.GetSessionData().m_trackStart);
}

TEST_F(Timer, SessionsGoAsAReportBlockWhereAsked) {
    const std::string block =
        "\n---------------\nTimer: paint 100%%\nSession at time: 900\nFPS            : 3\n"
        "AvgMsBetween   : 333.333\nAvgMsPerTick   : 10\nBest Tick      : 5\n"
        "Worst Tick     : 15\nSession Start  : 0\nSession TotalMS: 900\nTotal Ticks    : 4\n"
        "Total Minutes  : 0.015\n\n";
    for (bool windows : {true, false}) {
        platform.clear();
        TimeAccumulator b;
        b.SetName("paint 100%%");
        b.SetDumpWindowsPerUpdate(windows);
        b.SetDumpTessarPerUpdate(!windows);
        for (U64 start : {100, 600, 900}) {
            b.StartTracking(start);
            b.StopTracking(start + (start == 100 ? 5 : start == 600 ? 15 : 10));
        }
        b.Tick(1500, false);
        // The console takes the block as a format: "%%" comes out as one "%".
        const std::string shown = windows ? block : std::string(block).erase(block.find("%%"), 1);
        EXPECT_EQ(platform.debugOutput() + platform.consoleOutput(), shown);
        b.SetDumpWindowsPerUpdate(!windows);
        b.SetDumpWindowsPerUpdate(false);  // switching either off silences both
        b.Tick(3000, false);
        EXPECT_EQ(platform.debugOutput() + platform.consoleOutput(), shown);
    }
}

TEST(TimeAccumulatorConcurrency, LockedTicksSpansAndSharedHandlesLoseNothing) {
    constexpr int kThreads = 4, kRounds = 5000;
    TimeAccumulatorMultiThreaded shared;
    const std::string name = "TimeAccumulatorConcurrency.handles";
    const VHash<std::string, TimeAccumulator *> &timers =
        TimeAccumulatorManager::Instance().GetTimers();
    { TimeAccumulatorHandle first(name.c_str()); }
    const int known = timers.size();  // the name's; no accumulator for no name
    { TimeAccumulatorHandle nothing(""), none(static_cast<const char *>(nullptr)); }
    vort_test::runTogether(kThreads, [&](int t) {
        for (int i = 0; i < kRounds; ++i) {
            const U64 time = static_cast<U64>(i) * 10 + t;
            shared.StartTracking(time);
            shared.StopTracking(time + 1);
            shared.Tick(time + 2, i % 2 == 0);
            TimeAccumulatorHandle handle(name);
        }
    });
    // The differences between ticks telescope whatever order the threads ran in; a lost update
    // breaks the sum.
    TimeAccumulator *named = timers.value(name);
    EXPECT_EQ(timers.size(), known);
    EXPECT_EQ(std::make_tuple(shared.GetTotalTicks(), named->GetTotalTicks(), shared.GetTotalTime(),
                              named->GetTotalTime()),
              std::make_tuple(2ul * kThreads * kRounds, 1ul + kThreads * kRounds, shared.GetTime(),
                              named->GetTime()));
}

}  // namespace
