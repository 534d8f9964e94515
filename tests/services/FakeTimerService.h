// Test support: a timer service whose timers run out only when the test says so. It records
// every start and stop, and `fire` signals a timer the way a host's event loop would.
#ifndef VORT_TESTS_SERVICES_FAKETIMERSERVICE_H
#define VORT_TESTS_SERVICES_FAKETIMERSERVICE_H

#include <vort/messaging/TessarTimer.h>
#include <vort/services/TessarTimerService.h>

#include <map>
#include <vector>

namespace vort_test {

class FakeTimerService : public VTServices::TessarTimerService {
public:
    enum Kind { Single, Repeating, Stop };
    struct Event {
        Kind kind;
        unsigned int id;
        int milliseconds;
        bool operator==(Event const &other) const {
            return kind == other.kind && id == other.id && milliseconds == other.milliseconds;
        }
    };

    std::vector<Event> events;
    int terminations = 0;

    static unsigned int idOf(VORT::TessarTimer const &timer) { return getTimerID(timer); }

    void startSingleTimer(VORT::TessarTimer timer, int milliseconds) override {
        start(timer, Single, milliseconds);
    }
    void startRepeatingTimer(VORT::TessarTimer timer, int milliseconds) override {
        start(timer, Repeating, milliseconds);
    }
    void stopTimer(VORT::TessarTimer timer) override {
        events.push_back({Stop, getTimerID(timer), 0});
        m_active.erase(getTimerID(timer));
    }
    bool isTimerActive(VORT::TessarTimer timer) override {
        return m_active.count(getTimerID(timer)) != 0;
    }
    void terminateService() override {
        ++terminations;
        m_active.clear();
    }

    // Runs out the active timer `id`: a single timer stops, then the timer is signalled. False if
    // the timer isn't active.
    bool fire(unsigned int id) {
        const auto found = m_active.find(id);
        if (found == m_active.end()) {
            return false;
        }
        const VORT::TessarTimer timer = found->second.timer;
        if (!found->second.repeating) {
            m_active.erase(found);
        }
        signal(timer);
        return true;
    }

    // Signals any timer, active or not.
    static void signalNow(VORT::TessarTimer const &timer) { signal(timer); }

    int activeCount() const { return static_cast<int>(m_active.size()); }

private:
    struct Active {
        VORT::TessarTimer timer;
        bool repeating;
    };

    void start(VORT::TessarTimer const &timer, Kind kind, int milliseconds) {
        const unsigned int id = getTimerID(timer);
        events.push_back({kind, id, milliseconds});
        m_active.erase(id);
        m_active.emplace(id, Active{timer, kind == Repeating});
    }

    // Holds a handle on each running timer, as a host's table of native timers does.
    std::map<unsigned int, Active> m_active;
};

}  // namespace vort_test

#endif  // VORT_TESTS_SERVICES_FAKETIMERSERVICE_H
