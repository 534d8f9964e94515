#include <vort/bones/UUID.h>

#include <QByteArray>
#include <QUuid>

namespace VORT {

std::string UUID::createUuidAsString() {
    return QUuid::createUuid().toByteArray(QUuid::WithoutBraces).toStdString();
}

}  // namespace VORT
