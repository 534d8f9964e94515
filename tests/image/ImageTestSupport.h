// Test support for the image module: solid pictures, a scratch folder of image files, and a node
// that counts its destructions.
#ifndef VORT_TESTS_IMAGE_IMAGETESTSUPPORT_H
#define VORT_TESTS_IMAGE_IMAGETESTSUPPORT_H

#include <vort/image/Node.h>

#include <QtCore/QDir>
#include <QtCore/QTemporaryDir>
#include <QtGui/QImage>

#include <atomic>
#include <string>

namespace vort_test {

inline QImage solid(int width, int height, QRgb value,
                    QImage::Format format = QImage::Format_ARGB32) {
    QImage image(width, height, format);
    image.fill(value);
    return image;
}

// A fresh folder, removed with the object; its paths make keys that no other test uses.
class ImageFolder {
public:
    std::string path(std::string const &name) const {
        return QDir(m_folder.path()).filePath(QString::fromStdString(name)).toStdString();
    }
    // Writes `image` as PNG and gives its path.
    std::string write(std::string const &name, QImage const &image) const {
        image.save(QString::fromStdString(path(name)), "PNG");
        return path(name);
    }

private:
    QTemporaryDir m_folder;
};

class CountedNode : public VORT::ImageCompositor::Node {
public:
    CountedNode(std::string const &key, QImage *image) : Node(key, image) {}
    ~CountedNode() override { destroyed.fetch_add(1); }

    static inline std::atomic<int> destroyed{0};
};

}  // namespace vort_test

#endif  // VORT_TESTS_IMAGE_IMAGETESTSUPPORT_H
