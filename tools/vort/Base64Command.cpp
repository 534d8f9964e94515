// vort base64 encode|decode [FILE] [-o OUT]: the library's Base64, on a file or on standard
// input ("-" or no FILE), to standard output or OUT.
//
// encode writes one line of Base64 with no breaks inside it. decode takes the whole input as one
// Base64 text once the whitespace around it is trimmed; whitespace inside it, like any other
// character outside the alphabet, fails with the library's own message ('=' is skipped wherever
// it stands).
#include "Subcommand.h"
#include "ToolIO.h"
#include <vort/bones/ByteArray.h>
#include <vort/err/ErrorHolder.h>

#include <cstring>
#include <string>

namespace vort_tool {
namespace {

const char *const kName = "base64";
const char *const kUsage = "encode|decode [FILE] [-o OUT]";

int usage(std::string const &text) {
    return usageError(kName, text + "\nusage: vort base64 " + kUsage);
}

bool isBlank(unsigned char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

int run(std::vector<std::string> const &arguments) {
    std::string mode;
    std::string input;
    std::string output = "-";
    bool haveInput = false;
    for (size_t i = 0; i < arguments.size(); ++i) {
        std::string const &argument = arguments[i];
        if (argument == "-o" || argument == "--output") {
            if (i + 1 == arguments.size()) {
                return usage(argument + " needs a file");
            }
            output = arguments[++i];
        } else if (argument.rfind("--output=", 0) == 0) {
            output = argument.substr(9);
        } else if (argument != "-" && argument.rfind("-", 0) == 0) {
            return usage("unknown option '" + argument + "'");
        } else if (mode.empty()) {
            mode = argument;
        } else if (!haveInput) {
            input = argument;
            haveInput = true;
        } else {
            return usage("unexpected argument '" + argument + "'");
        }
    }
    if (mode != "encode" && mode != "decode") {
        return usage(mode.empty() ? "missing encode or decode" : "unknown mode '" + mode + "'");
    }
    if (!haveInput) {
        input = "-";
    }

    VORT::ByteArray bytes;
    std::string problem;
    if (!readInput(input, bytes, problem)) {
        return failure(kName, problem);
    }

    VORT::ByteArray result;
    if (mode == "encode") {
        const std::string text = bytes.toBase64();
        // The library's string ends in a NUL of its own; the line is the text before it.
        result.append(text.c_str(), static_cast<unsigned int>(std::strlen(text.c_str())));
        result.append("\n", 1u);
    } else {
        unsigned int begin = 0;
        unsigned int end = bytes.size();
        while (begin < end && isBlank(bytes[begin])) {
            ++begin;
        }
        while (end > begin && isBlank(bytes[end - 1])) {
            --end;
        }
        const std::string text(reinterpret_cast<const char *>(bytes.data()) + begin, end - begin);
        VORT::ErrorHolder error;
        result = VORT::ByteArray::fromBase64(text, error);
        if (error.hasError()) {
            return failure(kName, error.what());
        }
    }
    if (!writeOutput(output, result, problem)) {
        return failure(kName, problem);
    }
    return Success;
}

const Registration registration({kName, kUsage,
                                 "encode bytes as Base64 or decode them, as the library does",
                                 &run});

}  // namespace
}  // namespace vort_tool
