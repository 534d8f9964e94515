// vort prefs path|show|get SECTION KEY|set SECTION KEY VALUE|unset SECTION KEY
//            [--dir DIR] [--release R]
// works on the preference file through the library's own store: the file "nexlark.prf" in the
// directory that the Qt host kit names for the application "vort" (its configuration location),
// or in DIR. The store loads as a host does, so a file written by another release is migrated
// (and saved) on the first read; --release R claims release R instead of the tool's own version.
//
//   path    the file's path
//   show    every entry, in the file's own form without its header
//   get     the value of KEY in SECTION
//   set     stores VALUE and saves; a key or value that the file can't carry is refused
//   unset   removes KEY from SECTION and saves
//
// A missing file, section or key fails with a message; so does a file that can't be read or
// written.
#include "Subcommand.h"
#include <vort/preferences/VTPreferences.h>
#include <vort/qthost/ApplicationContext.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QFileInfo>

#include <cctype>
#include <cstdio>
#include <string>
#include <vector>

namespace vort_tool {
namespace {

const char *const kName = "prefs";
const char *const kUsage =
    "path|show|get SECTION KEY|set SECTION KEY VALUE|unset SECTION KEY [--dir DIR] [--release R]";

// The store's table and file name, reached as a subclass may.
struct Store : VTPreferences {
    using VTPreferences::getPrefFileName;
    using VTPreferences::m_dirty;
    using VTPreferences::m_prefMaps;
};

struct Options {
    std::vector<std::string> positional;
    std::string directory;
    bool hasDirectory = false;
    std::string release = VORT_UTIL_VERSION;
};

int usage(std::string const &text) {
    return usageError(kName, text + "\nusage: vort prefs " + kUsage);
}

bool parse(std::vector<std::string> const &arguments, Options &options, std::string &problem) {
    for (size_t i = 0; i < arguments.size(); ++i) {
        std::string const &argument = arguments[i];
        std::string *target = nullptr;
        std::string name = argument;
        if (argument == "--dir" || argument.rfind("--dir=", 0) == 0) {
            target = &options.directory;
            options.hasDirectory = true;
            name = "--dir";
        } else if (argument == "--release" || argument.rfind("--release=", 0) == 0) {
            target = &options.release;
            name = "--release";
        } else if (argument.size() > 1 && argument.rfind("--", 0) == 0) {
            problem = "unknown option '" + argument + "'";
            return false;
        } else {
            options.positional.push_back(argument);
            continue;
        }
        if (argument.size() > name.size()) {
            *target = argument.substr(name.size() + 1);
        } else if (i + 1 < arguments.size()) {
            *target = arguments[++i];
        } else {
            problem = name + " needs a value";
            return false;
        }
    }
    if (options.hasDirectory && options.directory.empty()) {
        problem = "--dir needs a directory";
        return false;
    }
    return true;
}

// What the file can carry; the store itself refuses nothing.
bool checkEntry(std::string const &section, std::string const &key, std::string const *value,
                std::string &problem) {
    if (section.empty() || section.find(']') != std::string::npos) {
        problem = "a section name must be neither empty nor hold ']'";
        return false;
    }
    if (key.empty() || key.find('=') != std::string::npos ||
        std::isspace(static_cast<unsigned char>(key[0])) || key[0] == '#' || key[0] == '[') {
        problem = "a key must not be empty, hold '=' or begin with a blank, '#' or '['";
        return false;
    }
    if (value != nullptr && (value->empty() || value->find('\n') != std::string::npos ||
                             std::isspace(static_cast<unsigned char>((*value)[0])))) {
        problem =
            "a value must not be empty, hold a line break or begin with a blank (to remove "
            "a key, use unset)";
        return false;
    }
    return true;
}

void show() {
    for (auto const &section : Store::m_prefMaps) {
        if (section.second.empty()) {
            continue;
        }
        std::printf("[%s]\n", section.first.c_str());
        for (auto const &entry : section.second) {
            std::printf("%s=%s\n", entry.first.c_str(), entry.second.c_str());
        }
        std::printf("\n");
    }
}

int act(Options const &options, std::string const &fileName) {
    std::vector<std::string> const &p = options.positional;
    std::string const &command = p[0];
    if (command == "path") {
        std::printf("%s\n", fileName.c_str());
        return Success;
    }

    // Loading first keeps the entries that a save would otherwise drop; a file that is there but
    // doesn't read must not be overwritten.
    const bool exists = QFileInfo::exists(QFile::decodeName(QByteArray::fromStdString(fileName)));
    const bool loaded = VTPreferences::loadPrefs();
    if (exists && !loaded) {
        return failure(kName, "cannot read '" + fileName + "'");
    }
    const bool writes = command == "set" || command == "unset";
    if (!loaded && !writes) {
        return failure(kName, "no preference file at '" + fileName + "'");
    }

    if (command == "show") {
        show();
        return Success;
    }
    if (command == "get") {
        std::string value;
        VTPreferences::getStringPref(p[1], p[2], &value, "");
        if (value.empty()) {
            return failure(kName, "no value for '" + p[2] + "' in [" + p[1] + "]");
        }
        std::printf("%s\n", value.c_str());
        return Success;
    }
    if (command == "set") {
        VTPreferences::setStringPref(p[1], p[2], p[3]);
    } else if (!VTPreferences::setStringPref(p[1], p[2], std::string())) {
        return failure(kName, "no value for '" + p[2] + "' in [" + p[1] + "]");
    }
    if (!VTPreferences::savePrefs() && Store::m_dirty) {
        return failure(kName, "cannot write '" + fileName + "'");
    }
    return Success;
}

int run(std::vector<std::string> const &arguments) {
    Options options;
    std::string problem;
    if (!parse(arguments, options, problem)) {
        return usage(problem);
    }
    std::vector<std::string> const &p = options.positional;
    struct Shape {
        const char *command;
        size_t count;
    };
    const Shape shapes[] = {{"path", 1}, {"show", 1}, {"get", 3}, {"set", 4}, {"unset", 3}};
    bool known = false;
    for (Shape const &shape : shapes) {
        if (!p.empty() && p[0] == shape.command) {
            known = true;
            if (p.size() != shape.count) {
                return usage("'" + p[0] + "' takes " + std::to_string(shape.count - 1) +
                             " argument(s)");
            }
        }
    }
    if (!known) {
        return usage(p.empty() ? std::string("missing command") : "unknown command '" + p[0] + "'");
    }
    if (p.size() >= 3 && !checkEntry(p[1], p[2], p.size() == 4 ? &p[3] : nullptr, problem)) {
        return usage(problem);
    }

    int argc = 1;
    char name[] = "vort";
    char *argv[] = {name, nullptr};
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("vort"));
    QCoreApplication::setApplicationVersion(QString::fromStdString(options.release));
    VTServices::VTService<VTServices::ApplicationContext>::install(
        options.hasDirectory ? new VORT::QtHost::ApplicationContext(
                                   QFile::decodeName(QByteArray::fromStdString(options.directory)))
                             : new VORT::QtHost::ApplicationContext());
    const std::string fileName = Store::getPrefFileName();
    int result = fileName.empty() ? failure(kName, "the preferences directory can't be made")
                                  : act(options, fileName);
    VTServices::VTService<VTServices::ApplicationContext>::install(nullptr);
    return result;
}

const Registration registration({kName, kUsage,
                                 "read and change the preference file (default: the tool's "
                                 "configuration directory)",
                                 &run});

}  // namespace
}  // namespace vort_tool
