// `VORT::TypeFamily<Derived>` and `VORT::TypeBase<Derived, Value>`: the parts of a member of the
// type family that are the same in every member, written once. `Derived` is the class itself
// and `Value` the class it carries in its `any`s.
//
// `TypeFamily` gives `Derived` the statics `Is` and `GetType` and the family's failure text. It
// is the whole frame of a class that can't be made without arguments: the abstract bases
// (`EnumType`, `VectorType`, whose subclasses pass `Is` of the base) and the classes with a
// parameter (`ColorType`, whose `Create` takes the parameter).
//
// `TypeBase` adds what a member without parameters shares: `Create()`, a default value that is a
// value-initialized `Value`, a valid `any` that holds exactly `Value`, every two objects equal
// and none less than another. A member keeps its own reading and writing, its own `clone` (so
// that the return type stays covariant: `Derived` is incomplete inside these templates, which
// rules out a covariant override here) and overrides whatever else differs.
//
// A new member is declared like this, and its source file holds its four conversions and
//
//     template class TypeFamily<FooType>;
//     template class TypeBase<FooType, Foo>;
//
// the one place where the shared code is compiled and exported:
//
//     class VORT_EXPORT FooType : public TypeBase<FooType, Foo> {
//     protected:
//         any convertFromString(std::string const &text, ErrorHolder &error) const override;
//         std::string convertToString(any const &value) const override;
//         any convertFromByteArray(ByteArray const &bytes, ErrorHolder &error) const override;
//         ByteArray convertToByteArray(any const &value) const override;
//         FooType *clone() const override { return new FooType(*this); }
//     };
//
//     extern template class TypeFamily<FooType>;
//     extern template class TypeBase<FooType, Foo>;
//
// The members are defined outside the classes, so they are not inline and the explicit
// instantiations export them; the `extern template`s keep every other translation unit, inside
// the library or out, from compiling its own hidden copy.
//
// Thread safety, ownership and failure: as for every `Type` (see Type.h).
#ifndef VORT_TYPES_TYPEBASE_H
#define VORT_TYPES_TYPEBASE_H

#include <vort/types/Type.h>
#include <vort/vort_export.h>

#include <string>
#include <typeinfo>

namespace VORT {

template <class Derived>
class VORT_EXPORT TypeFamily : public Type {
public:
    // Whether the type is a `Derived` (or of a class derived from it); false for null and for an
    // empty handle.
    static bool Is(Type *type);
    static bool Is(TypeInfo const &info);

protected:
    // Unchecked: the handle must hold a `Derived`.
    static Derived *GetType(TypeInfo const &info);

    // Sets "Can't convert string '<text>" + `suffix` at `where` on the holder and returns the
    // empty `any`: the one shape of every reader's failure in the family.
    static any cantConvert(std::string const &text, char const *suffix, CodeLocation const &where,
                           ErrorHolder &error);
};

template <class Derived, class Value>
class VORT_EXPORT TypeBase : public TypeFamily<Derived> {
public:
    // A handle that owns a new `Derived`.
    static TypeInfo Create();

protected:
    // A value-initialized `Value`.
    any defaultConstruct() const override;
    // True when `value` holds exactly a `Value`.
    bool isValid(any const &value) const override;
    // True and false: a type without parameters is equal to every other of its class.
    bool isEqualTo(Type *other) const override;
    bool isLessThan(Type *other) const override;
};

template <class Derived>
bool TypeFamily<Derived>::Is(Type *type) {
    return dynamic_cast<Derived *>(type) != nullptr;
}

template <class Derived>
bool TypeFamily<Derived>::Is(TypeInfo const &info) {
    return Is(GetBaseType(info));
}

template <class Derived>
Derived *TypeFamily<Derived>::GetType(TypeInfo const &info) {
    return static_cast<Derived *>(GetBaseType(info));
}

template <class Derived>
any TypeFamily<Derived>::cantConvert(std::string const &text, char const *suffix,
                                     CodeLocation const &where, ErrorHolder &error) {
    error.setError(SimpleErrorDescription(where, "Can't convert string '" + text + suffix));
    return any();
}

template <class Derived, class Value>
TypeInfo TypeBase<Derived, Value>::Create() {
    return Type::CreateTypeInfo(new Derived);
}

template <class Derived, class Value>
any TypeBase<Derived, Value>::defaultConstruct() const {
    return any(Value());
}

template <class Derived, class Value>
bool TypeBase<Derived, Value>::isValid(any const &value) const {
    return !value.empty() && value.type() == typeid(Value);
}

template <class Derived, class Value>
bool TypeBase<Derived, Value>::isEqualTo(Type *) const {
    return true;
}

template <class Derived, class Value>
bool TypeBase<Derived, Value>::isLessThan(Type *) const {
    return false;
}

}  // namespace VORT

#endif  // VORT_TYPES_TYPEBASE_H
