// The Qt peers of the messaging benchmarks: a sender with one signal and a receiver with one
// slot. In a header of their own so that moc sees them.
#ifndef VORT_BENCH_MESSAGINGBENCHQT_H
#define VORT_BENCH_MESSAGINGBENCHQT_H

#include <QObject>

#include <atomic>

class QtBenchSender : public QObject {
    Q_OBJECT
Q_SIGNALS:
    void fired(int value);
};

class QtBenchReceiver : public QObject {
    Q_OBJECT
public:
    long long sum = 0;
    std::atomic<long long> delivered{0};

public Q_SLOTS:
    void onFired(int value) {
        sum += value;
        delivered.store(delivered.load(std::memory_order_relaxed) + 1, std::memory_order_release);
    }
};

#endif  // VORT_BENCH_MESSAGINGBENCHQT_H
