#include <vort/types/BoolType.h>

namespace VORT {

namespace {

const char *const kTrue = "true";
const char *const kFalse = "false";

}  // namespace

any BoolType::convertFromString(std::string const &text, ErrorHolder &error) const {
    // Exact words only: no trimming, no case folding, no digits.
    if (text == kTrue) {
        return any(true);
    }
    if (text == kFalse) {
        return any(false);
    }
    return cantConvert(text, "' to bool", CodeLocation(".\\types\\BoolType", 40), error);
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

template class TypeFamily<BoolType>;
template class TypeBase<BoolType, bool>;

}  // namespace VORT
