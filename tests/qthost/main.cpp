// The kit works inside a Qt application: one QCoreApplication for every test of this
// executable, on the main thread, which is also the thread that the kit's services belong to.
#include "QtHostTestSupport.h"
#include <vort/bones/Library.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QStandardPaths>

#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>

namespace vort_test {
namespace {

std::mutex g_warningsMutex;
QStringList *g_warnings = nullptr;
QtMessageHandler g_previous = nullptr;

void captureWarning(QtMsgType type, const QMessageLogContext &context, const QString &text) {
    if (type == QtWarningMsg && context.category != nullptr &&
        qstrcmp(context.category, "vort.qthost") == 0) {
        std::lock_guard<std::mutex> lock(g_warningsMutex);
        if (g_warnings != nullptr) {
            g_warnings->append(text);
            return;
        }
    }
    g_previous(type, context, text);
}

}  // namespace

QtHostWarnings::QtHostWarnings() {
    std::lock_guard<std::mutex> lock(g_warningsMutex);
    g_warnings = new QStringList;
}

QtHostWarnings::~QtHostWarnings() {
    std::lock_guard<std::mutex> lock(g_warningsMutex);
    delete g_warnings;
    g_warnings = nullptr;
}

QStringList QtHostWarnings::all() const {
    std::lock_guard<std::mutex> lock(g_warningsMutex);
    return *g_warnings;
}

::testing::AssertionResult QtHostWarnings::has(std::initializer_list<const char *> parts) const {
    const QStringList warnings = all();
    for (QString const &warning : warnings) {
        if (std::all_of(parts.begin(), parts.end(), [&warning](const char *part) {
                return warning.contains(QString::fromUtf8(part));
            })) {
            return ::testing::AssertionSuccess();
        }
    }
    return ::testing::AssertionFailure() << "no such warning among:\n"
                                         << warnings.join(QLatin1Char('\n')).toStdString();
}

}  // namespace vort_test

int main(int argc, char **argv) {
    QStandardPaths::setTestModeEnabled(true);
    QCoreApplication::setApplicationName(QStringLiteral("qthost_tests"));
    QCoreApplication::setApplicationVersion(QStringLiteral("1.2.3"));
    QCoreApplication application(argc, argv);
    initialize_vort_util();
    vort_test::g_previous = qInstallMessageHandler(&vort_test::captureWarning);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
