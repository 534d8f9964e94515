#include "XmlTestSupport.h"
#include <vort/xml/DataNode.h>

#include <boost/make_shared.hpp>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

using VORT::Color;
using VORT::XmlReader;
using VORT::XMLDB::DataNode;
using VORT::XMLDB::stringToColor;
using NodePtr = DataNode::NodePtr;
using NodeMap = DataNode::NodeMap;
using vort_test::TempFolder;

namespace {

struct Loaded {
    NodeMap nodes;
    bool rootLoaded = false;
    std::string error;
};

// Loads a document the way the database does: every root, and every long name at all depths.
Loaded load(std::string const &xml) {
    TempFolder folder;
    const std::string file = folder.write("doc.xml", xml);
    XmlReader reader(file.c_str());
    Loaded result;
    while (reader.hasNext()) {
        NodePtr node = boost::make_shared<DataNode>();
        const VORT::XmlEventTypes::Type event = reader.next();
        if (node->loadXML("", reader, result.nodes, event)) {
            result.rootLoaded = true;
            result.nodes.emplace(node->getName(), node);
        }
    }
    result.error = reader.error();
    return result;
}

NodePtr at(Loaded const &loaded, std::string const &key) {
    const auto found = loaded.nodes.find(key);
    return found == loaded.nodes.end() ? NodePtr() : found->second;
}

std::vector<std::string> texts(DataNode::NodeVector const *nodes) {
    std::vector<std::string> result;
    if (nodes != nullptr) {
        for (NodePtr const &node : *nodes) {
            result.push_back(node->getValue<std::string>());
        }
    }
    return result;
}

}  // namespace

TEST(DataNode, RepeatedLongNamesBecomeOneListHeadWhoseFirstEntryHasTheContent) {
    const Loaded doc = load(
        "<A><B k=\"1\">one<C/></B><B>two</B><B>three</B>"
        "<G><Item>x</Item></G><G><Item>y</Item><Item>z</Item></G></A>");
    ASSERT_TRUE(doc.rootLoaded);
    const NodePtr a = at(doc, "A");
    const NodePtr head = at(doc, "A/B");
    ASSERT_TRUE(a && head);
    DataNode::NodeVector found(1, head);
    EXPECT_EQ(a->getElementsOfName("B", found, false), 1u);
    EXPECT_EQ(found.size(), 2u);
    EXPECT_EQ(a->getElementsOfName("B", found, true), 1u);
    EXPECT_EQ(found, DataNode::NodeVector(1, head));
    EXPECT_EQ(a->getElement("B"), head);
    ASSERT_EQ(a->getElements()->size(), 2u);

    EXPECT_TRUE(head->isNodeList());
    EXPECT_EQ(head->getName(), "A/B");
    EXPECT_EQ(head->getShortName(), "B");
    EXPECT_EQ(head->getValue<std::string>(), "");
    EXPECT_EQ(head->getElements(), nullptr);
    EXPECT_EQ(head->getAttributes(), nullptr);
    EXPECT_EQ(texts(head->getNodeList()), (std::vector<std::string>{"one", "two", "three"}));
    const NodePtr first = head->getNodeList()->front();
    EXPECT_EQ(first->getName(), "A/B");
    EXPECT_EQ(first->getAttribute<long>("k"), 1);
    // The first entry's children keep pointing to the head's name.
    ASSERT_NE(first->getElement("C"), nullptr);
    EXPECT_EQ(first->getElement("C")->getName(), "A/B/C");
    EXPECT_EQ(at(doc, "A/B/C"), first->getElement("C"));

    // One map per file: items under different parents of one long name share a list.
    EXPECT_EQ(texts(at(doc, "A/G/Item")->getNodeList()), (std::vector<std::string>{"x", "y", "z"}));
    EXPECT_EQ(at(doc, "A/G")->getNodeList()->size(), 2u);

    // The public form appends a node once, and makes the list on its first call.
    NodePtr single = boost::make_shared<DataNode>();
    NodePtr other = boost::make_shared<DataNode>();
    NodePtr none;
    single->addToNodeList(none);
    EXPECT_FALSE(single->isNodeList());
    single->addToNodeList(other);
    single->addToNodeList(other);
    EXPECT_EQ(single->getNodeList()->size(), 2u);
}

TEST(DataNode, CsvListsSplitTheTextAndConvertOnce) {
    const Loaded doc = load(
        "<R><L csv_list=\"TRUE\">1, 2,,3,</L><N csv_list=\"yes\">1,2</N>"
        "<F Csv_List=\"true\"> true , 0,TRUE ,2.5e1x,</F><E csv_list=\"true\"/></R>");
    const NodePtr list = at(doc, "R/L");
    ASSERT_TRUE(list->hasDataList());
    EXPECT_EQ(*list->getDataCSVAsStrings(), (std::vector<std::string>{"1", "2", "3"}));
    EXPECT_EQ(*list->getDataCSVAsInteger(), (std::vector<long>{1, 2, 3}));
    EXPECT_EQ(list->getValue<std::string>(), "1, 2,,3,");
    EXPECT_EQ(list->getDataCSVAsInteger(), list->getDataCSVAsInteger());

    const NodePtr flags = at(doc, "R/F");
    EXPECT_EQ(*flags->getDataCSVAsBool(), (std::vector<bool>{true, false, true, false}));
    EXPECT_EQ(*flags->getDataCSVAsDouble(), (std::vector<double>{0.0, 0.0, 0.0, 25.0}));
    EXPECT_EQ(flags->getDataCSVAsBool(), flags->getDataCSVAsBool());
    EXPECT_EQ(*flags->getDataCSVAsColor(), std::vector<Color>(4, Color()));

    // "yes" is no list: the attribute stays ordinary.
    const NodePtr plain = at(doc, "R/N");
    EXPECT_FALSE(plain->hasDataList());
    EXPECT_EQ(plain->getDataCSVAsStrings(), nullptr);
    EXPECT_EQ(plain->getDataCSVAsBool(), nullptr);
    EXPECT_EQ(plain->getAttribute<std::string>("csv_list"), "yes");

    // An empty list has its vector but no data.
    const NodePtr empty = at(doc, "R/E");
    EXPECT_FALSE(empty->hasDataList());
    ASSERT_NE(empty->getDataCSVAsStrings(), nullptr);

    // A cache made before an absorb does not see the absorbed values.
    NodePtr merged = boost::make_shared<DataNode>();
    merged->absorb(list);
    ASSERT_EQ(merged->getDataCSVAsInteger()->size(), 3u);
    merged->absorb(list);
    EXPECT_EQ(merged->getDataCSVAsStrings()->size(), 6u);
    EXPECT_EQ(merged->getDataCSVAsInteger()->size(), 3u);
}

TEST(DataNode, TextComesFromTheLastRunOrFromTheValueAttribute) {
    const Loaded doc = load(
        "<R><T value=\"x\">t</T><V value=\"x\"/><P p:value=\"q\" xmlns:p=\"urn:p\"/>"
        "<D csv_list=\"true\" value=\"v\"/><M>first<c/>  <c/>last</M></R>");
    EXPECT_EQ(at(doc, "R/T")->getValue<std::string>(), "t");
    EXPECT_EQ(at(doc, "R/V")->getValue<std::string>(), "x");
    EXPECT_EQ(at(doc, "R/P")->getValue<std::string>(), "");
    EXPECT_EQ(at(doc, "R/P")->getAttribute<std::string>("p:value"), "q");
    EXPECT_EQ(at(doc, "R/P")->getAttribute<std::string>("R/P/p:value"), "q");
    EXPECT_EQ(at(doc, "R/D")->getValue<std::string>(), "");
    EXPECT_EQ(at(doc, "R/M")->getValue<std::string>(), "last");

    const NodePtr attribute = at(doc, "R/V")->getAttributePtr("value");
    ASSERT_NE(attribute, nullptr);
    EXPECT_TRUE(attribute->getIsAttribute());
    EXPECT_EQ(attribute->getName(), "R/V/value");
    EXPECT_EQ(at(doc, "R/V")->getAttributePtr("R/V/value"), nullptr);
}

TEST(DataNode, TypedReadersUseTheDefaultOnlyForAMissingAttribute) {
    const Loaded doc = load(
        "<R n=\"42\" bad=\"abc\" d=\"2.5px\" e=\"\" b=\"TRUE\" one=\"1\" no=\"yes\" "
        "c=\"255,0,0\">abc</R>");
    const NodePtr r = at(doc, "R");
    struct Row {
        const char *name;
        long asLong;
        double asDouble;
        bool asBool;
        bool found;  // for the numbers and the bool
    };
    const Row rows[] = {
        {"n", 42, 42.0, false, true}, {"bad", 0, 0.0, false, true},     {"d", 2, 2.5, false, true},
        {"e", 0, 0.0, false, false},  {"b", 0, 0.0, true, true},        {"one", 1, 1.0, true, true},
        {"no", 0, 0.0, false, true},  {"missing", 7, 7.5, true, false},
    };
    for (Row const &row : rows) {
        SCOPED_TRACE(row.name);
        bool found = !row.found;
        EXPECT_EQ(r->getAttribute<long>(row.name, 7, &found), row.asLong);
        EXPECT_EQ(found, row.found);
        found = !row.found;
        EXPECT_EQ(r->getAttribute<double>(row.name, 7.5, &found), row.asDouble);
        EXPECT_EQ(found, row.found);
        found = !row.found;
        EXPECT_EQ(r->getAttribute<bool>(row.name, true, &found), row.asBool);
        EXPECT_EQ(found, row.found);
    }
    bool found = false;
    EXPECT_EQ(r->getAttribute<std::string>("e", "d", &found), "");
    EXPECT_TRUE(found);
    EXPECT_EQ(r->getAttribute<std::string>("missing", "d", &found), "d");
    EXPECT_FALSE(found);
    EXPECT_EQ(r->getAttribute<Color>("c", Color(), &found).getAsRgba(), 0xFF0000FFu);
    EXPECT_TRUE(found);
    EXPECT_EQ(r->getAttribute<Color>("missing", Color(0, 1, 0, 1), &found).getAsRgba(),
              0x00FF00FFu);
    EXPECT_FALSE(found);
    EXPECT_EQ(r->getAttribute<Color>("n", Color(0, 1, 0, 1), &found), Color());
    EXPECT_FALSE(found);

    // The node's own value never uses the default.
    EXPECT_EQ(r->getValue<long>(9, &found), 0);
    EXPECT_TRUE(found);
    EXPECT_EQ(r->getValue<std::string>("d"), "abc");
    EXPECT_FALSE(r->getValue<bool>(true, &found));
    EXPECT_TRUE(found);
    const DataNode empty;
    EXPECT_EQ(empty.getValue<double>(3.0, &found), 0.0);
    EXPECT_FALSE(found);
    EXPECT_FALSE(empty.getValue<bool>(true, &found));
    EXPECT_FALSE(found);
    EXPECT_EQ(empty.getValue<std::string>("d", &found), "");
    EXPECT_TRUE(found);
}

TEST(DataNode, StringToColorReadsThreeOrFourNumbersOnEitherScale) {
    struct Row {
        const char *text;
        bool ok;
        unsigned int rgba;
    };
    const Row rows[] = {
        {"1,0,0", true, 0xFF0000FFu},
        {"255,0,0", true, 0xFF0000FFu},
        {"0.5,0.5,0.5,128", true, 0x01010180u},
        {"0, 0.5, 1, 0.5", true, 0x0080FF80u},
        {"255,128;0;64", true, 0xFF800040u},
        {"1,0", true, 0xFF00FFFFu},
        {"x,y", true, 0x00FFFFFFu},
        {"red", false, 0x00000001u},
        {"", false, 0x00000001u},
        {"1 0 0", false, 0x00000001u},
    };
    for (Row const &row : rows) {
        bool ok = !row.ok;
        EXPECT_EQ(stringToColor(row.text, &ok).getAsRgba(), row.rgba) << row.text;
        EXPECT_EQ(ok, row.ok) << row.text;
    }
}

TEST(DataNode, AbsorbConcatenatesInOrderAndLaterAttributesWin) {
    const Loaded first = load("<A k=\"1\" j=\"x\">a<B>1</B></A>");
    const Loaded second = load("<A k=\"2\">b<B>2</B><C/></A>");
    NodePtr merged = boost::make_shared<DataNode>();
    merged->absorb(at(first, "A"));
    merged->absorb(at(second, "A"));
    EXPECT_TRUE(merged->isCombinedNode());
    EXPECT_FALSE(at(first, "A")->isCombinedNode());
    EXPECT_EQ(merged->getName(), "A");
    EXPECT_EQ(merged->getShortName(), "A");
    EXPECT_EQ(merged->getValue<std::string>(), "ab");
    EXPECT_EQ(merged->getAttribute<long>("k"), 2);
    EXPECT_EQ(merged->getAttribute<std::string>("j"), "x");
    EXPECT_EQ(merged->getAttributes()->size(), 3u);
    EXPECT_EQ(texts(merged->getElements()), (std::vector<std::string>{"1", "2", ""}));
    EXPECT_EQ(merged->getElement("B"), at(first, "A/B"));
    // The sources are unchanged.
    EXPECT_EQ(at(first, "A")->getValue<std::string>(), "a");
    EXPECT_EQ(at(first, "A")->getAttributes()->size(), 2u);

    merged->absorb(merged);
    EXPECT_EQ(merged->getValue<std::string>(), "abab");
    EXPECT_EQ(merged->getElements()->size(), 6u);

    // A copy shares the vectors, and either may go first.
    auto copy = std::make_unique<DataNode>(*merged);
    EXPECT_EQ(copy->getElements(), merged->getElements());
    DataNode assigned;
    assigned = *copy;
    copy.reset();
    EXPECT_EQ(assigned.getAttributes(), merged->getAttributes());
    EXPECT_EQ(assigned.getValue<std::string>(), "abab");
}

TEST(DataNode, MalformedFilesKeepWhatWasFinishedAndBoundsHold) {
    const Loaded broken = load("<A><B>1</B><C x=\"2\">2</C><D><E>3</E>");
    EXPECT_FALSE(broken.rootLoaded);
    EXPECT_EQ(broken.error, "Premature end of document.");
    EXPECT_EQ(at(broken, "A/B")->getValue<long>(), 1);
    EXPECT_EQ(at(broken, "A/C")->getAttribute<long>("x"), 2);
    EXPECT_EQ(at(broken, "A/D/E")->getValue<long>(), 3);
    EXPECT_EQ(at(broken, "A/D"), nullptr);
    EXPECT_EQ(at(broken, "A"), nullptr);

    // Any end tag closes a level; the parser itself refuses the mismatch right after.
    const Loaded mismatch = load("<A><B>1</C></A>");
    EXPECT_FALSE(mismatch.rootLoaded);
    EXPECT_TRUE(mismatch.nodes.empty());

    std::string deep;
    for (int i = 0; i < 5000; ++i) {
        deep += "<d>";
    }
    const Loaded tooDeep = load(deep);
    EXPECT_EQ(tooDeep.error, "Elements nested deeper than 256 levels");
    EXPECT_FALSE(tooDeep.rootLoaded);

    // Each child repeats its parent's long name: a long root name makes a small file large.
    const std::string name(4000, 'n');
    std::string wide = "<" + name + ">";
    for (int i = 0; i < 20000; ++i) {
        wide += "<c/>";
    }
    wide += "</" + name + ">";
    const Loaded tooWide = load(wide);
    EXPECT_EQ(tooWide.error, "Configuration data larger than 134217728 bytes in memory");
    EXPECT_FALSE(tooWide.rootLoaded);
}
