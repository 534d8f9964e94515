#include "support/PlatformHooks.h"

#include <hsl/hsl.h>

#include <atomic>
#include <mutex>

namespace vort_test {
namespace {

struct Captured {
    std::mutex lock;
    std::vector<AssertionReport> assertions;
    std::string debug, console;
    std::atomic<double> clock{0.0};
} g_captured;

// A copy of one of the captured records, taken under the lock.
template <typename T>
T read(T Captured::*member) {
    std::lock_guard<std::mutex> guard(g_captured.lock);
    return g_captured.*member;
}

template <std::string Captured::*member>
void record(const char *text) {
    std::lock_guard<std::mutex> guard(g_captured.lock);
    g_captured.*member += text;
}

void recordAssertion(const char *expression, const char *file, int line, const char *message) {
    std::lock_guard<std::mutex> guard(g_captured.lock);
    g_captured.assertions.push_back({expression ? expression : "", file ? file : "", line,
                                     message != nullptr, message ? message : ""});
}

void install(HslAssertHandler onAssert, HslTextSink debug, HslTextSink console, HslClock clock) {
    hslSetAssertHandler(onAssert);
    hslSetDebugOutputSink(debug);
    hslSetConsoleSink(console);
    hslSetRealtimeSource(clock);
    hslSetLanguage("en");
}

}  // namespace

PlatformCapture::PlatformCapture() {
    clear();
    install(&recordAssertion, &record<&Captured::debug>, &record<&Captured::console>,
            [] { return g_captured.clock.load(); });
}

PlatformCapture::~PlatformCapture() {
    install(nullptr, nullptr, nullptr, nullptr);
}

std::vector<AssertionReport> PlatformCapture::assertions() const {
    return read(&Captured::assertions);
}
std::string PlatformCapture::debugOutput() const {
    return read(&Captured::debug);
}
std::string PlatformCapture::consoleOutput() const {
    return read(&Captured::console);
}

void PlatformCapture::clear() {
    std::lock_guard<std::mutex> guard(g_captured.lock);
    g_captured.assertions.clear();
    g_captured.debug = g_captured.console = std::string();
    g_captured.clock = 0.0;
}

void PlatformCapture::setClock(double seconds) {
    g_captured.clock.store(seconds);
}

}  // namespace vort_test
