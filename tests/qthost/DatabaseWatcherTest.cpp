#include "QtHostTestSupport.h"
#include "support/PlatformHooks.h"
#include <vort/qthost/DatabaseWatcher.h>
#include <vort/xml/Database.h>

#include <QtCore/QDateTime>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

using VORT::QtHost::DatabaseWatcher;
using VORT::XMLDB::PathItem;
using vort_test::runEventsUntil;

namespace {

class TestDatabase : public VORT::XMLDB::Database {};

std::string text(TestDatabase const &db, std::string const &key) {
    const VORT::XMLDB::DataNode::NodePtr node = db.getData(key);
    return node ? node->getValue<std::string>() : "(none)";
}

// Writes a file with a modification time of its own, so that every write is a change in whole
// seconds however fast the test runs.
void write(QString const &path, std::string const &bytes, qint64 seconds) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(bytes.data(), static_cast<qint64>(bytes.size()));
    file.flush();
    ASSERT_TRUE(file.setFileTime(QDateTime::fromSecsSinceEpoch(seconds),
                                 QFileDevice::FileModificationTime));
}

bool watches(DatabaseWatcher const &watcher, QString const &path) {
    const std::vector<std::string> paths = watcher.watchedPaths();
    return std::find(paths.begin(), paths.end(), path.toStdString()) != paths.end();
}

}  // namespace

// The database's clock stands still throughout: only the watcher can make it read a file again.
TEST(DatabaseWatcher, BringsEditsNewFilesAndNewFoldersToTheNextRead) {
    vort_test::PlatformCapture platform;
    platform.setClock(100.0);
    QTemporaryDir temp;
    const QString root = QDir(temp.path()).canonicalPath();
    const QString first = root + QStringLiteral("/première");
    const QString second = root + QStringLiteral("/second");
    const auto in = [](QString const &folder, const char *file) {
        return folder + QLatin1Char('/') + QLatin1String(file);
    };
    write(in(first, "a.xml"), "<A>1</A>", 1000);
    write(in(second, "c.xml"), "<C>1</C>", 1000);

    PathItem firstItem(first.toStdString(), nullptr, nullptr);
    PathItem secondItem(second.toStdString(), nullptr, nullptr);
    TestDatabase db;
    db.addPath(&firstItem);
    EXPECT_EQ(text(db, "A"), "1");
    DatabaseWatcher watcher(db, 20, 20);
    EXPECT_TRUE(watches(watcher, first) && watches(watcher, in(first, "a.xml")));
    EXPECT_FALSE(watches(watcher, second));

    // An edited file; a new file in a new subfolder, then an edit of it.
    write(in(first, "a.xml"), "<A>2</A>", 2000);
    EXPECT_TRUE(runEventsUntil([&] { return text(db, "A") == "2"; }));
    write(in(first, "sub/b.xml"), "<B>1</B>", 1000);
    EXPECT_TRUE(runEventsUntil([&] { return text(db, "B") == "1"; }));
    EXPECT_TRUE(runEventsUntil([&] { return watches(watcher, in(first, "sub/b.xml")); }));
    write(in(first, "sub/b.xml"), "<B>2</B>", 2000);
    EXPECT_TRUE(runEventsUntil([&] { return text(db, "B") == "2"; }));

    // A file replaced by a rename, as editors save.
    write(in(first, "a.tmp"), "<A>3</A>", 3000);
    ASSERT_TRUE(QFile::remove(in(first, "a.xml")));
    ASSERT_TRUE(QFile::rename(in(first, "a.tmp"), in(first, "a.xml")));
    EXPECT_TRUE(runEventsUntil([&] { return text(db, "A") == "3"; }));

    // A folder registered after the watcher was made is followed within one refresh.
    db.addPath(&secondItem);
    EXPECT_EQ(text(db, "C"), "1");
    EXPECT_TRUE(runEventsUntil([&] { return watches(watcher, second); }));
    write(in(second, "c.xml"), "<C>2</C>", 2000);
    EXPECT_TRUE(runEventsUntil([&] { return text(db, "C") == "2"; }));

    // A folder taken out is no longer watched.
    db.removePath(first.toStdString());
    EXPECT_TRUE(runEventsUntil([&] { return !watches(watcher, first); }));
    EXPECT_FALSE(watches(watcher, in(first, "a.xml")));
}

TEST(DatabaseWatcher, FoldsABurstOfChangesIntoOneCheck) {
    QTemporaryDir temp;
    const QString folder = QDir(temp.path()).canonicalPath();
    const QString file = folder + QStringLiteral("/a.xml");
    write(file, "<A>0</A>", 1000);
    PathItem item(folder.toStdString(), nullptr, nullptr);
    TestDatabase db;
    db.addPath(&item);
    DatabaseWatcher watcher(db, 1000, 300);
    for (int i = 1; i <= 5; ++i) {
        write(file, "<A>" + std::to_string(i) + "</A>", 1000 + i);
    }
    EXPECT_TRUE(runEventsUntil([&] { return watcher.checks() > 0; }));
    vort_test::runEventsFor(400);
    EXPECT_EQ(watcher.checks(), 1);
    EXPECT_EQ(text(db, "A"), "5");
}
