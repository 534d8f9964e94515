// Test support for the Qt host kit: the application that every test runs in, a capture of the
// kit's warnings, and a bounded way to run the event loop until something has happened.
#ifndef VORT_TESTS_QTHOST_QTHOSTTESTSUPPORT_H
#define VORT_TESTS_QTHOST_QTHOSTTESTSUPPORT_H

#include "support/Latch.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDeadlineTimer>
#include <QtCore/QEventLoop>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QThread>
#include <QtCore/QTimer>

#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <utility>

namespace vort_test {

// Collects the warnings of the category "vort.qthost" while it lives, from any thread. Only one
// may exist at a time.
class QtHostWarnings {
public:
    QtHostWarnings();
    ~QtHostWarnings();
    QtHostWarnings(const QtHostWarnings &) = delete;
    QtHostWarnings &operator=(const QtHostWarnings &) = delete;

    QStringList all() const;
    // Success if one warning contains every one of `parts`; else a failure that lists them all.
    ::testing::AssertionResult has(std::initializer_list<const char *> parts) const;
};

// Runs the calling thread's event loop until `done` or `milliseconds` have passed; true if done.
inline bool runEventsUntil(const std::function<bool()> &done, int milliseconds = 10000) {
    const QDeadlineTimer deadline(milliseconds);
    QTimer tick;
    tick.start(5);
    while (!done()) {
        if (deadline.hasExpired()) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

// Runs the event loop for about `milliseconds`, for tests that check that nothing happens.
inline void runEventsFor(int milliseconds) {
    const QDeadlineTimer deadline(milliseconds);
    runEventsUntil([&] { return deadline.hasExpired(); }, milliseconds + 1000);
}

// A thread that runs `atStart` and then its event loop until `quit`.
class EventThread : public QThread {
public:
    explicit EventThread(std::function<void()> atStart) : m_atStart(std::move(atStart)) {}
    ~EventThread() override {
        quit();
        wait();
    }
    // True once `atStart` has run; bounded, so a thread that never gets there fails the test.
    bool waitStarted() { return m_started.wait(); }

protected:
    void run() override {
        m_atStart();
        m_started.countDown();
        exec();
    }

private:
    std::function<void()> m_atStart;
    Latch m_started{1};
};

}  // namespace vort_test

#endif  // VORT_TESTS_QTHOST_QTHOSTTESTSUPPORT_H
