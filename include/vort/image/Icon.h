// `VORT::Icon` and `VORT::IconImageEntry`: the pictures of one on-screen symbol, one for each
// pair of a mode and a state, kept as texts (file names or image keys) and built by the image
// manager when somebody asks for them.
//
// An entry builds its picture once, through `Manager::instance().getImage(buildKey(name), true)`,
// and then holds it, so the manager's collection leaves that picture alone while the entry, or a
// copy of it, lives. A build that fails holds nothing, and the next request tries again. Copies
// share the built nodes. Entries and icons compare by their names only, built or not.
//
// Thread safety: as the manager's, one thread (the one that owns the display).
#ifndef VORT_IMAGE_ICON_H
#define VORT_IMAGE_ICON_H

#include <vort/bones/Holder.h>
#include <vort/image/Node.h>
#include <vort/vort_export.h>

#include <map>
#include <string>
#include <utility>

namespace VORT {

class VORT_EXPORT IconImageEntry {
public:
    IconImageEntry();
    explicit IconImageEntry(std::string const &name);

    std::string const &getName() const { return mName; }
    // A different name drops the built picture; the same name keeps it.
    void setName(std::string const &name);
    // With `build`, builds the picture if none is held and the name is not empty. The held
    // picture, null if none; without `build` the manager is not asked.
    Holder<ImageCompositor::Node> getImageNode(bool build);

    bool operator==(IconImageEntry const &other) const { return mName == other.mName; }
    bool operator!=(IconImageEntry const &other) const { return mName != other.mName; }

private:
    std::string mName;
    Holder<ImageCompositor::Node> mNode;
};

class VORT_EXPORT Icon {
public:
    // Only parts of the map's key: nothing depends on their values.
    enum IconMode { Normal, Disabled, Active, Selected };
    enum IconState { On, Off };
    typedef std::map<std::pair<IconMode, IconState>, IconImageEntry> ImageMap;

    Icon();
    Icon(std::string const &name, IconMode mode, IconState state);

    // Both set the entry of the pair to a new, unbuilt one of `name`, even when the name is the
    // one it had: a key goes in as a file name does, since `buildKey` leaves a key as it is.
    void addFile(std::string const &name, IconMode mode = Normal, IconState state = Off);
    void addImageCompositorKey(std::string const &key, IconMode mode = Normal,
                               IconState state = Off);

    ImageMap const &getImageMap() const { return mImages; }
    // Whether there is at least one entry.
    bool isValid() const { return !mImages.empty(); }

    // The same pairs with entries of the same names.
    bool operator==(Icon const &other) const { return mImages == other.mImages; }
    bool operator!=(Icon const &other) const { return !(*this == other); }

private:
    void insertImage(std::string const &name, IconMode mode, IconState state);

    ImageMap mImages;
};

}  // namespace VORT

#endif  // VORT_IMAGE_ICON_H
