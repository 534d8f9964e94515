// `VORT::IntType`: the member of the type family that carries an `int` (32 bits).
//
// Text form: plain decimal, a minus sign for negatives and nothing else. Reading skips leading
// whitespace, takes an optional sign and decimal digits, and ignores what follows: "  42abc" is
// 42 and "0x10" is 0. No digit, or a number outside the range of `int`, fails with "Can't
// convert string '<text>' to int". Byte form: 4 bytes, least significant first; reading takes
// bytes 0 to 3 with no length check (fewer is a caller fault) and never fails. The default value
// is 0.
//
// The text follows the process's global locale, as a text stream's does.
//
// `Create`, `Is` and the frame shared by the family come from `TypeBase` (see TypeBase.h).
// Thread safety and failure: as for every `Type` (see Type.h).
#ifndef VORT_TYPES_INTTYPE_H
#define VORT_TYPES_INTTYPE_H

#include <vort/types/TypeBase.h>

namespace VORT {

class VORT_EXPORT IntType : public TypeBase<IntType, int> {
protected:
    any convertFromString(std::string const &text, ErrorHolder &error) const override;
    std::string convertToString(any const &value) const override;
    any convertFromByteArray(ByteArray const &bytes, ErrorHolder &error) const override;
    ByteArray convertToByteArray(any const &value) const override;
    IntType *clone() const override { return new IntType(*this); }
};

extern template class TypeFamily<IntType>;
extern template class TypeBase<IntType, int>;

}  // namespace VORT

#endif  // VORT_TYPES_INTTYPE_H
