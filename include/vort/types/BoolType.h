// `VORT::BoolType`: the member of the type family that carries a `bool`.
//
// Text form: exactly "true" or "false", case-sensitive, with no trimming; any other text fails
// with "Can't convert string '<text>' to bool". Byte form: one byte, 1 for true and 0 for false;
// reading takes byte 0 (any non-zero byte reads as true) and never fails. Reading an empty byte
// array is a caller fault: there is no length check. The default value is false.
//
// `Create`, `Is` and the frame shared by the family come from `TypeBase` (see TypeBase.h).
// Thread safety and failure: as for every `Type` (see Type.h).
#ifndef VORT_TYPES_BOOLTYPE_H
#define VORT_TYPES_BOOLTYPE_H

#include <vort/types/TypeBase.h>

namespace VORT {

class VORT_EXPORT BoolType : public TypeBase<BoolType, bool> {
protected:
    any convertFromString(std::string const &text, ErrorHolder &error) const override;
    std::string convertToString(any const &value) const override;
    any convertFromByteArray(ByteArray const &bytes, ErrorHolder &error) const override;
    ByteArray convertToByteArray(any const &value) const override;
    BoolType *clone() const override { return new BoolType(*this); }
};

extern template class TypeFamily<BoolType>;
extern template class TypeBase<BoolType, bool>;

}  // namespace VORT

#endif  // VORT_TYPES_BOOLTYPE_H
