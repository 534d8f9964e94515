// Not public API: how the Qt host kit reports misuse. Every report is a warning in the logging
// category "vort.qthost", so a host sees it through its Qt message handler and may filter it by
// category; nothing in the kit aborts.
#ifndef VORT_QTHOST_REPORT_P_H
#define VORT_QTHOST_REPORT_P_H

#include <QtCore/QLoggingCategory>
#include <QtCore/QString>
#include <QtCore/QThread>

namespace VORT {
namespace QtHost {

Q_DECLARE_LOGGING_CATEGORY(qtHostLog)

// "<where>: <what>", as one warning.
void reportMisuse(const char *where, const QString &what);

// A thread as the reports name it: its object name if it has one, and its address.
QString describeThread(const QThread *thread);

}  // namespace QtHost
}  // namespace VORT

#endif  // VORT_QTHOST_REPORT_P_H
