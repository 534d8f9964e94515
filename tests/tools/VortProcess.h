// Runs the vort tool built beside the tests, feeding it standard input and collecting what it
// writes and how it ends.
#ifndef VORT_TESTS_TOOLS_VORTPROCESS_H
#define VORT_TESTS_TOOLS_VORTPROCESS_H

#include <string>
#include <vector>

namespace vort_test {

struct VortRun {
    bool finished = false;  // false if the tool crashed or hung
    int exitCode = -1;
    std::string out;
    std::string err;
};

VortRun runVort(std::vector<std::string> const &arguments, std::string const &input = {});

// One run of the tool and what it must give: the exit code and standard output exactly, and a
// standard error that is `err` exactly when `err` ends a line, and that contains it otherwise
// (Qt may warn there about the platform).
struct VortCase {
    std::vector<std::string> arguments;
    int exitCode;
    std::string out;
    std::string err;
    std::string input = {};
};

// Runs each case in turn, naming the arguments of any that disagrees.
void expectRuns(std::vector<VortCase> const &cases);

// A fresh empty folder for the test's files, removed with the object.
class ScratchFolder {
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder &) = delete;
    ScratchFolder &operator=(const ScratchFolder &) = delete;

    std::string path(std::string const &name) const;
    void write(std::string const &name, std::string const &bytes) const;
    std::string read(std::string const &name) const;

private:
    struct Private;
    Private *d;
};

}  // namespace vort_test

#endif  // VORT_TESTS_TOOLS_VORTPROCESS_H
