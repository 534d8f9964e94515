// Test support: captures what the platform layer reports (assertions, debugger and console
// output), drives its clock, and puts every hook and the language back afterwards.
#ifndef VORT_TESTS_SUPPORT_PLATFORMHOOKS_H
#define VORT_TESTS_SUPPORT_PLATFORMHOOKS_H

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vort_test {

struct AssertionReport {
    std::string expression;
    std::string file;
    int line = 0;
    bool hasMessage = false;
    std::string message;
};

// While one exists, assertions are recorded instead of aborting, output is captured and the
// clock reads `setClock`'s value. Only one may exist at a time.
class PlatformCapture {
public:
    PlatformCapture();
    ~PlatformCapture();
    PlatformCapture(const PlatformCapture &) = delete;
    PlatformCapture &operator=(const PlatformCapture &) = delete;

    std::vector<AssertionReport> assertions() const;
    std::string debugOutput() const;
    std::string consoleOutput() const;
    void clear();
    void setClock(double seconds);
};

// A fixture for tests that use the capture.
class PlatformHooksTest : public ::testing::Test {
protected:
    PlatformCapture platform;
};

}  // namespace vort_test

#endif  // VORT_TESTS_SUPPORT_PLATFORMHOOKS_H
