#include <vort/types/MD5HashType.h>

namespace VORT {

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

template class TypeFamily<MD5HashType>;
template class TypeBase<MD5HashType, MD5Hash>;

}  // namespace VORT
