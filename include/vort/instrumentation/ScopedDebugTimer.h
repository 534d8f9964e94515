// The developer's timing tools: two monotonic clocks, `VORT::ScopedDebugTimer` (a scoped timer
// that reports how long a stretch of code took), `VORT::DumpTimeTrackingData` (the formatter of
// that report) and, in `VORT::TimeHelpers`, a process-wide table of scores that adds times up
// under a name.
//
// Reports go to the debugger output (`hslDebugOutput`) and, when the time isn't zero, to the
// host's console (`hslPrintf`). A report reads "<file> (<line>) : Time was (<ms>) ms. " or, for
// microseconds, "<file> (<line>) : Time was (<ms>) ms (<us>) us. ", then the message and a line
// break. Elapsed times are taken as 32-bit unsigned differences: the upper halves are dropped.
//
// Thread safety: the clocks may be read from any thread. A `ScopedDebugTimer` belongs to one
// thread. The score table has no lock: it is for a developer's use on one thread.
//
// Ownership: the score table lives until the process ends; `fetchScoreData` hands out references
// into it, which stay valid as long as the entry is not erased.
#ifndef VORT_INSTRUMENTATION_SCOPEDDEBUGTIMER_H
#define VORT_INSTRUMENTATION_SCOPEDDEBUGTIMER_H

#include <vort/vort_export.h>

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace VORT {

// Milliseconds and microseconds on one monotonic clock, from an arbitrary origin.
VORT_EXPORT std::uint64_t ComputeMillisecondTime();
VORT_EXPORT std::uint64_t ComputeMicrosecondTime();

// Reports the time from `start` to `end` (milliseconds when `milliseconds` is true, otherwise
// microseconds) unless `threshold` is above it. A zero time writes only `message` (which may be
// null) and a line break to the debugger output, and nothing to the console.
VORT_EXPORT void DumpTimeTrackingData(const char *file, int line, std::uint64_t start,
                                      std::uint64_t end, const char *message, bool milliseconds,
                                      unsigned int threshold);

class VORT_EXPORT ScopedDebugTimer {
public:
    // A threshold with all 32 bits set, `-1` however it is spelt, means "never report".
    static constexpr std::uint32_t kNoReport = 0xFFFFFFFFu;

    // `file` may be null. `message` is not kept: reports carry none. With `start` false the timer
    // waits for `startTimer`, and one never started reports nothing and scores nothing.
    ScopedDebugTimer(const char *file, int line, const char *message, std::uint32_t threshold,
                     bool start, bool microseconds, bool addToScore);
    ScopedDebugTimer(const ScopedDebugTimer &) = default;
    ScopedDebugTimer &operator=(const ScopedDebugTimer &) = default;
    // `endTimer(threshold)` with the constructor's threshold.
    ~ScopedDebugTimer();

    // (Re)starts the measurement now.
    void startTimer();
    // Ends a running measurement: reports it unless `threshold` is `kNoReport` (or above the
    // time), and adds it in milliseconds to the score "Line(<line>) in file: <file>" when asked
    // to. Does nothing when the timer isn't running.
    void endTimer(std::uint32_t threshold);

private:
    std::uint64_t now() const;

    std::uint64_t m_start;
    std::uint64_t m_end;
    std::string m_file;
    std::string m_message;
    std::uint32_t m_threshold;
    int m_line;
    bool m_running;
    bool m_microseconds;
    bool m_addToScore;
};

namespace TimeHelpers {

struct VORT_EXPORT ScoreData {
    ScoreData() : m_total(0.0), m_count(0), m_average(0.0) {}

    // Counts `time` in and recomputes the average.
    void addTime(double time);
    // `m_total / m_count`, or 0.0 when the count is 0 (also after it has wrapped).
    void computeAverage();

    double m_total;
    unsigned int m_count;
    double m_average;
};

// The process-wide table, made at first use.
VORT_EXPORT std::map<std::string, ScoreData> &getMapScores();
// Adds `time` to the score of `name`, making the entry if there is none.
VORT_EXPORT void addToScore(const std::string &name, double time);
// The entry of `name`, or a shared all-zero `ScoreData` when there is none.
VORT_EXPORT const ScoreData &fetchScoreData(const std::string &name);
// Appends, in key order, a copy of every entry whose name contains `substring` (every entry for
// an empty one). `result` is not cleared first.
VORT_EXPORT void getMapScoresForSubstring(const std::string &substring,
                                          std::vector<std::pair<std::string, ScoreData>> &result);

}  // namespace TimeHelpers
}  // namespace VORT

#endif  // VORT_INSTRUMENTATION_SCOPEDDEBUGTIMER_H
