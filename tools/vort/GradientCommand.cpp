// vort gradient (--text T | --hex H) [--to text|hex] [-o PNG] [--size WxH]
// reads a gradient from its text form or from its byte stream in hexadecimal, and writes it in
// the other form (or the one asked for with --to), or paints a swatch of it into a PNG file:
// W by H pixels (256x64 unless given), filled with the gradient through QPainter. Logical
// coordinates are the swatch's pixels; object-bounding ones span it.
//
// A text that doesn't read prints the library's message; a byte stream must be exactly as long
// as its header says. A null gradient ("0,", or the single byte 00) converts, but has no swatch.
#include "Subcommand.h"
#include "ToolIO.h"
#include <vort/err/ErrorHolder.h>
#include <vort/types/Gradient.h>
#include <vort/types/GradientType.h>

#include <QtGui/QBrush>
#include <QtGui/QGradient>
#include <QtGui/QGuiApplication>
#include <QtGui/QImage>
#include <QtGui/QPainter>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace vort_tool {
namespace {

const char *const kName = "gradient";
const char *const kUsage = "(--text T | --hex H) [--to text|hex] [-o PNG] [--size WxH]";

struct Options {
    std::string text;
    bool hasText = false;
    std::string hex;
    bool hasHex = false;
    std::string to;
    std::string png;
    int width = 256;
    int height = 64;
};

int usage(std::string const &text) {
    return usageError(kName, text + "\nusage: vort gradient " + kUsage);
}

bool parseSize(std::string const &text, Options &options) {
    int width = 0;
    int height = 0;
    char x = 0;
    char extra = 0;
    if (std::sscanf(text.c_str(), "%d%c%d%c", &width, &x, &height, &extra) != 3 || x != 'x' ||
        width < 1 || height < 1 || width > 8192 || height > 8192) {
        return false;
    }
    options.width = width;
    options.height = height;
    return true;
}

bool parse(std::vector<std::string> const &arguments, Options &options, std::string &problem) {
    for (size_t i = 0; i < arguments.size(); ++i) {
        std::string name = arguments[i];
        std::string value;
        const std::string::size_type equals = name.find('=');
        const bool inlineValue = name.rfind("--", 0) == 0 && equals != std::string::npos;
        if (inlineValue) {
            value = name.substr(equals + 1);
            name = name.substr(0, equals);
        }
        if (name != "--text" && name != "--hex" && name != "--to" && name != "-o" &&
            name != "--output" && name != "--size") {
            problem = "unexpected argument '" + arguments[i] + "'";
            return false;
        }
        if (!inlineValue) {
            if (i + 1 == arguments.size()) {
                problem = name + " needs a value";
                return false;
            }
            value = arguments[++i];
        }
        if (name == "--text" || name == "--hex") {
            if (options.hasText || options.hasHex) {
                problem = "give exactly one of --text and --hex";
                return false;
            }
            (name == "--text" ? options.hasText : options.hasHex) = true;
            (name == "--text" ? options.text : options.hex) = value;
        } else if (name == "--to") {
            if (value != "text" && value != "hex") {
                problem = "unknown form '" + value + "' (text or hex)";
                return false;
            }
            options.to = value;
        } else if (name == "--size") {
            if (!parseSize(value, options)) {
                problem = "a size is WxH, each from 1 to 8192";
                return false;
            }
        } else {
            options.png = value;
        }
    }
    if (!options.hasText && !options.hasHex) {
        problem = "missing input: give one of --text and --hex";
        return false;
    }
    if (options.to.empty() && options.png.empty()) {
        options.to = options.hasText ? "hex" : "text";
    }
    return true;
}

// The byte stream's length as its header announces it; 0 when even the header is short.
std::uint64_t announcedLength(VORT::ByteArray const &bytes) {
    if (bytes.size() == 0) {
        return 0;
    }
    if (bytes[0u] == 0) {
        return 1;
    }
    if (bytes.size() < 9) {
        return 0;
    }
    auto word = [&bytes](unsigned int at) {
        std::uint32_t value = 0;
        for (unsigned int index = 0; index < 4; ++index) {
            value |= static_cast<std::uint32_t>(bytes[at + index]) << (8 * index);
        }
        return value;
    };
    const std::uint32_t type = word(1);
    const std::uint64_t geometry = type == 0 ? 4 : type == 1 ? 5 : type == 2 ? 3 : 0;
    return 17 + 12 * static_cast<std::uint64_t>(word(5)) + 8 * geometry;
}

bool paintSwatch(VORT::Gradient const &gradient, Options const &options, std::string &problem) {
    if (!gradient.isValid()) {
        problem = "a null gradient has no swatch";
        return false;
    }
    // Painting needs a GUI application; without a display it runs on the offscreen platform.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && qEnvironmentVariableIsEmpty("DISPLAY") &&
        qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    int argc = 1;
    char name[] = "vort";
    char *argv[] = {name, nullptr};
    QGuiApplication application(argc, argv);
    QImage image(options.width, options.height, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        painter.fillRect(image.rect(), QBrush(*gradient.getGradient()));
    }
    if (!image.save(QString::fromStdString(options.png), "PNG")) {
        problem = "cannot write '" + options.png + "'";
        return false;
    }
    return true;
}

int run(std::vector<std::string> const &arguments) {
    Options options;
    std::string problem;
    if (!parse(arguments, options, problem)) {
        return usage(problem);
    }

    VORT::Gradient gradient;
    if (options.hasText) {
        VORT::ErrorHolder error;
        const VORT::any value = VORT::GradientType::Create().convertFromString(options.text, error);
        if (error.hasError()) {
            return failure(kName, error.what());
        }
        gradient = VORT::any_cast<VORT::Gradient>(value);
    } else {
        VORT::ByteArray bytes;
        if (!decodeHex(options.hex, bytes, problem)) {
            return usage(problem);
        }
        // The reader trusts its buffer, so the length is settled here.
        const std::uint64_t length = announcedLength(bytes);
        if (length == 0 || length != bytes.size()) {
            return failure(kName, "not a gradient's byte stream: its header announces " +
                                      std::to_string(length) + " byte(s), got " +
                                      std::to_string(bytes.size()));
        }
        gradient.fromByteStream(bytes.data());
    }

    if (!options.png.empty() && !paintSwatch(gradient, options, problem)) {
        return failure(kName, problem);
    }
    if (options.to == "text") {
        std::printf("%s\n", gradient.toString().c_str());
    } else if (options.to == "hex") {
        std::vector<unsigned char> stream(static_cast<size_t>(gradient.getByteStreamSize()));
        gradient.toByteStream(stream.data());
        std::printf("%s\n", encodeHex(VORT::ByteArray(stream.data(),
                                                      static_cast<unsigned int>(stream.size())))
                                .c_str());
    }
    return Success;
}

const Registration registration({kName, kUsage,
                                 "convert a gradient between its text form and its byte stream "
                                 "in hex, or paint a PNG swatch of it",
                                 &run});

}  // namespace
}  // namespace vort_tool
