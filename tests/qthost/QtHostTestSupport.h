// Test support for the Qt host kit: the application that every test runs in, a capture of the
// kit's warnings, and a bounded way to run the event loop until something has happened.
#ifndef VORT_TESTS_QTHOST_QTHOSTTESTSUPPORT_H
#define VORT_TESTS_QTHOST_QTHOSTTESTSUPPORT_H

#include <QtCore/QCoreApplication>
#include <QtCore/QDeadlineTimer>
#include <QtCore/QEventLoop>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QTimer>

#include <functional>
#include <initializer_list>

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
    // True if one warning contains every one of `parts`.
    bool has(std::initializer_list<const char *> parts) const;
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

}  // namespace vort_test

#endif  // VORT_TESTS_QTHOST_QTHOSTTESTSUPPORT_H
