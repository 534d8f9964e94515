// `VORT::ImageResource`: what an application keeps in place of an image, the key of a picture of
// the image manager (see Manager.h and ImageKey.h). It tells the manager when it starts and stops
// using a key, and holds no picture: the manager may collect the picture while resources with
// its key exist, and builds it again at the next `getImage` that may build.
//
// Every change of key references the new key before it dereferences the old one; an empty key
// means none and is never dereferenced. Dereferencing lets the manager collect, once its
// interval has passed (see `Manager::dereferenceNode`).
//
// Thread safety: as the manager's, one thread (the one that owns the display).
#ifndef VORT_IMAGE_IMAGERESOURCE_H
#define VORT_IMAGE_IMAGERESOURCE_H

#include <vort/vort_export.h>

#include <string>

namespace VORT {

class VORT_EXPORT ImageResource {
public:
    // No key; the manager is not called.
    ImageResource();
    // Takes `key` as `fromString` does.
    explicit ImageResource(std::string const &key);
    ImageResource(ImageResource const &other);
    // Through `copyFrom`.
    ImageResource &operator=(ImageResource const &other);
    virtual ~ImageResource();

    // The key, copied.
    virtual std::string toStringCopy() const;
    // Takes a new key: the manager references it, then dereferences the old one. The current
    // key changes nothing and calls nobody.
    virtual void fromString(std::string const &key);
    virtual void copyFrom(ImageResource const &other);

    std::string const &toStringRef() const { return mKey; }

private:
    std::string mKey;
};

}  // namespace VORT

#endif  // VORT_IMAGE_IMAGERESOURCE_H
