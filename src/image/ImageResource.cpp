#include <vort/image/ImageResource.h>
#include <vort/image/Manager.h>

namespace VORT {

ImageResource::ImageResource() {}

ImageResource::ImageResource(std::string const &key) {
    if (!key.empty()) {
        fromString(key);
    }
}

ImageResource::ImageResource(ImageResource const &other) {
    fromString(other.mKey);
}

ImageResource &ImageResource::operator=(ImageResource const &other) {
    copyFrom(other);
    return *this;
}

ImageResource::~ImageResource() {
    if (!mKey.empty()) {
        ImageCompositor::Manager::instance().dereferenceNode(mKey);
    }
}

std::string ImageResource::toStringCopy() const {
    return mKey;
}

void ImageResource::fromString(std::string const &key) {
    if (key == mKey) {
        return;
    }
    ImageCompositor::Manager &manager = ImageCompositor::Manager::instance();
    manager.referenceNode(key);
    manager.dereferenceNode(mKey);
    mKey = key;
}

void ImageResource::copyFrom(ImageResource const &other) {
    fromString(other.mKey);
}

}  // namespace VORT
