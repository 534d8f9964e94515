// `VORT::FloatType`: the member of the type family that carries a `float` (32-bit IEEE).
//
// Text form: that of `DoubleType` (see DoubleType.h) for the float's value, six significant
// digits; reading fails with "Can't convert string '<text>' to float", also for a number too
// large for a float. Byte form: 4 bytes, least significant first; reading takes bytes 0 to 3
// with no length check (fewer is a caller fault) and never fails.
//
// The default value is deliberately the double 0.0, not a float: `FloatType::isValid` rejects
// it and writing it throws `VORT::bad_any_cast`, while `DoubleType` accepts it.
//
// `Create`, `Is` and the frame shared by the family come from `TypeBase` (see TypeBase.h).
// Thread safety and failure: as for every `Type` (see Type.h).
#ifndef VORT_TYPES_FLOATTYPE_H
#define VORT_TYPES_FLOATTYPE_H

#include <vort/types/TypeBase.h>

namespace VORT {

class VORT_EXPORT FloatType : public TypeBase<FloatType, float> {
protected:
    any convertFromString(std::string const &text, ErrorHolder &error) const override;
    std::string convertToString(any const &value) const override;
    any convertFromByteArray(ByteArray const &bytes, ErrorHolder &error) const override;
    ByteArray convertToByteArray(any const &value) const override;
    // The double 0.0.
    any defaultConstruct() const override;
    FloatType *clone() const override { return new FloatType(*this); }
};

extern template class TypeFamily<FloatType>;
extern template class TypeBase<FloatType, float>;

}  // namespace VORT

#endif  // VORT_TYPES_FLOATTYPE_H
