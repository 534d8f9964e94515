// `VORT::BoolType`: the member of the type family that carries a `bool`.
//
// Text form: exactly "true" or "false", case-sensitive, with no trimming; any other text fails
// with "Can't convert string '<text>' to bool". Byte form: one byte, 1 for true and 0 for false;
// reading takes byte 0 (any non-zero byte reads as true) and never fails. Reading an empty byte
// array is a caller fault: there is no length check. The default value is false.
//
// Thread safety and failure: as for every `Type` (see Type.h).
#ifndef VORT_TYPES_BOOLTYPE_H
#define VORT_TYPES_BOOLTYPE_H

#include <vort/types/Type.h>

namespace VORT {

class VORT_EXPORT BoolType : public Type {
public:
    BoolType() {}
    BoolType(BoolType const &other) : Type(other) {}
    BoolType &operator=(BoolType const &) { return *this; }
    ~BoolType() override;

    static TypeInfo Create();
    // Whether the type is a `BoolType`; false for null and for an empty handle.
    static bool Is(Type *type);
    static bool Is(TypeInfo const &info);

protected:
    // Unchecked: the handle must hold a `BoolType`.
    static BoolType *GetType(TypeInfo const &info);

    any convertFromString(std::string const &text, ErrorHolder &error) const override;
    std::string convertToString(any const &value) const override;
    any convertFromByteArray(ByteArray const &bytes, ErrorHolder &error) const override;
    ByteArray convertToByteArray(any const &value) const override;
    any defaultConstruct() const override;
    bool isValid(any const &value) const override;
    bool isEqualTo(Type *other) const override;
    bool isLessThan(Type *other) const override;
    BoolType *clone() const override;
};

}  // namespace VORT

#endif  // VORT_TYPES_BOOLTYPE_H
