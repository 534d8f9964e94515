#include "QtHostTestSupport.h"
#include <vort/messaging/ThrottledCallback.h>
#include <vort/qthost/TimerService.h>
#include <vort/services/TessarTimerService.h>

#include <QtCore/QElapsedTimer>
#include <QtCore/QThread>

#include <gtest/gtest.h>

#include <vector>

using VORT::TessarTimer;
using VORT::QtHost::TimerService;
using vort_test::QtHostWarnings;
using vort_test::runEventsFor;
using vort_test::runEventsUntil;
using VTServices::TessarTimerService;
using VTServices::VTService;

namespace {

// Counts the time-outs it signals, and on which thread they came.
class CountingService : public TimerService {
public:
    int timeOuts = 0;
    std::vector<QThread *> threads;

protected:
    void timedOut(TessarTimer timer) override {
        ++timeOuts;
        threads.push_back(QThread::currentThread());
        TimerService::timedOut(timer);
    }
};

class Redraw : public VORT::ThrottledCallback {
public:
    explicit Redraw(int interval) : ThrottledCallback(interval) { m_clock.start(); }
    qint64 now() const { return m_clock.elapsed(); }
    ~Redraw() override { disconnect(); }
    std::vector<qint64> callTimes;  // milliseconds since construction

protected:
    void doCall() override { callTimes.push_back(m_clock.elapsed()); }

private:
    QElapsedTimer m_clock;
};

class TimerServiceTest : public ::testing::Test {
protected:
    void SetUp() override {
        service = new CountingService;
        VTService<TessarTimerService>::install(service);
    }
    void TearDown() override { VTService<TessarTimerService>::install(nullptr); }

    CountingService *service = nullptr;
};

}  // namespace

TEST_F(TimerServiceTest, ThrottledCallbackFoldsABurstInTheEventLoop) {
    Redraw redraw(60);
    // Measured from before the first trigger: the first call may run a while after its
    // interval started, on a loaded machine.
    const qint64 before = redraw.now();
    for (int i = 0; i < 10; ++i) {
        redraw.trigger();
    }
    ASSERT_EQ(redraw.callTimes.size(), 1u) << "the first trigger calls at once, the rest wait";
    ASSERT_TRUE(runEventsUntil([&] { return redraw.callTimes.size() == 2; }));
    const qint64 gap = redraw.callTimes[1] - before;
    EXPECT_GE(gap, 50) << "the pending call came before the interval ran out";
    EXPECT_LT(gap, 5000);

    // The second call started an interval of its own; nothing is pending, so its time-out calls
    // nothing more.
    ASSERT_TRUE(runEventsUntil([&] { return service->timeOuts == 2; }));
    runEventsFor(100);
    EXPECT_EQ(redraw.callTimes.size(), 2u);
    EXPECT_EQ(service->activeTimerCount(), 0);
    for (QThread *thread : service->threads) {
        EXPECT_EQ(thread, QThread::currentThread()) << "a time-out came on another thread";
    }
    EXPECT_EQ(service->thread(), QThread::currentThread());
}

TEST_F(TimerServiceTest, TimersSignalUntilStoppedOrRunOutAndOutliveTheirHandles) {
    TessarTimer timer = TessarTimer::create();
    EXPECT_FALSE(timer.isActive());
    timer.startRepeating(10);
    EXPECT_TRUE(timer.isActive());
    ASSERT_TRUE(runEventsUntil([&] { return service->timeOuts >= 3; }));
    timer.stop();
    EXPECT_FALSE(timer.isActive());
    EXPECT_EQ(service->activeTimerCount(), 0);
    const int stoppedAt = service->timeOuts;
    runEventsFor(60);
    EXPECT_EQ(service->timeOuts, stoppedAt);

    TessarTimer::create().startSingle(10);
    EXPECT_EQ(service->activeTimerCount(), 1) << "the running timer lost its record";
    ASSERT_TRUE(runEventsUntil([&] { return service->timeOuts == stoppedAt + 1; }));
    EXPECT_EQ(service->activeTimerCount(), 0);

    timer.startSingle(5000);
    timer.startSingle(10);  // replaces the running interval
    ASSERT_TRUE(runEventsUntil([&] { return service->timeOuts == stoppedAt + 2; }, 3000));
    EXPECT_FALSE(timer.isActive());
    runEventsFor(40);
    EXPECT_EQ(service->timeOuts, stoppedAt + 2);
}

TEST_F(TimerServiceTest, NegativeIntervalRunsAtOnceAndTerminateRefusesNewStarts) {
    QtHostWarnings warnings;
    TessarTimer first = TessarTimer::create();
    TessarTimer second = TessarTimer::create();
    first.startSingle(0);
    EXPECT_TRUE(warnings.all().isEmpty()) << "no interval is fine";
    first.startSingle(-5);
    EXPECT_TRUE(warnings.has({"startSingleTimer", "-5 ms", "started with 0 ms"}));
    ASSERT_TRUE(runEventsUntil([&] { return service->timeOuts == 1; }));

    first.startSingle(10);
    second.startRepeating(10);
    service->terminateService();
    EXPECT_EQ(service->activeTimerCount(), 0);
    EXPECT_FALSE(first.isActive());
    first.startSingle(10);
    EXPECT_TRUE(warnings.has({"TimerService", "startSingleTimer", "after terminateService"}));
    runEventsFor(60);
    EXPECT_EQ(service->timeOuts, 1);
}

TEST(TimerServiceLifetime, DestroyedWithRunningTimersSignalsNothingMore) {
    auto *service = new CountingService;
    VTService<TessarTimerService>::install(service);
    {
        TessarTimer timer = TessarTimer::create();
        timer.startRepeating(5);
        TessarTimer::create().startSingle(5);
    }
    VTService<TessarTimerService>::install(nullptr);
    // Nothing may reach the deleted service now; the sanitizer builds see any use after free.
    runEventsFor(40);
}

TEST(TimerServiceLifetime, UseFromAnotherThreadThanTheMakersIsReportedAndIgnored) {
    TimerService *service = nullptr;
    vort_test::EventThread worker([&] { service = new TimerService; });
    worker.setObjectName(QStringLiteral("timer-worker"));
    worker.start();
    ASSERT_TRUE(worker.waitStarted());
    ASSERT_NE(service, nullptr);
    EXPECT_EQ(service->thread(), &worker);
    QtHostWarnings warnings;
    {
        TessarTimer timer = service->createTimer();
        service->startSingleTimer(timer, 10);
        service->startRepeatingTimer(timer, 10);
        EXPECT_FALSE(service->isTimerActive(timer));
        service->stopTimer(timer);
    }
    EXPECT_EQ(service->activeTimerCount(), 0);
    for (const char *operation :
         {"startSingleTimer", "startRepeatingTimer", "isTimerActive", "stopTimer"}) {
        EXPECT_TRUE(warnings.has({operation, "called on", "but the timers belong to",
                                  "thread 'timer-worker'", "the call is ignored"}))
            << operation;
    }
    delete service;  // on the wrong thread, with no timer running: reported, and safe
    EXPECT_TRUE(warnings.has({"TimerService", "destroyed on", "thread 'timer-worker'"}));
    worker.quit();
    ASSERT_TRUE(worker.wait(10000));
}
