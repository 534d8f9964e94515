// Sending a signal: VTMS emitters beside Qt signals and boost::signals2 in one binary.
//
// Direct sends to 1 and to 10 listeners; queued throughput to a listener on another thread
// (posts per second until the receiving thread has delivered them all); and a blocking round
// trip to a listener on another thread.
#include "MessagingBenchQt.h"
#include <vort/messaging/Emitter.h>
#include <vort/messaging/Thread.h>

#include <QCoreApplication>
#include <QThread>

#include <boost/signals2.hpp>

#include <benchmark/benchmark.h>

#include <atomic>
#include <condition_variable>
#include <future>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace {

constexpr int kBatch = 1000;

class VortReceiver : public VTMS::Listener {
public:
    ~VortReceiver() override { disconnect(); }
    void onFired(int value) {
        sum += value;
        delivered.store(delivered.load(std::memory_order_relaxed) + 1, std::memory_order_release);
    }

    long long sum = 0;
    std::atomic<long long> delivered{0};
};

struct BoostReceiver {
    void onFired(int value) { sum += value; }
    long long sum = 0;
};

void ensureQtApplication() {
    static int argc = 1;
    static char name[] = "messaging_bench";
    static char *argv[] = {name, nullptr};
    if (QCoreApplication::instance() == nullptr) {
        static QCoreApplication application(argc, argv);
    }
}

// Waits, yielding, until `counter` reaches `target`.
void awaitCount(const std::atomic<long long> &counter, long long target) {
    while (counter.load(std::memory_order_acquire) < target) {
        std::this_thread::yield();
    }
}

// A host thread as the messaging layer expects one: registered under a name, with a wake
// function that rouses its loop, which then calls `process`.
class VortHostThread {
public:
    VortHostThread() {
        s_current = this;
        std::promise<VTMS::Thread *> started;
        std::future<VTMS::Thread *> record = started.get_future();
        m_thread = std::thread([this, &started] { run(started); });
        m_record = record.get();
    }
    ~VortHostThread() {
        {
            std::lock_guard<std::mutex> guard(m_lock);
            m_stop = true;
        }
        m_wake.notify_one();
        m_thread.join();
        s_current = nullptr;
    }

    VTMS::Thread *record() const { return m_record; }

private:
    // A wake function has no argument: it finds its host through a static.
    static void wake() { s_current->rouse(); }

    void rouse() {
        if (!m_pending.exchange(true, std::memory_order_acq_rel)) {
            std::lock_guard<std::mutex> guard(m_lock);
            m_wake.notify_one();
        }
    }

    void run(std::promise<VTMS::Thread *> &started) {
        VTMS::Thread::registerThread("bench-host", &VortHostThread::wake);
        started.set_value(VTMS::Thread::getCurrentThread());
        VTMS::Thread *const self = VTMS::Thread::getCurrentThread();
        for (;;) {
            {
                std::unique_lock<std::mutex> guard(m_lock);
                m_wake.wait(guard, [this] { return m_stop || m_pending.load(); });
                if (m_stop) {
                    break;
                }
            }
            m_pending.store(false, std::memory_order_release);
            self->process();
        }
        self->process();
    }

    static VortHostThread *s_current;
    std::thread m_thread;
    VTMS::Thread *m_record = nullptr;
    std::mutex m_lock;
    std::condition_variable m_wake;
    std::atomic<bool> m_pending{false};
    bool m_stop = false;
};

VortHostThread *VortHostThread::s_current = nullptr;

// ----- Direct sends ------------------------------------------------------------------------

void BM_DirectSend_Vort(benchmark::State &state) {
    VTMS::Emitter1<void, int> emitter;
    std::vector<std::unique_ptr<VortReceiver>> receivers;
    for (int64_t i = 0; i < state.range(0); ++i) {
        receivers.push_back(std::make_unique<VortReceiver>());
        emitter.connect(receivers.back().get(), &VortReceiver::onFired);
    }
    int value = 0;
    for (auto _ : state) {
        emitter.send(++value);
    }
    benchmark::DoNotOptimize(receivers.front()->sum);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_DirectSend_Vort)->Arg(1)->Arg(10);

void BM_DirectSend_Qt(benchmark::State &state) {
    QtBenchSender sender;
    std::vector<std::unique_ptr<QtBenchReceiver>> receivers;
    for (int64_t i = 0; i < state.range(0); ++i) {
        receivers.push_back(std::make_unique<QtBenchReceiver>());
        QObject::connect(&sender, &QtBenchSender::fired, receivers.back().get(),
                         &QtBenchReceiver::onFired);
    }
    int value = 0;
    for (auto _ : state) {
        Q_EMIT sender.fired(++value);
    }
    benchmark::DoNotOptimize(receivers.front()->sum);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_DirectSend_Qt)->Arg(1)->Arg(10);

void BM_DirectSend_BoostSignals2(benchmark::State &state) {
    boost::signals2::signal<void(int)> signal;
    std::vector<std::unique_ptr<BoostReceiver>> receivers;
    for (int64_t i = 0; i < state.range(0); ++i) {
        receivers.push_back(std::make_unique<BoostReceiver>());
        BoostReceiver *const receiver = receivers.back().get();
        signal.connect([receiver](int value) { receiver->onFired(value); });
    }
    int value = 0;
    for (auto _ : state) {
        signal(++value);
    }
    benchmark::DoNotOptimize(receivers.front()->sum);
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_DirectSend_BoostSignals2)->Arg(1)->Arg(10);

// ----- Queued throughput -------------------------------------------------------------------

void BM_QueuedThroughput_Vort(benchmark::State &state) {
    VortHostThread host;
    VortReceiver receiver;
    VTMS::Emitter1<void, int> emitter;
    emitter.connect(&receiver, &VortReceiver::onFired, host.record());
    long long target = 0;
    for (auto _ : state) {
        for (int i = 0; i < kBatch; ++i) {
            emitter.send(i);
        }
        target += kBatch;
        awaitCount(receiver.delivered, target);
    }
    state.SetItemsProcessed(state.iterations() * kBatch);
}
BENCHMARK(BM_QueuedThroughput_Vort)->UseRealTime();

void BM_QueuedThroughput_Qt(benchmark::State &state) {
    ensureQtApplication();
    QThread worker;
    QtBenchSender sender;
    QtBenchReceiver receiver;
    receiver.moveToThread(&worker);
    QObject::connect(&sender, &QtBenchSender::fired, &receiver, &QtBenchReceiver::onFired,
                     Qt::QueuedConnection);
    worker.start();
    long long target = 0;
    for (auto _ : state) {
        for (int i = 0; i < kBatch; ++i) {
            Q_EMIT sender.fired(i);
        }
        target += kBatch;
        awaitCount(receiver.delivered, target);
    }
    worker.quit();
    worker.wait();
    state.SetItemsProcessed(state.iterations() * kBatch);
}
BENCHMARK(BM_QueuedThroughput_Qt)->UseRealTime();

// ----- Blocking round trip -----------------------------------------------------------------

void BM_BlockingRoundTrip_Vort(benchmark::State &state) {
    VortHostThread host;
    VortReceiver receiver;
    VTMS::Emitter1<void, int> emitter(VTMS::BlockUntilDelivered);
    emitter.connect(&receiver, &VortReceiver::onFired, host.record());
    int value = 0;
    for (auto _ : state) {
        emitter.send(++value);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_BlockingRoundTrip_Vort)->UseRealTime();

void BM_BlockingRoundTrip_Qt(benchmark::State &state) {
    ensureQtApplication();
    QThread worker;
    QtBenchSender sender;
    QtBenchReceiver receiver;
    receiver.moveToThread(&worker);
    QObject::connect(&sender, &QtBenchSender::fired, &receiver, &QtBenchReceiver::onFired,
                     Qt::BlockingQueuedConnection);
    worker.start();
    int value = 0;
    for (auto _ : state) {
        Q_EMIT sender.fired(++value);
    }
    worker.quit();
    worker.wait();
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_BlockingRoundTrip_Qt)->UseRealTime();

}  // namespace
