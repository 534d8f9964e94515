// The typed layer over `VTMS::EmitterBase`, for listeners that are member functions:
// `Emitter0<R>` to `Emitter4<R, A1, A2, A3, A4>`, with the matching `Payload0` to `Payload4`,
// `Connection0` to `Connection4` and `ConnectionImpl0` to `ConnectionImpl4`.
//
// Each named class is the variadic core below for one number of arguments: `Emitter1<void,
// int>` is `EmitterN<void, int>`, so either name may be used. `R` is the result type of the
// listener's member function; a send drops it.
//
//     class Document {
//     public:
//         VTMS::Emitter1<void, const std::string &> renamed;
//     };
//     class Title : public VTMS::Listener {
//     public:
//         ~Title() override { disconnect(); }
//         void onRenamed(const std::string &name);
//     };
//     document.renamed.connect(&title, &Title::onRenamed);        // called by the sender
//     document.renamed.connect(&title, &Title::onRenamed, ui);    // queued to `ui`
//     document.renamed.send("Untitled");
//
// Arguments are stored in the payload by value (decayed: `const std::string &` is stored as a
// `std::string`), and listeners get them by const reference, since several threads may deliver
// one payload at once. An argument that is a pointer must stay valid until the last delivery.
//
// Thread safety and ownership: as for the classes of <vort/messaging/Connection.h>. A connect
// returns nothing; the connection is reached afterwards only through its two ends. Connecting
// one pair twice makes two connections, and the listener is then called twice.
#ifndef VORT_MESSAGING_EMITTER_H
#define VORT_MESSAGING_EMITTER_H

#include <vort/messaging/Connection.h>
#include <vort/messaging/Packet.h>

#include <tuple>
#include <type_traits>

namespace VTMS {

// How a stored argument of declared type `A` reaches a listener.
template <typename A>
using PassedArg = const typename std::decay<A>::type &;

// A connection that can call its listener with arguments `A...`.
template <typename R, typename... A>
class ConnectionN : public Connection {
public:
    virtual R invoke(PassedArg<A>... args) = 0;

protected:
    ConnectionN(Listener *listener, EmitterBase *emitter, Thread *thread)
        : Connection(listener, emitter, thread) {}
};

// A connection to the member function `member` of the object `listener`. The constructor
// enters it in both sets; the caller holds the global connection lock for writing, and the two
// sets own the result.
template <typename L, typename R, typename... A>
class ConnectionImplN : public ConnectionN<R, A...> {
public:
    typedef R (L::*Member)(A...);

    ConnectionImplN(L *listener, Member member, EmitterBase *emitter, Thread *thread)
        : ConnectionN<R, A...>(listener, emitter, thread), m_object(listener), m_member(member) {}

    R invoke(PassedArg<A>... args) override { return (m_object->*m_member)(args...); }

private:
    L *m_object;
    Member m_member;
};

// The arguments of one send, for connections of type `ConnectionN<R, A...>`.
template <typename R, typename... A>
class PayloadN : public Payload {
public:
    template <typename... U>
    explicit PayloadN(U &&...args) : m_args(static_cast<U &&>(args)...) {}

    // A counted copy of `local`, which must be a `PayloadN` of this type.
    static Payload *copyToHeap(const Payload &local) {
        return new PayloadN(CopyOf(), static_cast<const PayloadN &>(local));
    }

    void dispatch(Connection *connection) override {
        auto *typed = static_cast<ConnectionN<R, A...> *>(connection);
        std::apply([typed](const auto &...args) { typed->invoke(args...); }, m_args);
    }

private:
    struct CopyOf {};
    PayloadN(CopyOf, const PayloadN &other) : m_args(other.m_args) {}

    std::tuple<typename std::decay<A>::type...> m_args;
};

// An emitter whose listeners take arguments `A...`.
template <typename R, typename... A>
class EmitterN : public EmitterBase {
public:
    explicit EmitterN(SendMode defaultMode = DirectOrQueue) : EmitterBase(defaultMode) {}
    // A copy has no connections and the default mode of the original.
    EmitterN(const EmitterN &other) : EmitterBase(other) {}
    EmitterN &operator=(const EmitterN &other) {
        EmitterBase::operator=(other);
        return *this;
    }
    ~EmitterN() = default;

    // Connects `member` of `listener`, to be called on `thread` (null: on the sending thread).
    // `M` is the class that declares the member, `listener`'s own or a base of it, and derives
    // from `Listener`.
    template <typename L, typename M>
    void connect(L *listener, R (M::*member)(A...), Thread *thread = nullptr) {
        VORT::WriteLocker lock(GetGlobalConnectionLock());
        new ConnectionImplN<M, R, A...>(listener, member, this, thread);
    }

    // Sends in the default mode, or in `mode`; see `EmitterBase::sendPacket`.
    void send(PassedArg<A>... args) { sendWith(UseDefaultMode, args...); }
    void sendWith(SendMode mode, PassedArg<A>... args) {
        if (!mayHaveConnections()) {
            return;
        }
        PayloadN<R, A...> local(args...);
        sendLocalPayload(local, &PayloadN<R, A...>::copyToHeap, mode);
    }

    using EmitterBase::setDefaultMode;
};

template <typename R>
using Connection0 = ConnectionN<R>;
template <typename R, typename A1>
using Connection1 = ConnectionN<R, A1>;
template <typename R, typename A1, typename A2>
using Connection2 = ConnectionN<R, A1, A2>;
template <typename R, typename A1, typename A2, typename A3>
using Connection3 = ConnectionN<R, A1, A2, A3>;
template <typename R, typename A1, typename A2, typename A3, typename A4>
using Connection4 = ConnectionN<R, A1, A2, A3, A4>;

template <typename L, typename R>
using ConnectionImpl0 = ConnectionImplN<L, R>;
template <typename L, typename R, typename A1>
using ConnectionImpl1 = ConnectionImplN<L, R, A1>;
template <typename L, typename R, typename A1, typename A2>
using ConnectionImpl2 = ConnectionImplN<L, R, A1, A2>;
template <typename L, typename R, typename A1, typename A2, typename A3>
using ConnectionImpl3 = ConnectionImplN<L, R, A1, A2, A3>;
template <typename L, typename R, typename A1, typename A2, typename A3, typename A4>
using ConnectionImpl4 = ConnectionImplN<L, R, A1, A2, A3, A4>;

template <typename R>
using Payload0 = PayloadN<R>;
template <typename R, typename A1>
using Payload1 = PayloadN<R, A1>;
template <typename R, typename A1, typename A2>
using Payload2 = PayloadN<R, A1, A2>;
template <typename R, typename A1, typename A2, typename A3>
using Payload3 = PayloadN<R, A1, A2, A3>;
template <typename R, typename A1, typename A2, typename A3, typename A4>
using Payload4 = PayloadN<R, A1, A2, A3, A4>;

template <typename R>
using Emitter0 = EmitterN<R>;
template <typename R, typename A1>
using Emitter1 = EmitterN<R, A1>;
template <typename R, typename A1, typename A2>
using Emitter2 = EmitterN<R, A1, A2>;
template <typename R, typename A1, typename A2, typename A3>
using Emitter3 = EmitterN<R, A1, A2, A3>;
template <typename R, typename A1, typename A2, typename A3, typename A4>
using Emitter4 = EmitterN<R, A1, A2, A3, A4>;

}  // namespace VTMS

#endif  // VORT_MESSAGING_EMITTER_H
