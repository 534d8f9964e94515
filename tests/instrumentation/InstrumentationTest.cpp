#include "support/Latch.h"
#include "support/PlatformHooks.h"
#include <vort/instrumentation/ScopedDebugTimer.h>
#include <vort/instrumentation/TimeAccumulator.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <tuple>
#include <vector>

namespace {

using namespace VORT;
using namespace VORT::TimeHelpers;
using Timer = vort_test::PlatformHooksTest;
using U64 = std::uint64_t;

TEST_F(Timer, DumpWritesTheReportOnBothSinksOnlyForANonZeroTime) {
    const struct {
        U64 start, end;
        const char *file, *message;
        bool ms;
        unsigned int threshold;
        const char *report;
    } cases[] = {
        {1000, 1250, "f.cpp", "drawn", true, 0, "f.cpp (12) : Time was (250) ms. drawn\n"},
        {0, 1500, nullptr, "", false, 0, " (12) : Time was (1) ms (1500) us. \n"},
        {0, 999, "f.cpp", nullptr, false, 0, "f.cpp (12) : Time was (0) ms (999) us. \n"},
        {0, 40, "f.cpp", "", true, 40, "f.cpp (12) : Time was (40) ms. \n"},
        {0, 40, "f.cpp", "", true, 41, ""},
        {7, 7, "f.cpp", "m", true, 0, "m\n"},
        {0, 0x100000000ull, "f.cpp", "z", true, 0, "z\n"},  // only the low 32 bits count
    };
    for (auto const &c : cases) {
        SCOPED_TRACE(c.report);
        platform.clear();
        DumpTimeTrackingData(c.file, 12, c.start, c.end, c.message, c.ms, c.threshold);
        EXPECT_EQ(platform.debugOutput(), c.report);
        EXPECT_EQ(platform.consoleOutput(),
                  c.report[0] == 'f' || c.report[0] == ' ' ? c.report : "");
    }
}

TEST_F(Timer, ScopedTimersReportAndScoreARunningMeasurementOnce) {
    getMapScores().clear();
    for (auto const &[name, time] :
         {std::make_pair("draw", 1.0), std::make_pair("draw", 3.0),
          std::make_pair("redraw all", 5.0), std::make_pair("load", 2.5)}) {
        addToScore(name, time);
    }
    ScoreData const draw = fetchScoreData("draw");
    EXPECT_EQ(std::make_tuple(draw.m_total, draw.m_count, draw.m_average),
              std::make_tuple(4.0, 2u, 2.0));
    EXPECT_EQ(fetchScoreData("nothing").m_count + getMapScores().count("nothing"), 0u);
    std::vector<std::pair<std::string, ScoreData>> found;
    getMapScoresForSubstring("draw", found);
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[1].first + std::to_string(found[1].second.m_average), "redraw all5.000000");
    ScoreData wrapped;  // a count that wraps to 0 averages to 0 rather than dividing by it
    wrapped.m_count = 0xFFFFFFFFu;
    wrapped.addTime(1.0);
    EXPECT_EQ(wrapped.m_average, 0.0);

    getMapScores().clear();
    { ScopedDebugTimer idle("idle.cpp", 1, nullptr, 0, false, false, true); }
    EXPECT_EQ(getMapScores().size(), 0u);
    {
        ScopedDebugTimer timer("src/paint.cpp", 42, "ignored", 0, true, false, true);
        ScopedDebugTimer copy(timer);  // a copy of a running timer ends on its own
        timer.endTimer(0);
        timer.endTimer(0);
    }
    EXPECT_EQ(fetchScoreData("Line(42) in file: src/paint.cpp").m_count, 2u);
    EXPECT_EQ(platform.debugOutput().find("ignored"), std::string::npos);
    platform.clear();
    { ScopedDebugTimer quiet(nullptr, 3, nullptr, ScopedDebugTimer::kNoReport, true, false, true); }
    EXPECT_EQ(platform.debugOutput() + platform.consoleOutput(), "");
    EXPECT_EQ(fetchScoreData("Line(3) in file: ").m_count, 1u);

    {
        ScopedDebugTimer timer("us.cpp", 5, nullptr, 0, true, true, true);
        const U64 start = ComputeMicrosecondTime();
        while (ComputeMicrosecondTime() - start < 2500) {  // spins on the clock alone
        }
    }
    unsigned long ms = 0, us = 0;
    ASSERT_EQ(std::sscanf(platform.debugOutput().c_str(),
                          "us.cpp (5) : Time was (%lu) ms (%lu) us.", &ms, &us),
              2);
    EXPECT_TRUE(ms == us / 1000 && us >= 2500);
    EXPECT_DOUBLE_EQ(fetchScoreData("Line(5) in file: us.cpp").m_total, us / 1000.0);
}

// Ticks at 100, 200 and 1000 stay in the first session (its end is not past 1000); the tick at
// 1001 closes it with three ticks and is the first of the next.
TEST(TimeAccumulator, TicksPastTheSessionEndPublishItByNominalOrActualLength) {
    for (bool actual : {false, true}) {
        SCOPED_TRACE(actual);
        TimeAccumulator a;
        EXPECT_FALSE(a.Tick(100, actual) || a.Tick(200, actual) || a.Tick(1000, actual));
        EXPECT_EQ(a.GetFirstTime(), 0.1);
        EXPECT_TRUE(a.Tick(1001, actual));
        EXPECT_DOUBLE_EQ(a.GetAvgMsBetweenTick(), (actual ? 1001.0 : 1000.0) / 3);
        EXPECT_EQ(std::make_tuple(a.GetAvgMsPerTick(), a.GetBestTickMs()),
                  std::make_tuple(0.0, ~U64(0)));  // no span tracked
        TimeAccumulator::SessionData const &s = a.GetSessionData();
        EXPECT_EQ(std::make_tuple(s.m_sessionStart, s.m_sessionTicks, s.m_sessionTotalMs,
                                  a.GetTotalTicks(), a.GetTotalTime(), a.GetTime()),
                  std::make_tuple(U64(1001), 1ul, U64(1), 4ul, U64(1001), U64(1001)));
        EXPECT_FALSE(a.Tick(2001, actual));
        EXPECT_TRUE(a.Tick(2002, actual));
    }
    TimeAccumulator none;  // a session closed without ticks averages to 0
    EXPECT_TRUE(none.Tick(5000, false) && none.GetAvgMsBetweenTick() == 0.0);
}

TEST(TimeAccumulator, TrackedSpansMakeBestWorstAndAveragePerTick) {
    TimeAccumulator a;
    TimeAccumulator::SessionData const &s = a.GetSessionData();
    const U64 spans[][2] = {{100, 130}, {200, 200}, {300, 350}, {400, 410}};
    for (auto const &span : spans) {
        EXPECT_FALSE(a.StartTracking(span[0]));
        a.StopTracking(span[1]);
    }
    // A zero span adds nothing and never counts as best.
    EXPECT_EQ(
        std::make_tuple(s.m_sessionWorst, s.m_sessionBest, s.m_sessionTrackedMs, s.m_trackStart),
        std::make_tuple(U64(50), U64(10), U64(90), U64(400)));
    EXPECT_TRUE(a.StartTracking(1500));
    EXPECT_DOUBLE_EQ(a.GetAvgMsPerTick(), 90.0 / 4);
    EXPECT_EQ(std::make_tuple(a.GetBestTickMs(), a.GetWorstTick()), std::make_tuple(10u, 50u));

    const U64 before = ComputeMillisecondTime();
    TimeAccumulator clock;  // kNow counts from the first tick
    clock.Tick(TimeAccumulator::kNow, false);
    clock.Tick(TimeAccumulator::kNow, false);
    const U64 after = ComputeMillisecondTime();
    EXPECT_GE(clock.GetFirstTime() * 1000.0, static_cast<double>(before));
    EXPECT_LE(clock.GetTime(), after - before);
    TimeAccumulator future;  // a first tick later than the clock reads as time 0
    future.Tick(after + 3600000, false);
    future.StopTracking(TimeAccumulator::kNow);
    EXPECT_EQ(future.GetSessionData().m_sessionTrackedMs, 0 - future.GetSessionData().m_trackStart);
}

std::vector<TimeAccumulator *> g_calls;

TEST_F(Timer, SessionsGoToTheCallbackOrAReportBlockWhereAsked) {
    TimeAccumulatorMultiThreaded a;
    a.SetName("frames");
    a.SetOnNewSessionCallback([](TimeAccumulator *t) { g_calls.push_back(t); });
    for (U64 time : {10, 20, 1500}) {
        a.Tick(time, false);
    }
    TimeAccumulator copy(a);  // copies carry everything, the callback included
    copy.Tick(3000, false);
    EXPECT_EQ(g_calls, (std::vector<TimeAccumulator *>{&a, &copy}));
    a.SetDumpTessarPerUpdate(true);
    a.Reset();
    EXPECT_EQ(std::make_tuple(a.GetName(), a.GetTotalTicks(), a.GetDumpTessarPerUpdate()),
              std::make_tuple(std::string("frames"), 0ul, false));

    const std::string expected =
        "\n---------------\nTimer: paint 100%%\nSession at time: 900\nFPS            : 3\n"
        "AvgMsBetween   : 333.333\nAvgMsPerTick   : 10\nBest Tick      : 5\n"
        "Worst Tick     : 15\nSession Start  : 0\nSession TotalMS: 900\nTotal Ticks    : 4\n"
        "Total Minutes  : 0.015\n\n";
    std::string console = expected;  // the console takes the block as a format
    console.erase(console.find("%%"), 1);
    for (int where = 1; where <= 3; ++where) {
        platform.clear();
        TimeAccumulator b;
        b.SetName("paint 100%%");
        b.SetDumpWindowsPerUpdate((where & 1) != 0);
        b.SetDumpTessarPerUpdate((where & 2) != 0);
        for (U64 start : {100, 600, 900}) {
            b.StartTracking(start);
            b.StopTracking(start + (start == 100 ? 5 : start == 600 ? 15 : 10));
        }
        b.Tick(1500, false);
        EXPECT_EQ(platform.debugOutput(), (where & 1) != 0 ? expected : "");
        EXPECT_EQ(platform.consoleOutput(), (where & 2) != 0 ? console : "");
    }
    // Setting a switch again changes nothing; switching one off silences both.
    platform.clear();
    TimeAccumulator c;
    c.SetDumpWindowsPerUpdate(true);
    c.SetDumpTessarPerUpdate(true);
    c.SetDumpWindowsPerUpdate(true);
    c.Tick(1500, false);
    const std::string once = platform.debugOutput();
    c.SetDumpTessarPerUpdate(false);
    c.Tick(3000, false);
    EXPECT_TRUE(!once.empty() && platform.debugOutput() == once);
}

TEST(TimeAccumulatorHandle, NamesShareOneAccumulatorThatTheManagerKeeps) {
    const VHash<std::string, TimeAccumulator *> &timers =
        TimeAccumulatorManager::Instance().GetTimers();
    const std::string name = "TimeAccumulatorHandle.shared";
    {
        TimeAccumulatorHandle outer(name);
        TimeAccumulatorHandle inner(name.c_str());
        EXPECT_EQ(outer.GetTotalTicks() + inner.GetTotalTicks(), 0u);
    }
    TimeAccumulator *shared = timers.value(name);
    ASSERT_NE(dynamic_cast<TimeAccumulatorMultiThreaded *>(shared), nullptr);
    EXPECT_EQ(std::make_tuple(shared->GetName(), shared->GetTotalTicks()),
              std::make_tuple(name, 2ul));
    const int before = timers.size();
    { TimeAccumulatorHandle nothing(""); }
    { TimeAccumulatorHandle none(static_cast<const char *>(nullptr)); }
    EXPECT_EQ(timers.size(), before);
}

TEST(TimeAccumulatorConcurrency, LockedTicksSpansAndSharedHandlesLoseNothing) {
    constexpr int kThreads = 4, kRounds = 5000;
    TimeAccumulatorMultiThreaded shared;
    const std::string name = "TimeAccumulatorConcurrency.handles";
    { TimeAccumulatorHandle first(name); }
    vort_test::runTogether(kThreads, [&](int t) {
        for (int i = 0; i < kRounds; ++i) {
            const U64 time = static_cast<U64>(i) * 10 + t;
            shared.StartTracking(time);
            shared.StopTracking(time + 1);
            shared.Tick(time + 2, i % 2 == 0);
            TimeAccumulatorHandle handle(name);
        }
    });
    EXPECT_EQ(shared.GetTotalTicks(), static_cast<unsigned long>(kThreads * kRounds * 2));
    // The differences between ticks telescope whatever order the threads ran in; a lost update
    // breaks the sum.
    EXPECT_EQ(shared.GetTotalTime(), shared.GetTime());
    TimeAccumulator *named = TimeAccumulatorManager::Instance().GetTimers().value(name);
    ASSERT_NE(named, nullptr);
    EXPECT_EQ(named->GetTotalTicks(), static_cast<unsigned long>(1 + kThreads * kRounds));
    EXPECT_EQ(named->GetTotalTime(), named->GetTime());
}

}  // namespace
