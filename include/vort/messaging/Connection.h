// The graph of the signal-and-slot layer: `VTMS::SendMode`, `VTMS::PacketDropMode`,
// `VTMS::EmitterBase`, `VTMS::Listener`, `VTMS::Connection` and the one lock that guards them,
// `VTMS::GetGlobalConnectionLock()`.
//
// An emitter sends, a listener receives, and a connection links one of each together with the
// `VTMS::Thread` on which the listener wants its calls (null: the sender's thread). The typed
// emitters and their connect operation are in <vort/messaging/Emitter.h>; packets and sending
// in <vort/messaging/Packet.h>; queues in <vort/messaging/Thread.h>.
//
// Thread safety: every connection set and every pointer and flag of every connection is
// guarded by the global connection lock, taken for reading to look and for writing to change.
// Any thread may connect, disconnect and send; no lock of this layer is held while a listener
// runs, so handlers may connect, disconnect and send too. The test that a listener is still
// there and the call of it are not one atomic step: a listener that is served on a `Thread` is
// destroyed on that thread, or disconnected where no delivery of it can be running.
//
// Ownership: a connection belongs to the two sets that hold it, not to a count. Packets in
// flight (queued or in the middle of a send) each hold a use of their connection; a cut
// connection is freed when it is in no set and no packet uses it, so either end may go away at
// any moment, also with packets queued. An emitter cuts its connections when it dies. A
// listener does not: every concrete listener calls `disconnect()` in its own destructor, while
// the object is still whole; one that forgets leaves connections pointing at a dead object.
//
// Failure: nothing here reports failure; exceptions from listeners never reach a sender.
#ifndef VORT_MESSAGING_CONNECTION_H
#define VORT_MESSAGING_CONNECTION_H

#include <vort/bones/AtomicCounter.h>
#include <vort/messaging/ReadWriteLock.h>
#include <vort/vort_export.h>

namespace VTMS {

class Connection;
class EmitterBase;
class Listener;
class Packet;
class Payload;
class Thread;

// How a send reaches a listener. The typed emitters default to `DirectOrQueue`.
enum SendMode {
    UseDefaultMode = 0,       // the emitter's default; only valid as an argument of a send
    AlwaysQueue = 1,          // always post to a queue (the sender's own for a listener without
                              // a thread), never call the listener inside the send
    DirectOrQueue = 2,        // call a listener without a thread, or on the sending thread,
                              // at once; post to any other thread
    BlockUntilDelivered = 3,  // as `DirectOrQueue`, and return only when every delivery is done
    BlockAndProcess = 4       // as `BlockUntilDelivered`, working through the sender's own
                              // queue while it waits
};

// What a cut does to packets already on their way to the listener.
enum PacketDropMode {
    DropPackets = 0,    // not delivered: the listener side is cut, and with it the whole link
    DeliverPackets = 1  // still delivered: only the emitter side is cut
};

// The process-wide lock of every connection set, pointer and flag. Built on first use (at the
// latest by the first emitter or listener) and destroyed at process end.
VORT_EXPORT VORT::ReadWriteLock &GetGlobalConnectionLock();

// The link between one emitter and one listener. Derived classes (the typed connections of
// <vort/messaging/Emitter.h>) add the call of the listener.
class VORT_EXPORT Connection {
public:
    virtual ~Connection();

    // True while the listener side is not cut. The emitter side plays no part: a packet whose
    // emitter has died is delivered as usual.
    bool isLive() const { return !__atomic_load_n(&m_listenerGone, __ATOMIC_ACQUIRE); }

    // A use by a packet or a send in flight. Lock-free; only a holder of a use, or a send that
    // holds the global lock for reading, takes another.
    void incRef() { ++m_refCount; }
    // Gives a use back. A cut connection is freed with its last use; this takes the global lock
    // for writing only then.
    void decRef() {
        if (--m_refCount == kCutMark) {
            releaseLast();
        }
    }

protected:
    // Enters the connection in the emitter's set and then in the listener's. The caller holds
    // the global lock for writing.
    Connection(Listener *listener, EmitterBase *emitter, Thread *thread);
    // Copy all fields as they stand, the count too; the copy is in no set. Not used by the
    // library's own flows.
    Connection(const Connection &other);
    Connection &operator=(const Connection &other);

    // Null once that side is cut. Read under the global lock.
    Listener *getListener() const { return m_listener; }
    EmitterBase *getEmitter() const { return m_emitter; }

    // The two cuts and the final removal; the caller holds the global lock for writing.
    // Cutting the emitter side leaves the listener side to packets in flight. Cutting the
    // listener side cuts the whole link, so the emitter stops sending into it at once. Either
    // frees the connection if no packet uses it.
    void disconnectEmitter();
    void disconnectListener();
    // Removes the connection from the sets that still hold it and deletes it.
    void destroy();

private:
    friend class EmitterBase;
    friend class Listener;

    // The word of `m_refCount` is the number of uses in flight, plus this mark once either side
    // is cut. With both in one word, the use that brings a cut link to zero and the cut that
    // finds no use left are told apart by one atomic step, so that exactly one of them frees
    // the connection and a send needs no write lock to give its use back.
    static constexpr int kCutMark = 1 << 30;

    // Sets the cut mark; true if no use was in flight and the link was whole until now, so that
    // the caller is the one to free it.
    VORT_NO_EXPORT bool markCut();
    void releaseLast();

    Listener *m_listener;
    EmitterBase *m_emitter;
    Thread *m_thread;
    VORT::AtomicCounter m_refCount;
    bool m_emitterGone;
    bool m_listenerGone;
};

// The sending end. Not polymorphic: derived classes (the typed emitters) add the send.
class VORT_EXPORT EmitterBase {
public:
    // Makes this emitter share the other's record: both then send to, and connect into, one set.
    // The connections that this emitter made until now are cut as by its destructor. An emitter
    // is not meant to be assigned.
    EmitterBase &operator=(const EmitterBase &other);

    bool hasConnections() const { return numberOfConnections() > 0; }

    // Cuts every connection to `listener`. `DeliverPackets` cuts the emitter side here, so that
    // packets on their way still arrive; `DropPackets` (any other value too) is handed to the
    // listener, which cuts the whole link and drops them.
    void disconnectFrom(Listener *listener, PacketDropMode mode);

protected:
    explicit EmitterBase(SendMode defaultMode);
    // A new emitter without connections, with the other's default mode.
    EmitterBase(const EmitterBase &other);
    // Cuts the emitter side of every connection; packets in flight are still delivered.
    ~EmitterBase();

    // Not synchronised with sends in progress.
    void setDefaultMode(SendMode mode);
    int numberOfConnections() const;

    // The caller holds the global lock for writing.
    void addConnection(Connection *connection);
    void removeConnection(Connection *connection);

    // Sends `packet` to every connection, as the set stands when the send begins, in ascending
    // order of the connections' addresses. A listener without a thread, or on the sending
    // thread, is called at once (unless `mode` is `AlwaysQueue`); one on another thread gets the
    // packet in that thread's queue. With `BlockUntilDelivered` and `BlockAndProcess` the call
    // returns when every delivery has been counted, waiting in slices of 100 milliseconds and
    // with no overall limit: a listener that throws, or a queue that is never processed, blocks
    // it for good. The emitter may be destroyed by a listener during the send. `flag` is not
    // read.
    void sendPacket(Packet &packet, SendMode mode, bool flag);

    // False only if the emitter has had no connection since the last change that the calling
    // thread can have seen; lets a typed send skip building a payload nobody would get.
    bool mayHaveConnections() const { return m_impl->m_size != 0; }

    // The typed emitters' send, with the same rules as `sendPacket`. `local` is a payload on the
    // caller's stack that nothing else refers to. If any delivery of this send is to be queued,
    // `copyToHeap` first makes a counted copy of it, and that copy travels instead; a send whose
    // deliveries are all direct allocates no payload.
    typedef Payload *(*PayloadCopier)(const Payload &local);
    void sendLocalPayload(Payload &local, PayloadCopier copyToHeap, SendMode mode);

private:
    friend class Connection;
    // The start of the private record: the size of the set, for readers that hold no lock (the
    // count of a blocking send and the early return of a typed send), kept equal to the set's
    // size under the global lock.
    struct RecordHead {
        VORT::AtomicCounter m_size;
    };
    struct Private;
    class Snapshot;

    VORT_NO_EXPORT Private *record() const;
    // Cuts the emitter side of the connections that this emitter made and lets go of the
    // record. The caller holds the global lock for writing.
    VORT_NO_EXPORT void releaseRecord();
    // Copies the set into `snapshot` with a use of each member; false if the set is empty.
    VORT_NO_EXPORT bool takeSnapshot(Snapshot &snapshot) const;
    // Delivers `payload` along the snapshot and, in a blocking mode, waits for the gate. Touches
    // nothing of the emitter, which a listener may destroy.
    VORT_NO_EXPORT static void deliverAll(Snapshot &snapshot, Payload *payload, SendMode mode,
                                          Thread *current);

    RecordHead *m_impl;
};

// The receiving end. Concrete listeners derive from it and call `disconnect()` in their own
// destructor.
class VORT_EXPORT Listener {
public:
    // Makes this listener share the other's connection set. The connections that this listener
    // had are cut first. A listener is not meant to be assigned.
    Listener &operator=(const Listener &other);

    // Cuts every connection of this listener; packets on their way are dropped.
    void disconnect();
    // Cuts every connection from `emitter`. `DropPackets` (any value but `DeliverPackets`) cuts
    // the whole link here; `DeliverPackets` is handed to the emitter.
    void disconnectFrom(EmitterBase &emitter, PacketDropMode mode);

protected:
    Listener();
    // A new listener without connections.
    Listener(const Listener &other);
    // Frees the set only; see the class comment.
    virtual ~Listener() = 0;

private:
    friend class Connection;
    friend class EmitterBase;

    // The caller holds the global lock for writing.
    void addConnection(Connection *connection);
    void removeConnection(Connection *connection);
    // Cuts the connections of the set that this listener made and lets go of the set.
    VORT_NO_EXPORT void leaveSet();

    struct ConnectionSet;
    ConnectionSet *m_connections;
};

}  // namespace VTMS

#endif  // VORT_MESSAGING_CONNECTION_H
