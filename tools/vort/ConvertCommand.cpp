// vort convert MIME-TYPE INPUT [--to FORM]: reads a value of the type that the MIME registry
// gives for MIME-TYPE (a name that it doesn't know is plain bytes) from its text form or its
// byte form, and writes it in the form asked for.
// vort convert --list: the built-in MIME names, in the registry's order, with their types.
//
//   INPUT is one of  --text T      the type's text form
//                    --hex H       the byte form in hexadecimal (either case, blanks and colons
//                    allowed)
//                    --base64 B    the byte form in Base64
//                    --file F      the byte form, read from file F ("-": standard input)
//   FORM is one of   text          the text form, with a line end
//                    hex           the byte form in lower-case hexadecimal, with a line end
//                    base64        the byte form in Base64, with a line end
//                    raw           the byte form as it is, on standard output
//                    file:PATH     the byte form as it is, into PATH
//   The default FORM is hex for text input and text for byte input.
//
// A value that doesn't read prints the library's own message and exits with Failure. The text
// form of a byte array is shown without the NUL that ends the library's string.
#include "Subcommand.h"
#include "ToolIO.h"
#include <vort/bones/ByteArray.h>
#include <vort/bones/MimeRegistry.h>
#include <vort/bones/StringID.h>
#include <vort/err/ErrorHolder.h>
#include <vort/types/BoolType.h>
#include <vort/types/ByteArrayType.h>
#include <vort/types/ColorType.h>
#include <vort/types/DoubleType.h>
#include <vort/types/FloatType.h>
#include <vort/types/IntType.h>
#include <vort/types/MD5HashType.h>
#include <vort/types/PathType.h>
#include <vort/types/PixmapType.h>
#include <vort/types/PointType.h>
#include <vort/types/StringType.h>
#include <vort/types/TransformType.h>
#include <vort/types/Type.h>
#include <vort/types/VectorType.h>

#include <cstdio>
#include <cstdlib>
#include <cxxabi.h>
#include <exception>
#include <string>

namespace vort_tool {
namespace {

const char *const kName = "convert";
const char *const kUsage =
    "MIME-TYPE (--text T | --hex H | --base64 B | --file F) [--to FORM] | --list";

enum class Input { None, Text, Hex, Base64, File };

struct Options {
    std::string mimeType;
    Input input = Input::None;
    std::string argument;
    std::string to;
};

int usage(std::string const &text) {
    return usageError(kName, text + "\nusage: vort convert " + kUsage +
                                 "\n       FORM: text | hex | base64 | raw | file:PATH");
}

// What `--list` calls a type: the first of these that it equals (class and parameters), or else
// the class of the values it carries.
std::string typeName(VORT::TypeInfo const &type) {
    using namespace VORT;
    struct Known {
        const char *name;
        TypeInfo type;
    };
    static const Known known[] = {
        {"BoolType", BoolType::Create()},
        {"ByteArrayType", ByteArrayType::Create()},
        {"ColorType with alpha", ColorType::Create(true)},
        {"ColorType without alpha", ColorType::Create(false)},
        {"DoubleType", DoubleType::Create()},
        {"FloatType", FloatType::Create()},
        {"IntType", IntType::Create()},
        {"MD5HashType", MD5HashType::Create()},
        {"PathType", PathType::Create()},
        {"PixmapType", PixmapType::Create()},
        {"IPointType", IPointType::Create()},
        {"DPointType", DPointType::Create()},
        {"IRectType", IRectType::Create()},
        {"DRectType", DRectType::Create()},
        {"StringType", StringType::Create()},
        {"TransformType", TransformType::Create()},
        {"SpecificVectorType<std::string> of StringType",
         SpecificVectorType<std::string>::Create(StringType::Create())},
    };
    for (Known const &entry : known) {
        if (type == entry.type) {
            return entry.name;
        }
    }
    const char *mangled = type.defaultConstruct().type().name();
    int status = 0;
    char *demangled = abi::__cxa_demangle(mangled, nullptr, nullptr, &status);
    const std::string carried = status == 0 ? demangled : mangled;
    std::free(demangled);
    return "a type of " + carried;
}

int list() {
    for (VORT::StringID const &name : VORT::MimeRegistry::defaultMimeTypes()) {
        const std::string text = VORT::toString(name);
        std::printf("%-24s %s\n", text.c_str(),
                    typeName(VORT::MimeRegistry::resolveMimeType(name)).c_str());
    }
    return Success;
}

// The width of the type's byte form: that of its default value, or, for a type whose default
// value isn't of its own class (FloatType's is a double), that of the value "0" reads as.
unsigned int byteWidth(VORT::TypeInfo const &type) {
    VORT::any sample = type.defaultConstruct();
    if (!type.isValid(sample)) {
        VORT::ErrorHolder ignored;
        sample = type.convertFromString("0", ignored);
    }
    return sample.empty() ? 0u : type.convertToByteArray(sample).size();
}

bool parse(std::vector<std::string> const &arguments, Options &options, std::string &problem) {
    struct Flag {
        const char *name;
        Input input;
    };
    const Flag inputs[] = {{"--text", Input::Text},
                           {"--hex", Input::Hex},
                           {"--base64", Input::Base64},
                           {"--file", Input::File}};
    for (size_t i = 0; i < arguments.size(); ++i) {
        std::string const &argument = arguments[i];
        std::string name = argument;
        std::string value;
        bool hasValue = false;
        const std::string::size_type equals = argument.find('=');
        if (argument.rfind("--", 0) == 0 && equals != std::string::npos) {
            name = argument.substr(0, equals);
            value = argument.substr(equals + 1);
            hasValue = true;
        }
        bool known = false;
        for (Flag const &flag : inputs) {
            if (name != flag.name) {
                continue;
            }
            known = true;
            if (options.input != Input::None) {
                problem = "give exactly one of --text, --hex, --base64 and --file";
                return false;
            }
            if (!hasValue) {
                if (i + 1 == arguments.size()) {
                    problem = name + " needs a value";
                    return false;
                }
                value = arguments[++i];
            }
            options.input = flag.input;
            options.argument = value;
        }
        if (known) {
            continue;
        }
        if (name == "--to") {
            if (!hasValue) {
                if (i + 1 == arguments.size()) {
                    problem = "--to needs a form";
                    return false;
                }
                value = arguments[++i];
            }
            options.to = value;
        } else if (argument.rfind("--", 0) == 0) {
            problem = "unknown option '" + argument + "'";
            return false;
        } else if (options.mimeType.empty()) {
            options.mimeType = argument;
        } else {
            problem = "unexpected argument '" + argument + "'";
            return false;
        }
    }
    if (options.mimeType.empty()) {
        problem = "missing MIME-TYPE";
        return false;
    }
    if (options.input == Input::None) {
        problem = "missing input: give one of --text, --hex, --base64 and --file";
        return false;
    }
    if (options.to.empty()) {
        options.to = options.input == Input::Text ? "hex" : "text";
    }
    if (options.to != "text" && options.to != "hex" && options.to != "base64" &&
        options.to != "raw" && (options.to.rfind("file:", 0) != 0 || options.to.size() == 5)) {
        problem = "unknown output form '" + options.to + "'";
        return false;
    }
    return true;
}

int run(std::vector<std::string> const &arguments) {
    if (arguments.size() == 1 && arguments[0] == "--list") {
        return list();
    }
    Options options;
    std::string problem;
    if (!parse(arguments, options, problem)) {
        return usage(problem);
    }

    const VORT::TypeInfo type =
        VORT::MimeRegistry::resolveMimeType(VORT::StringID(options.mimeType));
    VORT::ErrorHolder error;
    VORT::any value;
    if (options.input == Input::Text) {
        value = type.convertFromString(options.argument, error);
    } else {
        VORT::ByteArray bytes;
        switch (options.input) {
            case Input::Hex:
                if (!decodeHex(options.argument, bytes, problem)) {
                    return usage(problem);
                }
                break;
            case Input::Base64:
                bytes = VORT::ByteArray::fromBase64(options.argument, error);
                if (error.hasError()) {
                    return failure(kName, error.what());
                }
                break;
            default:
                if (!readInput(options.argument, bytes, problem)) {
                    return failure(kName, problem);
                }
                break;
        }
        // The fixed-width forms read their bytes with no length check, so a short input must
        // not reach them: a value's byte form is never shorter than the default value's.
        const unsigned int least = byteWidth(type);
        if (bytes.size() < least) {
            return failure(kName, options.mimeType + " needs at least " + std::to_string(least) +
                                      " byte(s), got " + std::to_string(bytes.size()));
        }
        value = type.convertFromByteArray(bytes, error);
    }
    if (error.hasError()) {
        return failure(kName, error.what());
    }

    if (options.to == "text") {
        std::string text = type.convertToString(value);
        if (VORT::ByteArrayType::Is(type) && !text.empty() && text.back() == '\0') {
            text.pop_back();
        }
        std::fwrite(text.data(), 1, text.size(), stdout);
        std::fputc('\n', stdout);
        return Success;
    }
    const VORT::ByteArray bytes = type.convertToByteArray(value);
    if (options.to == "hex") {
        std::printf("%s\n", encodeHex(bytes).c_str());
    } else if (options.to == "base64") {
        std::printf("%s\n", bytes.toBase64().c_str());
    } else if (options.to == "raw") {
        if (!writeOutput("-", bytes, problem)) {
            return failure(kName, problem);
        }
    } else if (!writeOutput(options.to.substr(5), bytes, problem)) {
        return failure(kName, problem);
    }
    return Success;
}

int guardedRun(std::vector<std::string> const &arguments) {
    try {
        return run(arguments);
    } catch (std::exception const &e) {
        return failure(kName, e.what());
    }
}

const Registration registration({kName, kUsage,
                                 "convert a value of a MIME type between its text and byte forms",
                                 &guardedRun});

}  // namespace
}  // namespace vort_tool
