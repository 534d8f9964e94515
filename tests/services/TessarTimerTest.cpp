#include "FakeTimerService.h"
#include "messaging/TessarTimer_p.h"
#include "support/Latch.h"
#include <vort/messaging/Emitter.h>
#include <vort/messaging/Thread.h>

#include <gtest/gtest.h>

#include <thread>

using VORT::TessarTimer;
using VORT::TessarTimerRecord;
using vort_test::FakeTimerService;
using VTServices::TessarTimerService;
using VTServices::VTService;

namespace {

class Counter : public VTMS::Listener {
public:
    ~Counter() override { disconnect(); }
    void onTimeOut() { ++count; }
    int count = 0;
};

struct PlainService : TessarTimerService {
    using TessarTimerService::getTimerID;
    using TessarTimerService::signal;
};

int handles(TessarTimer const &timer) {
    return TessarTimerRecord::of(timer)->m_handleCount;
}

}  // namespace

TEST(TessarTimerService, PlainServiceHandsOutRisingIdsAndNeverRuns) {
    PlainService service;
    TessarTimer first = service.createTimer();
    TessarTimer second = service.createTimer();
    EXPECT_GT(PlainService::getTimerID(first), 0u);
    EXPECT_EQ(PlainService::getTimerID(second), PlainService::getTimerID(first) + 1);
    service.startRepeatingTimer(second, 10);
    EXPECT_FALSE(service.isTimerActive(second));
    PlainService::signal(first);  // no listeners: returns at once
}

TEST(TessarTimer, HandlesShareARecordAndGoToTheInstalledService) {
    auto *service = new FakeTimerService;
    VTService<TessarTimerService>::install(service);
    Counter counter;
    {
        TessarTimer first = TessarTimer::create();
        TessarTimer timer = TessarTimer::create();
        TessarTimer copy(first);
        const unsigned int id = FakeTimerService::idOf(timer);
        EXPECT_EQ(FakeTimerService::idOf(copy), FakeTimerService::idOf(first));
        copy = timer;
        copy = copy;
        EXPECT_EQ(FakeTimerService::idOf(copy), id);
        EXPECT_EQ(handles(timer) * 10 + handles(first), 21);
        copy = first;
        EXPECT_FALSE(timer.isActive());
        timer.startSingle(30);
        EXPECT_TRUE(timer.isActive());
        timer.startRepeating(40);
        timer.stop();
        EXPECT_FALSE(timer.isActive());
        const std::string n = std::to_string(id);
        EXPECT_EQ(service->events,
                  (std::vector<std::string>{"single " + n + " 30", "repeating " + n + " 40",
                                            "stop " + n}));
        EXPECT_EQ(handles(timer), 1) << "the service kept a handle";

        TessarTimerRecord::of(timer)->connect(&counter, &Counter::onTimeOut);
        timer.startRepeating(5);
        ASSERT_TRUE(service->fire(id) && service->fire(id));
        timer.stop();
        EXPECT_FALSE(service->fire(id));
        TessarTimerRecord::of(first)->connect(&counter, &Counter::onTimeOut);
        first.startSingle(5);
    }
    // The service's handle keeps the record alive until the time-out, then it goes; cutting the
    // listener side afterwards finds nothing to free twice (the sanitizers check).
    ASSERT_TRUE(service->fire(service->last()));
    EXPECT_EQ(counter.count, 3);
    EXPECT_EQ(service->activeCount(), 0);
    counter.disconnect();
    VTService<TessarTimerService>::install(nullptr);
}

TEST(TessarTimerConcurrency, TimeOutIsQueuedToAListenerOnAnotherThread) {
    VTService<TessarTimerService>::install(new FakeTimerService);
    {
        Counter counter;
        vort_test::Latch known(1), signalled(1);
        VTMS::Thread *workerThread = nullptr;
        std::thread worker([&] {
            workerThread = VTMS::Thread::getCurrentThread();
            known.countDown();
            if (signalled.wait()) {
                workerThread->process();
            }
        });
        ASSERT_TRUE(known.wait());
        TessarTimer timer = TessarTimer::create();
        TessarTimerRecord::of(timer)->connect(&counter, &Counter::onTimeOut, workerThread);
        FakeTimerService::signalNow(timer);
        EXPECT_EQ(counter.count, 0) << "the time-out waited for the other thread";
        signalled.countDown();
        worker.join();
        EXPECT_EQ(counter.count, 1);
    }
    VTService<TessarTimerService>::install(nullptr);
}
