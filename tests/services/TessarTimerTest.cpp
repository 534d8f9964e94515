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

TEST_F(TessarTimerTest, CopiesShareTheIdAndNewTimersGetHigherOnes) {
    TessarTimer first = TessarTimer::create();
    TessarTimer copy(first);
    TessarTimer second = TessarTimer::create();
    EXPECT_EQ(FakeTimerService::idOf(copy), FakeTimerService::idOf(first));
    EXPECT_GT(FakeTimerService::idOf(second), FakeTimerService::idOf(first));

    copy = second;
    EXPECT_EQ(FakeTimerService::idOf(copy), FakeTimerService::idOf(second));
    copy = copy;
    EXPECT_EQ(FakeTimerService::idOf(copy), FakeTimerService::idOf(second));
    EXPECT_EQ(TessarTimerRecord::of(second)->m_handleCount, 2);
    EXPECT_EQ(TessarTimerRecord::of(first)->m_handleCount, 1);
}

TEST_F(TessarTimerTest, OperationsGoToTheInstalledService) {
    TessarTimer timer = TessarTimer::create();
    const unsigned int id = FakeTimerService::idOf(timer);
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

TEST_F(TessarTimerTest, SignalReachesListenersOfTheRecordWhileItRuns) {
    Counter counter;
    TessarTimer timer = TessarTimer::create();
    TessarTimerRecord::of(timer)->connect(&counter, &Counter::onTimeOut);
    timer.startRepeating(5);
    const unsigned int id = FakeTimerService::idOf(timer);
    ASSERT_TRUE(service->fire(id));
    ASSERT_TRUE(service->fire(id));
    EXPECT_EQ(counter.count, 2);
    timer.stop();
    EXPECT_FALSE(service->fire(id));
    EXPECT_EQ(counter.count, 2);
}

TEST_F(TessarTimerTest, RecordGoesWithItsLastHandleAndCutsItsConnections) {
    Counter counter;
    {
        TessarTimer timer = TessarTimer::create();
        TessarTimerRecord::of(timer)->connect(&counter, &Counter::onTimeOut);
        timer.startSingle(5);
        EXPECT_EQ(TessarTimerRecord::of(timer)->m_handleCount, 2);
    }
    // The service's handle keeps the record alive until the time-out.
    ASSERT_EQ(service->activeCount(), 1);
    ASSERT_TRUE(service->fire(service->events.back().id));
    EXPECT_EQ(counter.count, 1);
    // Now the record is gone; cutting the listener side afterwards finds nothing to free twice
    // (the sanitizer builds check that).
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
