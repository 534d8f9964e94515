// Helpers shared by the type family's tests: byte arrays written as hexadecimal text, and reads
// that hand back both the value and the holder's message.
#ifndef VORT_TESTS_TYPES_TYPETESTING_H
#define VORT_TESTS_TYPES_TYPETESTING_H

#include <vort/types/Type.h>

#include <cstdlib>
#include <sstream>
#include <string>

namespace vort_test {

// "01 00 ff" -> the three bytes; blanks are ignored.
inline VORT::ByteArray hexBytes(std::string const &hex) {
    std::string bytes;
    std::istringstream in(hex);
    std::string pair;
    while (in >> pair) {
        bytes += static_cast<char>(std::strtoul(pair.c_str(), nullptr, 16));
    }
    return VORT::ByteArray(bytes.data(), static_cast<unsigned int>(bytes.size()));
}

inline std::string hexOf(VORT::ByteArray const &bytes) {
    static const char digits[] = "0123456789ABCDEF";
    std::string text;
    for (unsigned int index = 0; index < bytes.size(); ++index) {
        if (index > 0) {
            text += ' ';
        }
        text += digits[bytes[index] >> 4];
        text += digits[bytes[index] & 0xF];
    }
    return text;
}

struct ReadResult {
    VORT::any value;
    std::string message;  // empty when the holder has no error
};

inline ReadResult readText(VORT::TypeInfo const &type, std::string const &text) {
    VORT::ErrorHolder error;
    ReadResult result;
    result.value = type.convertFromString(text, error);
    result.message = error.what();
    return result;
}

}  // namespace vort_test

#endif  // VORT_TESTS_TYPES_TYPETESTING_H
