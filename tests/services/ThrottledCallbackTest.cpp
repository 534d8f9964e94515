#include "FakeTimerService.h"
#include <vort/messaging/ThrottledCallback.h>
#include <vort/services/TessarTimerService.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

using VORT::ThrottledCallback;
using vort_test::FakeTimerService;
using VTServices::TessarTimerService;
using VTServices::VTService;
using Event = FakeTimerService::Event;

namespace {

class Counting : public ThrottledCallback {
public:
    explicit Counting(int interval, FakeTimerService *service = nullptr)
        : ThrottledCallback(interval), m_service(service) {}
    ~Counting() override { disconnect(); }

    int calls = 0;
    // How many timer starts the service had seen when each call ran.
    std::vector<size_t> startsSeenAtCall;

protected:
    void doCall() override {
        ++calls;
        if (m_service != nullptr) {
            startsSeenAtCall.push_back(m_service->events.size());
        }
    }

private:
    FakeTimerService *m_service;
};

class ThrottledCallbackTest : public ::testing::Test {
protected:
    void SetUp() override {
        service = new FakeTimerService;
        VTService<TessarTimerService>::install(service);
    }
    void TearDown() override { VTService<TessarTimerService>::install(nullptr); }

    // The id of the timer that the callback started most recently.
    unsigned int lastTimer() const { return service->events.back().id; }

    FakeTimerService *service = nullptr;
};

}  // namespace

TEST_F(ThrottledCallbackTest, FirstTriggerCallsAtOnceAfterStartingTheIntervalItWasGiven) {
    Counting callback(250, service);
    EXPECT_TRUE(service->events.empty()) << "a callback starts no timer until triggered";
    callback.trigger();
    EXPECT_EQ(callback.calls, 1);
    const unsigned int timer = lastTimer();
    EXPECT_EQ(service->events.back(), (Event{FakeTimerService::Single, timer, 250}));
    EXPECT_EQ(callback.startsSeenAtCall, std::vector<size_t>{1}) << "the work ran before the start";
    callback.setInterval(400);
    EXPECT_EQ(callback.getInterval(), 400);
    callback.trigger();
    EXPECT_EQ(service->events.size(), 1u) << "the running interval was restarted";
    ASSERT_TRUE(service->fire(timer));
    EXPECT_EQ(service->events.back(), (Event{FakeTimerService::Single, timer, 400}));

    Counting other(100);  // a timer of its own, whose time-out doesn't reach the first
    other.trigger();
    EXPECT_NE(lastTimer(), timer);
    callback.trigger();
    other.trigger();
    ASSERT_TRUE(service->fire(lastTimer()));
    EXPECT_EQ(callback.calls * 10 + other.calls, 22);
}

// Scripts of steps, each followed by the number of calls made and of timer starts seen so far:
// 't' triggers, 'f' runs the callback's timer out (if it runs), 'b' blocks, 'u' unblocks.
TEST_F(ThrottledCallbackTest, ScriptsOfTriggersBlocksAndTimeOuts) {
    const struct {
        const char *what;
        const char *steps;
        const char *calls;
        const char *starts;
    } scripts[] = {
        {"triggers in the interval fold into one call at the time-out", "ttttf", "11112", "11112"},
        {"a time-out with nothing pending lets the next trigger fire", "tftft", "11223", "11223"},
        {"a block holds calls; unblocking makes the pending one", "bttu", "0001", "0001"},
        {"unblocking with nothing pending calls nothing", "bu", "00", "00"},
        {"a block holds the pending call past the time-out", "ttbfu", "11112", "11112"},
        {"unblocking inside the interval waits for the time-out", "tbtuf", "11112", "11112"},
        {"a block set and lifted inside the interval changes nothing", "tbutf", "11112", "11112"},
        {"a trigger while blocked waits even with no interval running", "tbft", "1111", "1111"},
    };
    for (auto const &script : scripts) {
        SCOPED_TRACE(script.what);
        service->events.clear();
        Counting callback(100);
        std::string calls, starts;
        for (const char *step = script.steps; *step != '\0'; ++step) {
            switch (*step) {
                case 't':
                    callback.trigger();
                    break;
                case 'f':
                    ASSERT_FALSE(service->events.empty()) << "no timer to run out";
                    service->fire(lastTimer());
                    break;
                case 'b':
                    callback.blockCall();
                    break;
                case 'u':
                    callback.unblockCall();
                    break;
            }
            calls += std::to_string(callback.calls);
            starts += std::to_string(service->events.size());
        }
        EXPECT_EQ(calls, script.calls);
        EXPECT_EQ(starts, script.starts);
        const std::string steps = script.steps;
        const size_t lastBlockStep = steps.find_last_of("bu");
        EXPECT_EQ(callback.isBlocked(),
                  lastBlockStep != std::string::npos && steps[lastBlockStep] == 'b');
    }
}

TEST_F(ThrottledCallbackTest, CopySharesTheTimerButHearsNoTimeOut) {
    Counting original(100);
    Counting copy(original);
    copy.trigger();
    ASSERT_EQ(service->events.size(), 1u);
    const unsigned int timer = lastTimer();
    copy.trigger();
    EXPECT_EQ(copy.calls, 1);

    original.trigger();
    EXPECT_EQ(original.calls, 1);
    ASSERT_EQ(service->events.size(), 2u);
    EXPECT_EQ(service->events[1].id, timer) << "the copy shares the original's timer";

    original.trigger();
    ASSERT_TRUE(service->fire(timer));
    EXPECT_EQ(original.calls, 2);
    EXPECT_EQ(copy.calls, 1) << "the copy is not connected to the timer";
}

TEST_F(ThrottledCallbackTest, TimeOutAfterTheCallbackIsGoneReachesNothing) {
    auto callback = std::make_unique<Counting>(100);
    callback->trigger();
    const unsigned int timer = lastTimer();
    callback->trigger();
    callback.reset();
    // The service still holds the timer, and runs it out into an emitter without listeners.
    EXPECT_TRUE(service->fire(timer));
    EXPECT_EQ(service->activeCount(), 0);
}

TEST_F(ThrottledCallbackTest, WorkMayTriggerAgainAndEndsPending) {
    struct Retriggering : ThrottledCallback {
        Retriggering() : ThrottledCallback(50) {}
        ~Retriggering() override { disconnect(); }
        int calls = 0;
        void doCall() override {
            if (++calls == 1) {
                trigger();  // inside the interval that the call itself started
            }
        }
    } callback;
    callback.trigger();
    EXPECT_EQ(callback.calls, 1);
    ASSERT_TRUE(service->fire(lastTimer()));
    EXPECT_EQ(callback.calls, 2) << "a trigger from inside the work is kept as pending";
    ASSERT_TRUE(service->fire(lastTimer()));
    EXPECT_EQ(callback.calls, 2);
}

TEST(ThrottledCallbackOnThePlainService, StaysInItsFirstIntervalForGood) {
    VTService<TessarTimerService>::install(new TessarTimerService);
    {
        Counting callback(10);
        callback.trigger();
        callback.trigger();
        callback.trigger();
        EXPECT_EQ(callback.calls, 1) << "the plain service never runs a timer out";
        callback.unblockCall();
        EXPECT_EQ(callback.calls, 1);
    }
    VTService<TessarTimerService>::install(nullptr);
}

TEST_F(ThrottledCallbackTest, AssignmentTakesTheOthersStateAndTimer) {
    auto source = std::make_unique<Counting>(100);
    auto target = std::make_unique<Counting>(300);
    source->trigger();
    const unsigned int sourceTimer = lastTimer();
    source->trigger();
    source->blockCall();

    *target = *source;
    const int copiedCalls = target->calls;  // the derived class's own counter came along
    EXPECT_EQ(target->getInterval(), 100);
    EXPECT_TRUE(target->isBlocked());
    target->unblockCall();
    EXPECT_EQ(target->calls, copiedCalls) << "the copied interval still stands in the way";
    target->trigger();
    EXPECT_EQ(service->events.size(), 1u);

    // The timer is the source's now; its time-out reaches the source, which is connected to it.
    source->unblockCall();
    ASSERT_TRUE(service->fire(sourceTimer));
    EXPECT_EQ(source->calls, 2);
    EXPECT_EQ(target->calls, copiedCalls);
    // Both end cleanly though they share one connection set; the sanitizer builds check it.
    target.reset();
    source.reset();
    EXPECT_TRUE(service->fire(sourceTimer));
}
