#include <hsl/hsl.h>
#include <vort/instrumentation/ScopedDebugTimer.h>

#include <chrono>
#include <sstream>

namespace VORT {

namespace {

template <typename Unit>
std::uint64_t steadyTime() {
    return static_cast<std::uint64_t>(
        std::chrono::duration_cast<Unit>(std::chrono::steady_clock::now().time_since_epoch())
            .count());
}

}  // namespace

std::uint64_t ComputeMillisecondTime() {
    return steadyTime<std::chrono::milliseconds>();
}

std::uint64_t ComputeMicrosecondTime() {
    return steadyTime<std::chrono::microseconds>();
}

void DumpTimeTrackingData(const char *file, int line, std::uint64_t start, std::uint64_t end,
                          const char *message, bool milliseconds, unsigned int threshold) {
    const std::uint32_t elapsed = static_cast<std::uint32_t>(end - start);
    if (threshold > elapsed) {
        return;
    }
    std::ostringstream text;
    if (elapsed != 0) {
        text << (file != nullptr ? file : "") << " (" << line << ") : Time was ";
        if (milliseconds) {
            text << "(" << elapsed << ") ms. ";
        } else {
            text << "(" << elapsed / 1000 << ") ms (" << elapsed << ") us. ";
        }
    }
    if (message != nullptr) {
        text << message;
    }
    text << "\n";
    const std::string report = text.str();
    hslDebugOutput(report.c_str());
    if (elapsed != 0) {
        hslPrintf("%s", report.c_str());
    }
}

ScopedDebugTimer::ScopedDebugTimer(const char *file, int line, const char *,
                                   std::uint32_t threshold, bool start, bool microseconds,
                                   bool addToScore)
    : m_start(0),
      m_end(0),
      m_file(file != nullptr ? file : ""),
      m_threshold(threshold),
      m_line(line),
      m_running(false),
      m_microseconds(microseconds),
      m_addToScore(addToScore) {
    if (start) {
        startTimer();
    }
}

ScopedDebugTimer::~ScopedDebugTimer() {
    endTimer(m_threshold);
}

std::uint64_t ScopedDebugTimer::now() const {
    return m_microseconds ? ComputeMicrosecondTime() : ComputeMillisecondTime();
}

void ScopedDebugTimer::startTimer() {
    m_running = true;
    m_start = now();
    m_end = m_start;
}

void ScopedDebugTimer::endTimer(std::uint32_t threshold) {
    if (!m_running) {
        return;
    }
    m_end = now();
    if (threshold != kNoReport) {
        DumpTimeTrackingData(m_file.c_str(), m_line, m_start, m_end, m_message.c_str(),
                             !m_microseconds, threshold);
    }
    m_running = false;
    if (m_addToScore) {
        double time = static_cast<std::uint32_t>(m_end - m_start);
        if (m_microseconds) {
            time /= 1000.0;
        }
        std::ostringstream key;
        key << "Line(" << m_line << ") in file: " << m_file;
        TimeHelpers::addToScore(key.str(), time);
    }
}

namespace TimeHelpers {

void ScoreData::addTime(double time) {
    ++m_count;
    m_total += time;
    computeAverage();
}

void ScoreData::computeAverage() {
    m_average = m_count != 0 ? m_total / m_count : 0.0;
}

std::map<std::string, ScoreData> &getMapScores() {
    static std::map<std::string, ScoreData> scores;
    return scores;
}

void addToScore(const std::string &name, double time) {
    getMapScores()[name].addTime(time);
}

const ScoreData &fetchScoreData(const std::string &name) {
    static const ScoreData none;
    std::map<std::string, ScoreData> const &scores = getMapScores();
    const auto found = scores.find(name);
    return found != scores.end() ? found->second : none;
}

void getMapScoresForSubstring(const std::string &substring,
                              std::vector<std::pair<std::string, ScoreData>> &result) {
    for (auto const &entry : getMapScores()) {
        if (entry.first.find(substring) != std::string::npos) {
            result.emplace_back(entry.first, entry.second);
        }
    }
}

}  // namespace TimeHelpers
}  // namespace VORT
