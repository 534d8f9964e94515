// Test support for the xml module: a temporary folder to write files into, with UTF-8 names.
#ifndef VORT_TESTS_XML_XMLTESTSUPPORT_H
#define VORT_TESTS_XML_XMLTESTSUPPORT_H

#include <vort/xml/XmlReader.h>

#include <QtCore/QDateTime>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>

#include <gtest/gtest.h>

#include <ostream>
#include <string>

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
        const QString root = QDir(m_dir.path()).canonicalPath();
        return QFile::encodeName(name.empty() ? root : root + u'/' + QString::fromStdString(name))
            .toStdString();
    }

    // Writes `bytes` to `name` (subfolders are made), and gives the file the modification
    // time `seconds` since 1970 when that is not 0.
    std::string write(std::string const &name, std::string const &bytes, qint64 seconds = 0) const {
        const std::string file = path(name);
        const QString qfile = QFile::decodeName(QByteArray::fromStdString(file));
        QDir().mkpath(QFileInfo(qfile).absolutePath());
        QFile out(qfile);
        EXPECT_TRUE(out.open(QIODevice::WriteOnly | QIODevice::Truncate)) << file;
        out.write(bytes.data(), static_cast<qint64>(bytes.size()));
        // Flushed first: bytes written later would set the time to now again.
        out.flush();
        if (seconds != 0) {
            EXPECT_TRUE(out.setFileTime(QDateTime::fromSecsSinceEpoch(seconds),
                                        QFileDevice::FileModificationTime));
        }
        return file;
    }

    std::string read(std::string const &name) const {
        QFile in(QFile::decodeName(QByteArray::fromStdString(path(name))));
        EXPECT_TRUE(in.open(QIODevice::ReadOnly)) << name;
        return in.readAll().toStdString();
    }

private:
    QTemporaryDir m_dir;
};

}  // namespace vort_test

#endif  // VORT_TESTS_XML_XMLTESTSUPPORT_H
