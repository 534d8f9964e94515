// vort demo messaging: runs the Qt host kit's messaging demo (the flow of the example host in
// examples/qthost) and prints what was delivered, when, and on which thread.
#include "MessagingDemo.h"
#include "Subcommand.h"

#include <QtCore/QCoreApplication>

#include <cstdio>

namespace vort_tool {
namespace {

const char *const kName = "demo";

int run(std::vector<std::string> const &arguments) {
    if (arguments.size() != 1) {
        return usageError(kName, "usage: vort demo messaging");
    }
    if (arguments[0] != "messaging") {
        return usageError(kName, "unknown demo '" + arguments[0] + "' (there is: messaging)");
    }
    int argc = 1;
    char name[] = "vort";
    char *argv[] = {name, nullptr};
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("vort"));
    return vort_demo::runMessagingDemo(stdout) == 0 ? Success : Failure;
}

const Registration registration({kName, "messaging",
                                 "run two Qt threads through queued, blocking and throttled "
                                 "messages and show each delivery",
                                 &run});

}  // namespace
}  // namespace vort_tool
