// `VORT::ImageCompositor::Node`: one keyed picture of the image cache, held in either or both of
// Qt's forms, the display-side `QPixmap` and the memory-side `QImage`, and made in the missing
// form from the other when a getter is asked to create it.
//
// Ownership: a node owns the pictures it points to and deletes them with itself. It is counted
// (atomically) and reached through `Holder<Node>`; the manager's cache entry is one holder.
// Copying a node copies its count, its key and both raw pointers, without duplicating a
// picture: the two nodes then own the same objects, and only one of them may ever be destroyed.
//
// The key is the node's key in the manager's grammar (see ImageKey.h). The `QImage` constructor
// keeps it; the `QPixmap` constructor does not, by long-standing contract, so such a node has an
// empty key and gives an empty `ImageResource`.
//
// Thread safety: only the count is atomic, so holders may be dropped on any thread; everything
// else belongs to one thread at a time, and work on `QPixmap`s to the thread that owns the
// display (a `QGuiApplication` must exist for them).
//
// Failure: nothing is reported. A node with neither picture answers null from every getter.
#ifndef VORT_IMAGE_NODE_H
#define VORT_IMAGE_NODE_H

#include <vort/bones/AtomicCounter.h>
#include <vort/bones/Holder.h>
#include <vort/image/ImageResource.h>
#include <vort/vort_export.h>

#include <string>

class QImage;
class QPixmap;

namespace VORT {
namespace ImageCompositor {

class VORT_EXPORT Node : public ReferencedTemplate<AtomicCounter> {
public:
    // Count 0, no key, no picture.
    Node();
    // Keeps `key` and takes ownership of `image`.
    Node(std::string const &key, QImage *image);
    // Takes ownership of `pixmap`; the key is not stored.
    Node(std::string const &key, QPixmap *pixmap);
    // Share the pictures: see above.
    Node(Node const &other);
    Node &operator=(Node const &other);
    ~Node() override;

    // The picture in the asked form. With `create`, a missing form is made once from the other
    // and kept; without it, the pointer as it stands, null included.
    QPixmap const *getPixmap(bool create) const;
    QPixmap *getModifiablePixmap(bool create);
    QImage *getImage(bool create) const;
    QImage *getModifiableImage(bool create) const;

    // Make one form again from the other, when the node holds both; otherwise nothing.
    void updateImageFromPixmap();
    void updatePixmapFromImage();

    // Hands a new picture to the node, which drops both it held before. The pointer that the
    // node already holds changes nothing, and keeps the other form as well.
    void setDataToOwn(QPixmap *pixmap);
    void setDataToOwn(QImage *image);

    // Whether the node holds either form; the pictures themselves are not examined.
    bool isValid() const;
    std::string const &getKey() const { return mKey; }
    void setKey(std::string const &key);
    // `ImageResource(getKey())`, with its calls to the manager.
    ImageResource toImageResource() const;

protected:
    QPixmap *doGetPixmap(bool create);
    QImage *doGetImage(bool create);
    // Make the missing form from the other, which must be set, and keep it.
    QImage *doCreateImage() const;
    QPixmap *doCreatePixmap() const;

private:
    std::string mKey;
    mutable QPixmap *mPixmap;
    mutable QImage *mImage;
};

}  // namespace ImageCompositor
}  // namespace VORT

#endif  // VORT_IMAGE_NODE_H
