#include <hsl/hsl.h>
#include <vort/instrumentation/ScopedDebugTimer.h>
#include <vort/instrumentation/TimeAccumulator.h>

#include <sstream>

namespace VORT {

TimeAccumulator::TimeAccumulator()
    : m_totalTicks(0),
      m_totalTime(0),
      m_avgMsPerTick(0.0),
      m_avgMsBetweenTick(0.0),
      m_worstTick(0),
      m_bestTick(0),
      m_firstTime(0.0),
      m_time(0),
      m_onNewSession(nullptr),
      m_dumpWindows(false),
      m_dumpTessar(false) {}

TimeAccumulator::~TimeAccumulator() {}

void TimeAccumulator::Reset() {
    const std::string name = m_name;
    *this = TimeAccumulator();
    m_name = name;
}

std::uint64_t TimeAccumulator::resolve(std::uint64_t time) const {
    if (time != kNow) {
        return time;
    }
    // Counted from the first tick. A first tick given an explicit time later than the clock
    // would make this negative, which has no unsigned value: it reads as 0.
    const double elapsed =
        (static_cast<double>(ComputeMillisecondTime()) / 1000.0 - m_firstTime) * 1000.0;
    return elapsed > 0.0 ? static_cast<std::uint64_t>(elapsed) : 0;
}

bool TimeAccumulator::Tick(std::uint64_t time, bool useActualLength) {
    ++m_totalTicks;
    if (m_firstTime == 0.0) {
        const std::uint64_t first = time == kNow ? ComputeMillisecondTime() : time;
        m_firstTime = static_cast<double>(first) / 1000.0;
    }
    time = resolve(time);
    const std::uint64_t delta = time - m_time;

    bool closed = false;
    if (m_session.m_sessionStart + m_session.m_sessionLength < time) {
        const std::uint64_t length =
            useActualLength ? time - m_session.m_sessionStart : m_session.m_sessionLength;
        const unsigned long ticks = m_session.m_sessionTicks;
        m_avgMsBetweenTick = ticks != 0 ? static_cast<double>(length) / ticks : 0.0;
        m_avgMsPerTick =
            ticks != 0 ? static_cast<double>(m_session.m_sessionTrackedMs) / ticks : 0.0;
        m_bestTick = m_session.m_sessionBest;
        m_worstTick = m_session.m_sessionWorst;
        if (m_onNewSession != nullptr) {
            m_onNewSession(this);
        }
        m_session.m_sessionStart = time;
        m_session.m_sessionBest = ~std::uint64_t(0);
        m_session.m_sessionTicks = 0;
        m_session.m_sessionTotalMs = 0;
        m_session.m_sessionWorst = 0;
        m_session.m_sessionTrackedMs = 0;
        closed = true;
    }

    m_session.m_sessionTotalMs += delta;
    m_totalTime += delta;
    ++m_session.m_sessionTicks;
    m_time = time;
    return closed;
}

bool TimeAccumulator::StartTracking(std::uint64_t time) {
    const bool closed = Tick(time, false);
    m_session.m_trackStart = m_time;
    return closed;
}

void TimeAccumulator::StopTracking(std::uint64_t time) {
    const std::uint64_t span = resolve(time) - m_session.m_trackStart;
    if (span > m_session.m_sessionWorst) {
        m_session.m_sessionWorst = span;
    }
    m_session.m_sessionTrackedMs += span;
    if (span < m_session.m_sessionBest && span != 0) {
        m_session.m_sessionBest = span;
    }
}

void TimeAccumulator::SetDumpWindowsPerUpdate(bool dump) {
    if (dump != m_dumpWindows) {
        m_dumpWindows = dump;
        m_onNewSession = dump ? &report : nullptr;
    }
}

void TimeAccumulator::SetDumpTessarPerUpdate(bool dump) {
    if (dump != m_dumpTessar) {
        m_dumpTessar = dump;
        m_onNewSession = dump ? &report : nullptr;
    }
}

void TimeAccumulator::report(TimeAccumulator *accumulator) {
    TimeAccumulator const &a = *accumulator;
    SessionData const &s = a.m_session;
    std::ostringstream text;
    text << "\n---------------\n"
         << "Timer: " << a.m_name << "\n"
         << "Session at time: " << a.m_time << "\n"
         << "FPS            : " << s.m_sessionTicks << "\n"
         << "AvgMsBetween   : " << a.m_avgMsBetweenTick << "\n"
         << "AvgMsPerTick   : " << a.m_avgMsPerTick << "\n"
         << "Best Tick      : " << a.m_bestTick << "\n"
         << "Worst Tick     : " << a.m_worstTick << "\n"
         << "Session Start  : " << s.m_sessionStart << "\n"
         << "Session TotalMS: " << s.m_sessionTotalMs << "\n"
         << "Total Ticks    : " << a.m_totalTicks << "\n"
         << "Total Minutes  : " << a.m_totalTime / 1000.0 / 60.0 << "\n\n";
    const std::string block = text.str();
    if (a.m_dumpWindows) {
        hslDebugOutput(block.c_str());
    }
    if (a.m_dumpTessar) {
        // The report is the format itself: a "%" in the name is a conversion, as documented.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
        hslPrintf(block.c_str());
#pragma GCC diagnostic pop
    }
}

TimeAccumulatorMultiThreaded::TimeAccumulatorMultiThreaded() : m_lock(Mutex::Recursive) {}

TimeAccumulatorMultiThreaded::~TimeAccumulatorMultiThreaded() {}

void TimeAccumulatorMultiThreaded::Reset() {
    MutexLocker locker(m_lock);
    TimeAccumulator::Reset();
}

bool TimeAccumulatorMultiThreaded::StartTracking(std::uint64_t time) {
    MutexLocker locker(m_lock);
    return TimeAccumulator::StartTracking(time);
}

void TimeAccumulatorMultiThreaded::StopTracking(std::uint64_t time) {
    MutexLocker locker(m_lock);
    TimeAccumulator::StopTracking(time);
}

bool TimeAccumulatorMultiThreaded::Tick(std::uint64_t time, bool useActualLength) {
    MutexLocker locker(m_lock);
    return TimeAccumulator::Tick(time, useActualLength);
}

TimeAccumulatorManager::TimeAccumulatorManager() {}

// The accumulators themselves stay: handles on other threads may still be ending.
TimeAccumulatorManager::~TimeAccumulatorManager() {}

TimeAccumulatorManager &TimeAccumulatorManager::Instance() {
    // Never destroyed, so that the accumulators stay reachable until the process ends, and a
    // handle ending during the destruction of other statics still finds its accumulator.
    static TimeAccumulatorManager &sManager = *new TimeAccumulatorManager;
    return sManager;
}

TimeAccumulatorHandle::TimeAccumulatorHandle(const std::string &name) : m_accumulator(nullptr) {
    attach(name);
}

TimeAccumulatorHandle::TimeAccumulatorHandle(const char *name) : m_accumulator(nullptr) {
    attach(name != nullptr ? std::string(name) : std::string());
}

void TimeAccumulatorHandle::attach(const std::string &name) {
    VHash<std::string, TimeAccumulator *> &timers = TimeAccumulatorManager::Instance().m_timers;
    // Through the const side, so that a lookup never detaches the table while another thread
    // reads it.
    VHash<std::string, TimeAccumulator *> const &table = timers;
    m_accumulator = table.value(name, nullptr);
    if (m_accumulator == nullptr && !name.empty()) {
        m_accumulator = new TimeAccumulatorMultiThreaded;
        m_accumulator->SetName(name);
        timers.insert(name, m_accumulator);
    }
    if (m_accumulator != nullptr) {
        m_accumulator->StartTracking(kNow);
    }
}

TimeAccumulatorHandle::~TimeAccumulatorHandle() {
    if (m_accumulator != nullptr) {
        m_accumulator->StopTracking(kNow);
    }
}

}  // namespace VORT
