#include "messaging/TessarTimer_p.h"
#include <vort/messaging/ThrottledCallback.h>
#include <vort/services/TessarTimerService.h>

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>

using VORT::TessarTimer;
using VORT::TessarTimerRecord;
using VTServices::TessarTimerService;
using VTServices::VTService;

namespace {

// Timers run out only when a test says so. Holds a handle on each running timer, and whether it
// repeats, as a host's table of native timers does.
class FakeTimerService : public TessarTimerService {
public:
    using TessarTimerService::getTimerID;
    using TessarTimerService::signal;
    int starts = 0, interval = 0;
    unsigned int last = 0;  // the timer of the latest start
    std::map<unsigned int, std::pair<TessarTimer, bool>> active;

    void startSingleTimer(TessarTimer timer, int ms) override { start(timer, ms, false); }
    void startRepeatingTimer(TessarTimer timer, int ms) override { start(timer, ms, true); }
    void stopTimer(TessarTimer timer) override { active.erase(getTimerID(timer)); }
    bool isTimerActive(TessarTimer timer) override { return active.count(getTimerID(timer)); }
    // Runs out the active timer `id` (a single one stops first); false if it isn't active.
    bool fire(unsigned int id) {
        const auto found = active.find(id);
        if (found == active.end()) {
            return false;
        }
        const TessarTimer timer = found->second.first;
        found->second.second ? void() : void(active.erase(found));
        signal(timer);
        return true;
    }

private:
    void start(TessarTimer const &timer, int ms, bool repeats) {
        ++starts, interval = ms, last = getTimerID(timer);
        active.erase(last);
        active.emplace(last, std::make_pair(timer, repeats));
    }
};

class Counting : public VORT::ThrottledCallback {
public:
    using ThrottledCallback::ThrottledCallback;
    ~Counting() override { disconnect(); }
    void onTimeOut() { ++calls; }
    int calls = 0;

protected:
    void doCall() override { ++calls; }
};

class Timers : public ::testing::Test {
protected:
    void SetUp() override { VTService<TessarTimerService>::install(service); }
    void TearDown() override { VTService<TessarTimerService>::install(nullptr); }
    FakeTimerService *service = new FakeTimerService;
};

int handles(TessarTimer const &timer) {
    return TessarTimerRecord::of(timer)->m_handleCount;
}

}  // namespace

// The service's handle keeps the record alive until the time-out, then it goes; the sanitizer
// builds check that nothing is freed twice.
TEST_F(Timers, HandlesShareARecordAndGoToTheInstalledService) {
    EXPECT_FALSE(TessarTimerService().isTimerActive(TessarTimer::create()));
    Counting counter(0);
    {
        TessarTimer first = TessarTimer::create(), timer = TessarTimer::create(), copy(first);
        copy = timer;
        copy = copy;
        EXPECT_EQ(handles(timer) * 10 + handles(first), 21);
        copy = first;
        TessarTimerRecord::of(timer)->connect(&counter, &Counting::onTimeOut);
        timer.startRepeating(5);
        ASSERT_TRUE(timer.isActive() && service->fire(service->last) &&
                    service->fire(service->last));
        timer.stop();
        EXPECT_FALSE(timer.isActive());
        EXPECT_EQ(handles(timer), 1) << "the service kept a handle";
        TessarTimerRecord::of(first)->connect(&counter, &Counting::onTimeOut);
        first.startSingle(5);
    }
    ASSERT_TRUE(service->fire(service->last));
    EXPECT_EQ(counter.calls * 10 + int(service->active.size()), 30);
}

// Scripts of steps, each followed by the number of calls made so far (each call starts the
// timer): 't' triggers, 'f' runs the callback's timer out (if it runs), 'b' blocks, 'u' unblocks.
TEST_F(Timers, ThrottledCallbackRunsScriptsOfTriggersBlocksAndTimeOuts) {
    const char *const scripts[][2] = {
        {"ttttf", "11112"}, {"tftft", "11223"}, {"bttu", "0001"},   {"bu", "00"},
        {"ttbfu", "11112"}, {"tbtuf", "11112"}, {"tbutf", "11112"}, {"tbft", "1111"},
    };
    for (auto const &script : scripts) {
        SCOPED_TRACE(script[0]);
        service->starts = 0;
        Counting callback(100);
        std::string calls;
        for (const char *step = script[0]; *step != '\0'; ++step) {
            *step == 't'   ? callback.trigger()
            : *step == 'b' ? callback.blockCall()
            : *step == 'u' ? callback.unblockCall()
                           : void(service->starts && service->fire(service->last));
            calls += std::to_string(callback.calls);
        }
        EXPECT_EQ(calls, script[1]);
    }
}

// Each callback has a timer of its own; a copy or an assigned callback shares it (and the
// running state), but only the original hears its time-out. All end cleanly though two share one
// connection set, and the time-out after them reaches nothing.
TEST_F(Timers, ThrottledCallbackCopiesShareTheTimer) {
    auto original = std::make_unique<Counting>(100);
    auto copy = std::make_unique<Counting>(*original);
    auto assigned = std::make_unique<Counting>(300);
    assigned->trigger();
    original->trigger();
    original->trigger();
    const unsigned int timer = service->last;
    copy->trigger();
    copy->trigger();
    *assigned = *original;
    assigned->trigger();
    EXPECT_EQ(service->starts, 3) << "the assigned callback lost the running timer";
    ASSERT_TRUE(service->fire(timer));
    EXPECT_EQ(original->calls * 100 + copy->calls * 10 + assigned->calls, 211);
    assigned.reset();
    original.reset();
    copy.reset();
    EXPECT_TRUE(service->fire(timer));
}
