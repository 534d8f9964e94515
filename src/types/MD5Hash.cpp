#include <vort/types/MD5Hash.h>

#include <istream>
#include <ostream>

namespace VORT {

namespace {

const char kDigits[] = "0123456789ABCDEF";

bool isStreamSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

// Upper-case hexadecimal only; -1 for anything else.
int digitValue(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

}  // namespace

MD5Hash MD5Hash::convertFromString(std::string const &text, ErrorHolder &error) {
    // Each of the 32 digits is taken the way a stream's skipping character extraction takes a
    // character: whitespace before it is skipped, and once the text is used up the extraction
    // leaves its variable alone, so the last digit read stands in for the missing ones. The
    // variable starts as NUL, which is no digit, so a text without any digit fails.
    MD5Hash hash;
    std::string::size_type position = 0;
    char digit = '\0';
    for (unsigned int &word : hash.word) {
        for (int nibble = 0; nibble < 8; ++nibble) {
            while (position < text.size() && isStreamSpace(text[position])) {
                ++position;
            }
            if (position < text.size()) {
                digit = text[position++];
            }
            const int value = digitValue(digit);
            if (value < 0) {
                error.setError(
                    SimpleErrorDescription(CodeLocation(".\\types\\MD5Hash", 77),
                                           "Can't convert string '" + text + "' to MD5Hash"));
                return MD5Hash();
            }
            word = (word << 4) | static_cast<unsigned int>(value);
        }
    }
    return hash;
}

std::string MD5Hash::convertToString(MD5Hash const &hash) {
    std::string text(32, '0');
    std::string::size_type position = 0;
    for (unsigned int word : hash.word) {
        for (int shift = 28; shift >= 0; shift -= 4) {
            text[position++] = kDigits[(word >> shift) & 0xFu];
        }
    }
    return text;
}

MD5Hash MD5Hash::convertFromByteArray(ByteArray const &bytes, ErrorHolder &) {
    // Least significant byte first in each word, whatever the machine's own order.
    MD5Hash hash;
    for (unsigned int index = 0; index < 16; ++index) {
        hash.word[index / 4] |= static_cast<unsigned int>(bytes[index]) << (8 * (index % 4));
    }
    return hash;
}

ByteArray MD5Hash::convertToByteArray(any const &value) {
    MD5Hash const hash = any_cast<MD5Hash>(value);
    unsigned char bytes[16];
    for (unsigned int index = 0; index < 16; ++index) {
        bytes[index] = static_cast<unsigned char>(hash.word[index / 4] >> (8 * (index % 4)));
    }
    return ByteArray(bytes, 16u);
}

}  // namespace VORT

std::ostream &operator<<(std::ostream &stream, VORT::MD5Hash const &hash) {
    return stream << VORT::MD5Hash::convertToString(hash);
}

std::istream &operator>>(std::istream &stream, VORT::MD5Hash &hash) {
    // The extraction's own flags are the only report: a text that isn't a hash still assigns
    // (the all-zero hash) and leaves the stream good.
    std::string text;
    text.reserve(32);
    char c = '\0';
    for (int count = 0; count < 32; ++count) {
        stream >> c;
        text += c;
    }
    VORT::ErrorHolder error;
    hash = VORT::MD5Hash::convertFromString(text, error);
    return stream;
}
