// The modifiers of the image manager: the abstract `VORT::ImageCompositor::Modifier` and its three
// kinds, `DefaultModifier` (loads a file), `QtModifier` (composes two images with a `QPainter`
// composition mode) and `ColorModifier` (composes, then tints); and the free functions that
// place and tint pictures, `computeImgLocation`, `isGrayscale` and
// `convertImageToGrayscaleAndTint`.
//
// The manager keeps one prototype of each modifier under a name (see Manager.h). To build a key
// it clones the prototype with the key's argument text, calls `render` with the key's two
// operands, and lets the clone finish the picture in `postRender`. `QtModifier::render` asks the
// manager for its operands by their own keys, so building a key is recursive.
//
// Ownership: `clone` hands a new modifier to the caller (the manager wraps it in a
// `boost::shared_ptr`). Modifiers hold no picture.
//
// Thread safety: a modifier belongs to one thread at a time; `render` uses the manager, whose
// calls belong to the thread that owns the display.
//
// Failure: every failure is a false or null result; nothing is logged or thrown. A colour
// argument that does not parse is no failure: the colour is what the stream made of it.
#ifndef VORT_IMAGE_MODIFIER_H
#define VORT_IMAGE_MODIFIER_H

#include <vort/bones/Holder.h>
#include <vort/image/Mode.h>
#include <vort/image/Node.h>
#include <vort/types/Color.h>
#include <vort/types/VTPoint.h>
#include <vort/vort_export.h>

#include <string>

class QImage;

namespace VORT {
namespace ImageCompositor {

class VORT_EXPORT Modifier {
public:
    Modifier(Location const &aLoc = Location(Location::TopLeft),
             Location const &bLoc = Location(Location::TopLeft),
             VTPoint<int> const &offset = VTPoint<int>());
    Modifier(Modifier const &other);
    Modifier &operator=(Modifier const &other);
    virtual ~Modifier();

    // A new modifier of the same class, with this one's settings and then those of `args`; null
    // when the class refuses `args`. The caller owns the result.
    virtual Modifier *clone(std::string const &args) const = 0;
    // Makes the picture of a key from its operands (either may be null) into `out`.
    virtual bool render(QImage &out, std::string const *keyA, std::string const *keyB) = 0;
    // Finishes the rendered picture; the operands' cached nodes come along and may be null.
    // True here, leaving the picture alone.
    virtual bool postRender(QImage &image, Holder<Node> const &nodeA, Holder<Node> const &nodeB);
    // Where image B's top-left goes so that its anchor falls on image A's anchor; (0, 0) when
    // either image is null. The offset is not added.
    virtual VTPoint<int> getRenderLocation(QImage const *imageA, QImage const *imageB);

    Location const &getALoc() const { return mALoc; }
    Location const &getBLoc() const { return mBLoc; }
    // Stored and copied; no drawing here uses it.
    VTPoint<int> const &getOffsetXY() const { return mOffsetXY; }
    void setALoc(Location const &location) { mALoc = location; }
    void setBLoc(Location const &location) { mBLoc = location; }
    void setOffsetXY(VTPoint<int> const &offset) { mOffsetXY = offset; }

protected:
    // Takes the settings of `other`; each class copies its own fields too.
    virtual void doCopyFrom(Modifier const *other);
    // Reads the settings that `args` gives, consuming what it reads; false refuses them. True
    // here, taking nothing.
    virtual bool doInitFromString(std::string &args);

    // The common end of every `clone`: copies `source`'s settings into `fresh`, then reads
    // `args` into it; deletes it and gives null if it refuses them.
    static Modifier *finishClone(Modifier *fresh, Modifier const *source, std::string const &args);

private:
    VTPoint<int> mOffsetXY;
    Location mALoc;
    Location mBLoc;
};

// "loadImg:": the picture in the file named by the first operand.
class VORT_EXPORT DefaultModifier : public Modifier {
public:
    DefaultModifier *clone(std::string const &args) const override;
    // Loads `*keyA` as a path, its format told by the contents; false if it does not load.
    bool render(QImage &out, std::string const *keyA, std::string const *keyB) override;
};

// "comp_mode:<name>": the two operands drawn on one canvas with a composition mode. The
// arguments are ignored.
class VORT_EXPORT QtModifier : public Modifier {
public:
    explicit QtModifier(Mode const &mode);

    QtModifier *clone(std::string const &args) const override;
    // Builds the operands through `Manager::instance()` by `buildKey` of each; an operand key
    // that is given and not empty must build. The canvas, ARGB32 premultiplied and transparent,
    // is as wide and as high as the larger operand; A is drawn at the origin, then B at
    // `getRenderLocation`, clipped, with the mode. A mode outside 0 to 23 becomes "SourceOver"
    // for good.
    bool render(QImage &out, std::string const *keyA, std::string const *keyB) override;

    Mode const &getMode() const { return mMode; }

protected:
    void doCopyFrom(Modifier const *other) override;

private:
    Mode mMode;
};

// "color_modifier:": the operands composed as "SourceOver" does, then tinted by
// `convertImageToGrayscaleAndTint`. The arguments read "R,G,B,A;flag": four components from 0.0
// to 1.0 with any one character between them, then the flag as a stream reads a bool (0 or 1).
class VORT_EXPORT ColorModifier : public QtModifier {
public:
    ColorModifier(Color const &color, bool toGrayscale);

    ColorModifier *clone(std::string const &args) const override;
    // Tints the picture; always true.
    bool postRender(QImage &image, Holder<Node> const &nodeA, Holder<Node> const &nodeB) override;

    Color const &getColor() const { return mColor; }
    bool getToGrayscale() const { return mToGrayscale; }

protected:
    void doCopyFrom(Modifier const *other) override;
    // Takes the colour up to the first ";" and the flag up to the next, and leaves in `args`
    // what follows that. Never refuses.
    bool doInitFromString(std::string &args) override;

private:
    Color mColor;
    bool mToGrayscale;
};

// The anchor point of `image`: the corners, the middles of the edges or the centre of its
// rectangle, whose right and bottom are the last column and row; halves round toward zero.
// (0, 0) for a null pointer and for a code outside 0 to 8.
VORT_EXPORT VTPoint<int> computeImgLocation(QImage const *image, Location const &location);

// Whether no pixel has red 5 or more away from green or from blue (green and blue are not
// compared with each other); an image without pixels is grayscale. Alpha is ignored, and
// premultiplied channels are taken as they stand.
VORT_EXPORT bool isGrayscale(QImage const &image);

// Tints every pixel, keeping its alpha. With `toGrayscale`, each pixel becomes its luminance
// (R * 11 + G * 16 + B * 5) / 32, lifted by 130 when the whole image was grayscale and the sum
// stays below 255, times each of the colour's red, green and blue (alpha unused), in single
// precision. Without it, each channel is scaled by the colour's. Premultiplied channels are
// worked on as they stand. Pixels that do not change are not written, so an image that the tint
// leaves as it was is not detached. An image whose 32-bit words are not 0xAARRGGBB (any format
// but RGB32, ARGB32 and ARGB32 premultiplied) is first converted to ARGB32.
VORT_EXPORT void convertImageToGrayscaleAndTint(QImage &image, Color const &color,
                                                bool toGrayscale);

}  // namespace ImageCompositor
}  // namespace VORT

#endif  // VORT_IMAGE_MODIFIER_H
