// `VORT::QtHost::DatabaseWatcher`: lets a Qt application see an edited configuration file at
// once, part of the Qt host kit (library `vortqthost`, target `Vort::QtHost`).
//
// The configuration database (`VORT::XMLDB::Database`) rereads changed files only when a read
// finds its throttle interval passed. The watcher follows the database's registered folders,
// their subfolders and their "*.xml" files with `QFileSystemWatcher`, and when one of them
// changes it calls the database's `forceFileCheck`, so the next read sees the edit. Changes that
// come in a burst (an editor writing, then renaming) are folded into one check, made once the
// files have been quiet for `settleMilliseconds`. Every `refreshMilliseconds` it looks whether
// folders were registered or taken out (the database tells no one), which costs no disk access.
// The database's own throttled scan goes on as before; the watcher only brings it forward. A
// file rewritten within the second of its last change keeps its old time, and the database then
// sees no change.
//
// Thread safety: the watcher belongs to the thread that makes it, which must run a Qt event loop
// and be the thread that uses the database. Ownership: it keeps a reference to the database,
// which must outlive it. Failure: a folder that doesn't exist is simply not watched.
#ifndef VORT_QTHOST_DATABASEWATCHER_H
#define VORT_QTHOST_DATABASEWATCHER_H

#include <vort/qthost/qthost_export.h>
#include <vort/xml/Database.h>

#include <memory>
#include <string>
#include <vector>

namespace VORT {
namespace QtHost {

class VORTQTHOST_EXPORT DatabaseWatcher {
public:
    explicit DatabaseWatcher(XMLDB::Database &database = XMLDB::Database::instance(),
                             int refreshMilliseconds = 1000, int settleMilliseconds = 100);
    ~DatabaseWatcher();
    DatabaseWatcher(const DatabaseWatcher &) = delete;
    DatabaseWatcher &operator=(const DatabaseWatcher &) = delete;

    // Takes the registered folders and their contents anew, now.
    void refresh();
    // The folders and files being watched, sorted.
    std::vector<std::string> watchedPaths() const;
    // How many checks the watcher has asked of the database.
    int checks() const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};

}  // namespace QtHost
}  // namespace VORT

#endif  // VORT_QTHOST_DATABASEWATCHER_H
