#include "Report_p.h"

namespace VORT {
namespace QtHost {

Q_LOGGING_CATEGORY(qtHostLog, "vort.qthost")

void reportMisuse(const char *where, const QString &what) {
    qCWarning(qtHostLog, "%s: %s", where, qUtf8Printable(what));
}

QString describeThread(const QThread *thread) {
    if (thread == nullptr) {
        return QStringLiteral("no thread");
    }
    const QString address = QStringLiteral("0x%1").arg(reinterpret_cast<quintptr>(thread), 0, 16);
    return thread->objectName().isEmpty()
               ? QStringLiteral("thread %1").arg(address)
               : QStringLiteral("thread '%1' (%2)").arg(thread->objectName(), address);
}

}  // namespace QtHost
}  // namespace VORT
