// `VORT::TimeAccumulator`: a frame counter. It counts ticks and adds up tracked spans (between
// `StartTracking` and `StopTracking`) by sessions of nominally 1000 ms; when a tick falls past
// the end of a session, the session's figures are published (`GetAvgMsBetweenTick`,
// `GetAvgMsPerTick`, `GetBestTickMs`, `GetWorstTick`), the session callback runs and a new
// session starts with that tick. Also here: `TimeAccumulatorMultiThreaded`, the locked form;
// `TimeAccumulatorManager`, the process's named accumulators; and `TimeAccumulatorHandle`, which
// tracks one span of a named accumulator for the life of a scope.
//
// Times are milliseconds. A time argument of `kNow` (all bits set, -1) means the current time:
// `ComputeMillisecondTime()` counted from the accumulator's first tick. Any other value is taken
// as it stands, so tests and replays drive an accumulator with explicit times. Differences are
// unsigned 64-bit arithmetic: a time earlier than the previous one wraps.
//
// The session report, switched on by `SetDumpWindowsPerUpdate` (to the debugger output) or
// `SetDumpTessarPerUpdate` (to the host's console), is a block of lines "Timer: <name>",
// "FPS            : <ticks>" and so on. On the console the report is the format string itself,
// so a "%" in a timer's name is taken as a conversion: name timers without one.
//
// Thread safety: a `TimeAccumulator` belongs to one thread. A `TimeAccumulatorMultiThreaded`
// locks each of `Reset`, `StartTracking`, `StopTracking` and `Tick`; its getters don't lock, so
// read the figures once the writers are done. The manager's table has no lock: handles of a new
// name must not be made concurrently, while handles of names already in the table may be made
// and destroyed on any thread.
//
// Ownership: the manager is made at first use and never destroyed; its accumulators live until
// the process ends.
#ifndef VORT_INSTRUMENTATION_TIMEACCUMULATOR_H
#define VORT_INSTRUMENTATION_TIMEACCUMULATOR_H

#include <vort/bones/VHash.h>
#include <vort/messaging/Mutex.h>
#include <vort/vort_export.h>

#include <cstdint>
#include <string>

namespace VORT {

class VORT_EXPORT TimeAccumulator {
public:
    // The time argument that stands for "now".
    static constexpr std::uint64_t kNow = ~std::uint64_t(0);

    struct SessionData {
        unsigned long m_sessionTicks = 0;
        std::uint64_t m_sessionTotalMs = 0;    // sum of the time between ticks
        std::uint64_t m_sessionTrackedMs = 0;  // sum of the tracked spans
        std::uint64_t m_sessionStart = 0;
        std::uint64_t m_sessionLength = 1000;
        std::uint64_t m_trackStart = 0;                   // start of the running span
        std::uint64_t m_sessionWorst = 0;                 // longest span so far
        std::uint64_t m_sessionBest = ~std::uint64_t(0);  // shortest non-zero span so far
    };

    TimeAccumulator();
    TimeAccumulator(const TimeAccumulator &) = default;
    TimeAccumulator &operator=(const TimeAccumulator &) = default;
    virtual ~TimeAccumulator();

    // Everything back to its initial value, callback and report flags included; the name stays.
    virtual void Reset();
    // A tick at `time`, then the start of a tracked span at that tick. Returns what `Tick` does.
    virtual bool StartTracking(std::uint64_t time);
    // Ends the tracked span at `time`. A zero span counts towards the total and the worst, never
    // as the best.
    virtual void StopTracking(std::uint64_t time);
    // Counts a tick at `time`. True exactly when this tick closed a session, which happens when
    // it lies strictly past the session's start plus its length. The closed session's averages
    // divide by its nominal length, or by the time it actually took with `useActualLength`.
    virtual bool Tick(std::uint64_t time, bool useActualLength);

    double GetAvgMsPerTick() const { return m_avgMsPerTick; }
    double GetAvgMsBetweenTick() const { return m_avgMsBetweenTick; }
    // All bits set when the last finished session had no non-zero span; 0 before the first.
    std::uint64_t GetBestTickMs() const { return m_bestTick; }
    std::uint64_t GetWorstTick() const { return m_worstTick; }
    std::uint64_t GetTime() const { return m_time; }
    // Seconds on the clock at the first tick; 0.0 until then.
    double GetFirstTime() const { return m_firstTime; }
    unsigned long GetTotalTicks() const { return m_totalTicks; }
    std::uint64_t GetTotalTime() const { return m_totalTime; }
    const std::string &GetName() const { return m_name; }
    const SessionData &GetSessionData() const { return m_session; }
    bool GetDumpWindowsPerUpdate() const { return m_dumpWindows; }
    bool GetDumpTessarPerUpdate() const { return m_dumpTessar; }

    void SetName(const std::string &name) { m_name = name; }
    // Called with this object when a session ends, while the session fields still hold it.
    void SetOnNewSessionCallback(void (*callback)(TimeAccumulator *)) { m_onNewSession = callback; }
    // Both share the one callback slot: turning either on installs the report (replacing a
    // callback set before), and turning either off removes it, which silences the other too.
    void SetDumpWindowsPerUpdate(bool dump);
    void SetDumpTessarPerUpdate(bool dump);

private:
    std::uint64_t resolve(std::uint64_t time) const;
    static void report(TimeAccumulator *accumulator);

    std::string m_name;
    unsigned long m_totalTicks;
    std::uint64_t m_totalTime;
    SessionData m_session;
    double m_avgMsPerTick;
    double m_avgMsBetweenTick;
    std::uint64_t m_worstTick;
    std::uint64_t m_bestTick;
    double m_firstTime;
    std::uint64_t m_time;
    void (*m_onNewSession)(TimeAccumulator *);
    bool m_dumpWindows;
    bool m_dumpTessar;
};

class VORT_EXPORT TimeAccumulatorMultiThreaded : public TimeAccumulator {
public:
    TimeAccumulatorMultiThreaded();
    ~TimeAccumulatorMultiThreaded() override;

    void Reset() override;
    bool StartTracking(std::uint64_t time) override;
    void StopTracking(std::uint64_t time) override;
    bool Tick(std::uint64_t time, bool useActualLength) override;

private:
    // Recursive: `StartTracking` calls the virtual `Tick` with the lock held.
    Mutex m_lock;
};

class VORT_EXPORT TimeAccumulatorManager {
public:
    static TimeAccumulatorManager &Instance();
    virtual ~TimeAccumulatorManager();

    const VHash<std::string, TimeAccumulator *> &GetTimers() const { return m_timers; }

private:
    friend class TimeAccumulatorHandle;

    TimeAccumulatorManager();
    TimeAccumulatorManager(const TimeAccumulatorManager &) = delete;
    TimeAccumulatorManager &operator=(const TimeAccumulatorManager &) = delete;

    VHash<std::string, TimeAccumulator *> m_timers;
};

// Tracks one span of the process's accumulator of that name, from construction to destruction,
// at the current time; the first handle of a name makes the accumulator. The handle's own
// inherited figures are never used. An empty name that no accumulator has is a programming
// error: such a handle tracks nothing.
class VORT_EXPORT TimeAccumulatorHandle : public TimeAccumulatorMultiThreaded {
public:
    explicit TimeAccumulatorHandle(const std::string &name);
    explicit TimeAccumulatorHandle(const char *name);
    ~TimeAccumulatorHandle() override;
    TimeAccumulatorHandle(const TimeAccumulatorHandle &) = delete;
    TimeAccumulatorHandle &operator=(const TimeAccumulatorHandle &) = delete;

private:
    void attach(const std::string &name);

    TimeAccumulator *m_accumulator;
};

}  // namespace VORT

#endif  // VORT_INSTRUMENTATION_TIMEACCUMULATOR_H
