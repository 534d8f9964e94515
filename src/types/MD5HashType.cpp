#include <vort/types/MD5HashType.h>

namespace VORT {

MD5HashType::~MD5HashType() {}

TypeInfo MD5HashType::Create() {
    return CreateTypeInfo(new MD5HashType);
}

bool MD5HashType::Is(Type *type) {
    return dynamic_cast<MD5HashType *>(type) != nullptr;
}

bool MD5HashType::Is(TypeInfo const &info) {
    return Is(GetBaseType(info));
}

MD5HashType *MD5HashType::GetType(TypeInfo const &info) {
    return static_cast<MD5HashType *>(GetBaseType(info));
}

// Both readers test the holder itself, not whether this read failed: an error that the caller
// left in the holder also empties the result.
any MD5HashType::convertFromString(std::string const &text, ErrorHolder &error) const {
    const MD5Hash hash = MD5Hash::convertFromString(text, error);
    return error.hasError() ? any() : any(hash);
}

std::string MD5HashType::convertToString(any const &value) const {
    return MD5Hash::convertToString(any_cast<MD5Hash>(value));
}

any MD5HashType::convertFromByteArray(ByteArray const &bytes, ErrorHolder &error) const {
    const MD5Hash hash = MD5Hash::convertFromByteArray(bytes, error);
    return error.hasError() ? any() : any(hash);
}

ByteArray MD5HashType::convertToByteArray(any const &value) const {
    // The hash's own writer takes the `any` and casts it, so the value goes to it as it is.
    return MD5Hash::convertToByteArray(value);
}

any MD5HashType::defaultConstruct() const {
    return any(MD5Hash());
}

bool MD5HashType::isValid(any const &value) const {
    return !value.empty() && value.type() == typeid(MD5Hash);
}

bool MD5HashType::isEqualTo(Type *) const {
    return true;
}

bool MD5HashType::isLessThan(Type *) const {
    return false;
}

MD5HashType *MD5HashType::clone() const {
    return new MD5HashType(*this);
}

}  // namespace VORT
