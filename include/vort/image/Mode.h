// `VORT::ImageCompositor::Location` and `VORT::ImageCompositor::Mode`: the two small values that
// say how a modifier puts two images together, an anchor point of each image and the `QPainter`
// composition mode.
//
// A `Mode` holds the code of a `QPainter::CompositionMode`; codes 0 to 23 ("SourceOver" to
// "Exclusion") are Qt's own values one for one, and every other code is named "Invalid". A
// `Location` holds one of the nine anchor codes below; where they fall is told by
// `computeImgLocation` (Modifier.h). Both keep whatever code they are given.
//
// Thread safety: plain values; the table of mode names is built once, at first use, and only
// read afterwards.
#ifndef VORT_IMAGE_MODE_H
#define VORT_IMAGE_MODE_H

#include <vort/bones/StringID.h>
#include <vort/vort_export.h>

namespace VORT {
namespace ImageCompositor {

class VORT_EXPORT Location {
public:
    enum Code {
        TopCenter = 0,
        BottomCenter = 1,
        LeftCenter = 2,
        RightCenter = 3,
        TopLeft = 4,
        TopRight = 5,
        BottomLeft = 6,
        BottomRight = 7,
        Center = 8
    };

    Location(int code = TopLeft) : mCode(code) {}

    int getCode() const { return mCode; }
    bool operator==(Location const &other) const { return mCode == other.mCode; }
    bool operator!=(Location const &other) const { return mCode != other.mCode; }

private:
    int mCode;
};

class VORT_EXPORT Mode {
public:
    enum Code {
        SourceOver = 0,
        DestinationOver = 1,
        Clear = 2,
        Source = 3,
        Destination = 4,
        SourceIn = 5,
        DestinationIn = 6,
        SourceOut = 7,
        DestinationOut = 8,
        SourceAtop = 9,
        DestinationAtop = 10,
        Xor = 11,
        Plus = 12,
        Multiply = 13,
        Screen = 14,
        Overlay = 15,
        Darken = 16,
        Lighten = 17,
        ColorDodge = 18,
        ColorBurn = 19,
        HardLight = 20,
        SoftLight = 21,
        Difference = 22,
        Exclusion = 23
    };

    Mode(int code = SourceOver) : mCode(code) {}

    int getCode() const { return mCode; }
    // The plain name, such as "Multiply", without the "comp_mode:" of a modifier name;
    // "Invalid" for a code outside 0 to 23.
    StringID getName() const;
    bool operator==(Mode const &other) const { return mCode == other.mCode; }
    bool operator!=(Mode const &other) const { return mCode != other.mCode; }

private:
    int mCode;
};

}  // namespace ImageCompositor
}  // namespace VORT

#endif  // VORT_IMAGE_MODE_H
