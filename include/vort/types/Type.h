// `VORT::Type` and `VORT::TypeInfo`: the run-time description of a kind of value, and the handle
// through which a value carried in an `any` goes to and from text and bytes.
//
// A `TypeInfo` owns exactly one `Type` object. Copying a `TypeInfo` clones that object, so two
// handles never share one and there is no reference count. The concrete classes (`BoolType`,
// `ByteArrayType`, `MD5HashType`, ...) hand out handles through their static `Create()` and tell
// a handle's kind through their static `Is`.
//
// Thread safety: a `Type` never changes after construction, so conversions may run on any
// thread, through one shared `TypeInfo` or through several. A `TypeInfo` that is being assigned
// must not be used on another thread at the same time.
//
// Failure: reading (from a string or from bytes) reports through the `ErrorHolder`, replacing
// what it held, and returns an empty `any`; no exception leaves it. Writing takes the value out
// with `any_cast`, so an `any` that is empty or holds another class throws `VORT::bad_any_cast`.
// The reading overloads without a holder are for input known to be good: on a failure they call
// `hsl_assert` and return the empty result. Every operation of an empty `TypeInfo`, the
// comparison operators included, is a caller fault.
#ifndef VORT_TYPES_TYPE_H
#define VORT_TYPES_TYPE_H

#include <vort/bones/Any.h>
#include <vort/bones/ByteArray.h>
#include <vort/err/ErrorHolder.h>
#include <vort/vort_export.h>

#include <string>

namespace VORT {

class TypeInfo;

// Equality of kinds, not of values: the same dynamic class and, for a class with parameters,
// equal parameters. There is no `operator!=`.
VORT_EXPORT bool operator==(TypeInfo const &a, TypeInfo const &b);
// Orders first by dynamic class, in a fixed order that carries no meaning (that of the classes'
// `std::type_info`), then by the parameters of the class.
VORT_EXPORT bool operator<(TypeInfo const &a, TypeInfo const &b);

class VORT_EXPORT Type {
public:
    Type() {}
    Type(Type const &) {}
    Type &operator=(Type const &) { return *this; }

protected:
    friend class TypeInfo;
    friend bool operator==(TypeInfo const &a, TypeInfo const &b);
    friend bool operator<(TypeInfo const &a, TypeInfo const &b);

    // The virtual operations keep this order: it is the order of their slots.

    // The body here is a fallback that concrete classes never reach: it sets "Can't convert
    // string" and returns an empty `any`.
    virtual any convertFromString(std::string const &text, ErrorHolder &error) const = 0;
    virtual std::string convertToString(any const &value) const = 0;
    // An empty `any` and no error: a type without a byte form reads nothing.
    virtual any convertFromByteArray(ByteArray const &bytes, ErrorHolder &error) const;
    // An empty `ByteArray`.
    virtual ByteArray convertToByteArray(any const &value) const;
    virtual any defaultConstruct() const = 0;
    // False for every value. A type that keeps this body can't tell its values from others,
    // and a false from it says nothing about the value.
    virtual bool isValid(any const &value) const;
    // Compare type parameters, never values. `other` always has the same dynamic class as
    // `this`; the bodies here (false, false) are for classes that override neither.
    virtual bool isEqualTo(Type *other) const;
    virtual bool isLessThan(Type *other) const;
    virtual Type *clone() const = 0;
    virtual ~Type();

    // Wraps a freshly allocated type in a handle that takes ownership of it.
    static TypeInfo CreateTypeInfo(Type *type);
    // The handle's type, still owned by the handle; null for an empty handle.
    static Type *GetBaseType(TypeInfo const &info);
};

class VORT_EXPORT TypeInfo {
public:
    TypeInfo() : m_type(nullptr) {}
    TypeInfo(TypeInfo const &other);
    TypeInfo(TypeInfo &&other) noexcept : m_type(other.m_type) { other.m_type = nullptr; }
    // Deletes the own type first, then clones the source's. There is deliberately no test for
    // self-assignment: assigning a handle to itself is a caller fault, and leaves it empty.
    TypeInfo &operator=(TypeInfo const &other);
    TypeInfo &operator=(TypeInfo &&other) noexcept;
    ~TypeInfo();

    // True when `value` is not empty and holds exactly the class that this type carries; says
    // nothing about the value itself. Always false on a type that keeps `Type`'s body.
    bool isValid(any const &value) const { return m_type->isValid(value); }

    any convertFromString(std::string const &text, ErrorHolder &error) const {
        return m_type->convertFromString(text, error);
    }
    // For text known to be good: a failure asserts through `hsl_assert` and gives an empty
    // `any`; nothing is thrown.
    any convertFromString(std::string const &text) const;
    std::string convertToString(any const &value) const { return m_type->convertToString(value); }

    any convertFromByteArray(ByteArray const &bytes, ErrorHolder &error) const {
        return m_type->convertFromByteArray(bytes, error);
    }
    // For bytes known to be good: a failure asserts through `hsl_assert` and gives an empty
    // `any`; nothing is thrown.
    any convertFromByteArray(ByteArray const &bytes) const;
    ByteArray convertToByteArray(any const &value) const {
        return m_type->convertToByteArray(value);
    }

    any defaultConstruct() const { return m_type->defaultConstruct(); }

private:
    friend class Type;
    friend bool operator==(TypeInfo const &a, TypeInfo const &b);
    friend bool operator<(TypeInfo const &a, TypeInfo const &b);

    explicit TypeInfo(Type *type) : m_type(type) {}

    Type *m_type;
};

}  // namespace VORT

#endif  // VORT_TYPES_TYPE_H
