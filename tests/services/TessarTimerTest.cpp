#include "FakeTimerService.h"
#include "messaging/TessarTimer_p.h"
#include "support/Latch.h"
#include <vort/messaging/Emitter.h>
#include <vort/messaging/Packet.h>
#include <vort/messaging/TessarTimer.h>
#include <vort/messaging/Thread.h>
#include <vort/services/TessarTimerService.h>

#include <gtest/gtest.h>

#include <thread>

using VORT::TessarTimer;
using VORT::TessarTimerRecord;
using vort_test::FakeTimerService;
using VTServices::TessarTimerService;
using VTServices::VTService;
using Event = FakeTimerService::Event;

namespace {

class Counter : public VTMS::Listener {
public:
    ~Counter() override { disconnect(); }
    void onTimeOut() { ++count; }
    int count = 0;
};

// Reaches the protected statics of the plain service.
struct PlainService : TessarTimerService {
    using TessarTimerService::getTimerID;
    using TessarTimerService::signal;
};

class TessarTimerTest : public ::testing::Test {
protected:
    void SetUp() override {
        service = new FakeTimerService;
        VTService<TessarTimerService>::install(service);
    }
    void TearDown() override { VTService<TessarTimerService>::install(nullptr); }

    FakeTimerService *service = nullptr;
};

}  // namespace

TEST(TessarTimerService, PlainServiceHandsOutFreshTimersThatNeverRun) {
    PlainService service;
    EXPECT_EQ(TessarTimerService::serviceName(), "TessarTimerService");
    TessarTimer first = service.createTimer();
    TessarTimer second = service.createTimer();
    EXPECT_GT(PlainService::getTimerID(first), 0u);
    EXPECT_GT(PlainService::getTimerID(second), PlainService::getTimerID(first));

    service.startSingleTimer(first, 10);
    service.startRepeatingTimer(second, 10);
    EXPECT_FALSE(service.isTimerActive(first));
    EXPECT_FALSE(service.isTimerActive(second));
    service.stopTimer(first);
    service.terminateService();

    // No listeners: the signal returns at once.
    PlainService::signal(first);
}

TEST_F(TessarTimerTest, HandlesShareARecordWhoseOperationsGoToTheInstalledService) {
    TessarTimer first = TessarTimer::create();
    TessarTimer copy(first);
    TessarTimer timer = TessarTimer::create();
    const unsigned int id = FakeTimerService::idOf(timer);
    EXPECT_EQ(FakeTimerService::idOf(copy), FakeTimerService::idOf(first));
    EXPECT_GT(id, FakeTimerService::idOf(first));
    copy = timer;
    copy = copy;
    EXPECT_EQ(FakeTimerService::idOf(copy), id);
    EXPECT_EQ(TessarTimerRecord::of(timer)->m_handleCount * 10 +
                  TessarTimerRecord::of(first)->m_handleCount,
              21);
    copy = first;
    EXPECT_FALSE(timer.isActive());
    timer.startSingle(30);
    EXPECT_TRUE(timer.isActive());
    timer.startRepeating(40);
    timer.stop();
    EXPECT_FALSE(timer.isActive());
    const std::vector<Event> expected = {
        {FakeTimerService::Single, id, 30},
        {FakeTimerService::Repeating, id, 40},
        {FakeTimerService::Stop, id, 0},
    };
    EXPECT_EQ(service->events, expected);
    EXPECT_EQ(TessarTimerRecord::of(timer)->m_handleCount, 1) << "the service kept a handle";
}

TEST_F(TessarTimerTest, SignalReachesTheRecordsListenersAndTheRecordGoesWithItsLastHandle) {
    Counter counter;
    TessarTimer repeating = TessarTimer::create();
    TessarTimerRecord::of(repeating)->connect(&counter, &Counter::onTimeOut);
    repeating.startRepeating(5);
    const unsigned int id = FakeTimerService::idOf(repeating);
    ASSERT_TRUE(service->fire(id) && service->fire(id));
    repeating.stop();
    EXPECT_FALSE(service->fire(id));
    EXPECT_EQ(counter.count, 2);
    {
        TessarTimer single = TessarTimer::create();
        TessarTimerRecord::of(single)->connect(&counter, &Counter::onTimeOut);
        single.startSingle(5);
    }
    // The service's handle keeps the record alive until the time-out; then it is gone, and
    // cutting the listener side afterwards finds nothing to free twice (the sanitizers check).
    ASSERT_TRUE(service->fire(service->events.back().id));
    EXPECT_EQ(counter.count, 3);
    EXPECT_EQ(service->activeCount(), 0);
    counter.disconnect();
}

TEST(TessarTimerConcurrency, TimeOutIsQueuedToAListenerOnAnotherThread) {
    VTService<TessarTimerService>::install(new FakeTimerService);
    {
        Counter counter;
        vort_test::Latch known(1), signalled(1), processed(1);
        VTMS::Thread *workerThread = nullptr;
        std::thread worker([&] {
            workerThread = VTMS::Thread::getCurrentThread();
            known.countDown();
            if (signalled.wait()) {
                workerThread->process();
            }
            processed.countDown();
        });
        ASSERT_TRUE(known.wait());
        TessarTimer timer = TessarTimer::create();
        TessarTimerRecord::of(timer)->connect(&counter, &Counter::onTimeOut, workerThread);
        FakeTimerService::signalNow(timer);
        // `DirectOrQueue`: the send returned without waiting for the other thread.
        EXPECT_EQ(counter.count, 0);
        signalled.countDown();
        EXPECT_TRUE(processed.wait());
        worker.join();
        EXPECT_EQ(counter.count, 1);
    }
    VTService<TessarTimerService>::install(nullptr);
}
