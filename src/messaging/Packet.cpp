#include <vort/messaging/Connection.h>
#include <vort/messaging/Gate.h>
#include <vort/messaging/HostExceptions.h>
#include <vort/messaging/Packet.h>

#include <exception>

namespace VTMS {

namespace {

// Runs `step` and swallows whatever it throws, in the host's order of interest: its user-facing
// exceptions (whose text is read, though there is nowhere to show it), its other exceptions,
// the standard ones (whose text is read likewise), anything else. False if something was
// thrown.
template <typename Step>
bool runGuarded(Step step) {
    try {
        step();
        return true;
    } catch (const Corvane::System::IUserException &exception) {
        static_cast<void>(exception.getText());
    } catch (const Corvane::System::IException &) {
    } catch (const std::exception &exception) {
        static_cast<void>(exception.what());
    } catch (...) {
    }
    return false;
}

}  // namespace

// ----- Payload -----------------------------------------------------------------------------

Payload::~Payload() {
    delete m_gate;
}

void Payload::setSynchronous(int count) {
    m_gate = new VORT::Gate(0);
    m_pending = count;
}

void Payload::wait() {
    m_gate->wait();
}

bool Payload::wait(unsigned long milliseconds) {
    return m_gate->wait(milliseconds);
}

void Payload::deliver(Connection *connection) {
    if (connection != nullptr) {
        dispatch(connection);
    }
    countDelivery();
}

void Payload::countDelivery() {
    if (m_gate != nullptr && --m_pending == 0) {
        m_gate->open();
    }
}

// ----- ConnectedPacket ---------------------------------------------------------------------

ConnectedPacket::ConnectedPacket(const Packet &packet, Connection *connection)
    : Packet(packet), m_connection(connection) {
    m_connection->incRef();
}

ConnectedPacket::ConnectedPacket(Payload *payload, Connection *connection, AdoptUse)
    : Packet(payload), m_connection(connection) {
    payload->incRef();
}

ConnectedPacket::ConnectedPacket(const ConnectedPacket &other)
    : Packet(other), m_connection(other.m_connection) {
    if (m_connection != nullptr) {
        m_connection->incRef();
    }
}

ConnectedPacket &ConnectedPacket::operator=(const ConnectedPacket &other) {
    if (m_connection != other.m_connection) {
        // The new use first, so that nothing `other` holds is ever at zero in between.
        if (other.m_connection != nullptr) {
            other.m_connection->incRef();
        }
        if (m_connection != nullptr) {
            m_connection->decRef();
        }
        m_connection = other.m_connection;
    }
    Packet::operator=(other);
    return *this;
}

ConnectedPacket::~ConnectedPacket() {
    if (m_connection != nullptr) {
        m_connection->decRef();
    }
}

void ConnectedPacket::deliver() {
    deliverGuarded(m_payload, m_connection);
}

// A listener that throws is not counted as delivered: the count is skipped on purpose, and a
// sender blocked on the packet stays blocked. A listener that has gone is counted.
void ConnectedPacket::deliverGuarded(Payload *payload, Connection *connection) {
    if (!runGuarded([payload, connection] {
            if (connection->isLive()) {
                payload->dispatch(connection);
            }
        })) {
        return;
    }
    runGuarded([payload] { payload->countDelivery(); });
}

}  // namespace VTMS
