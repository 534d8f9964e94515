// vort xml check FILE...: reads each file with the library's XML reader and prints its events,
// one a line under the file's name, or the parser's error with its line and column.
//
// A start element shows its qualified name, its namespace declarations and its attributes;
// texts are quoted, with line ends, tabs, quotes and backslashes escaped. Runs of white space
// between elements are not shown. Every file is read, whatever happened to the one before; the
// status is 1 if any could not be opened or is not well formed.
#include "Subcommand.h"
#include <vort/err/Exception.h>
#include <vort/xml/XmlReader.h>

#include <cstdio>
#include <string>
#include <vector>

namespace vort_tool {
namespace {

const char *const kName = "xml";
const char *const kUsage = "check FILE...";

char const *const kEventNames[] = {
    "NoToken",      "Invalid",         "StartDocument",        "EndDocument",
    "StartElement", "EndElement",      "Characters",           "Comment",
    "DTD",          "EntityReference", "ProcessingInstruction"};

std::string quoted(std::string const &text) {
    std::string result = "\"";
    for (char c : text) {
        switch (c) {
            case '\n':
                result += "\\n";
                break;
            case '\r':
                result += "\\r";
                break;
            case '\t':
                result += "\\t";
                break;
            case '"':
                result += "\\\"";
                break;
            case '\\':
                result += "\\\\";
                break;
            default:
                result += c;
        }
    }
    return result + '"';
}

std::string describe(VORT::XmlReader const &reader, VORT::XmlEventTypes::Type event) {
    std::string line = kEventNames[event];
    switch (event) {
        case VORT::XmlEventTypes::StartElement:
            line += ' ' + reader.getName().toString();
            for (int i = 0; i < reader.getNamespaceCount(); ++i) {
                const std::string prefix = reader.getNamespacePrefix(i).toString();
                line += std::string(" xmlns") + (prefix.empty() ? "" : ":" + prefix) + '=' +
                        quoted(reader.getNamespaceURI(i).toString());
            }
            for (int i = 0; i < reader.getAttributeCount(); ++i) {
                line += ' ' + reader.getAttributeName(i).toString() + '=' +
                        quoted(reader.getAttributeValue(i).toString());
            }
            break;
        case VORT::XmlEventTypes::EndElement:
            line += ' ' + reader.getName().toString();
            break;
        case VORT::XmlEventTypes::Characters:
        case VORT::XmlEventTypes::Comment:
        case VORT::XmlEventTypes::DTD:
            line += ' ' + quoted(reader.getText().toString());
            break;
        case VORT::XmlEventTypes::EntityReference:
            line += ' ' + reader.getLocalName().toString();
            break;
        case VORT::XmlEventTypes::ProcessingInstruction:
            line +=
                ' ' + reader.getPITarget().toString() + ' ' + quoted(reader.getPIData().toString());
            break;
        default:
            break;
    }
    return line;
}

// True when the file is well formed.
bool check(std::string const &file) {
    try {
        VORT::XmlReader reader(file.c_str());
        std::printf("%s\n", file.c_str());
        while (reader.hasNext()) {
            const VORT::XmlEventTypes::Type event = reader.next();
            if (event == VORT::XmlEventTypes::Invalid) {
                break;
            }
            if (event == VORT::XmlEventTypes::Characters && reader.isWhiteSpace()) {
                continue;
            }
            std::printf("  %s\n", describe(reader, event).c_str());
        }
        if (reader.hasError()) {
            const VORT::Location where = reader.getLocation();
            std::fflush(stdout);
            failure(kName, file + ":" + std::to_string(where.getLineNumber()) + ":" +
                               std::to_string(where.getColumnNumber()) + ": " + reader.error());
            return false;
        }
        return true;
    } catch (VORT::Exception const &e) {
        failure(kName, e.what());
        return false;
    }
}

int run(std::vector<std::string> const &arguments) {
    if (arguments.empty() || arguments[0] != "check") {
        return usageError(kName, (arguments.empty() ? std::string("missing check")
                                                    : "unknown mode '" + arguments[0] + "'") +
                                     "\nusage: vort xml " + kUsage);
    }
    if (arguments.size() == 1) {
        return usageError(kName, std::string("no file to check\nusage: vort xml ") + kUsage);
    }
    bool good = true;
    for (size_t i = 1; i < arguments.size(); ++i) {
        good = check(arguments[i]) && good;
    }
    return good ? Success : Failure;
}

const Registration registration({kName, kUsage,
                                 "print each file's XML events, or its error with line and column",
                                 &run});

}  // namespace
}  // namespace vort_tool
