#include "support/PlatformHooks.h"

#include <hsl/hsl.h>

#include <atomic>
#include <mutex>

namespace vort_test {
namespace {

struct Captured {
    std::mutex lock;
    std::vector<AssertionReport> assertions;
    std::string debug;
    std::string console;
    std::atomic<double> clock{0.0};
};

Captured &captured() {
    static Captured instance;
    return instance;
}

void recordAssertion(const char *expression, const char *file, int line, const char *message) {
    Captured &c = captured();
    std::lock_guard<std::mutex> guard(c.lock);
    c.assertions.push_back({expression ? expression : "", file ? file : "", line,
                            message != nullptr, message ? message : ""});
}

void recordDebug(const char *text) {
    Captured &c = captured();
    std::lock_guard<std::mutex> guard(c.lock);
    c.debug += text;
}

void recordConsole(const char *text) {
    Captured &c = captured();
    std::lock_guard<std::mutex> guard(c.lock);
    c.console += text;
}

double readClock() {
    return captured().clock.load();
}

}  // namespace

PlatformCapture::PlatformCapture() {
    clear();
    hslSetAssertHandler(&recordAssertion);
    hslSetDebugOutputSink(&recordDebug);
    hslSetConsoleSink(&recordConsole);
    hslSetRealtimeSource(&readClock);
    hslSetLanguage("en");
}

PlatformCapture::~PlatformCapture() {
    hslSetAssertHandler(nullptr);
    hslSetDebugOutputSink(nullptr);
    hslSetConsoleSink(nullptr);
    hslSetRealtimeSource(nullptr);
    hslSetLanguage("en");
}

std::vector<AssertionReport> PlatformCapture::assertions() const {
    std::lock_guard<std::mutex> guard(captured().lock);
    return captured().assertions;
}

std::string PlatformCapture::debugOutput() const {
    std::lock_guard<std::mutex> guard(captured().lock);
    return captured().debug;
}

std::string PlatformCapture::consoleOutput() const {
    std::lock_guard<std::mutex> guard(captured().lock);
    return captured().console;
}

void PlatformCapture::clear() {
    Captured &c = captured();
    std::lock_guard<std::mutex> guard(c.lock);
    c.assertions.clear();
    c.debug.clear();
    c.console.clear();
    c.clock.store(0.0);
}

void PlatformCapture::setClock(double seconds) {
    captured().clock.store(seconds);
}

}  // namespace vort_test
