// `VORT::QtHost::MessageThread`: registers the calling thread, which runs a Qt event loop, as a
// named `VTMS::Thread`, so that packets queued to it are delivered by that loop. Part of the Qt
// host kit (library `vortqthost`, target `Vort::QtHost`).
//
// While the object lives, every post to the thread's queue wakes the thread through a queued
// call on its event loop, which then runs `VTMS::Thread::process`; wake-ups that come while one
// is pending fold into it. Make the object on the thread it registers, after the
// `QCoreApplication` exists, and destroy it on that same thread: its destructor cuts the
// wake-ups (packets posted later stay queued until someone calls `process`).
//
// Failure: misuse (no `QCoreApplication`, an empty name, too many threads registered at once,
// destruction on another thread) is reported as a warning in the category "vort.qthost";
// `isValid()` then tells whether the registration holds. A thread may be registered under
// several names by several objects; they share one wake-up.
//
// Thread safety: the wake-up may be called from any thread. The object itself belongs to the
// thread that made it.
#ifndef VORT_QTHOST_MESSAGETHREAD_H
#define VORT_QTHOST_MESSAGETHREAD_H

#include <vort/qthost/qthost_export.h>

#include <string>

namespace VTMS {
class Thread;
}

namespace VORT {
namespace QtHost {

class VORTQTHOST_EXPORT MessageThread {
public:
    // At most this many threads can be registered through the kit at one time.
    static constexpr int kMaxThreads = 64;

    explicit MessageThread(const std::string &name);
    ~MessageThread();
    MessageThread(const MessageThread &) = delete;
    MessageThread &operator=(const MessageThread &) = delete;

    bool isValid() const { return m_slot >= 0; }
    const std::string &name() const { return m_name; }
    // The registered thread's record; null if the registration failed.
    VTMS::Thread *thread() const { return m_thread; }

private:
    std::string m_name;
    VTMS::Thread *m_thread = nullptr;
    int m_slot = -1;
};

}  // namespace QtHost
}  // namespace VORT

#endif  // VORT_QTHOST_MESSAGETHREAD_H
