// vort message CODE [ARG...] [--lang en|ja]: prints a catalogue message with its arguments put
// in, formatted the way the library formats a raised error.
#include "Subcommand.h"
#include <vort/bones/Library.h>
#include <vort/err/ZQFErrorDescription.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iconv.h>
#include <memory>

namespace vort_tool {
namespace {

const char *const kName = "message";

// Accepts 0x-prefixed hexadecimal, decimal, or a symbolic id such as "VT_PackageNotFound".
bool findMessage(std::string const &text, const hsl_message_table &table, uint32_t &index) {
    for (uint32_t i = 0; i < table.count; ++i) {
        if (text == table.ids[i]) {
            index = i;
            return true;
        }
    }
    if (text.empty() || text[0] == '-') {
        return false;
    }
    errno = 0;
    char *end = nullptr;
    const unsigned long long value = std::strtoull(text.c_str(), &end, 0);
    if (errno != 0 || end == nullptr || *end != '\0') {
        return false;
    }
    for (uint32_t i = 0; i < table.count; ++i) {
        if (value == table.codes[i]) {
            index = i;
            return true;
        }
    }
    return false;
}

int countArguments(const char *english) {
    int count = 0;
    for (const char *p = std::strstr(english, "%s"); p != nullptr; p = std::strstr(p + 2, "%s")) {
        ++count;
    }
    return count;
}

// The Japanese texts are Shift-JIS bytes; a terminal wants UTF-8.
bool shiftJisToUtf8(std::string const &in, std::string &out) {
    iconv_t converter = iconv_open("UTF-8", "SHIFT_JIS");
    if (converter == reinterpret_cast<iconv_t>(-1)) {
        return false;
    }
    std::unique_ptr<void, int (*)(iconv_t)> guard(converter, &iconv_close);
    std::string input = in;
    out.assign(in.size() * 3 + 1, '\0');
    char *source = input.data();
    size_t sourceLeft = input.size();
    char *target = out.data();
    size_t targetLeft = out.size();
    if (iconv(converter, &source, &sourceLeft, &target, &targetLeft) == static_cast<size_t>(-1)) {
        return false;
    }
    out.resize(out.size() - targetLeft);
    return true;
}

VORT::ZQFErrorDescription describe(unsigned long code, std::vector<std::string> const &a) {
    const VORT::CodeLocation where(".\\tools\\vort\\MessageCommand", 82);
    switch (a.size()) {
        case 0:
            return VORT::ZQFErrorDescription(where, code);
        case 1:
            return VORT::ZQFErrorDescription(where, code, a[0]);
        case 2:
            return VORT::ZQFErrorDescription(where, code, a[0], a[1]);
        case 3:
            return VORT::ZQFErrorDescription(where, code, a[0], a[1], a[2]);
        default:
            return VORT::ZQFErrorDescription(where, code, a[0], a[1], a[2], a[3]);
    }
}

int run(std::vector<std::string> const &arguments) {
    std::string language = "en";
    std::vector<std::string> positional;
    for (size_t i = 0; i < arguments.size(); ++i) {
        std::string const &argument = arguments[i];
        if (argument == "--lang") {
            if (i + 1 == arguments.size()) {
                return usageError(kName, "--lang needs a language: en or ja");
            }
            language = arguments[++i];
        } else if (argument.rfind("--lang=", 0) == 0) {
            language = argument.substr(7);
        } else {
            positional.push_back(argument);
        }
    }
    if (language != "en" && language != "ja") {
        return usageError(kName, "unknown language '" + language + "' (en or ja)");
    }
    if (positional.empty()) {
        return usageError(kName, "usage: vort message CODE [ARG...] [--lang en|ja]");
    }

    const hsl_message_table &table = VORT::primaryMessageTable();
    uint32_t index = 0;
    if (!findMessage(positional[0], table, index)) {
        return usageError(kName, "unknown message code '" + positional[0] +
                                     "' (codes run from 0x5A0001 to 0x5A0009)");
    }
    const std::vector<std::string> values(positional.begin() + 1, positional.end());
    const int wanted = countArguments(table.texts[index]);
    if (static_cast<int>(values.size()) != wanted) {
        return usageError(kName, std::string(table.ids[index]) + " takes " +
                                     std::to_string(wanted) + " argument(s), got " +
                                     std::to_string(values.size()));
    }

    hslSetLanguage(language.c_str());
    std::string text = describe(table.codes[index], values).what();
    if (language == "ja") {
        std::string converted;
        if (!shiftJisToUtf8(text, converted)) {
            return failure(kName, "cannot convert the Japanese text to UTF-8");
        }
        text = converted;
    }
    std::printf("%s\n", text.c_str());
    return Success;
}

const Registration registration({kName, "CODE [ARG...] [--lang en|ja]",
                                 "print a catalogue message (code in hex, decimal or as its id)",
                                 &run});

}  // namespace
}  // namespace vort_tool
