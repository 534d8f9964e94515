#include "support/PlatformHooks.h"
#include <vort/instrumentation/ScopedDebugTimer.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

namespace {

using VORT::ScopedDebugTimer;
using VORT::TimeHelpers::fetchScoreData;
using VORT::TimeHelpers::ScoreData;

class ScopedDebugTimerTest : public vort_test::PlatformHooksTest {
protected:
    void SetUp() override { VORT::TimeHelpers::getMapScores().clear(); }
};

using DumpTimeTrackingDataTest = vort_test::PlatformHooksTest;

TEST(DebugClocks, ShareOneMonotonicOriginInTheirTwoUnits) {
    const std::uint64_t msBefore = VORT::ComputeMillisecondTime();
    const std::uint64_t us = VORT::ComputeMicrosecondTime();
    EXPECT_LE(msBefore, us / 1000);
    EXPECT_GE(VORT::ComputeMillisecondTime(), us / 1000);
}

TEST_F(DumpTimeTrackingDataTest, WritesTheReportOnBothSinksOnlyForANonZeroTime) {
    struct Case {
        std::uint64_t start, end;
        const char *message;
        bool milliseconds;
        unsigned int threshold;
        const char *report;  // on the debugger output, and on the console when the time isn't 0
    };
    const Case cases[] = {
        {1000, 1250, "drawn", true, 0, "f.cpp (12) : Time was (250) ms. drawn\n"},
        {0, 1500, "", false, 0, "f.cpp (12) : Time was (1) ms (1500) us. \n"},
        {0, 999, nullptr, false, 0, "f.cpp (12) : Time was (0) ms (999) us. \n"},
        {0, 40, "", true, 40, "f.cpp (12) : Time was (40) ms. \n"},
        {0, 40, "", true, 41, ""},
        {7, 7, "m", true, 0, "m\n"},
        {7, 7, nullptr, false, 0, "\n"},
        // The upper halves are dropped, in either direction.
        {0, 0x100000005ull, "", true, 0, "f.cpp (12) : Time was (5) ms. \n"},
        {10, 5, "", true, 0, "f.cpp (12) : Time was (4294967291) ms. \n"},
        {0, 0x100000000ull, "z", true, 0, "z\n"},
    };
    for (Case const &c : cases) {
        SCOPED_TRACE(c.report);
        platform.clear();
        VORT::DumpTimeTrackingData("f.cpp", 12, c.start, c.end, c.message, c.milliseconds,
                                   c.threshold);
        EXPECT_EQ(platform.debugOutput(), c.report);
        const bool zero = static_cast<std::uint32_t>(c.end - c.start) == 0;
        EXPECT_EQ(platform.consoleOutput(), zero ? "" : c.report);
    }
}

TEST_F(ScopedDebugTimerTest, ScoresAddUpByNameAndFilterBySubstring) {
    using namespace VORT::TimeHelpers;
    addToScore("draw", 1.0);
    addToScore("draw", 3.0);
    addToScore("redraw all", 5.0);
    addToScore("load", 2.5);
    EXPECT_EQ(fetchScoreData("draw").m_total, 4.0);
    EXPECT_EQ(fetchScoreData("draw").m_count, 2u);
    EXPECT_EQ(fetchScoreData("draw").m_average, 2.0);
    EXPECT_EQ(fetchScoreData("redraw all").m_average, 5.0);
    EXPECT_EQ(fetchScoreData("nothing").m_count, 0u);
    EXPECT_EQ(fetchScoreData("nothing").m_average, 0.0);
    EXPECT_EQ(getMapScores().count("nothing"), 0u);

    // In key order, and not cleared between calls; "" matches every name.
    std::vector<std::pair<std::string, ScoreData>> found;
    getMapScoresForSubstring("draw", found);
    getMapScoresForSubstring("draw", found);
    getMapScoresForSubstring("", found);
    std::vector<std::string> names;
    for (auto const &entry : found) {
        names.push_back(entry.first);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"draw", "redraw all", "draw", "redraw all", "draw",
                                               "load", "redraw all"}));
    EXPECT_EQ(found[0].second.m_total, 4.0);

    // A count that has wrapped to 0 averages to 0.0 rather than dividing by zero.
    ScoreData wrapped;
    wrapped.m_count = 0xFFFFFFFFu;
    wrapped.addTime(1.0);
    EXPECT_EQ(wrapped.m_average, 0.0);
}

TEST_F(ScopedDebugTimerTest, ReportsAndScoresOnlyARunningMeasurementOnce) {
    { ScopedDebugTimer idle("idle.cpp", 1, nullptr, 0, false, false, true); }
    EXPECT_EQ(VORT::TimeHelpers::getMapScores().size(), 0u);
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
    for (std::uint32_t threshold : {ScopedDebugTimer::kNoReport, static_cast<std::uint32_t>(-1)}) {
        ScopedDebugTimer quiet(nullptr, 3, nullptr, threshold, true, false, true);
    }
    EXPECT_EQ(platform.debugOutput() + platform.consoleOutput(), "");
    EXPECT_EQ(fetchScoreData("Line(3) in file: ").m_count, 2u);
}

TEST_F(ScopedDebugTimerTest, MicrosecondTimerReportsBothUnitsAndScoresMilliseconds) {
    {
        ScopedDebugTimer timer("us.cpp", 5, nullptr, 0, true, true, true);
        // Spin on the clock (no other thread is involved) until the time is well past zero.
        const std::uint64_t start = VORT::ComputeMicrosecondTime();
        while (VORT::ComputeMicrosecondTime() - start < 2500) {
        }
    }
    const std::string report = platform.debugOutput();
    unsigned long ms = 0;
    unsigned long us = 0;
    ASSERT_EQ(std::sscanf(report.c_str(), "us.cpp (5) : Time was (%lu) ms (%lu) us.", &ms, &us), 2)
        << report;
    EXPECT_EQ(report, "us.cpp (5) : Time was (" + std::to_string(ms) + ") ms (" +
                          std::to_string(us) + ") us. \n");
    EXPECT_EQ(ms, us / 1000);
    EXPECT_GE(us, 2500u);
    EXPECT_EQ(platform.consoleOutput(), report);
    EXPECT_DOUBLE_EQ(fetchScoreData("Line(5) in file: us.cpp").m_total, us / 1000.0);
}

}  // namespace
