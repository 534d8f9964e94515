// `VORT::MD5HashType`: the member of the type family that carries an `MD5Hash`, with the hash's
// own text and byte forms (see MD5Hash.h). The default value is the all-zero hash.
//
// Reading gives an empty `any` whenever the holder has an error after the read, also one that
// it held before the call.
//
// `Create`, `Is` and the frame shared by the family come from `TypeBase` (see TypeBase.h).
// Thread safety and failure: as for every `Type` (see Type.h).
#ifndef VORT_TYPES_MD5HASHTYPE_H
#define VORT_TYPES_MD5HASHTYPE_H

#include <vort/types/MD5Hash.h>
#include <vort/types/TypeBase.h>

namespace VORT {

class VORT_EXPORT MD5HashType : public TypeBase<MD5HashType, MD5Hash> {
protected:
    any convertFromString(std::string const &text, ErrorHolder &error) const override;
    std::string convertToString(any const &value) const override;
    any convertFromByteArray(ByteArray const &bytes, ErrorHolder &error) const override;
    ByteArray convertToByteArray(any const &value) const override;
    MD5HashType *clone() const override { return new MD5HashType(*this); }
};

extern template class TypeFamily<MD5HashType>;
extern template class TypeBase<MD5HashType, MD5Hash>;

}  // namespace VORT

#endif  // VORT_TYPES_MD5HASHTYPE_H
