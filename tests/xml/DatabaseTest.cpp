#include "XmlTestSupport.h"
#include "support/PlatformHooks.h"
#include <vort/bones/ModuleObject.h>
#include <vort/xml/Database.h>

#include <QtCore/QFile>

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

using VORT::XMLDB::Database;
using VORT::XMLDB::DataNode;
using VORT::XMLDB::PathItem;
using vort_test::TempFolder;

namespace {

// A database of the test's own, so that every test starts empty. Declare it after the items it
// holds: it is then destroyed first, and lets go of them.
class TestDatabase : public Database {
public:
    TestDatabase() = default;

    std::vector<std::string> keys() const {
        std::vector<std::string> result;
        for (auto const &entry : mData) {
            result.push_back(entry.first);
        }
        return result;
    }
    unsigned loadCount(std::string const &file) const {
        const auto found = mFiles.find(file);
        return found == mFiles.end() ? 0u : found->second->mLoadCount;
    }
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

}  // namespace

TEST_F(DatabaseTest, MergesTheFilesOfEveryFolderInFileNameOrder) {
    TempFolder one;
    TempFolder two;
    one.write("a.xml", "<A><B>x</B><Only k=\"1\">a</Only><W k=\"1\" j=\"a\"/></A>");
    one.write("sub/deeper/c.xml", "<A><B>z</B><L>1</L><L>2</L></A>");
    one.write("notes.txt", "<A><B>ignored</B></A>");
    two.write("b.xml", "<A><B>y</B><W k=\"2\"/><L>3</L></A>");
    PathItem first(one.path(), nullptr, nullptr);
    PathItem second(two.path(), nullptr, nullptr);
    TestDatabase db;
    EXPECT_EQ(db.getData("A"), nullptr);
    db.addPath(&first);
    db.addPath(&second);
    EXPECT_TRUE(first.isInDatabase());
    // The folders' names are random: the expectations follow their order.
    const bool oneFirst = one.path() < two.path();
    EXPECT_EQ(db.getPaths(), oneFirst ? (std::vector<std::string>{one.path(), two.path()})
                                      : (std::vector<std::string>{two.path(), one.path()}));

    // The file names order the merge: one's a.xml before one's sub/deeper/c.xml.
    EXPECT_EQ(text(db, "A/B"), oneFirst ? "xzy" : "yxz");
    EXPECT_TRUE(db.getData("A/B")->isCombinedNode());
    // Defined once: the file's own node.
    EXPECT_FALSE(db.getData("A/Only")->isCombinedNode());
    EXPECT_EQ(text(db, "A/Only"), "a");
    // A later file's attribute wins; the others stay visible.
    const DataNode::NodePtr w = db.getData("A/W");
    EXPECT_EQ(w->getAttribute<long>("k"), oneFirst ? 2 : 1);
    EXPECT_EQ(w->getAttribute<std::string>("j"), "a");
    // Within a file repeated names make a list; across files the keys merge, and the merge
    // takes the list head's (empty) content, not its list.
    const DataNode::NodePtr l = db.getData("A/L");
    EXPECT_TRUE(l->isCombinedNode());
    EXPECT_FALSE(l->isNodeList());
    EXPECT_EQ(l->getValue<std::string>(), "3");
    // The merged root's children are the files' own nodes: the first file's B comes first.
    EXPECT_EQ(db.getData("A")->getElement("B")->getValue<std::string>(), oneFirst ? "x" : "y");
    EXPECT_EQ(db.getData("A/Missing"), nullptr);
    EXPECT_EQ(db.keys(), (std::vector<std::string>{"A", "A/B", "A/L", "A/Only", "A/W"}));
}

TEST_F(DatabaseTest, ScansAtMostOncePerIntervalUnlessForced) {
    TempFolder folder;
    folder.write("a.xml", "<A>1</A>", 1000);
    PathItem item(folder.path(), nullptr, nullptr);
    TestDatabase db;
    db.addPath(&item);
    EXPECT_EQ(text(db, "A"), "1");

    folder.write("a.xml", "<A>2</A>", 2000);
    EXPECT_EQ(text(db, "A"), "1");
    platform.setClock(105.0);
    EXPECT_EQ(text(db, "A"), "1");
    platform.setClock(105.5);
    EXPECT_EQ(text(db, "A"), "2");

    // The next interval counts from the time taken before the scan.
    folder.write("a.xml", "<A>3</A>", 3000);
    platform.setClock(110.5);
    EXPECT_EQ(text(db, "A"), "2");
    db.forceFileCheck();
    EXPECT_EQ(text(db, "A"), "3");

    // Registering a folder forces the next read to scan.
    TempFolder later;
    later.write("b.xml", "<B>b</B>");
    PathItem laterItem(later.path(), nullptr, nullptr);
    db.addPath(&laterItem);
    EXPECT_EQ(text(db, "B"), "b");
}

TEST_F(DatabaseTest, RereadsAFileWhenItsTimeChangesInEitherDirectionOnly) {
    TempFolder folder;
    const std::string file = folder.write("a.xml", "<A>1</A>", 5000);
    PathItem item(folder.path(), nullptr, &recordLoad);
    TestDatabase db;
    db.addPath(&item);
    EXPECT_EQ(text(db, "A"), "1");

    struct Step {
        const char *content;
        qint64 time;
        const char *seen;
        unsigned loads;
    };
    const Step steps[] = {
        {"<A>2</A>", 5000, "1", 1},  // new content, same time: not seen
        {"<A>3</A>", 4000, "3", 2},  // an older time is a change too
        {"<A>4</A>", 6000, "4", 3},
        {"<A>5</A>", 6000, "4", 3},
    };
    double clock = 100.0;
    for (Step const &step : steps) {
        SCOPED_TRACE(step.content);
        folder.write("a.xml", step.content, step.time);
        clock += 6.0;
        platform.setClock(clock);
        EXPECT_EQ(text(db, "A"), step.seen);
        EXPECT_EQ(db.loadCount(file), step.loads);
    }
    // The callback hears of every read, and of the first only once.
    EXPECT_EQ(g_loads, (std::vector<std::pair<std::string, bool>>{
                           {file, true}, {file, false}, {file, false}}));

    // A file that has gone keeps its data; so does a folder taken out.
    ASSERT_TRUE(QFile::remove(QString::fromStdString(file)));
    db.forceFileCheck();
    EXPECT_EQ(text(db, "A"), "4");
    EXPECT_TRUE(db.removePath(folder.path()));
    EXPECT_FALSE(item.isInDatabase());
    EXPECT_FALSE(db.removePath(folder.path()));
    folder.write("a.xml", "<A>6</A>", 7000);
    db.forceFileCheck();
    EXPECT_EQ(text(db, "A"), "4");
}

TEST_F(DatabaseTest, MalformedFilesKeepTheirFinishedNodesAndOthersAreServed) {
    TempFolder folder;
    folder.write("bad.xml", "<A><Done>1</Done><Open>");
    std::string deep;
    for (int i = 0; i < 3000; ++i) {
        deep += "<x>";
    }
    folder.write("deep.xml", deep);
    std::string bomb = "<!DOCTYPE A [<!ENTITY e \"" + std::string(5000, 'e') + "\">]><A>&e;</A>";
    folder.write("bomb.xml", bomb);
    std::string huge = "<A><Huge>";
    huge.append(VORT::XmlReader::MAX_DOCUMENT_BYTES, 'h');
    huge += "</Huge></A>";
    folder.write("huge.xml", huge);
    huge = std::string();
    folder.write("good.xml", "<A><Good>2</Good></A>");
    PathItem item(folder.path(), nullptr, &recordLoad);
    TestDatabase db;
    db.addPath(&item);
    EXPECT_EQ(text(db, "A/Done"), "1");
    EXPECT_EQ(db.getData("A/Open"), nullptr);
    EXPECT_EQ(text(db, "A/Good"), "2");
    EXPECT_EQ(db.getData("A/Huge"), nullptr);
    EXPECT_EQ(text(db, "A"), "");
    EXPECT_EQ(g_loads.size(), 5u);
}

TEST_F(DatabaseTest, ReadsFoldersAndFilesWithNonAsciiNames) {
    TempFolder folder;
    const std::string file = folder.write("Réglages/ファイル.xml", "<Clé>été</Clé>");
    PathItem item(folder.path("Réglages"), nullptr, &recordLoad);
    TestDatabase db;
    db.addPath(&item);
    EXPECT_EQ(text(db, "Clé"), "été");
    ASSERT_EQ(g_loads.size(), 1u);
    EXPECT_EQ(g_loads[0].first, file);
}

TEST_F(DatabaseTest, ItemsRegisterOnceAndTakeThemselvesOutWhenDestroyed) {
    TempFolder folder;
    PathItem item(folder.path(), nullptr, nullptr);
    PathItem twin(folder.path(), nullptr, nullptr);
    {
        TestDatabase db;
        db.addPath(&item);
        db.addPath(&twin);
        db.addPath(nullptr);
        EXPECT_TRUE(item.isInDatabase());
        EXPECT_FALSE(twin.isInDatabase());
        EXPECT_EQ(db.getPaths().size(), 1u);
    }
    // The database let go of its items when it went.
    EXPECT_FALSE(item.isInDatabase());

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
