#include <vort/services/LumigraphClient.h>

namespace VTServices {

LumigraphSceneServer::LumigraphSceneServer()
    : m_syncSignal1(VTMS::BlockUntilDelivered),
      m_syncSignal2(VTMS::BlockUntilDelivered),
      m_syncSignal3(VTMS::BlockUntilDelivered),
      m_signal1(VTMS::DirectOrQueue),
      m_signal2(VTMS::DirectOrQueue),
      m_signal3(VTMS::DirectOrQueue),
      m_signal4(VTMS::DirectOrQueue) {}

LumigraphSceneServer::~LumigraphSceneServer() = default;

template class VTService<LumigraphClient>;

std::string LumigraphClient::serviceName() {
    return "LumigraphClient";
}

LumigraphClient::~LumigraphClient() = default;

bool LumigraphClient::isValidItem(std::int64_t) {
    return false;
}

LumigraphSceneServer *LumigraphClient::createSceneServer() {
    return nullptr;
}

void LumigraphClient::destroySceneServer(LumigraphSceneServer *) {}

void LumigraphClient::disposeCommand(lg::Command *&) {}

txArray_tag *LumigraphClient::getViewerInterfaceForServer(LumigraphSceneServer *) {
    return nullptr;
}

}  // namespace VTServices
