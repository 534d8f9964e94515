#include <vort/types/StringType.h>

namespace VORT {

any StringType::convertFromString(std::string const &text, ErrorHolder &) const {
    return any(text);
}

std::string StringType::convertToString(any const &value) const {
    return any_cast<std::string>(value);
}

any StringType::convertFromByteArray(ByteArray const &bytes, ErrorHolder &) const {
    if (bytes.isEmpty()) {
        return any(std::string());
    }
    return any(std::string(reinterpret_cast<char const *>(bytes.data()), bytes.size()));
}

ByteArray StringType::convertToByteArray(any const &value) const {
    std::string const *text = any_cast<std::string>(&value);
    if (text == nullptr) {
        throw bad_any_cast();
    }
    return ByteArray(text->data(), static_cast<unsigned int>(text->size()));
}

template class TypeFamily<StringType>;
template class TypeBase<StringType, std::string>;

}  // namespace VORT
