// `VORT::DoubleType`: the member of the type family that carries a `double`.
//
// Text form: the general notation with six significant digits (`%g`), so the text loses
// precision on purpose: 3.14159265358979 writes as 3.14159 and 1234567.0 as 1.23457e+06; it is
// the byte form that keeps every bit. Reading skips leading whitespace, takes one number (sign,
// digits, a decimal point, an exponent) and ignores what follows. No number, an incomplete one
// ("1e", "."), one too large for a double, and "inf" or "nan" fail with "Can't convert string
// '<text>' to double"; a number too small reads as 0 or a denormal. Byte form: 8 bytes, least
// significant first; reading takes bytes 0 to 7 with no length check (fewer is a caller fault)
// and never fails. The default value is 0.0.
//
// The text follows the process's global locale, as a text stream's does.
//
// `Create`, `Is` and the frame shared by the family come from `TypeBase` (see TypeBase.h).
// Thread safety and failure: as for every `Type` (see Type.h).
#ifndef VORT_TYPES_DOUBLETYPE_H
#define VORT_TYPES_DOUBLETYPE_H

#include <vort/types/TypeBase.h>

namespace VORT {

class VORT_EXPORT DoubleType : public TypeBase<DoubleType, double> {
protected:
    any convertFromString(std::string const &text, ErrorHolder &error) const override;
    std::string convertToString(any const &value) const override;
    any convertFromByteArray(ByteArray const &bytes, ErrorHolder &error) const override;
    ByteArray convertToByteArray(any const &value) const override;
    DoubleType *clone() const override { return new DoubleType(*this); }
};

extern template class TypeFamily<DoubleType>;
extern template class TypeBase<DoubleType, double>;

}  // namespace VORT

#endif  // VORT_TYPES_DOUBLETYPE_H
