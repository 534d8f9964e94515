// `VORT::PathType`: the member of the type family that carries a `Path` (see Path.h).
//
// Text form: for every point, x, a comma, y and a semicolon, with no blanks and six significant
// digits, so the text loses precision; the semicolon follows the last point too: (1, 2), (3, 4)
// is "1,2;3,4;", and no points is the empty text. Reading takes, until the end of the text, a
// number, a character, a number and a character, any non-blank characters serving as separators.
// So the separator after the last point is required, and a blank after it fails; a character
// 0xFF where a point would start ends the reading as the end of the text does. A failure gives
// "Can't convert string '<text>' to path" whatever points were read.
//
// Byte form: each point as the two doubles of `DPointType`, 16 bytes a point, least significant
// byte first, with no count. Reading takes as many whole points as the array holds, ignores a
// shorter tail, and never fails. The default value has no points.
//
// `Create`, `Is` and the frame shared by the family come from `TypeBase` (see TypeBase.h).
// Thread safety and failure: as for every `Type` (see Type.h).
#ifndef VORT_TYPES_PATHTYPE_H
#define VORT_TYPES_PATHTYPE_H

#include <vort/types/Path.h>
#include <vort/types/TypeBase.h>

namespace VORT {

class VORT_EXPORT PathType : public TypeBase<PathType, Path> {
protected:
    any convertFromString(std::string const &text, ErrorHolder &error) const override;
    std::string convertToString(any const &value) const override;
    any convertFromByteArray(ByteArray const &bytes, ErrorHolder &error) const override;
    ByteArray convertToByteArray(any const &value) const override;
    PathType *clone() const override { return new PathType(*this); }
};

extern template class TypeFamily<PathType>;
extern template class TypeBase<PathType, Path>;

}  // namespace VORT

#endif  // VORT_TYPES_PATHTYPE_H
