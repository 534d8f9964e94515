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
using TimeHelpers::fetchScoreData;
using Timer = vort_test::PlatformHooksTest;
using U64 = std::uint64_t;

TEST_F(Timer, DumpWritesTheReportOnBothSinksOnlyForANonZeroTime) {
    struct Case {
        U64 start, end;
        const char *file, *message;
        bool ms;
        unsigned int threshold;
        const char *report;
    } const cases[] = {
        {1000, 1250, "f.cpp", "drawn", true, 0, "f.cpp (12) : Time was (250) ms. drawn\n"},
        {0, 1500, nullptr, "", false, 0, " (12) : Time was (1) ms (1500) us. \n"},
        {0, 999, "f.cpp", nullptr, false, 0, "f.cpp (12) : Time was (0) ms (999) us. \n"},
        {0, 40, "f.cpp", "", true, 40, "f.cpp (12) : Time was (40) ms. \n"},
        {0, 40, "f.cpp", "", true, 41, ""},
        {7, 7, "f.cpp", "m", true, 0, "m\n"},
        {7, 7, "f.cpp", nullptr, false, 0, "\n"},
        // The upper halves are dropped, in either direction.
        {0, 0x100000005ull, "f.cpp", "", true, 0, "f.cpp (12) : Time was (5) ms. \n"},
        {10, 5, "f.cpp", "", true, 0, "f.cpp (12) : Time was (4294967291) ms. \n"},
        {0, 0x100000000ull, "f.cpp", "z", true, 0, "z\n"},
    };
    for (Case const &c : cases) {
        SCOPED_TRACE(c.report);
        platform.clear();
        DumpTimeTrackingData(c.file, 12, c.start, c.end, c.message, c.ms, c.threshold);
        EXPECT_EQ(platform.debugOutput(), c.report);
        const bool zero = static_cast<std::uint32_t>(c.end - c.start) == 0;
        EXPECT_EQ(platform.consoleOutput(), zero ? "" : c.report);
    }
}

TEST_F(Timer, ScoresAddUpByNameAndFilterBySubstring) {
    using namespace TimeHelpers;
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
    // In key order, and not cleared between calls; "" matches every name.
    std::vector<std::pair<std::string, ScoreData>> found;
    getMapScoresForSubstring("draw", found);
    getMapScoresForSubstring("", found);
    std::string names;
    for (auto const &entry : found) {
        names += entry.first + ",";
    }
    EXPECT_EQ(names, "draw,redraw all,draw,load,redraw all,");
    EXPECT_EQ(found[1].second.m_average, 5.0);
    // A count that has wrapped to 0 averages to 0.0 rather than dividing by zero.
    ScoreData wrapped;
    wrapped.m_count = 0xFFFFFFFFu;
    wrapped.addTime(1.0);
    EXPECT_EQ(wrapped.m_average, 0.0);
}

TEST_F(Timer, ReportsAndScoresOnlyARunningMeasurementOnce) {
    TimeHelpers::getMapScores().clear();
    { ScopedDebugTimer idle("idle.cpp", 1, nullptr, 0, false, false, true); }
    EXPECT_EQ(TimeHelpers::getMapScores().size(), 0u);
    {
        ScopedDebugTimer timer("src/paint.cpp", 42, "ignored", 0, true, false, true);
        // A copy of a running timer reports and scores at its own end.
        ScopedDebugTimer copy(timer);
        timer.endTimer(0);
        timer.endTimer(0);
    }
    EXPECT_EQ(fetchScoreData("Line(42) in file: src/paint.cpp").m_count, 2u);
    // However long it took, each report is one line and never carries the message.
    const std::string reports = platform.debugOutput();
    EXPECT_EQ(reports.find("ignored"), std::string::npos);
    EXPECT_EQ(std::count(reports.begin(), reports.end(), '\n'), 2);
    // All bits set, however spelt, scores without reporting.
    platform.clear();
    for (std::uint32_t threshold : {ScopedDebugTimer::kNoReport, ~std::uint32_t(0)}) {
        ScopedDebugTimer quiet(nullptr, 3, nullptr, threshold, true, false, true);
    }
    EXPECT_EQ(platform.debugOutput() + platform.consoleOutput(), "");
    EXPECT_EQ(fetchScoreData("Line(3) in file: ").m_count, 2u);
}

TEST_F(Timer, MicrosecondTimerReportsBothUnitsAndScoresMilliseconds) {
    {
        ScopedDebugTimer timer("us.cpp", 5, nullptr, 0, true, true, true);
        // Spin on the clock (no other thread is involved) until the time is well past zero.
        const U64 start = ComputeMicrosecondTime();
        while (ComputeMicrosecondTime() - start < 2500) {
        }
    }
    const std::string report = platform.debugOutput();
    unsigned long ms = 0, us = 0;
    ASSERT_EQ(std::sscanf(report.c_str(), "us.cpp (5) : Time was (%lu) ms (%lu) us.", &ms, &us), 2);
    EXPECT_EQ(std::make_tuple(ms, us >= 2500, report.back()),
              std::make_tuple(us / 1000, true, '\n'));
    EXPECT_DOUBLE_EQ(fetchScoreData("Line(5) in file: us.cpp").m_total, us / 1000.0);
}

std::vector<TimeAccumulator *> g_calls;
unsigned long g_ticksSeen = 0;

void recordCall(TimeAccumulator *accumulator) {
    g_calls.push_back(accumulator);
    g_ticksSeen = accumulator->GetSessionData().m_sessionTicks;
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
        EXPECT_FALSE(a.Tick(200, actual) || a.Tick(1000, actual));
        EXPECT_EQ(a.GetAvgMsBetweenTick(), 0.0);
        EXPECT_TRUE(a.Tick(1001, actual));
        EXPECT_DOUBLE_EQ(a.GetAvgMsBetweenTick(), (actual ? 1001.0 : 1000.0) / 3);
        // No span was tracked: the best is published as all bits set.
        EXPECT_EQ(std::make_tuple(a.GetAvgMsPerTick(), a.GetBestTickMs()),
                  std::make_tuple(0.0, ~U64(0)));
        TimeAccumulator::SessionData const &s = a.GetSessionData();
        EXPECT_EQ(std::make_tuple(s.m_sessionStart, s.m_sessionTicks, s.m_sessionTotalMs,
                                  a.GetTotalTicks(), a.GetTotalTime(), a.GetTime()),
                  std::make_tuple(U64(1001), 1ul, U64(1), 4ul, U64(1001), U64(1001)));
        EXPECT_FALSE(a.Tick(2001, actual));
        EXPECT_TRUE(a.Tick(2002, actual));
    }
}

TEST(TimeAccumulator, TrackedSpansMakeBestWorstAndAveragePerTick) {
    TimeAccumulator a;
    TimeAccumulator::SessionData const &s = a.GetSessionData();
    auto session = [&s] {
        return std::make_tuple(s.m_sessionWorst, s.m_sessionBest, s.m_sessionTrackedMs,
                               s.m_trackStart);
    };
    EXPECT_FALSE(a.StartTracking(100));
    a.StopTracking(130);
    EXPECT_EQ(session(), std::make_tuple(U64(30), U64(30), U64(30), U64(100)));
    // A zero span adds nothing and never counts as best.
    const U64 spans[][2] = {{200, 200}, {300, 350}, {400, 410}};
    for (auto const &span : spans) {
        a.StartTracking(span[0]);
        a.StopTracking(span[1]);
    }
    EXPECT_EQ(session(), std::make_tuple(U64(50), U64(10), U64(90), U64(400)));
    EXPECT_TRUE(a.StartTracking(1500));
    EXPECT_DOUBLE_EQ(a.GetAvgMsPerTick(), 90.0 / 4);
    EXPECT_DOUBLE_EQ(a.GetAvgMsBetweenTick(), 1000.0 / 4);
    EXPECT_EQ(std::make_tuple(a.GetBestTickMs(), a.GetWorstTick()), std::make_tuple(10u, 50u));
    EXPECT_EQ(session(), std::make_tuple(U64(0), ~U64(0), U64(0), U64(1500)));
}

TEST(TimeAccumulator, CurrentTimeCountsFromTheFirstTick) {
    TimeAccumulator given;
    given.Tick(5000, false);
    EXPECT_EQ(given.GetFirstTime(), 5.0);
    U64 before = ComputeMillisecondTime();
    given.Tick(TimeAccumulator::kNow, false);
    U64 after = ComputeMillisecondTime();
    EXPECT_GE(given.GetTime(), before - 5000);
    EXPECT_LE(given.GetTime(), after - 5000);
    TimeAccumulator automatic;
    before = ComputeMillisecondTime();
    automatic.Tick(TimeAccumulator::kNow, false);
    after = ComputeMillisecondTime();
    EXPECT_GE(automatic.GetFirstTime() * 1000.0, static_cast<double>(before));
    EXPECT_LE(automatic.GetFirstTime() * 1000.0, static_cast<double>(after));
    EXPECT_LE(automatic.GetTime(), after - before);
    // A first tick later than the clock can't make the current time negative.
    TimeAccumulator future;
    future.Tick(after + 3600000, false);
    future.StopTracking(TimeAccumulator::kNow);
    EXPECT_EQ(future.GetSessionData().m_sessionTrackedMs, 0 - future.GetSessionData().m_trackStart);
}

TEST(TimeAccumulator, CallbackSeesTheFinishedSessionAndDumpSwitchesShareItsSlot) {
    g_calls.clear();
    TimeAccumulatorMultiThreaded a;
    a.SetName("frames");
    a.SetOnNewSessionCallback(&recordCall);
    for (U64 time : {10, 20, 1500}) {
        a.Tick(time, false);
    }
    ASSERT_EQ(g_calls, std::vector<TimeAccumulator *>{&a});
    EXPECT_EQ(g_ticksSeen, 2u);
    // Copies carry everything, the callback included.
    TimeAccumulator copy(a);
    EXPECT_EQ(std::make_tuple(copy.GetName(), copy.GetTotalTicks(), copy.GetAvgMsBetweenTick()),
              std::make_tuple(std::string("frames"), 3ul, 500.0));
    copy.Tick(3000, false);
    EXPECT_EQ(g_calls.back(), &copy);
    a.SetDumpTessarPerUpdate(true);
    a.Reset();
    EXPECT_EQ(std::make_tuple(a.GetName(), a.GetTotalTicks(), a.GetDumpTessarPerUpdate()),
              std::make_tuple(std::string("frames"), 0ul, false));

    // Either switch replaces the callback; setting one again changes nothing, and switching
    // the other off silences both.
    g_calls.clear();
    a.SetOnNewSessionCallback(&recordCall);
    a.SetDumpWindowsPerUpdate(true);
    a.Tick(1, false);
    a.Tick(1500, false);
    EXPECT_TRUE(g_calls.empty());
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

TEST_F(Timer, AccumulatorWritesTheSessionBlockWhereAsked) {
    const std::string expected =
        "\n---------------\nTimer: paint 100%%\nSession at time: 900\nFPS            : 3\n"
        "AvgMsBetween   : 333.333\nAvgMsPerTick   : 10\nBest Tick      : 5\n"
        "Worst Tick     : 15\nSession Start  : 0\nSession TotalMS: 900\nTotal Ticks    : 4\n"
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
        const U64 spans[][2] = {{100, 105}, {600, 615}, {900, 910}};
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
    const VHash<std::string, TimeAccumulator *> &timers =
        TimeAccumulatorManager::Instance().GetTimers();
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
    EXPECT_EQ(std::make_tuple(shared->GetName(), shared->GetTotalTicks()),
              std::make_tuple(name, 2ul));
    EXPECT_NE(dynamic_cast<TimeAccumulatorMultiThreaded *>(shared), nullptr);
    // An empty name with no accumulator tracks nothing and adds nothing.
    const int before = timers.size();
    { TimeAccumulatorHandle nothing(""); }
    { TimeAccumulatorHandle none(static_cast<const char *>(nullptr)); }
    EXPECT_EQ(timers.size(), before);
}

}  // namespace
