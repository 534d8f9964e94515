// `VORT::TransformType`: the member of the type family that carries a `Transform` (see
// Transform.h).
//
// Text form: the nine elements row by row, joined by single commas with no blanks, six
// significant digits each, so the text loses precision; the identity is "1,0,0,0,1,0,0,0,1".
// Reading extracts a number, then eight times one character and a number; whitespace before each
// is skipped, any character is taken as the separator, and text after the ninth number is
// ignored. A missing or out-of-range number fails with "Can't convert string '<text>' to
// transform". Byte form: 72 bytes, the nine doubles row by row, each least significant byte
// first; reading takes 72 bytes with no length check (fewer is a caller fault) and never fails.
// The default value is the identity.
//
// `Create`, `Is` and the frame shared by the family come from `TypeBase` (see TypeBase.h).
// Thread safety and failure: as for every `Type` (see Type.h).
#ifndef VORT_TYPES_TRANSFORMTYPE_H
#define VORT_TYPES_TRANSFORMTYPE_H

#include <vort/types/Transform.h>
#include <vort/types/TypeBase.h>

namespace VORT {

class VORT_EXPORT TransformType : public TypeBase<TransformType, Transform> {
protected:
    any convertFromString(std::string const &text, ErrorHolder &error) const override;
    std::string convertToString(any const &value) const override;
    any convertFromByteArray(ByteArray const &bytes, ErrorHolder &error) const override;
    ByteArray convertToByteArray(any const &value) const override;
    TransformType *clone() const override { return new TransformType(*this); }
};

extern template class TypeFamily<TransformType>;
extern template class TypeBase<TransformType, Transform>;

}  // namespace VORT

#endif  // VORT_TYPES_TRANSFORMTYPE_H
