// `VORT::VectorType`: the abstract base of the type family's vectors, whose value is a
// `std::vector` of values of one element type; and `VORT::SpecificVectorType<T>`, which makes it
// concrete for the element class `T`. The library registers `SpecificVectorType<std::string>`
// over `StringType` for "text/uri-list".
//
// Text form: the elements' own text forms joined by ';', with a backslash written before every
// backslash and every ';' inside an element and nothing else escaped. Reading splits at the bare
// separators, undoes the escapes, and reads each piece with the element type. The empty text is
// no elements at all, so a vector of one empty string writes as the empty text and reads back
// empty; a text that ends in the separator has an empty last element. A backslash before any
// other character, or a lone backslash at the end, fails with "Can't convert string '<text>' to
// Vector"; an element that the element type can't read fails with that type's message. An error
// already in the holder stops the reading too, with an empty result.
//
// Byte form: none, on purpose. Writing gives an empty `ByteArray` for every value, and reading
// any bytes gives an empty vector without an error (an empty `any` if the holder already has
// one). A subclass that wants a real byte form writes it itself.
//
// The element type must carry exactly `T`. Two vector types are equal when their element types
// are, and order by them. `VectorType` keeps `Type`'s `isValid`, false for every value;
// `SpecificVectorType<T>` accepts exactly a `std::vector<T>`.
//
// `Is` and `GetType` come from `TypeFamily` (see TypeBase.h): every `SpecificVectorType` passes
// `VectorType::Is`. Thread safety and failure: as for every `Type` (see Type.h).
#ifndef VORT_TYPES_VECTORTYPE_H
#define VORT_TYPES_VECTORTYPE_H

#include <vort/types/TypeBase.h>

#include <string>
#include <typeinfo>
#include <vector>

namespace VORT {

class VORT_EXPORT VectorType : public TypeFamily<VectorType> {
public:
    VectorType(VectorType const &other);
    VectorType &operator=(VectorType const &other);
    ~VectorType() override;

protected:
    explicit VectorType(TypeInfo const &elementType);

    bool isEqualTo(Type *other) const override;
    bool isLessThan(Type *other) const override;
    VectorType *clone() const override = 0;

    // The items joined by `separator`, each backslash and separator in them escaped.
    std::string concatenateStrings(std::vector<std::string> const &items, char separator) const;
    // The items of a text that `concatenateStrings` wrote; on a bad escape the error is set and
    // the result is to be discarded.
    std::vector<std::string> tokenizeString(std::string const &text, char separator,
                                            ErrorHolder &error) const;
    // Not implemented, on purpose: an empty array, and no items without an error.
    ByteArray concatenateByteArrays(std::vector<ByteArray> const &items) const;
    std::vector<ByteArray> tokenizeByteArray(ByteArray const &bytes, ErrorHolder &error) const;

    TypeInfo elementType;
};

template <class T>
class VORT_EXPORT SpecificVectorType : public VectorType {
public:
    // A handle that owns a new `SpecificVectorType<T>` with a copy of `elementType`.
    static TypeInfo Create(TypeInfo const &elementType);

protected:
    explicit SpecificVectorType(TypeInfo const &elementType) : VectorType(elementType) {}

    any convertFromString(std::string const &text, ErrorHolder &error) const override;
    std::string convertToString(any const &value) const override;
    any convertFromByteArray(ByteArray const &bytes, ErrorHolder &error) const override;
    ByteArray convertToByteArray(any const &value) const override;
    // An empty vector.
    any defaultConstruct() const override;
    bool isValid(any const &value) const override;
    SpecificVectorType *clone() const override;

private:
    static constexpr char kSeparator = ';';
};

template <class T>
TypeInfo SpecificVectorType<T>::Create(TypeInfo const &elementType) {
    return CreateTypeInfo(new SpecificVectorType(elementType));
}

template <class T>
any SpecificVectorType<T>::convertFromString(std::string const &text, ErrorHolder &error) const {
    const std::vector<std::string> tokens = tokenizeString(text, kSeparator, error);
    // The holder, not this call's own failure: an earlier error stops the reading as well.
    if (error.hasError()) {
        return any();
    }
    std::vector<T> items;
    items.reserve(tokens.size());
    for (std::string const &token : tokens) {
        const any item = elementType.convertFromString(token, error);
        if (error.hasError()) {
            return any();
        }
        items.push_back(any_cast<T>(item));
    }
    return any(items);
}

template <class T>
std::string SpecificVectorType<T>::convertToString(any const &value) const {
    std::vector<T> const *items = any_cast<std::vector<T>>(&value);
    if (items == nullptr) {
        throw bad_any_cast();
    }
    std::vector<std::string> texts;
    texts.reserve(items->size());
    for (T const &item : *items) {
        texts.push_back(elementType.convertToString(any(item)));
    }
    return concatenateStrings(texts, kSeparator);
}

template <class T>
any SpecificVectorType<T>::convertFromByteArray(ByteArray const &bytes, ErrorHolder &error) const {
    const std::vector<ByteArray> tokens = tokenizeByteArray(bytes, error);
    if (error.hasError()) {
        return any();
    }
    std::vector<T> items;
    for (ByteArray const &token : tokens) {
        const any item = elementType.convertFromByteArray(token, error);
        if (error.hasError()) {
            return any();
        }
        items.push_back(any_cast<T>(item));
    }
    return any(items);
}

template <class T>
ByteArray SpecificVectorType<T>::convertToByteArray(any const &value) const {
    std::vector<T> const *items = any_cast<std::vector<T>>(&value);
    if (items == nullptr) {
        throw bad_any_cast();
    }
    std::vector<ByteArray> arrays;
    arrays.reserve(items->size());
    for (T const &item : *items) {
        arrays.push_back(elementType.convertToByteArray(any(item)));
    }
    return concatenateByteArrays(arrays);
}

template <class T>
any SpecificVectorType<T>::defaultConstruct() const {
    return any(std::vector<T>());
}

template <class T>
bool SpecificVectorType<T>::isValid(any const &value) const {
    return !value.empty() && value.type() == typeid(std::vector<T>);
}

template <class T>
SpecificVectorType<T> *SpecificVectorType<T>::clone() const {
    return new SpecificVectorType(*this);
}

extern template class TypeFamily<VectorType>;
extern template class SpecificVectorType<std::string>;

}  // namespace VORT

#endif  // VORT_TYPES_VECTORTYPE_H
