// `VORT::MD5HashType`: the member of the type family that carries an `MD5Hash`, with the hash's
// own text and byte forms (see MD5Hash.h). The default value is the all-zero hash.
//
// Reading gives an empty `any` whenever the holder has an error after the read, also one that
// it held before the call.
//
// Thread safety and failure: as for every `Type` (see Type.h).
#ifndef VORT_TYPES_MD5HASHTYPE_H
#define VORT_TYPES_MD5HASHTYPE_H

#include <vort/types/MD5Hash.h>
#include <vort/types/Type.h>

namespace VORT {

class VORT_EXPORT MD5HashType : public Type {
public:
    MD5HashType() {}
    MD5HashType(MD5HashType const &other) : Type(other) {}
    MD5HashType &operator=(MD5HashType const &) { return *this; }
    ~MD5HashType() override;

    static TypeInfo Create();
    // Whether the type is an `MD5HashType`; false for null and for an empty handle.
    static bool Is(Type *type);
    static bool Is(TypeInfo const &info);

protected:
    // Unchecked: the handle must hold an `MD5HashType`.
    static MD5HashType *GetType(TypeInfo const &info);

    any convertFromString(std::string const &text, ErrorHolder &error) const override;
    std::string convertToString(any const &value) const override;
    any convertFromByteArray(ByteArray const &bytes, ErrorHolder &error) const override;
    ByteArray convertToByteArray(any const &value) const override;
    any defaultConstruct() const override;
    bool isValid(any const &value) const override;
    bool isEqualTo(Type *other) const override;
    bool isLessThan(Type *other) const override;
    MD5HashType *clone() const override;
};

}  // namespace VORT

#endif  // VORT_TYPES_MD5HASHTYPE_H
