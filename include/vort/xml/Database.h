// `VORT::XMLDB::Database`, the configuration store made of the XML files in registered folders,
// and `VORT::XMLDB::PathItem`, one registered folder.
//
// An application registers folders (`addPath`). The database finds every "*.xml" file in them
// and in their subfolders, reads each into a tree of `DataNode`s, and merges all files into one
// map from long names ("Root/Colors/Background") to nodes. Where several files define one long
// name, the merged node takes their content in the order of the files' paths: texts are
// concatenated, elements and attributes appended, so that a later file's attribute wins.
//
// Reads (`getData`) scan the folders at most once per 5.0 units of `hslRealtime` (seconds,
// unless the host set another clock), and reread only the files whose modification time changed,
// in either direction, since the last scan. So an edited file is seen within one interval with
// no notification; `forceFileCheck` scans at once. Times are whole seconds: a file rewritten
// within the second of its last scanned change keeps its old content until its time changes.
// Files that vanish keep their data; so does a folder that is removed.
//
// Failure: an unknown key gives null. A malformed file gives the nodes that were finished before
// the error, silently. A file that exists but cannot be opened throws out of `getData`, as the
// `XmlReader` constructor does, on every scan until it can be read.
//
// Ownership: `PathItem`s belong to the application or to a `ModuleObjectDeleter`, never to the
// database, which keeps pointers to them; an item in the database takes itself out when it is
// destroyed. Thread safety: none. `getData` may rebuild the maps, so the database belongs to one
// thread at a time, which the callers keep so.
#ifndef VORT_XML_DATABASE_H
#define VORT_XML_DATABASE_H

#include <vort/bones/ModuleObject.h>
#include <vort/vort_export.h>
#include <vort/xml/DataNode.h>

#include <boost/noncopyable.hpp>
#include <boost/shared_ptr.hpp>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace VORT {
namespace XMLDB {

class Database;

class VORT_EXPORT PathItem {
public:
    // Called after a file of the folder was read, with the file's path and whether it was the
    // file's first load.
    typedef void (*Callback)(std::string const &fileName, bool firstLoad);

    // With a `deleter`, the item is entered in it and dies with the module that owns it.
    PathItem(std::string const &path, ModuleObjectDeleter *deleter, Callback callback);
    // Member-wise: a copy of an item in the database claims to be in it too, and destroying
    // the copy takes the folder out.
    PathItem(PathItem const &other) = default;
    PathItem &operator=(PathItem const &other) = default;
    // Takes the folder out of the database while the item is in it.
    ~PathItem();

    std::string const &getPath() const { return mPath; }
    Callback getCallback() const { return mCallback; }
    bool isInDatabase() const { return mInDatabase; }

private:
    friend class Database;

    std::string mPath;
    Callback mCallback;
    bool mInDatabase;
};

class VORT_EXPORT Database : private boost::noncopyable {
public:
    // The one database, made at first use and destroyed at process exit.
    static Database &instance();

    // Registers the item's folder; the next read scans. A null item, or a folder that is
    // registered already (by another item too), changes nothing.
    virtual void addPath(PathItem *item);
    // Unregisters the folder; its files keep their data but are no longer scanned. False if it
    // was not registered. The item is not deleted.
    virtual bool removePath(std::string const &path);
    // Scans now.
    virtual void forceFileCheck();
    virtual ~Database();

    // The node of that exact long name, after a scan if one is due; null if there is none.
    // `flag` has no effect. A node taken before a rebuild stays valid and shows the old data.
    boost::shared_ptr<DataNode> getData(std::string const &key, bool flag = false) const;
    // The registered folders, in order.
    std::vector<std::string> getPaths() const;

protected:
    // One XML file, by its path as the scan gave it.
    struct ConfigFile {
        explicit ConfigFile(std::string const &fileName) : mFileName(fileName) {}

        DataNode::NodeMap mNodes;  // every root and every first element of a long name
        std::string mPath;         // the folder it was found in
        std::string mFileName;
        unsigned int mFileTime = 0;  // modification time at the last scan, 32-bit seconds
        unsigned int mLoadCount = 0;
        bool mNeedsRebuild = true;
    };

    // For the singleton and for databases of the application's own, such as test fixtures.
    Database();

    PathItem *doFetchPathItem(std::string const &path) const;
    void doOnRemovePath(PathItem *item);
    void doFileCheck();
    void doBuildFileList();
    void doRebuildData(ConfigFile &file);
    void doRebuildFullMap();
    void clearAllFilesAndData();

    std::map<std::string, boost::shared_ptr<DataNode>> mData;
    std::map<std::string, PathItem *> mPaths;
    std::map<std::string, std::unique_ptr<ConfigFile>> mFiles;  // every file ever found
    // Time on the `hslRealtime` clock from which the next scan is due; 0.0 forces one.
    double mNextCheck;
};

VORT_EXPORT Database &DefaultGetDatabase();

}  // namespace XMLDB
}  // namespace VORT

#endif  // VORT_XML_DATABASE_H
