// Test support for the xml module: a temporary folder to write files into, with UTF-8 names.
#ifndef VORT_TESTS_XML_XMLTESTSUPPORT_H
#define VORT_TESTS_XML_XMLTESTSUPPORT_H

#include <vort/xml/XmlReader.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <gtest/gtest.h>

#include <cstdint>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/stat.h>

namespace vort_test {

inline std::string shown(VORT::XmlStringRef const &ref) {
    return ref.isNull() ? "(null)" : ref.toString();
}
inline std::string shown(std::string const &text) {
    return text;
}

// The texts joined by "|", a null reference as "(null)": one comparison shows every answer.
template <typename... Texts>
std::string joined(Texts const &...texts) {
    std::string out;
    ((out += shown(texts) + "|"), ...);
    return out;
}

class TempFolder {
public:
    TempFolder() { EXPECT_TRUE(m_dir.isValid()); }

    // The folder's path, or a path inside it, as the library takes file names.
    std::string path(std::string const &name = std::string()) const {
        const std::string root =
            QFile::encodeName(QDir(m_dir.path()).canonicalPath()).toStdString();
        return name.empty() ? root : root + '/' + name;
    }

    // Writes `bytes` to `name` (subfolders are made), and gives the file the modification
    // time `seconds` since 1970 when that is not 0.
    std::string write(std::string const &name, std::string const &bytes,
                      std::int64_t seconds = 0) const {
        const std::string file = path(name);
        std::filesystem::create_directories(std::filesystem::path(file).parent_path());
        std::ofstream(file, std::ios::binary) << bytes;
        const struct timespec times[2] = {{seconds, 0}, {seconds, 0}};
        EXPECT_TRUE(seconds == 0 || ::utimensat(AT_FDCWD, file.c_str(), times, 0) == 0) << file;
        return file;
    }

    std::string read(std::string const &name) const {
        std::ifstream in(path(name), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), {});
    }

private:
    QTemporaryDir m_dir;
};

}  // namespace vort_test

#endif  // VORT_TESTS_XML_XMLTESTSUPPORT_H
