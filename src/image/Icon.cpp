#include <vort/image/Icon.h>
#include <vort/image/Manager.h>

namespace VORT {

IconImageEntry::IconImageEntry() {}

IconImageEntry::IconImageEntry(std::string const &name) : mName(name) {}

void IconImageEntry::setName(std::string const &name) {
    if (name != mName) {
        mName = name;
        mNode = Holder<ImageCompositor::Node>();
    }
}

Holder<ImageCompositor::Node> IconImageEntry::getImageNode(bool build) {
    if (build && !mNode && !mName.empty()) {
        mNode =
            ImageCompositor::Manager::instance().getImage(ImageCompositor::buildKey(mName), true);
    }
    return mNode;
}

Icon::Icon() {}

Icon::Icon(std::string const &name, IconMode mode, IconState state) {
    insertImage(name, mode, state);
}

void Icon::addFile(std::string const &name, IconMode mode, IconState state) {
    insertImage(name, mode, state);
}

void Icon::addImageCompositorKey(std::string const &key, IconMode mode, IconState state) {
    insertImage(key, mode, state);
}

void Icon::insertImage(std::string const &name, IconMode mode, IconState state) {
    mImages[std::make_pair(mode, state)] = IconImageEntry(name);
}

}  // namespace VORT
