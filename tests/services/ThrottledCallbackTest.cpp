#include "FakeTimerService.h"
#include <vort/messaging/ThrottledCallback.h>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

using vort_test::FakeTimerService;
using VTServices::TessarTimerService;
using VTServices::VTService;

namespace {

class Counting : public VORT::ThrottledCallback {
public:
    explicit Counting(int interval, FakeTimerService *service = nullptr)
        : ThrottledCallback(interval), m_service(service) {}
    ~Counting() override { disconnect(); }
    int calls = 0;
    std::function<void()> work;

protected:
    void doCall() override {
        ++calls;
        // The timer is started before the work runs.
        EXPECT_TRUE(m_service == nullptr || !m_service->events.empty());
        if (work) {
            work();
        }
    }

private:
    FakeTimerService *m_service;
};

class ThrottledCallbackTest : public ::testing::Test {
protected:
    void SetUp() override { VTService<TessarTimerService>::install(service); }
    void TearDown() override { VTService<TessarTimerService>::install(nullptr); }
    FakeTimerService *service = new FakeTimerService;
};

}  // namespace

TEST_F(ThrottledCallbackTest, StartsItsIntervalOnTheServiceAndKeepsItsOwnTimer) {
    Counting callback(250, service);
    EXPECT_TRUE(service->events.empty()) << "a timer was started before the first trigger";
    callback.trigger();
    const unsigned int timer = service->last();
    const std::string n = std::to_string(timer);
    callback.setInterval(400);
    EXPECT_EQ(callback.getInterval(), 400);
    callback.trigger();
    ASSERT_TRUE(service->fire(timer));
    EXPECT_EQ(service->events,
              (std::vector<std::string>{"single " + n + " 250", "single " + n + " 400"}));
    Counting other(100);  // a timer of its own, whose time-out doesn't reach the first
    other.trigger();
    EXPECT_NE(service->last(), timer);
    callback.trigger();
    other.trigger();
    ASSERT_TRUE(service->fire(service->last()));
    EXPECT_EQ(callback.calls * 10 + other.calls, 22);

    // A trigger from inside the work, in the interval that the call itself started, is pending.
    int again = 1;
    callback.work = [&] {
        if (again-- > 0) {
            callback.trigger();
        }
    };
    ASSERT_TRUE(service->fire(timer));
    ASSERT_TRUE(service->fire(timer));
    EXPECT_EQ(callback.calls, 4);
    ASSERT_TRUE(service->fire(timer));
    EXPECT_EQ(callback.calls, 4);
}

// Scripts of steps, each followed by the number of calls made and of timer starts seen so far:
// 't' triggers, 'f' runs the callback's timer out (if it runs), 'b' blocks, 'u' unblocks.
TEST_F(ThrottledCallbackTest, ScriptsOfTriggersBlocksAndTimeOuts) {
    const struct {
        const char *steps, *calls, *starts;
    } scripts[] = {
        {"ttttf", "11112", "11112"}, {"tftft", "11223", "11223"}, {"bttu", "0001", "0001"},
        {"bu", "00", "00"},          {"ttbfu", "11112", "11112"}, {"tbtuf", "11112", "11112"},
        {"tbutf", "11112", "11112"}, {"tbft", "1111", "1111"},
    };
    for (auto const &script : scripts) {
        SCOPED_TRACE(script.steps);
        service->events.clear();
        Counting callback(100);
        std::string calls, starts;
        for (const char *step = script.steps; *step != '\0'; ++step) {
            *step == 't'   ? callback.trigger()
            : *step == 'b' ? callback.blockCall()
            : *step == 'u' ? callback.unblockCall()
                           : void(!service->events.empty() && service->fire(service->last()));
            calls += std::to_string(callback.calls);
            starts += std::to_string(service->events.size());
        }
        EXPECT_EQ(calls, script.calls);
        EXPECT_EQ(starts, script.starts);
        const std::string steps = script.steps;
        const size_t lastBlock = steps.find_last_of("bu");
        EXPECT_EQ(callback.isBlocked(), lastBlock != std::string::npos && steps[lastBlock] == 'b');
    }
}

// A copy or an assigned callback shares the timer, but only the original hears its time-out.
TEST_F(ThrottledCallbackTest, CopiesShareTheTimerButHearNoTimeOut) {
    auto original = std::make_unique<Counting>(100);
    auto copy = std::make_unique<Counting>(*original);
    auto assigned = std::make_unique<Counting>(300);
    copy->trigger();
    copy->trigger();
    const unsigned int timer = service->last();
    original->trigger();
    original->trigger();
    original->blockCall();
    EXPECT_EQ(service->events.size(), 2u);
    EXPECT_EQ(service->last(), timer);
    *assigned = *original;
    EXPECT_EQ(assigned->getInterval(), 100);
    EXPECT_TRUE(assigned->isBlocked());
    assigned->unblockCall();
    assigned->trigger();
    EXPECT_EQ(service->events.size(), 2u) << "the copied interval no longer stood in the way";
    original->unblockCall();
    ASSERT_TRUE(service->fire(timer));
    EXPECT_EQ(original->calls * 100 + copy->calls * 10 + assigned->calls, 211);
    // All end cleanly though two share one connection set; the time-out after them reaches
    // nothing (the sanitizer builds check both).
    assigned.reset();
    original.reset();
    copy.reset();
    EXPECT_TRUE(service->fire(timer));
    EXPECT_EQ(service->activeCount(), 0);
}
