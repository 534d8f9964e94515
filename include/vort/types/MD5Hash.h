// `VORT::MD5Hash`: a 128-bit digest in the shape of RFC 1321's MD5, as four 32-bit words. The
// library stores, compares and converts digests; it never computes one.
//
// Text form: 32 upper-case hexadecimal digits, eight per word from `word[0]` to `word[3]`, most
// significant nibble first. Byte form: 16 bytes, the words' memory with the least significant
// byte of each word first. The two forms therefore differ in the order of the digit pairs
// within a word, and each round-trips only with itself: the text form of a digest whose bytes
// follow RFC 1321 is not that digest's conventional hexadecimal spelling.
//
// Reading text skips whitespace before every digit, also between digits, and ignores what
// follows the 32nd digit. A text that runs out early repeats its last digit up to the 32nd
// (the digit that was read last stays in place); a text without a single digit fails. Any
// character that is not 0-9 or A-F (lower case included) fails with "Can't convert string
// '<text>' to MD5Hash" and gives the all-zero hash. Reading bytes takes bytes 0 to 15 with no
// length check (fewer than 16 is a caller fault) and never fails.
//
// Thread safety: a plain value.
#ifndef VORT_TYPES_MD5HASH_H
#define VORT_TYPES_MD5HASH_H

#include <vort/bones/Any.h>
#include <vort/bones/ByteArray.h>
#include <vort/err/ErrorHolder.h>
#include <vort/vort_export.h>

#include <iosfwd>
#include <string>

namespace VORT {

class VORT_EXPORT MD5Hash {
public:
    MD5Hash() : word{0, 0, 0, 0} {}
    MD5Hash(unsigned int w0, unsigned int w1, unsigned int w2, unsigned int w3)
        : word{w0, w1, w2, w3} {}

    bool operator==(MD5Hash const &other) const {
        return word[0] == other.word[0] && word[1] == other.word[1] && word[2] == other.word[2] &&
               word[3] == other.word[3];
    }
    bool operator!=(MD5Hash const &other) const { return !(*this == other); }

    // On failure the holder gets the error and the result is the all-zero hash.
    static MD5Hash convertFromString(std::string const &text, ErrorHolder &error);
    static std::string convertToString(MD5Hash const &hash);
    // Never touches the holder.
    static MD5Hash convertFromByteArray(ByteArray const &bytes, ErrorHolder &error);
    // Throws `VORT::bad_any_cast` unless `value` holds an `MD5Hash`.
    static ByteArray convertToByteArray(any const &value);

    unsigned int word[4];
};

}  // namespace VORT

// Writes the 32-digit text.
VORT_EXPORT std::ostream &operator<<(std::ostream &stream, VORT::MD5Hash const &hash);
// Extracts 32 characters, skipping whitespace before each, and reads them as the text form. A
// bad text assigns the all-zero hash and sets no stream flag; a stream that runs dry sets the
// stream's own flags as extraction does.
VORT_EXPORT std::istream &operator>>(std::istream &stream, VORT::MD5Hash &hash);

#endif  // VORT_TYPES_MD5HASH_H
