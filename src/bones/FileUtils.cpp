#include <vort/bones/FileUtils.h>

#include <QByteArray>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QString>
#include <QStringList>

#include <fstream>
#include <sys/stat.h>

namespace VORT {

namespace {

// The key of the resident-size line in the process status text.
const char kResidentSizeKey[] = "VmRSS:";

QString toQt(std::string const &path) {
    return QFile::decodeName(QByteArray::fromStdString(path));
}

std::string joined(std::string const &directory, QString const &name) {
    const QByteArray bytes = QFile::encodeName(name);
    std::string path;
    path.reserve(directory.size() + 1 + std::string::size_type(bytes.size()));
    path = directory;
    if (path.empty() || path.back() != '/') {
        path.push_back('/');
    }
    path.append(bytes.constData(), std::string::size_type(bytes.size()));
    return path;
}

// A directory of the walk, known by its device and inode so that a symbolic link back to one
// of its own ancestors can be told; `parent` indexes the walk's list of directories.
struct Directory {
    dev_t device;
    ino_t inode;
    int parent;
};

class Walk {
public:
    // The index of `path`'s record under `parent`, or -1 if the directory can't be identified
    // (it is searched all the same), or -2 if it is one of its own ancestors: a link that
    // loops.
    int enter(std::string const &path, int parent) {
        struct stat status;
        if (::stat(path.c_str(), &status) != 0) {
            return -1;
        }
        for (int at = parent; at >= 0; at = m_directories[std::size_t(at)].parent) {
            Directory const &above = m_directories[std::size_t(at)];
            if (above.device == status.st_dev && above.inode == status.st_ino) {
                return -2;
            }
        }
        m_directories.push_back(Directory{status.st_dev, status.st_ino, parent});
        return int(m_directories.size()) - 1;
    }

private:
    std::vector<Directory> m_directories;
};

}  // namespace

char *readTextFileIntoNewBuffer(std::string const &path, std::int64_t &size) {
    if (path.empty()) {
        return nullptr;  // names no file; Qt would warn on the console
    }
    QFile file(toQt(path));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return nullptr;
    }
    const qint64 fileSize = file.size();
    size = fileSize;
    if (fileSize <= 0) {
        return nullptr;
    }
    char *buffer = new char[std::size_t(fileSize) + 1];
    const qint64 arrived = file.read(buffer, fileSize);
    buffer[arrived > 0 ? arrived : 0] = '\0';
    return buffer;
}

void gatherSubDirectories(std::string const &directory, std::vector<std::string> &results,
                          bool recursive) {
    if (directory.empty()) {
        return;
    }
    struct Pending {
        std::string path;
        int record;
    };
    Walk walk;
    std::vector<Pending> stack;
    stack.push_back(Pending{directory, recursive ? walk.enter(directory, -1) : -1});
    while (!stack.empty()) {
        const Pending current = std::move(stack.back());
        stack.pop_back();
        const QStringList names =
            QDir(toQt(current.path)).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Unsorted);
        for (QString const &name : names) {
            std::string path = joined(current.path, name);
            if (!recursive) {
                results.push_back(std::move(path));
                continue;
            }
            const int record = walk.enter(path, current.record);
            if (record != -2) {
                results.push_back(path);
                stack.push_back(Pending{std::move(path), record});
            }
        }
    }
}

void gatherFiles(std::string const &directory, std::vector<std::string> const &patterns,
                 std::vector<std::string> &results, bool recursive) {
    if (directory.empty()) {
        return;
    }
    std::vector<std::string> directories(1, directory);
    gatherSubDirectories(directory, directories, recursive);
    QStringList filters;
    filters.reserve(qsizetype(patterns.size()));
    for (std::string const &pattern : patterns) {
        filters.append(toQt(pattern));
    }
    for (std::string const &folder : directories) {
        const QStringList names =
            QDir(toQt(folder)).entryList(filters, QDir::Files, QDir::Unsorted);
        for (QString const &name : names) {
            results.push_back(joined(folder, name));
        }
    }
}

void gatherFiles(std::string const &directory, std::string const &pattern,
                 std::vector<std::string> &results, bool recursive) {
    if (pattern.empty()) {
        return;
    }
    gatherFiles(directory, std::vector<std::string>(1, pattern), results, recursive);
}

void buildFileAndTimeList(std::string const &directory, std::string const &pattern, bool recursive,
                          std::vector<std::pair<std::string, unsigned long>> &results) {
    if (pattern.empty()) {
        return;
    }
    std::vector<std::string> files;
    gatherFiles(directory, pattern, files, recursive);
    results.reserve(results.size() + files.size());
    for (auto file = files.rbegin(); file != files.rend(); ++file) {
        const QDateTime modified = QFileInfo(toQt(*file)).lastModified();
        const unsigned long seconds =
            modified.isValid() ? static_cast<std::uint32_t>(modified.toSecsSinceEpoch()) : 0;
        results.emplace_back(std::move(*file), seconds);
    }
}

double GetCurrentProcessMemory(bool inMegabytes) {
    std::ifstream status("/proc/self/status");
    std::string line;
    const std::string::size_type keyLength = sizeof kResidentSizeKey - 1;
    while (std::getline(status, line)) {
        if (line.compare(0, keyLength, kResidentSizeKey) != 0) {
            continue;
        }
        std::string::size_type at = line.find_first_not_of(" \t", keyLength);
        std::uint64_t kilobytes = 0;
        for (; at < line.size() && line[at] >= '0' && line[at] <= '9'; ++at) {
            kilobytes = kilobytes * 10 + std::uint64_t(line[at] - '0');
        }
        const double bytes = double(kilobytes * 1024);
        return inMegabytes ? bytes * 9.5367431640625e-7 : bytes;
    }
    return 0.0;
}

}  // namespace VORT
