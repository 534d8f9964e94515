// `VTMS::Thread`: the messaging layer's record of one operating-system thread, with a name, a
// queue of `VTMS::ConnectedPacket` and a function that wakes the thread up.
//
// A `Thread` is not a thread of execution and has no loop. A host thread with an event loop
// registers itself under a name and a wake function; other threads post packets to it; the
// wake function arranges (typically through the host's own event queue) for the host's loop to
// call `process` on that thread. A thread that never registers still gets a record, and a
// queue, at its first send or lookup; only its own explicit `process` empties that queue.
//
// Thread safety: any thread may `post`; `process` and `processOne` belong to the owning thread,
// though nothing checks which thread calls them. Each record has one non-recursive mutex for its
// name and queue; it is never held while a listener runs, and it is held while the wake function
// runs and while a delivered packet is destroyed, so the lock order is: a thread's mutex, then
// the global connection lock. The registry of names has its own reader-writer lock.
//
// Ownership: records made by `getCurrentThread` are never freed, not even when their thread
// ends: connections and the registry may still point at them, and posting to them goes on
// filling their queue. Applications never construct or destroy a `Thread`.
//
// Failure: nothing here reports failure; a name not registered yields null.
#ifndef VORT_MESSAGING_THREAD_H
#define VORT_MESSAGING_THREAD_H

#include <vort/vort_export.h>

#include <string>

namespace VTMS {

class ConnectedPacket;

class VORT_EXPORT Thread {
public:
    // Arranges for `process` to run on the owning thread. It is called on the posting thread,
    // once per post, with the record's mutex held: it must not wait for anything that needs this
    // `Thread`'s locking operations on another thread.
    typedef void (*WakeFunction)(void);

    // The caller's record, made at first use. Never null.
    static Thread *getCurrentThread();
    // The record registered under `name`, or null. A miss enters the name with no record.
    static Thread *getNamedThread(const std::string &name);
    // Names the calling thread's record and gives it `wake`. The later of two registrations of
    // one name holds it; a record registered twice keeps the later name, and both names find it.
    static void registerThread(const std::string &name, WakeFunction wake);

    std::string getName();

    // Appends the packet (the copy takes its own references; the moving form takes over the
    // given ones) and calls the wake function, if there is one.
    void post(const ConnectedPacket &packet);
    void post(ConnectedPacket &&packet);

    // Delivers packets, first in first out, until the queue is empty, also those posted by the
    // handlers meanwhile. A packet stays first in the queue while it is delivered, so a nested
    // `process` on this thread (as a `BlockAndProcess` send inside a handler runs) delivers it
    // again: handlers use a non-processing mode.
    void process();
    // Delivers the first packet. The queue must not be empty (an empty one is left alone): for a
    // host that knows from its own count of wake-ups that a packet waits.
    void processOne();
    // True while a queued packet is being delivered. Read without a lock.
    bool processingMessages() const;

    Thread(const Thread &) = delete;
    // Makes this object share the other's record; both then name one queue.
    Thread &operator=(const Thread &other);

protected:
    // An empty record: no name, no queue, no wake function.
    Thread();
    // Destroys the queued packets, last to first, without delivering them, and frees the record.
    ~Thread();

private:
    struct Private;
    Private *m_impl;
};

}  // namespace VTMS

#endif  // VORT_MESSAGING_THREAD_H
