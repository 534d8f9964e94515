#include "Thread_p.h"
#include <hsl/hsl.h>
#include <vort/messaging/Connection.h>
#include <vort/messaging/Mutex.h>
#include <vort/messaging/Packet.h>
#include <vort/messaging/Thread.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace VTMS {

namespace {

// Held while a connection enters itself in its two sets, and taken once by every connection
// destructor, so that no connection is torn down while another is still entering itself. It
// nests inside the global lock.
VORT::Mutex &constructorMutex() {
    static VORT::Mutex mutex(VORT::Mutex::NonRecursive);
    return mutex;
}

// The global connection lock, reached without a call through the library's exported entry.
VORT::ReadWriteLock &globalLock() {
    static VORT::ReadWriteLock lock;
    return lock;
}

// The statics that an emitter or listener may use as it dies, built no later than the first
// emitter or listener, so that the end of the process destroys them after every static emitter
// and listener.
void buildStatics() {
    globalLock();
    constructorMutex();
    ensureThreadSlot();
}

// Connection sets are vectors kept in ascending order of address: a send copies them in one
// pass, and they are delivered to in that order.
typedef std::vector<Connection *> ConnectionVector;

void insertOrdered(ConnectionVector &set, Connection *connection) {
    set.insert(std::upper_bound(set.begin(), set.end(), connection), connection);
}

void eraseOrdered(ConnectionVector &set, Connection *connection) {
    const auto at = std::lower_bound(set.begin(), set.end(), connection);
    if (at != set.end() && *at == connection) {
        set.erase(at);
    }
}

// Removes from `set` every connection for which `cut` returns true. `cut` may free the
// connection it is given; the set is rewritten without touching it again.
template <typename Cut>
void cutWhere(ConnectionVector &set, Cut cut) {
    auto kept = set.begin();
    for (Connection *connection : set) {
        if (!cut(connection)) {
            *kept++ = connection;
        }
    }
    set.erase(kept, set.end());
}

}  // namespace

VORT::ReadWriteLock &GetGlobalConnectionLock() {
    return globalLock();
}

// ----- Connection --------------------------------------------------------------------------

Connection::Connection(Listener *listener, EmitterBase *emitter, Thread *thread)
    : m_listener(listener),
      m_emitter(emitter),
      m_thread(thread),
      m_emitterGone(false),
      m_listenerGone(false) {
    VORT::MutexLocker entering(constructorMutex());
    m_refCount.init(0);
    emitter->addConnection(this);
    try {
        listener->addConnection(this);
    } catch (...) {
        emitter->removeConnection(this);
        throw;
    }
}

Connection::Connection(const Connection &other)
    : m_listener(other.m_listener),
      m_emitter(other.m_emitter),
      m_thread(other.m_thread),
      m_emitterGone(other.m_emitterGone),
      m_listenerGone(other.m_listenerGone) {
    m_refCount = other.m_refCount;
}

Connection &Connection::operator=(const Connection &other) {
    m_listener = other.m_listener;
    m_emitter = other.m_emitter;
    m_thread = other.m_thread;
    m_refCount = other.m_refCount;
    m_emitterGone = other.m_emitterGone;
    __atomic_store_n(&m_listenerGone, other.m_listenerGone, __ATOMIC_RELEASE);
    return *this;
}

Connection::~Connection() {
    constructorMutex().lock();
    constructorMutex().unlock();
}

bool Connection::markCut() {
    int word = m_refCount;
    while ((word & kCutMark) == 0) {
        if (m_refCount.testAndSet(word, word | kCutMark)) {
            return word == 0;
        }
        word = m_refCount;
    }
    return false;
}

void Connection::disconnectEmitter() {
    globalLock().assertIsWriteLockedOnThisThread();
    m_emitterGone = true;
    m_emitter = nullptr;
    if (markCut()) {
        destroy();
    }
}

void Connection::disconnectListener() {
    globalLock().assertIsWriteLockedOnThisThread();
    __atomic_store_n(&m_listenerGone, true, __ATOMIC_RELEASE);
    m_listener = nullptr;
    if (!m_emitterGone) {
        m_emitter->removeConnection(this);
        m_emitterGone = true;
        m_emitter = nullptr;
    }
    if (markCut()) {
        destroy();
    }
}

void Connection::destroy() {
    if (!m_emitterGone) {
        m_emitter->removeConnection(this);
    }
    if (!m_listenerGone) {
        m_listener->removeConnection(this);
    }
    delete this;
}

// The last use of a cut connection has just gone: nothing can take a new one (a cut connection
// is in no emitter's set), and no cut can claim it (the mark is set), so this call alone frees
// it. The lock is for the listener's set, which may still hold it after a `DeliverPackets` cut.
void Connection::releaseLast() {
    VORT::WriteLocker lock(globalLock());
    destroy();
}

// ----- EmitterBase -------------------------------------------------------------------------

struct EmitterBase::Private : RecordHead {
    explicit Private(SendMode mode) : m_defaultMode(mode) { m_size.init(0); }

    void updateSize() { m_size = static_cast<int>(m_connections.size()); }

    ConnectionVector m_connections;
    SendMode m_defaultMode;
    // Emitters on this record (more than one only after an assignment); under the global lock.
    int m_shares = 1;
};

EmitterBase::Private *EmitterBase::record() const {
    return static_cast<Private *>(m_impl);
}

EmitterBase::EmitterBase(SendMode defaultMode) : m_impl(nullptr) {
    buildStatics();
    m_impl = new Private(defaultMode);
}

EmitterBase::EmitterBase(const EmitterBase &other) : m_impl(nullptr) {
    buildStatics();
    m_impl = new Private(other.record()->m_defaultMode);
}

EmitterBase &EmitterBase::operator=(const EmitterBase &other) {
    VORT::WriteLocker lock(globalLock());
    if (m_impl != other.m_impl) {
        releaseRecord();
        m_impl = other.m_impl;
        ++record()->m_shares;
    }
    return *this;
}

EmitterBase::~EmitterBase() {
    VORT::WriteLocker lock(globalLock());
    releaseRecord();
}

void EmitterBase::releaseRecord() {
    Private *const d = record();
    cutWhere(d->m_connections, [this](Connection *connection) {
        if (connection->m_emitter != this) {
            return false;
        }
        connection->disconnectEmitter();
        return true;
    });
    d->updateSize();
    if (--d->m_shares == 0) {
        delete d;
    }
    m_impl = nullptr;
}

void EmitterBase::setDefaultMode(SendMode mode) {
    record()->m_defaultMode = mode;
}

int EmitterBase::numberOfConnections() const {
    VORT::ReadLocker lock(globalLock());
    return static_cast<int>(record()->m_connections.size());
}

void EmitterBase::addConnection(Connection *connection) {
    globalLock().assertIsWriteLockedOnThisThread();
    Private *const d = record();
    insertOrdered(d->m_connections, connection);
    d->updateSize();
}

void EmitterBase::removeConnection(Connection *connection) {
    globalLock().assertIsWriteLockedOnThisThread();
    Private *const d = record();
    eraseOrdered(d->m_connections, connection);
    d->updateSize();
}

void EmitterBase::disconnectFrom(Listener *listener, PacketDropMode mode) {
    if (mode != DeliverPackets) {
        listener->disconnectFrom(*this, DropPackets);
        return;
    }
    VORT::WriteLocker lock(globalLock());
    Private *const d = record();
    cutWhere(d->m_connections, [listener](Connection *connection) {
        if (connection->m_listener != listener) {
            return false;
        }
        connection->disconnectEmitter();
        return true;
    });
    d->updateSize();
}

// A send's copy of the emitter's set, with a use of each member. Small sets stay on the stack.
// The uses not handed over to a delivery yet are given back when the snapshot goes, so that an
// exception from a post leaks nothing.
class EmitterBase::Snapshot {
public:
    Snapshot() = default;
    Snapshot(const Snapshot &) = delete;
    Snapshot &operator=(const Snapshot &) = delete;
    ~Snapshot() {
        while (m_next != m_end) {
            (*m_next++)->decRef();
        }
    }

    // With the global lock held for reading.
    void take(const ConnectionVector &set) {
        const std::size_t count = set.size();
        Connection **first = m_inline;
        if (count > kInline) {
            m_heap.reset(new Connection *[count]);
            first = m_heap.get();
        }
        for (std::size_t i = 0; i < count; ++i) {
            first[i] = set[i];
            first[i]->incRef();
        }
        m_next = first;
        m_end = first + count;
    }

    // True if a send in `mode` from `current` (looked up here if need be) posts to any queue.
    bool needsQueue(SendMode mode, Thread *&current) const {
        if (mode == AlwaysQueue) {
            return true;
        }
        for (Connection **at = m_next; at != m_end; ++at) {
            Thread *const target = (*at)->m_thread;
            if (target != nullptr) {
                if (current == nullptr) {
                    current = Thread::getCurrentThread();
                }
                if (target != current) {
                    return true;
                }
            }
        }
        return false;
    }

    // The next connection, in ascending order; its use passes to the caller.
    Connection *next() { return m_next != m_end ? *m_next++ : nullptr; }

private:
    static constexpr std::size_t kInline = 16;
    Connection *m_inline[kInline];
    std::unique_ptr<Connection *[]> m_heap;
    Connection **m_next = nullptr;
    Connection **m_end = nullptr;
};

bool EmitterBase::takeSnapshot(Snapshot &snapshot) const {
    VORT::ReadLocker lock(globalLock());
    const Private *const d = record();
    if (d->m_connections.empty()) {
        return false;
    }
    snapshot.take(d->m_connections);
    return true;
}

void EmitterBase::sendPacket(Packet &packet, SendMode mode, bool /*flag*/) {
    if (mode == UseDefaultMode) {
        mode = record()->m_defaultMode;
    }
    Snapshot snapshot;
    if (!takeSnapshot(snapshot)) {
        return;
    }
    if (mode >= BlockUntilDelivered) {
        // The live count, not the snapshot's: a connection made or cut since the snapshot makes
        // the gate open early or never, which the blocking modes accept.
        packet.setSynchronous(m_impl->m_size);
    }
    deliverAll(snapshot, packet.m_payload, mode, nullptr);
}

void EmitterBase::sendLocalPayload(Payload &local, PayloadCopier copyToHeap, SendMode mode) {
    if (mode == UseDefaultMode) {
        mode = record()->m_defaultMode;
    }
    Snapshot snapshot;
    if (!takeSnapshot(snapshot)) {
        return;
    }
    const bool blocking = mode >= BlockUntilDelivered;
    Thread *current = nullptr;
    if (snapshot.needsQueue(mode, current)) {
        Packet packet(copyToHeap(local));
        if (blocking) {
            packet.setSynchronous(m_impl->m_size);
        }
        deliverAll(snapshot, packet.m_payload, mode, current);
    } else {
        if (blocking) {
            local.setSynchronous(m_impl->m_size);
        }
        deliverAll(snapshot, &local, mode, current);
    }
}

void EmitterBase::deliverAll(Snapshot &snapshot, Payload *payload, SendMode mode, Thread *current) {
    while (Connection *connection = snapshot.next()) {
        Thread *target = connection->m_thread;
        bool direct = false;
        if (mode == AlwaysQueue) {
            if (target == nullptr) {
                target = current ? current : (current = Thread::getCurrentThread());
            }
        } else if (target == nullptr) {
            direct = true;
        } else {
            if (current == nullptr) {
                current = Thread::getCurrentThread();
            }
            direct = target == current;
        }
        if (direct) {
            // The snapshot's use keeps the connection alive through the call, as a packet's
            // would; the caller keeps the payload.
            ConnectedPacket::deliverGuarded(payload, connection);
            connection->decRef();
        } else {
            target->post(ConnectedPacket(payload, connection, ConnectedPacket::AdoptUse()));
        }
    }

    if (mode >= BlockUntilDelivered) {
        while (payload->wait(100)) {
            // Where the host's system has messages sent to a blocked signal thread, this is
            // where they would be let through; on this platform there is nothing to peek at.
            static_cast<void>(hslIsSignalThread());
            if (mode == BlockAndProcess) {
                Thread::getCurrentThread()->process();
            }
        }
    }
}

// ----- Listener ----------------------------------------------------------------------------

struct Listener::ConnectionSet {
    ConnectionVector m_members;
    // Listeners on this set (more than one only after an assignment); under the global lock.
    int m_shares = 1;
};

Listener::Listener() : m_connections(nullptr) {
    buildStatics();
    m_connections = new ConnectionSet;
}

Listener::Listener(const Listener & /*other*/) : m_connections(nullptr) {
    buildStatics();
    m_connections = new ConnectionSet;
}

Listener::~Listener() {
    VORT::WriteLocker lock(globalLock());
    if (--m_connections->m_shares == 0) {
        delete m_connections;
    }
}

Listener &Listener::operator=(const Listener &other) {
    VORT::WriteLocker lock(globalLock());
    if (m_connections != other.m_connections) {
        leaveSet();
        m_connections = other.m_connections;
        ++m_connections->m_shares;
    }
    return *this;
}

void Listener::leaveSet() {
    cutWhere(m_connections->m_members, [this](Connection *connection) {
        if (connection->m_listener != this) {
            return false;
        }
        connection->disconnectListener();
        return true;
    });
    if (--m_connections->m_shares == 0) {
        delete m_connections;
    }
    m_connections = nullptr;
}

void Listener::disconnect() {
    VORT::WriteLocker lock(globalLock());
    ConnectionVector &members = m_connections->m_members;
    for (Connection *connection : members) {
        connection->disconnectListener();
    }
    members.clear();
}

void Listener::disconnectFrom(EmitterBase &emitter, PacketDropMode mode) {
    if (mode == DeliverPackets) {
        emitter.disconnectFrom(this, DeliverPackets);
        return;
    }
    VORT::WriteLocker lock(globalLock());
    cutWhere(m_connections->m_members, [&emitter](Connection *connection) {
        if (connection->m_emitter != &emitter) {
            return false;
        }
        connection->disconnectListener();
        return true;
    });
}

void Listener::addConnection(Connection *connection) {
    globalLock().assertIsWriteLockedOnThisThread();
    insertOrdered(m_connections->m_members, connection);
}

void Listener::removeConnection(Connection *connection) {
    globalLock().assertIsWriteLockedOnThisThread();
    eraseOrdered(m_connections->m_members, connection);
}

}  // namespace VTMS
