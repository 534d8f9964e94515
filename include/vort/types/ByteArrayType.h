// `VORT::ByteArrayType`: the member of the type family that carries a `ByteArray`.
//
// Text form: the whole string of `ByteArray::toBase64`, its trailing NUL included, so the bytes
// of "Man" give the five characters "TWFu" and NUL (`c_str()` is the Base64 text). Reading takes
// the first whitespace-delimited word of the text, skipping leading whitespace and ignoring
// whatever follows the word, and decodes it; an empty text (no word) and a word that isn't
// Base64 both fail with "Can't convert string '<text>' to ByteArray", where <text> is the whole
// text given. The NUL is no whitespace and no Base64, so the written string as it stands does not
// read back: its `c_str()` does. Byte form: the bytes themselves; reading them can't fail. The
// default value is an empty array.
//
// `Create`, `Is` and the frame shared by the family come from `TypeBase` (see TypeBase.h).
// Thread safety and failure: as for every `Type` (see Type.h).
#ifndef VORT_TYPES_BYTEARRAYTYPE_H
#define VORT_TYPES_BYTEARRAYTYPE_H

#include <vort/types/TypeBase.h>

namespace VORT {

class VORT_EXPORT ByteArrayType : public TypeBase<ByteArrayType, ByteArray> {
protected:
    any convertFromString(std::string const &text, ErrorHolder &error) const override;
    std::string convertToString(any const &value) const override;
    any convertFromByteArray(ByteArray const &bytes, ErrorHolder &error) const override;
    ByteArray convertToByteArray(any const &value) const override;
    ByteArrayType *clone() const override { return new ByteArrayType(*this); }
};

extern template class TypeFamily<ByteArrayType>;
extern template class TypeBase<ByteArrayType, ByteArray>;

}  // namespace VORT

#endif  // VORT_TYPES_BYTEARRAYTYPE_H
