// Not public API: how the image classes hand a file name to Qt.
#ifndef VORT_IMAGE_IMAGEPATH_P_H
#define VORT_IMAGE_IMAGEPATH_P_H

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QString>

#include <string>

namespace VORT {

// Through the file system's own encoding, so that a non-ASCII name opens the file it names.
inline QString toQtPath(std::string const &path) {
    return QFile::decodeName(QByteArray::fromStdString(path));
}

}  // namespace VORT

#endif  // VORT_IMAGE_IMAGEPATH_P_H
