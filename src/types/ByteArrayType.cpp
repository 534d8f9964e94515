#include <vort/types/ByteArrayType.h>

namespace VORT {

namespace {

// The whitespace of a text stream in the classic locale, which is what separates words here.
bool isStreamSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

}  // namespace

any ByteArrayType::convertFromString(std::string const &text, ErrorHolder &error) const {
    // One word, as a stream's string extraction would take it: leading whitespace skipped, the
    // word ends at the next whitespace, anything after it is ignored. The decoder's own message
    // is not passed on; the caller learns only that the text isn't a byte array.
    std::string::size_type begin = 0;
    while (begin < text.size() && isStreamSpace(text[begin])) {
        ++begin;
    }
    std::string::size_type end = begin;
    while (end < text.size() && !isStreamSpace(text[end])) {
        ++end;
    }
    if (end > begin) {
        ErrorHolder decoding;
        ByteArray bytes = ByteArray::fromBase64(text.substr(begin, end - begin), decoding);
        if (!decoding.hasError()) {
            return any(bytes);
        }
    }
    return cantConvert(text, "' to ByteArray", CodeLocation(".\\types\\ByteArrayType", 320), error);
}

std::string ByteArrayType::convertToString(any const &value) const {
    const ByteArray *bytes = any_cast<ByteArray>(&value);
    if (bytes == nullptr) {
        throw bad_any_cast();
    }
    // The whole string of `toBase64`, its trailing NUL included, as a stream writes it.
    return bytes->toBase64();
}

any ByteArrayType::convertFromByteArray(ByteArray const &bytes, ErrorHolder &) const {
    return any(bytes);
}

ByteArray ByteArrayType::convertToByteArray(any const &value) const {
    return any_cast<ByteArray>(value);
}

template class TypeFamily<ByteArrayType>;
template class TypeBase<ByteArrayType, ByteArray>;

}  // namespace VORT
