#include "support/PlatformHooks.h"
#include <vort/instrumentation/ScopedDebugTimer.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <regex>
#include <string>
#include <utility>
#include <vector>

namespace {

using VORT::ScopedDebugTimer;
using VORT::TimeHelpers::ScoreData;
using vort_test::PlatformHooksTest;

class ScopedDebugTimerTest : public PlatformHooksTest {
protected:
    void SetUp() override { VORT::TimeHelpers::getMapScores().clear(); }
    void TearDown() override { VORT::TimeHelpers::getMapScores().clear(); }
};

using DumpTimeTrackingDataTest = PlatformHooksTest;

TEST(DebugClocks, ShareOneMonotonicOriginInTheirTwoUnits) {
    const std::uint64_t msBefore = VORT::ComputeMillisecondTime();
    const std::uint64_t us = VORT::ComputeMicrosecondTime();
    const std::uint64_t msAfter = VORT::ComputeMillisecondTime();
    EXPECT_LE(msBefore, us / 1000);
    EXPECT_GE(msAfter, us / 1000);
    EXPECT_LE(us, VORT::ComputeMicrosecondTime());
}

TEST_F(DumpTimeTrackingDataTest, WritesTheReportOnBothSinksOnlyForANonZeroTime) {
    struct Case {
        std::uint64_t start;
        std::uint64_t end;
        const char *message;
        bool milliseconds;
        unsigned int threshold;
        const char *debug;
        const char *console;
    };
    const Case cases[] = {
        {1000, 1250, "drawn", true, 0, "f.cpp (12) : Time was (250) ms. drawn\n",
         "f.cpp (12) : Time was (250) ms. drawn\n"},
        {0, 1500, "", false, 0, "f.cpp (12) : Time was (1) ms (1500) us. \n",
         "f.cpp (12) : Time was (1) ms (1500) us. \n"},
        {0, 999, nullptr, false, 0, "f.cpp (12) : Time was (0) ms (999) us. \n",
         "f.cpp (12) : Time was (0) ms (999) us. \n"},
        // At the threshold it reports; above the time it does not.
        {0, 40, "", true, 40, "f.cpp (12) : Time was (40) ms. \n",
         "f.cpp (12) : Time was (40) ms. \n"},
        {0, 40, "", true, 41, "", ""},
        // A zero time puts only the message on the debugger output.
        {7, 7, "m", true, 0, "m\n", ""},
        {7, 7, nullptr, false, 0, "\n", ""},
        // The upper halves are dropped, in either direction.
        {0, 0x100000005ull, "", true, 0, "f.cpp (12) : Time was (5) ms. \n",
         "f.cpp (12) : Time was (5) ms. \n"},
        {10, 5, "", true, 0, "f.cpp (12) : Time was (4294967291) ms. \n",
         "f.cpp (12) : Time was (4294967291) ms. \n"},
        {0, 0x100000000ull, "z", true, 0, "z\n", ""},
    };
    for (Case const &c : cases) {
        SCOPED_TRACE(std::string(c.debug));
        platform.clear();
        VORT::DumpTimeTrackingData("f.cpp", 12, c.start, c.end, c.message, c.milliseconds,
                                   c.threshold);
        EXPECT_EQ(platform.debugOutput(), c.debug);
        EXPECT_EQ(platform.consoleOutput(), c.console);
    }
}

TEST(ScoreData, AveragesWhatWasAddedAndStaysZeroWithoutCount) {
    ScoreData score;
    EXPECT_EQ(score.m_count, 0u);
    score.computeAverage();
    EXPECT_EQ(score.m_average, 0.0);
    score.addTime(1.0);
    score.addTime(3.0);
    EXPECT_EQ(score.m_total, 4.0);
    EXPECT_EQ(score.m_count, 2u);
    EXPECT_EQ(score.m_average, 2.0);
    // A count that has wrapped to 0 gives 0.0 rather than a division by zero.
    score.m_count = 0xFFFFFFFFu;
    score.addTime(1.0);
    EXPECT_EQ(score.m_count, 0u);
    EXPECT_EQ(score.m_average, 0.0);
}

TEST_F(ScopedDebugTimerTest, ScoreTableAddsFetchesAndFiltersByName) {
    using namespace VORT::TimeHelpers;
    addToScore("draw", 1.0);
    addToScore("draw", 3.0);
    addToScore("redraw all", 5.0);
    addToScore("load", 2.5);

    const ScoreData &draw = fetchScoreData("draw");
    EXPECT_EQ(draw.m_total, 4.0);
    EXPECT_EQ(draw.m_count, 2u);
    EXPECT_EQ(draw.m_average, 2.0);
    const ScoreData &fresh = fetchScoreData("redraw all");
    EXPECT_EQ(fresh.m_count, 1u);
    EXPECT_EQ(fresh.m_average, 5.0);
    const ScoreData &unknown = fetchScoreData("nothing");
    EXPECT_EQ(unknown.m_count, 0u);
    EXPECT_EQ(unknown.m_average, 0.0);
    EXPECT_EQ(getMapScores().count("nothing"), 0u);

    std::vector<std::pair<std::string, ScoreData>> found;
    getMapScoresForSubstring("draw", found);
    getMapScoresForSubstring("draw", found);
    std::vector<std::string> names;
    for (auto const &entry : found) {
        names.push_back(entry.first);
    }
    // In key order, not cleared between the calls.
    EXPECT_EQ(names, (std::vector<std::string>{"draw", "redraw all", "draw", "redraw all"}));
    EXPECT_EQ(found[0].second.m_total, 4.0);

    found.clear();
    getMapScoresForSubstring("", found);
    ASSERT_EQ(found.size(), 3u);
    EXPECT_EQ(found[1].first, "load");
}

TEST_F(ScopedDebugTimerTest, ReportsAndScoresOnlyARunningMeasurementOnce) {
    const std::string key = "Line(42) in file: src/paint.cpp";
    { ScopedDebugTimer idle("src/paint.cpp", 42, "ignored", 0, false, false, true); }
    EXPECT_EQ(platform.debugOutput(), "");
    EXPECT_EQ(VORT::TimeHelpers::getMapScores().count(key), 0u);

    {
        ScopedDebugTimer timer("src/paint.cpp", 42, "ignored", 0, true, false, true);
        timer.endTimer(0);
        timer.endTimer(0);
    }
    EXPECT_EQ(VORT::TimeHelpers::fetchScoreData(key).m_count, 1u);
    // However long it took, the report ends in one line break and never carries the message.
    const std::string once = platform.debugOutput();
    EXPECT_EQ(once.find("ignored"), std::string::npos);
    EXPECT_EQ(once.find('\n'), once.size() - 1);

    {
        ScopedDebugTimer later(nullptr, 3, nullptr, 0, false, true, true);
        later.startTimer();
    }
    EXPECT_EQ(VORT::TimeHelpers::fetchScoreData("Line(3) in file: ").m_count, 1u);
}

TEST_F(ScopedDebugTimerTest, AllBitsThresholdScoresWithoutReporting) {
    for (std::uint32_t threshold : {ScopedDebugTimer::kNoReport, static_cast<std::uint32_t>(-1)}) {
        ScopedDebugTimer timer("quiet.cpp", 1, nullptr, threshold, true, false, true);
    }
    {
        ScopedDebugTimer timer("quiet.cpp", 1, nullptr, 0, true, false, true);
        timer.endTimer(ScopedDebugTimer::kNoReport);
    }
    EXPECT_EQ(platform.debugOutput(), "");
    EXPECT_EQ(platform.consoleOutput(), "");
    EXPECT_EQ(VORT::TimeHelpers::fetchScoreData("Line(1) in file: quiet.cpp").m_count, 3u);
}

TEST_F(ScopedDebugTimerTest, CopiesMeasureFromTheSameStart) {
    ScopedDebugTimer *copy = nullptr;
    {
        ScopedDebugTimer timer("copy.cpp", 9, nullptr, ScopedDebugTimer::kNoReport, true, false,
                               true);
        copy = new ScopedDebugTimer(timer);
    }
    delete copy;
    EXPECT_EQ(VORT::TimeHelpers::fetchScoreData("Line(9) in file: copy.cpp").m_count, 2u);
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
    std::smatch match;
    ASSERT_TRUE(std::regex_match(
        report, match, std::regex(R"(us\.cpp \(5\) : Time was \((\d+)\) ms \((\d+)\) us\. \n)")))
        << report;
    const unsigned long ms = std::stoul(match[1]);
    const unsigned long us = std::stoul(match[2]);
    EXPECT_EQ(ms, us / 1000);
    EXPECT_GE(us, 2500u);
    EXPECT_EQ(platform.consoleOutput(), report);
    EXPECT_DOUBLE_EQ(VORT::TimeHelpers::fetchScoreData("Line(5) in file: us.cpp").m_total,
                     us / 1000.0);
}

}  // namespace
