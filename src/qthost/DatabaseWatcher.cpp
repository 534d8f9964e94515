#include "Report_p.h"
#include <vort/bones/FileUtils.h>
#include <vort/err/Exception.h>
#include <vort/qthost/DatabaseWatcher.h>

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QFileSystemWatcher>
#include <QtCore/QSet>
#include <QtCore/QStringList>
#include <QtCore/QTimer>

#include <algorithm>

namespace VORT {
namespace QtHost {

struct DatabaseWatcher::Private {
    explicit Private(XMLDB::Database &db) : database(db) {}

    // Watches exactly the registered folders, their subfolders and their "*.xml" files: new ones
    // are added, and those gone (or taken out of the database) are dropped.
    void sync() {
        std::vector<std::string> found;
        for (std::string const &folder : folders) {
            if (!QFileInfo(QFile::decodeName(folder.c_str())).isDir()) {
                continue;
            }
            found.push_back(folder);
            gatherSubDirectories(folder, found, true);
            gatherFiles(folder, "*.xml", found, true);
        }
        QSet<QString> wanted;
        for (std::string const &path : found) {
            wanted.insert(QFile::decodeName(path.c_str()));
        }
        QStringList stale;
        QSet<QString> present;
        for (QString const &path : watcher.files() + watcher.directories()) {
            present.insert(path);
            if (!wanted.contains(path)) {
                stale.append(path);
            }
        }
        if (!stale.isEmpty()) {
            watcher.removePaths(stale);
        }
        QStringList fresh;
        for (QString const &path : wanted) {
            if (!present.contains(path)) {
                fresh.append(path);
            }
        }
        if (!fresh.isEmpty()) {
            watcher.addPaths(fresh);
        }
    }

    void check() {
        sync();
        ++checks;
        try {
            database.forceFileCheck();
        } catch (Exception const &e) {
            // An unreadable file throws out of every scan until it reads; the next read of the
            // database meets the same failure, so here it is only reported.
            reportMisuse("VORT::QtHost::DatabaseWatcher",
                         QStringLiteral("the check after a change failed: %1")
                             .arg(QString::fromUtf8(e.what())));
        }
    }

    XMLDB::Database &database;
    QFileSystemWatcher watcher;
    QTimer refreshTimer;
    QTimer settleTimer;
    std::vector<std::string> folders;
    int checks = 0;
};

DatabaseWatcher::DatabaseWatcher(XMLDB::Database &database, int refreshMilliseconds,
                                 int settleMilliseconds)
    : d(new Private(database)) {
    Private *const p = d.get();
    d->settleTimer.setSingleShot(true);
    d->settleTimer.setInterval(settleMilliseconds);
    const auto changed = [p](QString const &) { p->settleTimer.start(); };
    QObject::connect(&d->watcher, &QFileSystemWatcher::fileChanged, &d->settleTimer, changed);
    QObject::connect(&d->watcher, &QFileSystemWatcher::directoryChanged, &d->settleTimer, changed);
    QObject::connect(&d->settleTimer, &QTimer::timeout, &d->settleTimer, [p] { p->check(); });
    QObject::connect(&d->refreshTimer, &QTimer::timeout, &d->refreshTimer, [this, p] {
        if (p->database.getPaths() != p->folders) {
            refresh();
        }
    });
    refresh();
    d->refreshTimer.start(refreshMilliseconds);
}

DatabaseWatcher::~DatabaseWatcher() = default;

void DatabaseWatcher::refresh() {
    d->folders = d->database.getPaths();
    d->sync();
}

std::vector<std::string> DatabaseWatcher::watchedPaths() const {
    std::vector<std::string> paths;
    for (QString const &path : d->watcher.files() + d->watcher.directories()) {
        paths.push_back(QFile::encodeName(path).toStdString());
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

int DatabaseWatcher::checks() const {
    return d->checks;
}

}  // namespace QtHost
}  // namespace VORT
