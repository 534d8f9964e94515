// Feeds arbitrary text to the gradient's text reader, through `GradientType` and through
// `Gradient::fromString` on a gradient that already holds one. Beyond not crashing, leaking or
// hanging (a stop count is only a bound): a failed read is worded exactly; a gradient that read
// writes a text that reads without failure, whose own text reads back to itself, and its
// byte stream reads back into the same bytes; and the console line carries the text.
//
// The test suite compiles this file too, under another entry name, to replay the kept corpus.
#include "FuzzCheck.h"
#include <hsl/hsl.h>
#include <vort/err/ErrorHolder.h>
#include <vort/types/Gradient.h>
#include <vort/types/GradientType.h>

#include <QtCore/QtGlobal>

#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#ifndef VORT_FUZZ_ENTRY
#define VORT_FUZZ_ENTRY LLVMFuzzerTestOneInput
#endif

extern "C" int VORT_FUZZ_ENTRY(const std::uint8_t *data, std::size_t size);

namespace {

using vort_fuzz::check;

std::string g_console;

void captureConsole(const char *text) {
    g_console += text;
}

// Qt's complaints about out-of-range stops and colours are expected here.
void quiet(QtMsgType, QMessageLogContext const &, QString const &) {}

std::vector<unsigned char> bytesOf(VORT::Gradient const &gradient) {
    std::vector<unsigned char> bytes(static_cast<std::size_t>(gradient.getByteStreamSize()));
    gradient.toByteStream(bytes.data());
    return bytes;
}

VORT::Gradient readBack(std::string const &text) {
    std::istringstream in(text);
    VORT::Gradient gradient;
    VORT::Gradient::streamFromFile(in, gradient);
    check(!in.fail(), "a written text reads back");
    return gradient;
}

void checkReadGradient(VORT::Gradient const &gradient) {
    // Six significant digits can give two stops one position, and a gradient keeps one stop per
    // position: the first text may lose stops, the second has nothing left to merge.
    const VORT::Gradient second = readBack(gradient.toString());
    check(second.getStopCount() <= gradient.getStopCount(), "reading adds no stops");
    const std::string text = second.toString();
    check(readBack(text).toString() == text, "a written text is stable once read");

    const std::vector<unsigned char> bytes = bytesOf(gradient);
    check(bytes.size() == static_cast<std::size_t>(gradient.getByteStreamSize()),
          "the byte stream has its announced size");
    VORT::Gradient fromBytes;
    fromBytes.fromByteStream(bytes.data());
    check(bytesOf(fromBytes) == bytes, "the byte stream reads back");
    check(fromBytes.getStopCount() == gradient.getStopCount(), "the stops survive the bytes");
}

}  // namespace

extern "C" int VORT_FUZZ_ENTRY(const std::uint8_t *data, std::size_t size) {
    const QtMessageHandler previousHandler = qInstallMessageHandler(&quiet);
    const HslTextSink previousSink = hslSetConsoleSink(&captureConsole);
    const std::string text(reinterpret_cast<const char *>(data), size);

    const VORT::TypeInfo type = VORT::GradientType::Create();
    VORT::ErrorHolder error;
    const VORT::any value = type.convertFromString(text, error);
    if (error.hasError()) {
        check(value.empty(), "a failed read gives an empty value");
        check(error.what() == "Can't convert string '" + text + "' to Gradient",
              "the failure is worded exactly");
    } else {
        check(!value.empty(), "a good text gives a value");
        checkReadGradient(VORT::any_cast<VORT::Gradient>(value));
    }

    VORT::Gradient target;
    target.addColorStop(0.5, VORT::Color(1, 0, 0, 1));
    g_console.clear();
    target.fromString(text);
    check(g_console == "Someone sent: " + std::string(text.c_str()) + "\n",
          "the console line carries the text");
    checkReadGradient(target);

    hslSetConsoleSink(previousSink);
    qInstallMessageHandler(previousHandler);
    return 0;
}
