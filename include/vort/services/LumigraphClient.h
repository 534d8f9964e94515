// `VTServices::LumigraphClient` and `VTServices::LumigraphSceneServer`: the host side of the
// Lumigraph scene interface, which this library only reserves.
//
// `LumigraphSceneServer` is the object that `createSceneServer` returns. It is abstract (only a
// derived class of the host can be made) and carries seven emitters, built in this order and
// destroyed in reverse: three whose sends by default block until delivered, so a signal on them
// has been handled when the send returns, then four that call or queue. Which signal each
// carries, and the server's operations, belong to the host's side of the interface and are added
// there.
//
// `lg::Command` and `txArray_tag` are host types that the library only passes by pointer. The
// plain client knows no items and makes no servers.
#ifndef VORT_SERVICES_LUMIGRAPHCLIENT_H
#define VORT_SERVICES_LUMIGRAPHCLIENT_H

#include <vort/messaging/Emitter.h>
#include <vort/services/VTService.h>
#include <vort/vort_export.h>

#include <cstdint>
#include <string>

struct txArray_tag;

namespace lg {
class Command;
}

namespace VTServices {

class VORT_EXPORT LumigraphSceneServer {
public:
    virtual ~LumigraphSceneServer();

    // Default mode `BlockUntilDelivered`.
    VTMS::Emitter0<void> m_syncSignal1;
    VTMS::Emitter0<void> m_syncSignal2;
    VTMS::Emitter0<void> m_syncSignal3;
    // Default mode `DirectOrQueue`.
    VTMS::Emitter0<void> m_signal1;
    VTMS::Emitter0<void> m_signal2;
    VTMS::Emitter0<void> m_signal3;
    VTMS::Emitter0<void> m_signal4;

protected:
    LumigraphSceneServer();
};

class VORT_EXPORT LumigraphClient : public VTService<LumigraphClient> {
public:
    static std::string serviceName();  // "LumigraphClient"

    ~LumigraphClient() override;

    // False in the plain class.
    virtual bool isValidItem(std::int64_t item);
    // Null in the plain class.
    virtual LumigraphSceneServer *createSceneServer();
    virtual void destroySceneServer(LumigraphSceneServer *server);
    // Takes the pointer by reference so that it can null it.
    virtual void disposeCommand(lg::Command *&command);
    virtual txArray_tag *getViewerInterfaceForServer(LumigraphSceneServer *server);
};

extern template class VTService<LumigraphClient>;

}  // namespace VTServices

#endif  // VORT_SERVICES_LUMIGRAPHCLIENT_H
