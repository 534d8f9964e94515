#include <hsl/hsl.h>
#include <vort/bones/FileUtils.h>
#include <vort/xml/Database.h>
#include <vort/xml/XmlReader.h>

#include <boost/checked_delete.hpp>
#include <boost/make_shared.hpp>

#include <utility>

namespace VORT {
namespace XMLDB {

namespace {

// Units of `hslRealtime` between two scans.
const double kCheckInterval = 5.0;

}  // namespace

PathItem::PathItem(std::string const &path, ModuleObjectDeleter *deleter, Callback callback)
    : mPath(path), mCallback(callback), mInDatabase(false) {
    if (deleter != nullptr) {
        deleter->append(new ModuleObjectImpl<PathItem *, boost::checked_deleter<PathItem>>(this));
    }
}

PathItem::~PathItem() {
    if (mInDatabase) {
        Database::instance().removePath(mPath);
    }
}

Database &Database::instance() {
    static Database database;
    return database;
}

Database &DefaultGetDatabase() {
    return Database::instance();
}

Database::Database() : mNextCheck(0.0) {}

Database::~Database() {
    clearAllFilesAndData();
    // An item that outlives the database must not call back into it.
    for (auto &entry : mPaths) {
        entry.second->mInDatabase = false;
    }
}

void Database::addPath(PathItem *item) {
    if (item == nullptr || mPaths.count(item->mPath) != 0) {
        return;
    }
    item->mInDatabase = true;
    mPaths.emplace(item->mPath, item);
    mNextCheck = 0.0;
}

bool Database::removePath(std::string const &path) {
    const auto found = mPaths.find(path);
    if (found == mPaths.end()) {
        return false;
    }
    doOnRemovePath(found->second);
    mPaths.erase(found);
    return true;
}

void Database::forceFileCheck() {
    mNextCheck = 0.0;
    doFileCheck();
}

boost::shared_ptr<DataNode> Database::getData(std::string const &key, bool) const {
    // A read may scan: the one mutation behind the const interface, made on the database's
    // own thread (see the header).
    const_cast<Database *>(this)->doFileCheck();
    const auto found = mData.find(key);
    return found == mData.end() ? boost::shared_ptr<DataNode>() : found->second;
}

std::vector<std::string> Database::getPaths() const {
    std::vector<std::string> paths;
    paths.reserve(mPaths.size());
    for (auto const &entry : mPaths) {
        paths.push_back(entry.first);
    }
    return paths;
}

PathItem *Database::doFetchPathItem(std::string const &path) const {
    const auto found = mPaths.find(path);
    return found == mPaths.end() ? nullptr : found->second;
}

void Database::doOnRemovePath(PathItem *item) {
    if (item != nullptr) {
        item->mInDatabase = false;
    }
}

void Database::doFileCheck() {
    const double now = hslRealtime();
    // Until a first file is found, every read scans.
    if (!mFiles.empty() && !(now > mNextCheck)) {
        return;
    }
    doBuildFileList();
    mNextCheck = now + kCheckInterval;
    bool changed = false;
    for (auto &entry : mFiles) {
        if (entry.second->mNeedsRebuild) {
            doRebuildData(*entry.second);
            changed = true;
        }
    }
    if (changed) {
        doRebuildFullMap();
    }
}

void Database::doBuildFileList() {
    struct Record {
        std::string fileName;
        PathItem *item;
        unsigned int time;
    };
    std::vector<Record> records;
    std::vector<std::pair<std::string, unsigned long>> found;
    for (auto const &entry : mPaths) {
        found.clear();
        buildFileAndTimeList(entry.first, "*.xml", true, found);
        for (auto &file : found) {
            records.push_back(
                {std::move(file.first), entry.second, static_cast<unsigned int>(file.second)});
        }
    }
    for (auto record = records.rbegin(); record != records.rend(); ++record) {
        std::unique_ptr<ConfigFile> &file = mFiles[record->fileName];
        if (!file) {
            file = std::make_unique<ConfigFile>(record->fileName);
        }
        // Any other time is a change, an older one too: a file put back from a backup counts.
        if (record->time != file->mFileTime) {
            file->mPath = record->item->mPath;
            file->mFileTime = record->time;
            file->mNeedsRebuild = true;
            ++file->mLoadCount;
        }
    }
}

void Database::doRebuildData(ConfigFile &file) {
    file.mNodes.clear();
    XmlReader reader(file.mFileName.c_str(), XmlReaderSettings());
    while (reader.hasNext()) {
        DataNode::NodePtr node = boost::make_shared<DataNode>();
        const XmlEventTypes::Type event = reader.next();
        if (node->loadXML(std::string(), reader, file.mNodes, event)) {
            file.mNodes.emplace(node->getName(), node);
        }
    }
    PathItem *item = doFetchPathItem(file.mPath);
    if (item != nullptr && item->mCallback != nullptr) {
        item->mCallback(file.mFileName, file.mLoadCount == 1);
    }
    file.mNeedsRebuild = false;
}

void Database::doRebuildFullMap() {
    mData.clear();
    for (auto const &entry : mFiles) {
        for (auto const &named : entry.second->mNodes) {
            boost::shared_ptr<DataNode> &present = mData[named.first];
            if (!present) {
                present = named.second;
            } else if (present->isCombinedNode()) {
                present->absorb(named.second);
            } else {
                // The file's own nodes stay as they are for the next rebuild: the merge goes
                // into a new node.
                boost::shared_ptr<DataNode> combined = boost::make_shared<DataNode>();
                combined->absorb(present);
                present = combined;
                present->absorb(named.second);
            }
        }
    }
}

void Database::clearAllFilesAndData() {
    mData.clear();
    mFiles.clear();
}

}  // namespace XMLDB
}  // namespace VORT
