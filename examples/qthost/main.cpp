// A Qt host built on the VortUtil Qt host kit: a QCoreApplication with a worker thread, queued
// and blocking messages between the two, a throttled callback fed by a burst of triggers, and a
// clean shutdown. `vort demo messaging` runs the same flow.
#include "MessagingDemo.h"

#include <QtCore/QCoreApplication>

#include <cstdio>

int main(int argc, char **argv) {
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("vort-qthost-example"));
    return vort_demo::runMessagingDemo(stdout);
}
