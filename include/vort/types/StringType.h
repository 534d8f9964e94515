// `VORT::StringType`: the member of the type family that carries a `std::string` of 8-bit
// characters.
//
// Text form: the string itself, with no quoting; reading copies the text and never fails. Byte
// form: the string's bytes with no terminator, embedded zero bytes included, both ways; reading
// never fails. The default value is the empty string.
//
// `Create`, `Is` and the frame shared by the family come from `TypeBase` (see TypeBase.h).
// Thread safety and failure: as for every `Type` (see Type.h).
#ifndef VORT_TYPES_STRINGTYPE_H
#define VORT_TYPES_STRINGTYPE_H

#include <vort/types/TypeBase.h>

#include <string>

namespace VORT {

class VORT_EXPORT StringType : public TypeBase<StringType, std::string> {
protected:
    any convertFromString(std::string const &text, ErrorHolder &error) const override;
    std::string convertToString(any const &value) const override;
    any convertFromByteArray(ByteArray const &bytes, ErrorHolder &error) const override;
    ByteArray convertToByteArray(any const &value) const override;
    StringType *clone() const override { return new StringType(*this); }
};

extern template class TypeFamily<StringType>;
extern template class TypeBase<StringType, std::string>;

}  // namespace VORT

#endif  // VORT_TYPES_STRINGTYPE_H
