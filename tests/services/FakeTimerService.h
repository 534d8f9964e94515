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
    using TessarTimerService::getTimerID;
    using TessarTimerService::signal;
    std::vector<std::string> events;  // "single 7 250", "repeating 7 40", "stop 7"
    // Holds a handle on each running timer, and whether it repeats, as a host's table does.
    std::map<unsigned int, std::pair<VORT::TessarTimer, bool>> active;

    void startSingleTimer(VORT::TessarTimer timer, int ms) override { start(timer, "single", ms); }
    void startRepeatingTimer(VORT::TessarTimer timer, int ms) override {
        start(timer, "repeating", ms);
    }
    void stopTimer(VORT::TessarTimer timer) override {
        events.push_back("stop " + std::to_string(getTimerID(timer)));
        active.erase(getTimerID(timer));
    }
    bool isTimerActive(VORT::TessarTimer timer) override {
        return active.count(getTimerID(timer)) != 0;
    }
    // Runs out the active timer `id` (a single one stops first); false if it isn't active.
    bool fire(unsigned int id) {
        const auto found = active.find(id);
        if (found == active.end()) {
            return false;
        }
        const VORT::TessarTimer timer = found->second.first;
        found->second.second ? void() : void(active.erase(found));
        signal(timer);
        return true;
    }
    // The timer of the latest start or stop.
    unsigned int last() const { return std::stoul(events.back().substr(events.back().find(' '))); }

private:
    void start(VORT::TessarTimer const &timer, const std::string &kind, int ms) {
        const unsigned int id = getTimerID(timer);
        events.push_back(kind + " " + std::to_string(id) + " " + std::to_string(ms));
        active.erase(id);
        active.emplace(id, std::make_pair(timer, kind == "repeating"));
    }
};

}  // namespace vort_test

#endif  // VORT_TESTS_SERVICES_FAKETIMERSERVICE_H
