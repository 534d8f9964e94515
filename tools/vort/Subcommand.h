// The vort tool's subcommands. Each lives in a file of its own and registers itself at start-up
// with a file-scope `Registration`; `vort --help` lists them in name order.
#ifndef VORT_TOOLS_VORT_SUBCOMMAND_H
#define VORT_TOOLS_VORT_SUBCOMMAND_H

#include <string>
#include <vector>

namespace vort_tool {

// Exit codes shared by every subcommand.
enum ExitCode { Success = 0, Failure = 1, UsageError = 2 };

struct Subcommand {
    const char *name;
    const char *usage;    // arguments after the name, for the help text
    const char *summary;  // one line
    int (*run)(const std::vector<std::string> &arguments);
};

class Registration {
public:
    explicit Registration(Subcommand const &subcommand);
};

// Writes "vort <name>: <text>" to standard error and returns UsageError or Failure.
int usageError(const char *name, std::string const &text);
int failure(const char *name, std::string const &text);

}  // namespace vort_tool

#endif  // VORT_TOOLS_VORT_SUBCOMMAND_H
