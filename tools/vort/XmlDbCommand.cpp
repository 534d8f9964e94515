// vort xmldb dump FOLDER... [--key KEY]: registers the folders with a configuration database of
// its own, as an application would, and prints what the database serves: every long name in
// order, or with --key that one name and the elements below it.
//
// Each name gets a line with its text, then its data-list values, its list entries, its
// attributes (each with the value a reader gets: of merged attributes the later file's) and the
// files it came from, in the order of their merge. A name that several files define is marked
// combined.
#include "Subcommand.h"
#include <vort/err/Exception.h>
#include <vort/xml/DataNode.h>
#include <vort/xml/Database.h>

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace vort_tool {
namespace {

const char *const kName = "xmldb";
const char *const kUsage = "dump FOLDER... [--key KEY]";

using VORT::XMLDB::DataNode;

int usage(std::string const &text) {
    return usageError(kName, text + "\nusage: vort xmldb " + kUsage);
}

std::string quoted(std::string const &text) {
    std::string result = "\"";
    for (char c : text) {
        if (c == '\n') {
            result += "\\n";
        } else {
            if (c == '"' || c == '\\') {
                result += '\\';
            }
            result += c;
        }
    }
    return result + '"';
}

// A database of the tool's own, which lets it see the merged map and the files behind it.
class DumpDatabase : public VORT::XMLDB::Database {
public:
    std::vector<std::string> keys() const {
        std::vector<std::string> result;
        for (auto const &entry : mData) {
            result.push_back(entry.first);
        }
        return result;
    }

    // The files that define `key`, in the order of the merge.
    std::vector<std::string> sources(std::string const &key) const {
        std::vector<std::string> result;
        for (auto const &file : mFiles) {
            if (file.second->mNodes.count(key) != 0) {
                result.push_back(file.first);
            }
        }
        return result;
    }

    // The file whose tree holds `node` under its own long name.
    std::string sourceOf(DataNode const *node) const {
        for (auto const &file : mFiles) {
            const auto found = file.second->mNodes.find(node->getName());
            if (found != file.second->mNodes.end() && found->second.get() == node) {
                return file.first;
            }
        }
        return std::string();
    }
};

void printNode(DumpDatabase const &db, DataNode const &node, std::string const &indent,
               std::vector<std::string> const &from, bool withChildren) {
    const std::string text = node.getValue<std::string>();
    std::printf("%s%s%s\n", indent.c_str(), node.getName().c_str(),
                text.empty() ? "" : (" = " + quoted(text)).c_str());
    if (std::vector<std::string> const *values = node.getDataCSVAsStrings()) {
        std::string line;
        for (std::string const &value : *values) {
            line += (line.empty() ? "" : ", ") + quoted(value);
        }
        std::printf("%s  values: %s\n", indent.c_str(), line.c_str());
    }
    if (node.isNodeList()) {
        std::printf("%s  list: %zu entries\n", indent.c_str(), node.getNodeList()->size());
    }
    if (DataNode::NodeVector const *attributes = node.getAttributes()) {
        std::vector<std::string> shown;
        for (DataNode::NodePtr const &attribute : *attributes) {
            std::string const &name = attribute->getShortName();
            bool seen = false;
            for (std::string const &done : shown) {
                seen = seen || done == name;
            }
            if (!seen) {
                shown.push_back(name);
                std::printf("%s  @%s = %s\n", indent.c_str(), name.c_str(),
                            quoted(node.getAttribute<std::string>(name)).c_str());
            }
        }
    }
    if (!from.empty()) {
        std::string line;
        for (std::string const &file : from) {
            line += (line.empty() ? "" : ", ") + file;
        }
        std::printf("%s  from: %s%s\n", indent.c_str(), line.c_str(),
                    node.isCombinedNode() ? " (combined)" : "");
    }
    if (!withChildren) {
        return;
    }
    const std::string inner = indent + "    ";
    if (node.isNodeList()) {
        for (DataNode::NodePtr const &entry : *node.getNodeList()) {
            printNode(db, *entry, inner, {}, true);
        }
    }
    if (DataNode::NodeVector const *elements = node.getElements()) {
        for (DataNode::NodePtr const &element : *elements) {
            const std::string source = db.sourceOf(element.get());
            printNode(
                db, *element, inner,
                source.empty() ? std::vector<std::string>() : std::vector<std::string>{source},
                true);
        }
    }
}

int run(std::vector<std::string> const &arguments) {
    if (arguments.empty() || arguments[0] != "dump") {
        return usage(arguments.empty() ? "missing dump" : "unknown mode '" + arguments[0] + "'");
    }
    std::vector<std::string> folders;
    std::string key;
    bool haveKey = false;
    for (size_t i = 1; i < arguments.size(); ++i) {
        std::string const &argument = arguments[i];
        if (argument == "--key") {
            if (i + 1 == arguments.size()) {
                return usage("--key needs a long name");
            }
            key = arguments[++i];
            haveKey = true;
        } else if (argument.rfind("--key=", 0) == 0) {
            key = argument.substr(6);
            haveKey = true;
        } else if (argument.rfind("-", 0) == 0) {
            return usage("unknown option '" + argument + "'");
        } else {
            folders.push_back(argument);
        }
    }
    if (folders.empty()) {
        return usage("no folder to read");
    }
    for (std::string const &folder : folders) {
        if (!QFileInfo(QFile::decodeName(QByteArray::fromStdString(folder))).isDir()) {
            return failure(kName, "no such folder '" + folder + "'");
        }
    }

    // The items outlive the database, which lets go of them when it goes.
    std::vector<std::unique_ptr<VORT::XMLDB::PathItem>> items;
    for (std::string const &folder : folders) {
        items.push_back(std::make_unique<VORT::XMLDB::PathItem>(folder, nullptr, nullptr));
    }
    DumpDatabase db;
    for (auto const &item : items) {
        db.addPath(item.get());
    }
    try {
        if (haveKey) {
            const DataNode::NodePtr node = db.getData(key);
            if (!node) {
                return failure(kName, "no key '" + key + "' in the folders");
            }
            printNode(db, *node, "", db.sources(key), true);
            return Success;
        }
        db.forceFileCheck();
        for (std::string const &name : db.keys()) {
            printNode(db, *db.getData(name), "", db.sources(name), false);
        }
    } catch (VORT::Exception const &e) {
        return failure(kName, e.what());
    }
    return Success;
}

const Registration registration({kName, kUsage,
                                 "print the merged configuration keys of folders of XML files",
                                 &run});

}  // namespace
}  // namespace vort_tool
