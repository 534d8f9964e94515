#include <vort/types/BoolType.h>

namespace VORT {

namespace {

const char *const kTrue = "true";
const char *const kFalse = "false";

}  // namespace

BoolType::~BoolType() {}

TypeInfo BoolType::Create() {
    return CreateTypeInfo(new BoolType);
}

bool BoolType::Is(Type *type) {
    return dynamic_cast<BoolType *>(type) != nullptr;
}

bool BoolType::Is(TypeInfo const &info) {
    return Is(GetBaseType(info));
}

BoolType *BoolType::GetType(TypeInfo const &info) {
    return static_cast<BoolType *>(GetBaseType(info));
}

any BoolType::convertFromString(std::string const &text, ErrorHolder &error) const {
    // Exact words only: no trimming, no case folding, no digits.
    if (text == kTrue) {
        return any(true);
    }
    if (text == kFalse) {
        return any(false);
    }
    error.setError(SimpleErrorDescription(CodeLocation(".\\types\\BoolType", 40),
                                          "Can't convert string '" + text + "' to bool"));
    return any();
}

std::string BoolType::convertToString(any const &value) const {
    return any_cast<bool>(value) ? kTrue : kFalse;
}

any BoolType::convertFromByteArray(ByteArray const &bytes, ErrorHolder &) const {
    return any(bytes[0u] != 0);
}

ByteArray BoolType::convertToByteArray(any const &value) const {
    return ByteArray(1u, static_cast<unsigned char>(any_cast<bool>(value) ? 1 : 0));
}

any BoolType::defaultConstruct() const {
    return any(false);
}

bool BoolType::isValid(any const &value) const {
    return !value.empty() && value.type() == typeid(bool);
}

bool BoolType::isEqualTo(Type *) const {
    return true;
}

bool BoolType::isLessThan(Type *) const {
    return false;
}

BoolType *BoolType::clone() const {
    return new BoolType(*this);
}

}  // namespace VORT
