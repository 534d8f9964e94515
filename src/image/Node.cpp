#include <vort/image/Node.h>

#include <QtGui/QImage>
#include <QtGui/QPixmap>

namespace VORT {
namespace ImageCompositor {

Node::Node() : mPixmap(nullptr), mImage(nullptr) {}

Node::Node(std::string const &key, QImage *image) : mKey(key), mPixmap(nullptr), mImage(image) {}

Node::Node(std::string const &, QPixmap *pixmap) : mPixmap(pixmap), mImage(nullptr) {}

Node::Node(Node const &other) = default;

Node &Node::operator=(Node const &other) = default;

Node::~Node() {
    delete mPixmap;
    delete mImage;
}

QPixmap const *Node::getPixmap(bool create) const {
    if (create && mPixmap == nullptr && mImage != nullptr) {
        return doCreatePixmap();
    }
    return mPixmap;
}

QPixmap *Node::getModifiablePixmap(bool create) {
    return const_cast<QPixmap *>(getPixmap(create));
}

QImage *Node::getImage(bool create) const {
    if (create && mImage == nullptr && mPixmap != nullptr) {
        return doCreateImage();
    }
    return mImage;
}

QImage *Node::getModifiableImage(bool create) const {
    return getImage(create);
}

QPixmap *Node::doGetPixmap(bool create) {
    return getModifiablePixmap(create);
}

QImage *Node::doGetImage(bool create) {
    return getImage(create);
}

QImage *Node::doCreateImage() const {
    mImage = new QImage(mPixmap->toImage());
    return mImage;
}

QPixmap *Node::doCreatePixmap() const {
    mPixmap = new QPixmap(QPixmap::fromImage(*mImage));
    return mPixmap;
}

void Node::updateImageFromPixmap() {
    if (mPixmap != nullptr && mImage != nullptr) {
        delete mImage;
        mImage = nullptr;
        doCreateImage();
    }
}

void Node::updatePixmapFromImage() {
    if (mPixmap != nullptr && mImage != nullptr) {
        delete mPixmap;
        mPixmap = nullptr;
        doCreatePixmap();
    }
}

void Node::setDataToOwn(QPixmap *pixmap) {
    if (pixmap == mPixmap) {
        return;
    }
    delete mPixmap;
    delete mImage;
    mPixmap = pixmap;
    mImage = nullptr;
}

void Node::setDataToOwn(QImage *image) {
    if (image == mImage) {
        return;
    }
    delete mPixmap;
    delete mImage;
    mPixmap = nullptr;
    mImage = image;
}

bool Node::isValid() const {
    return mPixmap != nullptr || mImage != nullptr;
}

void Node::setKey(std::string const &key) {
    mKey = key;
}

ImageResource Node::toImageResource() const {
    return ImageResource(mKey);
}

}  // namespace ImageCompositor
}  // namespace VORT
