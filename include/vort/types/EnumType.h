// `VORT::EnumType`: the abstract base of the type family's enumerations. A subclass fills
// `valueNames` (value to name) in its constructor and writes `convertToInt` and `convertFromInt`,
// which move between its own enumeration class and a plain int; `EnumType` gives it the forms.
//
// Text form: the name of the value, as stored. Reading compares the text with each name in
// ascending order of the values, ignoring the case of ASCII letters, and the first match decides
// (so of two names that differ only in case the smaller value wins); numbers are names like any
// other. No match fails with "Can't convert string '<text>' to enum". Writing a value that has no
// name is a caller fault. Byte form: the int, 4 bytes, least significant first; reading takes 4
// bytes with no length check (fewer is a caller fault) and hands the int to `convertFromInt`
// without looking at the table. The default value is `convertFromInt(0)`, whether or not 0 has a
// name.
//
// `isValid` keeps `Type`'s body and is false for every value: a false from it says nothing. Two
// enumeration types are equal when their tables are, entry by entry with names compared exactly,
// and order by a lexicographic compare of the tables.
//
// The statics reach the `EnumType` inside a handle, which must hold one. `ConvertFromInt` is the
// guarded road from an int: a value without a name fails with "Can't convert int to enum".
//
// `Is` and `GetType` come from `TypeFamily` (see TypeBase.h). Thread safety and failure: as for
// every `Type` (see Type.h).
#ifndef VORT_TYPES_ENUMTYPE_H
#define VORT_TYPES_ENUMTYPE_H

#include <vort/types/TypeBase.h>

#include <map>
#include <string>
#include <vector>

namespace VORT {

class VORT_EXPORT EnumType : public TypeFamily<EnumType> {
public:
    EnumType();
    EnumType(EnumType const &other);
    EnumType &operator=(EnumType const &other);
    ~EnumType() override;

    // `convertFromInt(value)` of the held type when `value` has a name; otherwise the error and
    // an empty `any`.
    static any ConvertFromInt(TypeInfo const &type, int value, ErrorHolder &error);
    // For a value known to have a name: a failure asserts through `hsl_assert` and gives an empty
    // `any`; nothing is thrown.
    static any ConvertFromInt(TypeInfo const &type, int value);
    static int ConvertToInt(TypeInfo const &type, any const &value);
    // The names in ascending order of their values.
    static std::vector<std::string> GetValues(TypeInfo const &type);

protected:
    any convertFromString(std::string const &text, ErrorHolder &error) const override;
    std::string convertToString(any const &value) const override;
    any convertFromByteArray(ByteArray const &bytes, ErrorHolder &error) const override;
    ByteArray convertToByteArray(any const &value) const override;
    any defaultConstruct() const override;
    bool isEqualTo(Type *other) const override;
    bool isLessThan(Type *other) const override;
    EnumType *clone() const override = 0;

    // The int behind an `any` of the subclass's enumeration class.
    virtual int convertToInt(any const &value) const = 0;
    // An `any` holding the enumerator for `value`.
    virtual any convertFromInt(int value) const = 0;

    // Filled by the subclass's constructor and never changed afterwards.
    std::map<int, std::string> valueNames;
};

extern template class TypeFamily<EnumType>;

}  // namespace VORT

#endif  // VORT_TYPES_ENUMTYPE_H
