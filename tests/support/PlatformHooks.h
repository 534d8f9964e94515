// Test support: captures what the platform layer reports (assertions, debugger and console
// output), drives its clock, and puts every hook and the language back afterwards.
#ifndef VORT_TESTS_SUPPORT_PLATFORMHOOKS_H
#define VORT_TESTS_SUPPORT_PLATFORMHOOKS_H

#include <hsl/hsl.h>

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
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

namespace detail {

// What the hooks captured: one record for the process, read and written under its lock.
struct Captured {
    std::mutex lock;
    std::vector<AssertionReport> assertions;
    std::string debug, console;
    std::atomic<double> clock{0.0};
};
inline Captured captured;

template <std::string Captured::*member>
void record(const char *text) {
    std::lock_guard<std::mutex> guard(captured.lock);
    captured.*member += text;
}

inline void recordAssertion(const char *expression, const char *file, int line,
                            const char *message) {
    std::lock_guard<std::mutex> guard(captured.lock);
    captured.assertions.push_back({expression ? expression : "", file ? file : "", line,
                                   message != nullptr, message ? message : ""});
}

inline void install(HslAssertHandler onAssert, HslTextSink debug, HslTextSink console,
                    HslClock clock) {
    hslSetAssertHandler(onAssert);
    hslSetDebugOutputSink(debug);
    hslSetConsoleSink(console);
    hslSetRealtimeSource(clock);
    hslSetLanguage("en");
}

}  // namespace detail

// While one exists, assertions are recorded instead of aborting, output is captured and the
// clock reads `setClock`'s value. Only one may exist at a time.
class PlatformCapture {
public:
    PlatformCapture() {
        clear();
        detail::install(&detail::recordAssertion, &detail::record<&detail::Captured::debug>,
                        &detail::record<&detail::Captured::console>,
                        [] { return detail::captured.clock.load(); });
    }
    ~PlatformCapture() { detail::install(nullptr, nullptr, nullptr, nullptr); }
    PlatformCapture(const PlatformCapture &) = delete;
    PlatformCapture &operator=(const PlatformCapture &) = delete;

    std::vector<AssertionReport> assertions() const { return read(&detail::Captured::assertions); }
    std::string debugOutput() const { return read(&detail::Captured::debug); }
    std::string consoleOutput() const { return read(&detail::Captured::console); }
    void clear() {
        std::lock_guard<std::mutex> guard(detail::captured.lock);
        detail::captured.assertions.clear();
        detail::captured.debug = detail::captured.console = std::string();
        detail::captured.clock = 0.0;
    }
    void setClock(double seconds) { detail::captured.clock = seconds; }

private:
    // A copy of one of the captured records, taken under the lock.
    template <typename T>
    static T read(T detail::Captured::*member) {
        std::lock_guard<std::mutex> guard(detail::captured.lock);
        return detail::captured.*member;
    }
};

// A fixture for tests that use the capture.
class PlatformHooksTest : public ::testing::Test {
protected:
    PlatformCapture platform;
};

}  // namespace vort_test

#endif  // VORT_TESTS_SUPPORT_PLATFORMHOOKS_H
