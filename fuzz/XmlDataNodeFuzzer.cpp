// Feeds arbitrary bytes, as a configuration file, to DataNode::loadXML the way the database
// reads a file. Beyond not crashing, leaking or hanging, the trees must keep their shape: every
// node of the file's map is under its own long name, children extend their parent's name, list
// heads keep nothing but their names and list, and every typed reader answers.
#include "FuzzCheck.h"
#include <vort/xml/DataNode.h>
#include <vort/xml/XmlReader.h>

#include <boost/make_shared.hpp>

#include <cstddef>
#include <cstdint>
#include <string>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

namespace {

using vort_fuzz::check;

using VORT::XMLDB::DataNode;

// The reader takes a file name: one file per process, rewritten for each input.
std::string const &scratchFile() {
    static const std::string path =
        "/tmp/vort_xml_datanode_fuzzer_" + std::to_string(getpid()) + ".xml";
    return path;
}

void checkNode(DataNode const &node, int depth) {
    check(depth <= 2 * static_cast<int>(DataNode::MAX_DEPTH) + 2);
    bool found = false;
    node.getValue<long>(0, &found);
    node.getValue<double>(0.0, &found);
    node.getValue<bool>(false, &found);
    node.getValue<VORT::Color>(VORT::Color(), &found);
    check(node.getValue<std::string>() == node.getValue<std::string>("default", &found) && found);
    if (node.hasDataList()) {
        const std::size_t count = node.getDataCSVAsStrings()->size();
        check(node.getDataCSVAsBool()->size() == count);
        check(node.getDataCSVAsInteger()->size() == count);
        check(node.getDataCSVAsDouble()->size() == count);
        check(node.getDataCSVAsColor()->size() == count);
    }
    if (node.getAttributes() != nullptr) {
        for (DataNode::NodePtr const &attribute : *node.getAttributes()) {
            check(attribute->getIsAttribute());
            check(attribute->getName() == node.getName() + '/' + attribute->getShortName());
            check(node.hasAttribute(attribute->getShortName()));
        }
    }
    if (node.getElements() != nullptr) {
        for (DataNode::NodePtr const &element : *node.getElements()) {
            check(element->getName() == node.getName() + '/' + element->getShortName());
            checkNode(*element, depth + 1);
        }
    }
    if (node.isNodeList()) {
        check(node.getElements() == nullptr && node.getAttributes() == nullptr);
        check(node.getValue<std::string>().empty());
        for (DataNode::NodePtr const &entry : *node.getNodeList()) {
            check(entry->getName() == node.getName());
            if (entry.get() != &node) {
                checkNode(*entry, depth + 1);
            }
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    std::FILE *file = std::fopen(scratchFile().c_str(), "wb");
    if (file == nullptr) {
        return 0;
    }
    std::fwrite(data, 1, size, file);
    std::fclose(file);

    VORT::XmlReader reader(scratchFile().c_str());
    DataNode::NodeMap nodes;
    int roots = 0;
    while (reader.hasNext()) {
        DataNode::NodePtr node = boost::make_shared<DataNode>();
        const VORT::XmlEventTypes::Type event = reader.next();
        if (node->loadXML(std::string(), reader, nodes, event)) {
            ++roots;
            check(!node->getName().empty());
            nodes.emplace(node->getName(), node);
        }
    }
    check(roots <= 1);

    // Merged the way the database merges one key of several files.
    DataNode::NodePtr merged = boost::make_shared<DataNode>();
    for (auto const &entry : nodes) {
        check(entry.first == entry.second->getName());
        checkNode(*entry.second, 0);
        merged->absorb(entry.second);
    }
    check(nodes.empty() || merged->isCombinedNode());
    return 0;
}
