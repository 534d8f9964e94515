// Feeds arbitrary bytes to ByteArray::fromBase64. Beyond not crashing, leaking or hanging, the
// decoder must accept exactly the texts made of the alphabet and '=', produce six bits per
// digit, and give back what it decoded when its result is encoded and decoded again.
#include "FuzzCheck.h"
#include <vort/bones/ByteArray.h>
#include <vort/err/ErrorHolder.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace {

using vort_fuzz::check;

bool isDigit(unsigned char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' ||
           c == '/';
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    const std::string text(reinterpret_cast<const char *>(data), size);
    std::size_t digits = 0;
    bool valid = true;
    for (std::size_t i = 0; i < size; ++i) {
        if (isDigit(data[i])) {
            ++digits;
        } else if (data[i] != '=') {
            valid = false;
        }
    }

    VORT::ErrorHolder error;
    const VORT::ByteArray decoded = VORT::ByteArray::fromBase64(text, error);
    check(error.hasError() == !valid);
    if (!valid) {
        check(decoded.isEmpty());
        check(error.what() == "Can't convert string '" + text + "' from Base64.");
        return 0;
    }
    check(decoded.size() == digits * 6 / 8);

    const std::string encoded = decoded.toBase64();
    check(!encoded.empty() && encoded.back() == '\0');
    VORT::ErrorHolder again;
    check(VORT::ByteArray::fromBase64(encoded.c_str(), again) == decoded);
    check(!again.hasError());
    return 0;
}
