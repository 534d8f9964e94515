// `VORT::PixmapType`: the member of the type family that carries a `Pixmap`.
//
// Text form: the `Pixmap` text form (see Pixmap.h), "W,H;" followed by "R,G,B;" per pixel, alpha
// dropped. A text that leaves the reading stream failed fails with "Can't convert string
// '<text>' to pixmap"; the empty text fails so. Byte form: the image as PNG, alpha kept. An unset
// `Pixmap`, or one whose image is null, writes no bytes; no bytes read back as an unset `Pixmap`.
// Bytes are decoded as PNG only, and a decoding that fails is not reported: the value is then a
// `Pixmap` around a null image and the holder is left alone. An image whose header claims more
// than 64 Mi pixels (256 MiB as ARGB32) is not decoded and reads as a null image, so no byte
// stream can make the reader allocate more than that. The default value is an unset `Pixmap`.
//
// `Create`, `Is` and the frame shared by the family come from `TypeBase` (see TypeBase.h).
// Thread safety and failure: as for every `Type` (see Type.h); the PNG coding needs no
// `QGuiApplication`.
#ifndef VORT_TYPES_PIXMAPTYPE_H
#define VORT_TYPES_PIXMAPTYPE_H

#include <vort/image/Pixmap.h>
#include <vort/types/TypeBase.h>

namespace VORT {

class VORT_EXPORT PixmapType : public TypeBase<PixmapType, Pixmap> {
protected:
    any convertFromString(std::string const &text, ErrorHolder &error) const override;
    std::string convertToString(any const &value) const override;
    any convertFromByteArray(ByteArray const &bytes, ErrorHolder &error) const override;
    ByteArray convertToByteArray(any const &value) const override;
    PixmapType *clone() const override { return new PixmapType(*this); }
};

extern template class TypeFamily<PixmapType>;
extern template class TypeBase<PixmapType, Pixmap>;

}  // namespace VORT

#endif  // VORT_TYPES_PIXMAPTYPE_H
