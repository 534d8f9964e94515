// `VORT::Pixmap`: the library's plain raster value, one owned `QImage` that the type family can
// carry in an `any` (see `PixmapType`), write as text and build from the planar sample arrays of
// the host's numeric environment; and the small enumerations that its constructors and `save`
// take (`ImageDataType`, `ImageDataDirection`, `ImageFileFormat`).
//
// A `Pixmap` is unset (no `QImage` at all) or set. A set `Pixmap` may hold a null `QImage`, as
// after a file that did not load; the two states differ only where the byte form is written.
// Every image that a `Pixmap` builds itself has the format `QImage::Format_ARGB32`.
//
// Text form: "W,H;" and then, row by row from the top, "R,G,B;" for each pixel, decimal and with
// no blank anywhere; alpha is not written. A 2-by-1 image of a red and a blue pixel is
// "2,1;255,0,0;0,0,255;". An unset `Pixmap` writes nothing. Reading is lenient: each number is a
// stream's double, rounded by adding 0.5 and truncating, each component keeps its low 8 bits,
// and the character after a number is skipped whatever it is. A text that runs short leaves the
// stream failed and still assigns what was built, the rest of the pixels repeating the last
// value read. A text whose size claims more than 64 Mi pixels (256 MiB as ARGB32) is not built:
// the stream fails and the target becomes unset.
//
// Ownership: the `Pixmap` owns its `QImage`; what `getQImage` returns must not be deleted by
// anybody else. Copies hold their own `QImage` (Qt shares the pixels until one side writes).
//
// Thread safety: a plain value; a `QImage` may be used on any thread.
//
// Failure: nothing here throws or reports. A file that does not load gives a null `QImage`.
#ifndef VORT_IMAGE_PIXMAP_H
#define VORT_IMAGE_PIXMAP_H

#include <vort/types/VTPoint.h>
#include <vort/vort_export.h>

#include <cstdint>
#include <iosfwd>
#include <string>

class QImage;

namespace VORT {

// The sample type of the array constructor; any other value leaves the `Pixmap` unset.
namespace ImageDataType {
enum Type { Double = 0, UInt8 = 1, UInt16 = 2 };
}

// The order of the samples along one axis: zero keeps the stored order, any other value mirrors
// it.
namespace ImageDataDirection {
enum Type { Forward = 0, Reverse = 1 };
}

// The file format of `save`: `PNG`, or any other value for the one that the file's suffix names.
namespace ImageFileFormat {
enum Type { PNG = 0, Auto = 1 };
}

class VORT_EXPORT Pixmap {
public:
    // Unset.
    Pixmap();
    // A copy of `*image`; `image` must not be null.
    explicit Pixmap(QImage const *image);
    // The image in the file `path`, its format told by the contents; a null image if the file
    // does not load.
    explicit Pixmap(std::string const &path);
    // Builds an opaque image from three planes of `width * height` samples of `type` (red, then
    // green, then blue), each plane stored column after column: sample (x, y) of a plane is at
    // index `x * height + y`. A non-zero direction mirrors that axis. `Double` samples are scaled
    // by 255 and rounded, keeping the low 8 bits (nothing clamps: 1.5 gives 127); `UInt8`
    // samples are taken as they are; a `UInt16` image is always all black, whatever the array
    // holds. Precondition: `data` holds `3 * width * height` samples of `type` (nothing is read
    // for `UInt16`, or when `width` or `height` is below 1).
    Pixmap(unsigned char const *data, ImageDataType::Type type, int width, int height,
           ImageDataDirection::Type xDirection, ImageDataDirection::Type yDirection);
    Pixmap(Pixmap const &other);
    Pixmap &operator=(Pixmap const &other);
    virtual ~Pixmap();

    // Replaces the image with the one in the file `path`. The image held before is not
    // destroyed: a pointer that `getQImage` gave earlier stays valid, and is its holder's to
    // delete.
    void loadImagePath(std::string const &path);
    // False if unset; otherwise what `QImage::save` answers. `quality` goes to Qt as it is (-1
    // for Qt's default).
    bool save(std::string const &path, ImageFileFormat::Type format, int quality) const;

    // 0 when unset.
    int getWidth() const;
    int getHeight() const;
    // The held image itself, null when unset; the `Pixmap` keeps ownership.
    QImage *getQImage() const { return mImage; }
    bool hasBounds() const { return true; }
    // From the origin, the image's size.
    VTRect<double> getBounds() const { return VTRect<double>(0.0, 0.0, getWidth(), getHeight()); }
    // `QImage::cacheKey`; 0 when unset or null.
    std::int64_t getCacheKey() const;

    // Equal cache keys (two unset `Pixmap`s, or an unset one and a null image, included), or
    // else two images with equal pixels.
    bool operator==(Pixmap const &other) const;
    bool operator!=(Pixmap const &other) const { return !(*this == other); }

    // The text form, described above. `read` reports only through the stream's flags.
    static std::ostream &write(std::ostream &stream, Pixmap const &pixmap);
    static std::istream &read(std::istream &stream, Pixmap &pixmap);

private:
    void buildFromDoubleData(double const *data, int width, int height,
                             ImageDataDirection::Type xDirection,
                             ImageDataDirection::Type yDirection);
    void buildFromUInt8Data(unsigned char const *data, int width, int height,
                            ImageDataDirection::Type xDirection,
                            ImageDataDirection::Type yDirection);
    void buildFromUInt16Data(unsigned short const *data, int width, int height,
                             ImageDataDirection::Type xDirection,
                             ImageDataDirection::Type yDirection);
    char const *formatNameString(ImageFileFormat::Type format) const;

    QImage *mImage;
};

}  // namespace VORT

// `Pixmap::write` and `Pixmap::read`.
VORT_EXPORT std::ostream &operator<<(std::ostream &stream, VORT::Pixmap const &pixmap);
VORT_EXPORT std::istream &operator>>(std::istream &stream, VORT::Pixmap &pixmap);

#endif  // VORT_IMAGE_PIXMAP_H
