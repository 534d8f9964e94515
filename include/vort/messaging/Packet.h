// What travels: `VTMS::Payload` (the arguments of one signal), `VTMS::Packet` (a counted handle
// on a payload) and `VTMS::ConnectedPacket` (a packet bound to one connection, the unit that a
// `VTMS::Thread` queues).
//
// Thread safety: one payload may be delivered on several threads at once, through different
// connections, so `dispatch` only reads it; its reference count and its count of pending
// deliveries are atomic. A packet handle itself belongs to one thread at a time.
//
// Ownership: a payload starts with one reference, which the first `Packet` built on it takes
// over; every further handle takes its own, and the last one deletes the payload. A
// `ConnectedPacket` holds a reference on its payload and a use of its connection, so a queued
// packet keeps both alive however long it waits.
//
// Failure: `ConnectedPacket::deliver` catches everything a listener throws (the host's
// `Corvane::System::IUserException` and `IException`, then `std::exception`, then anything) and
// drops it. A listener that throws is not counted as delivered, on purpose: a sender blocked on
// that packet stays blocked.
#ifndef VORT_MESSAGING_PACKET_H
#define VORT_MESSAGING_PACKET_H

#include <vort/bones/AtomicCounter.h>
#include <vort/messaging/Mutex.h>
#include <vort/vort_export.h>

namespace VORT {
class Gate;
}

namespace VTMS {

class Connection;
class EmitterBase;

// The arguments of one signal. A concrete payload (the typed ones of
// <vort/messaging/Emitter.h>) knows the type of connection that it is sent through.
class VORT_EXPORT Payload {
public:
    // No gate; one reference, for the first `Packet` to take over.
    Payload() : m_gate(nullptr), m_mutex(VORT::Mutex::NonRecursive) {
        m_pending.init(0);
        m_refCount.init(1);
    }
    virtual ~Payload();
    Payload(const Payload &) = delete;
    Payload &operator=(const Payload &) = delete;

    // Calls the listener of `connection` with the stored arguments. The connection must be of
    // the type that matches the payload; nothing checks it. Must only read the payload.
    virtual void dispatch(Connection *connection) = 0;

    void incRef() { ++m_refCount; }
    // The new count; deletes nothing.
    int decRef() { return --m_refCount; }
    int refCount() { return m_refCount; }

    // Makes the send synchronous: a closed gate that opens when `count` deliveries have been
    // counted. Called once, before the first delivery.
    void setSynchronous(int count);
    // Both need a gate. The timed form returns true if the time ran out, false if the gate
    // opened.
    void wait();
    bool wait(unsigned long milliseconds);

    // Calls `dispatch` if `connection` is not null, then counts the delivery. No test of the
    // listener and no catch: `ConnectedPacket::deliver` is the guarded form.
    void deliver(Connection *connection);

private:
    friend class ConnectedPacket;

    // Counts one delivery and opens the gate for good with the last.
    VORT_NO_EXPORT void countDelivery();

    VORT::Gate *m_gate;
    VORT::AtomicCounter m_pending;

protected:
    // For a derived payload that needs a lock of its own; nothing here takes it.
    VORT::Mutex m_mutex;

private:
    VORT::AtomicCounter m_refCount;
};

// A counted handle on a payload. A moved-from packet holds nothing.
class VORT_EXPORT Packet {
public:
    // Takes over the payload's first reference.
    explicit Packet(Payload *payload) : m_payload(payload) {}
    Packet(const Packet &other) : m_payload(other.m_payload) { incRef(); }
    Packet(Packet &&other) noexcept : m_payload(other.m_payload) { other.m_payload = nullptr; }
    Packet &operator=(const Packet &other) {
        if (m_payload != other.m_payload) {
            decRef();
            m_payload = other.m_payload;
            incRef();
        }
        return *this;
    }
    ~Packet() { decRef(); }

    void setSynchronous(int count) { m_payload->setSynchronous(count); }
    void wait() { m_payload->wait(); }
    bool wait(unsigned long milliseconds) { return m_payload->wait(milliseconds); }
    void deliver(Connection *connection) { m_payload->deliver(connection); }

protected:
    Payload *m_payload;

private:
    friend class EmitterBase;

    void incRef() {
        if (m_payload) {
            m_payload->incRef();
        }
    }
    void decRef() {
        if (m_payload && m_payload->decRef() == 0) {
            delete m_payload;
            m_payload = nullptr;
        }
    }
};

// A packet bound to one connection: the unit of delivery and of queueing.
class VORT_EXPORT ConnectedPacket : public Packet {
public:
    // One more reference on the payload, then a use of the connection.
    ConnectedPacket(const Packet &packet, Connection *connection);
    ConnectedPacket(const ConnectedPacket &other);
    ConnectedPacket(ConnectedPacket &&other) noexcept
        : Packet(static_cast<Packet &&>(other)), m_connection(other.m_connection) {
        other.m_connection = nullptr;
    }
    ConnectedPacket &operator=(const ConnectedPacket &other);
    // Gives back the use of the connection, then the reference on the payload.
    ~ConnectedPacket();

    // If the listener is still there, calls it; then counts the delivery. A listener that throws
    // is not counted (see the header comment); a listener that has gone is.
    void deliver();

private:
    friend class EmitterBase;

    struct AdoptUse {};
    // A new reference on `payload`, and the use of `connection` that the caller holds.
    ConnectedPacket(Payload *payload, Connection *connection, AdoptUse);

    // `deliver` on a payload and a connection that the caller keeps alive.
    VORT_NO_EXPORT static void deliverGuarded(Payload *payload, Connection *connection);

    Connection *m_connection;
};

}  // namespace VTMS

#endif  // VORT_MESSAGING_PACKET_H
