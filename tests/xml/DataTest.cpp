#include "XmlTestSupport.h"
#include "support/PlatformHooks.h"
#include <vort/bones/ModuleObject.h>
#include <vort/xml/DataNode.h>
#include <vort/xml/Database.h>

#include <QtCore/QFile>

#include <boost/make_shared.hpp>

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using namespace VORT::XMLDB;
using VORT::Color;
using VORT::XmlReader;
using NodePtr = DataNode::NodePtr;
using vort_test::TempFolder;

namespace {

struct Loaded {
    DataNode::NodeMap nodes;
    bool rootLoaded = false;
    std::string error;
    NodePtr at(std::string const &key) const {
        const auto found = nodes.find(key);
        return found == nodes.end() ? NodePtr() : found->second;
    }
};

// Loads a document the way the database does: every root, and every long name at all depths.
Loaded load(std::string const &xml) {
    TempFolder folder;
    XmlReader reader(folder.write("doc.xml", xml).c_str());
    Loaded result;
    while (reader.hasNext()) {
        NodePtr node = boost::make_shared<DataNode>();
        if (node->loadXML("", reader, result.nodes, reader.next())) {
            result.rootLoaded = true;
            result.nodes.emplace(node->getName(), node);
        }
    }
    result.error = reader.error();
    return result;
}

std::string texts(DataNode::NodeVector const *nodes) {
    std::string result;
    for (NodePtr const &node : *nodes) {
        result += node->getValue<std::string>() + "|";
    }
    return result;
}

// A database of the test's own, so that every test starts empty. Declare it after the items it
// holds: it is then destroyed first, and lets go of them.
class TestDatabase : public Database {
public:
    unsigned loadCount(std::string const &file) const { return mFiles.at(file)->mLoadCount; }
};

std::vector<std::pair<std::string, bool>> g_loads;

void recordLoad(std::string const &file, bool firstLoad) {
    g_loads.emplace_back(file, firstLoad);
}

std::string text(Database const &db, std::string const &key) {
    const DataNode::NodePtr node = db.getData(key);
    return node ? node->getValue<std::string>() : "(none)";
}

class DatabaseTest : public vort_test::PlatformHooksTest {
protected:
    DatabaseTest() {
        g_loads.clear();
        platform.setClock(100.0);
    }
};

// A typed read of the attribute `name`, or of the node's value for "", and whether it was found:
// 0 or 1, or -1 when that answer depends on what the flag held before.
template <typename T>
std::pair<T, int> read(DataNode const &node, const char *name, T const &fallback) {
    bool found[2] = {false, true};
    T value{};
    for (bool &flag : found) {
        value = *name != '\0' ? node.getAttribute<T>(name, fallback, &flag)
                              : node.getValue<T>(fallback, &flag);
    }
    return {value, found[0] == found[1] ? int(found[0]) : -1};
}

}  // namespace

TEST(DataNode, RepeatedLongNamesBecomeOneListHeadWhoseFirstEntryHasTheContent) {
    const Loaded doc = load(
        "<A><B k=\"1\">one<C/></B><B>two</B><B>three</B>"
        "<G><Item>x</Item></G><G><Item>y</Item><Item>z</Item></G></A>");
    ASSERT_TRUE(doc.rootLoaded);
    const NodePtr a = doc.at("A"), head = doc.at("A/B");
    DataNode::NodeVector found(1, head);
    EXPECT_EQ(a->getElementsOfName("B", found, false) * 10 + found.size(), 12u);
    EXPECT_EQ(a->getElementsOfName("B", found, true) * 10 + found.size(), 11u);
    EXPECT_TRUE(found[0] == head && a->getElement("B") == head && a->getElements()->size() == 2u);

    EXPECT_TRUE(head->isNodeList() && !head->getElements() && !head->getAttributes());
    EXPECT_EQ(head->getName() + "|" + head->getShortName() + "|" + head->getValue<std::string>(),
              "A/B|B|");
    EXPECT_EQ(texts(head->getNodeList()), "one|two|three|");
    const NodePtr first = head->getNodeList()->front();
    // The first entry's children keep pointing to the head's name.
    ASSERT_TRUE(first->getElement("C") && first->getElement("C") == doc.at("A/B/C"));
    EXPECT_EQ(first->getName() + first->getAttribute<std::string>("k") +
                  first->getElement("C")->getName(),
              "A/B1A/B/C");
    // One map per file: items under different parents of one long name share a list.
    EXPECT_EQ(texts(doc.at("A/G/Item")->getNodeList()), "x|y|z|");
    EXPECT_EQ(doc.at("A/G")->getNodeList()->size(), 2u);
}

TEST(DataNode, CsvListsSplitTheTextAndConvertOnce) {
    const Loaded doc = load(
        "<R><L csv_list=\"TRUE\">1, 2,,3,</L><N csv_list=\"yes\">1,2</N>"
        "<F Csv_List=\"true\"> true , 0,TRUE ,2.5e1x,</F><E csv_list=\"true\"/></R>");
    const NodePtr list = doc.at("R/L");
    ASSERT_TRUE(list->hasDataList());
    EXPECT_EQ(*list->getDataCSVAsInteger(), (std::vector<long>{1, 2, 3}));
    EXPECT_EQ(list->getValue<std::string>(), "1, 2,,3,");
    EXPECT_EQ(list->getDataCSVAsInteger(), list->getDataCSVAsInteger());
    const NodePtr flags = doc.at("R/F");
    EXPECT_EQ(*flags->getDataCSVAsBool(), (std::vector<bool>{true, false, true, false}));
    EXPECT_EQ(*flags->getDataCSVAsDouble(), (std::vector<double>{0.0, 0.0, 0.0, 25.0}));
    EXPECT_EQ(*flags->getDataCSVAsColor(), std::vector<Color>(4, Color()));
    // "yes" is no list: the attribute stays ordinary. An empty list has its vector but no data.
    const NodePtr plain = doc.at("R/N"), empty = doc.at("R/E");
    EXPECT_FALSE(plain->hasDataList() || plain->getDataCSVAsStrings() || plain->getDataCSVAsBool());
    EXPECT_TRUE(!empty->hasDataList() && empty->getDataCSVAsStrings());

    // A cache made before an absorb does not see the absorbed values.
    NodePtr merged = boost::make_shared<DataNode>();
    merged->absorb(list);
    ASSERT_EQ(merged->getDataCSVAsInteger()->size(), 3u);
    merged->absorb(list);
    EXPECT_EQ(merged->getDataCSVAsStrings()->size() * 10 + merged->getDataCSVAsInteger()->size(),
              63u);
}

TEST(DataNode, TextComesFromTheLastRunOrFromTheValueAttribute) {
    const Loaded doc = load(
        "<R><T value=\"x\">t</T><V value=\"x\"/><P p:value=\"q\" xmlns:p=\"urn:p\"/>"
        "<D csv_list=\"true\" value=\"v\"/><M>first<c/>  <c/>last</M></R>");
    std::string values;
    for (const char *key : {"R/T", "R/V", "R/P", "R/D", "R/M"}) {
        values += doc.at(key)->getValue<std::string>() + "|";
    }
    EXPECT_EQ(values, "t|x|||last|");
    EXPECT_EQ(doc.at("R/P")->getAttribute<std::string>("p:value") +
                  doc.at("R/P")->getAttribute<std::string>("R/P/p:value"),
              "qq");
    const NodePtr attribute = doc.at("R/V")->getAttributePtr("value");
    ASSERT_NE(attribute, nullptr);
    EXPECT_TRUE(attribute->getIsAttribute() && attribute->getName() == "R/V/value");
    EXPECT_EQ(doc.at("R/V")->getAttributePtr("R/V/value"), nullptr);
}

TEST(DataNode, TypedReadersUseTheDefaultOnlyForAMissingAttribute) {
    const Loaded doc = load(
        "<R n=\"42\" bad=\"abc\" d=\"2.5px\" e=\"\" b=\"TRUE\" one=\"1\" no=\"yes\" "
        "c=\"255,0,0\">abc</R>");
    const NodePtr r = doc.at("R");
    struct Row {
        const char *name;
        long asLong;
        double asDouble;
        bool asBool;
        int found;  // for the numbers and the bool
    };
    const Row rows[] = {
        {"n", 42, 42.0, false, 1}, {"bad", 0, 0.0, false, 1},    {"d", 2, 2.5, false, 1},
        {"e", 0, 0.0, false, 0},   {"b", 0, 0.0, true, 1},       {"one", 1, 1.0, true, 1},
        {"no", 0, 0.0, false, 1},  {"missing", 7, 7.5, true, 0},
    };
    for (Row const &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(read(*r, row.name, 7L), std::make_pair(row.asLong, row.found));
        EXPECT_EQ(read(*r, row.name, 7.5), std::make_pair(row.asDouble, row.found));
        EXPECT_EQ(read(*r, row.name, true), std::make_pair(row.asBool, row.found));
    }
    EXPECT_EQ(read(*r, "missing", std::string("d")), std::make_pair(std::string("d"), 0));
    EXPECT_EQ(read(*r, "c", Color()), std::make_pair(Color(1, 0, 0, 1), 1));
    EXPECT_EQ(read(*r, "n", Color(0, 1, 0, 1)), std::make_pair(Color(), 0));
    // The node's own value never uses the default.
    EXPECT_EQ(read(*r, "", 9L), std::make_pair(0L, 1));
    EXPECT_EQ(read(*r, "", std::string("d")), std::make_pair(std::string("abc"), 1));
    const DataNode empty;
    EXPECT_EQ(read(empty, "", 3.0), std::make_pair(0.0, 0));
    EXPECT_EQ(read(empty, "", true), std::make_pair(false, 0));
    EXPECT_EQ(read(empty, "", std::string("d")), std::make_pair(std::string(), 1));
}

TEST(DataNode, StringToColorReadsThreeOrFourNumbersOnEitherScale) {
    // What was read, and whether it was a colour ("!" when not).
    // clang-format off
    const std::pair<const char *, const char *> rows[] = {
        {"1,0,0", "ff0000ff"},          {"255,0,0", "ff0000ff"},      {"0.5,0.5,0.5,128", "01010180"},
        {"0, 0.5, 1, 0.5", "0080ff80"}, {"255,128;0;64", "ff800040"}, {"1,0", "ff00ffff"},
        {"x,y", "00ffffff"},            {"red", "00000001!"},         {"", "00000001!"},
        {"1 0 0", "00000001!"}};
    // clang-format on
    for (auto const &row : rows) {
        bool ok = std::string(row.second).back() == '!';  // the opposite of the answer
        const unsigned int color = stringToColor(row.first, &ok).getAsRgba();
        char rgba[16];
        std::snprintf(rgba, sizeof rgba, "%08x%s", color, ok ? "" : "!");
        EXPECT_EQ(std::string(rgba), row.second) << row.first;
    }
}

TEST(DataNode, AbsorbConcatenatesInOrderAndLaterAttributesWin) {
    const Loaded first = load("<A k=\"1\" j=\"x\">a<B>1</B></A>");
    const Loaded second = load("<A k=\"2\">b<B>2</B><C/></A>");
    NodePtr merged = boost::make_shared<DataNode>();
    merged->absorb(first.at("A"));
    merged->absorb(second.at("A"));
    EXPECT_TRUE(merged->isCombinedNode() && !first.at("A")->isCombinedNode());
    EXPECT_EQ(merged->getName() + merged->getShortName() + merged->getValue<std::string>() +
                  merged->getAttribute<std::string>("k") + merged->getAttribute<std::string>("j"),
              "AAab2x");
    EXPECT_TRUE(merged->getAttributes()->size() == 3u &&
                merged->getElement("B") == first.at("A/B"));
    EXPECT_EQ(texts(merged->getElements()), "1|2||");
    // The sources are unchanged.
    EXPECT_EQ(first.at("A")->getValue<std::string>() +
                  std::to_string(first.at("A")->getAttributes()->size()),
              "a2");
    merged->absorb(merged);
    EXPECT_EQ(texts(merged->getElements()), "1|2||1|2||");

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
    EXPECT_TRUE(!broken.rootLoaded && broken.error == "Premature end of document.");
    EXPECT_EQ(broken.at("A/B")->getValue<std::string>() +
                  broken.at("A/C")->getAttribute<std::string>("x") +
                  broken.at("A/D/E")->getValue<std::string>(),
              "123");
    EXPECT_TRUE(broken.at("A/D") == nullptr && broken.at("A") == nullptr);

    std::string deep;
    for (int i = 0; i < 5000; ++i) {
        deep += "<d>";
    }
    const Loaded tooDeep = load(deep);
    EXPECT_TRUE(!tooDeep.rootLoaded && tooDeep.error == "Elements nested deeper than 256 levels");
    // Each child repeats its parent's long name: a long root name makes a small file large.
    const std::string name(4000, 'n');
    std::string wide = "<" + name + ">";
    for (int i = 0; i < 20000; ++i) {
        wide += "<c/>";
    }
    const Loaded tooWide = load(wide + "</" + name + ">");
    EXPECT_EQ(tooWide.error + std::to_string(tooWide.rootLoaded),
              "Configuration data larger than 134217728 bytes in memory0");
}

TEST_F(DatabaseTest, MergesTheFilesOfEveryFolderInFileNameOrder) {
    TempFolder one, two;
    one.write("a.xml", "<A><B>x</B><Only k=\"1\">a</Only><W k=\"1\" j=\"a\"/></A>");
    // Non-ASCII names are read; a malformed file keeps its finished nodes.
    const std::string file =
        one.write("sub/Réglages/ファイル.xml", "<A><B>z</B><L>1</L><L>2</L></A>");
    one.write("notes.txt", "<A><B>ignored</B></A>");
    one.write("sub/z.xml", "<A><Done>1</Done><Open>");
    two.write("b.xml", "<A><B>y</B><W k=\"2\"/><L>3</L></A>");
    PathItem first(one.path(), nullptr, &recordLoad), second(two.path(), nullptr, nullptr);
    TestDatabase db;
    EXPECT_EQ(db.getData("A"), nullptr);
    db.addPath(&first);
    db.addPath(&second);
    // The folders' names are random: the expectations follow their order.
    const bool oneFirst = one.path() < two.path();
    EXPECT_TRUE(first.isInDatabase() && db.getPaths()[oneFirst ? 0 : 1] == one.path());

    // The file names order the merge: one's a.xml before one's sub/Réglages/ファイル.xml.
    EXPECT_EQ(text(db, "A/B"), oneFirst ? "xzy" : "yxz");
    ASSERT_EQ(g_loads.size(), 3u);
    EXPECT_EQ(g_loads[1].first, file);
    // Defined once: the file's own node.
    EXPECT_TRUE(db.getData("A/B")->isCombinedNode() && !db.getData("A/Only")->isCombinedNode());
    EXPECT_EQ(text(db, "A/Only") + text(db, "A/Done") + text(db, "A/Open"), "a1(none)");
    // A later file's attribute wins; the others stay visible.
    EXPECT_EQ(db.getData("A/W")->getAttribute<std::string>("k") +
                  db.getData("A/W")->getAttribute<std::string>("j"),
              oneFirst ? "2a" : "1a");
    // Within a file repeated names make a list; across files the keys merge, and the merge
    // takes the list head's (empty) content, not its list.
    const DataNode::NodePtr l = db.getData("A/L");
    EXPECT_TRUE(l->isCombinedNode() && !l->isNodeList() && l->getValue<std::string>() == "3");
    // The merged root's children are the files' own nodes: the first file's B comes first.
    EXPECT_EQ(db.getData("A")->getElement("B")->getValue<std::string>(), oneFirst ? "x" : "y");
}

TEST_F(DatabaseTest, ScansAtMostOncePerIntervalAndRereadsAFileWhoseTimeChanged) {
    TempFolder folder;
    const std::string file = folder.write("a.xml", "<A>1</A>", 1000);
    PathItem item(folder.path(), nullptr, &recordLoad);
    TestDatabase db;
    db.addPath(&item);
    EXPECT_EQ(text(db, "A"), "1");
    struct Step {
        const char *content;  // written before the read, if any
        qint64 time;
        double clock;
        bool forced;
        const char *seen;
        unsigned loads;
    };
    const Step steps[] = {
        {"<A>2</A>", 2000, 100.0, false, "1", 1},
        {nullptr, 0, 105.0, false, "1", 1},
        {nullptr, 0, 105.5, false, "2", 2},
        // The next interval counts from the time taken before the scan.
        {"<A>3</A>", 3000, 110.5, false, "2", 2},
        {nullptr, 0, 110.5, true, "3", 3},
        {"<A>4</A>", 3000, 120.0, false, "3", 3},  // new content, same time: not seen
        {"<A>5</A>", 2500, 130.0, false, "5", 4},  // an older time is a change too
    };
    for (Step const &step : steps) {
        SCOPED_TRACE(&step - steps);
        if (step.content != nullptr) {
            folder.write("a.xml", step.content, step.time);
        }
        platform.setClock(step.clock);
        if (step.forced) {
            db.forceFileCheck();
        }
        EXPECT_EQ(text(db, "A"), step.seen);
        EXPECT_EQ(db.loadCount(file), step.loads);
    }
    // The callback hears of every read, and of the first only once.
    EXPECT_EQ(g_loads, (std::vector<std::pair<std::string, bool>>{
                           {file, true}, {file, false}, {file, false}, {file, false}}));

    // Registering a folder forces the next read to scan.
    TempFolder later;
    later.write("b.xml", "<B>b</B>");
    PathItem laterItem(later.path(), nullptr, nullptr);
    db.addPath(&laterItem);
    EXPECT_EQ(text(db, "B"), "b");
    // A file that has gone keeps its data; so does a folder taken out.
    ASSERT_TRUE(QFile::remove(QString::fromStdString(file)));
    db.forceFileCheck();
    EXPECT_EQ(text(db, "A"), "5");
    EXPECT_TRUE(db.removePath(folder.path()));
    EXPECT_FALSE(item.isInDatabase() || db.removePath(folder.path()));
    folder.write("a.xml", "<A>6</A>", 7000);
    db.forceFileCheck();
    EXPECT_EQ(text(db, "A"), "5");
}

TEST_F(DatabaseTest, ItemsRegisterOnceAndTakeThemselvesOutWhenDestroyed) {
    TempFolder folder;
    PathItem item(folder.path(), nullptr, nullptr), twin(folder.path(), nullptr, nullptr);
    {
        TestDatabase db;
        db.addPath(&item);
        db.addPath(&twin);
        db.addPath(nullptr);
        EXPECT_TRUE(item.isInDatabase() && !twin.isInDatabase() && db.getPaths().size() == 1u);
    }
    EXPECT_FALSE(item.isInDatabase()) << "the database let go of its items when it went";

    // The one database: an item takes its folder out when it goes, also by its module's
    // deleter.
    Database &instance = VORT::XMLDB::DefaultGetDatabase();
    const std::string path = folder.path("instance");
    auto *owned = new PathItem(path + "-deleter", nullptr, nullptr);
    {
        PathItem local(path, nullptr, nullptr);
        VORT::ModuleObjectDeleter deleter;
        PathItem *entered = new PathItem(path + "-module", &deleter, nullptr);
        instance.addPath(&local);
        instance.addPath(entered);
        instance.addPath(owned);
        EXPECT_EQ(instance.getPaths().size(), 3u);
    }
    EXPECT_EQ(instance.getPaths(), std::vector<std::string>{path + "-deleter"});
    delete owned;
    EXPECT_TRUE(instance.getPaths().empty());
}
