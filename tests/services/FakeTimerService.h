// Test support: a timer service whose timers run out only when the test says so. It records
// every start and stop, and `fire` signals a timer the way a host's event loop would.
#ifndef VORT_TESTS_SERVICES_FAKETIMERSERVICE_H
#define VORT_TESTS_SERVICES_FAKETIMERSERVICE_H

#include <vort/messaging/TessarTimer.h>
#include <vort/services/TessarTimerService.h>

#include <map>
#include <string>
#include <vector>

namespace vort_test {

class FakeTimerService : public VTServices::TessarTimerService {
public:
    // One entry per call: "single 7 250", "repeating 7 40", "stop 7".
    std::vector<std::string> events;

    static unsigned int idOf(VORT::TessarTimer const &timer) { return getTimerID(timer); }
    static void signalNow(VORT::TessarTimer const &timer) { signal(timer); }

    void startSingleTimer(VORT::TessarTimer timer, int milliseconds) override {
        start(timer, "single ", milliseconds);
    }
    void startRepeatingTimer(VORT::TessarTimer timer, int milliseconds) override {
        start(timer, "repeating ", milliseconds);
    }
    void stopTimer(VORT::TessarTimer timer) override {
        events.push_back("stop " + std::to_string(getTimerID(timer)));
        m_active.erase(getTimerID(timer));
    }
    bool isTimerActive(VORT::TessarTimer timer) override {
        return m_active.count(getTimerID(timer)) != 0;
    }

    // Runs out the active timer `id`: a single timer stops, then the timer is signalled. False if
    // the timer isn't active.
    bool fire(unsigned int id) {
        const auto found = m_active.find(id);
        if (found == m_active.end()) {
            return false;
        }
        const VORT::TessarTimer timer = found->second.first;
        if (!found->second.second) {
            m_active.erase(found);
        }
        signal(timer);
        return true;
    }
    // The timer of the latest start or stop.
    unsigned int last() const {
        const std::string &event = events.back();
        return static_cast<unsigned int>(std::stoul(event.substr(event.find(' ') + 1)));
    }
    int activeCount() const { return static_cast<int>(m_active.size()); }

private:
    void start(VORT::TessarTimer const &timer, const char *kind, int milliseconds) {
        const unsigned int id = getTimerID(timer);
        events.push_back(kind + std::to_string(id) + " " + std::to_string(milliseconds));
        m_active.erase(id);
        m_active.emplace(id, std::make_pair(timer, *kind == 'r'));
    }

    // Holds a handle on each running timer, as a host's table of native timers does.
    std::map<unsigned int, std::pair<VORT::TessarTimer, bool>> m_active;
};

}  // namespace vort_test

#endif  // VORT_TESTS_SERVICES_FAKETIMERSERVICE_H
