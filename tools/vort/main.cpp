#include "Subcommand.h"
#include <vort/bones/Library.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace vort_tool {
namespace {

std::map<std::string, Subcommand> &subcommands() {
    static std::map<std::string, Subcommand> table;
    return table;
}

void printHelp(std::FILE *out) {
    std::fputs(
        "usage: vort <command> [arguments]\n"
        "       vort --help | --version\n\n"
        "The command-line face of VortUtil, the foundation library of the Vort tools.\n\n"
        "commands:\n",
        out);
    for (auto const &entry : subcommands()) {
        std::fprintf(out, "  %s %s\n      %s\n", entry.second.name, entry.second.usage,
                     entry.second.summary);
    }
}

}  // namespace

Registration::Registration(Subcommand const &subcommand) {
    subcommands()[subcommand.name] = subcommand;
}

int usageError(const char *name, std::string const &text) {
    std::fprintf(stderr, "vort %s: %s\n", name, text.c_str());
    return UsageError;
}

int failure(const char *name, std::string const &text) {
    std::fprintf(stderr, "vort %s: %s\n", name, text.c_str());
    return Failure;
}

}  // namespace vort_tool

int main(int argc, char **argv) {
    using namespace vort_tool;
    if (argc < 2) {
        printHelp(stderr);
        return UsageError;
    }
    const std::string command = argv[1];
    if (command == "--help" || command == "-h" || command == "help") {
        printHelp(stdout);
        return Success;
    }
    if (command == "--version") {
        std::printf("vort %s\n", VORT_UTIL_VERSION);
        return Success;
    }
    const auto found = subcommands().find(command);
    if (found == subcommands().end()) {
        std::fprintf(stderr, "vort: unknown command '%s' (try 'vort --help')\n", command.c_str());
        return UsageError;
    }
    initialize_vort_util();
    return found->second.run(std::vector<std::string>(argv + 2, argv + argc));
}
