// `VORT::ByteArray`: the library's plain buffer of bytes, the common byte form of every value
// type, with a Base64 text form that is also its stream form.
//
// A `ByteArray` is a value in the strict sense: it is not implicitly shared, and a copy copies
// the bytes. It has no internal locking; distinct arrays may be used on distinct threads.
//
// Sizes and positions are `unsigned int`. Positions and indices are never checked: an index out
// of range is the caller's fault. `fromBase64` is the only operation that reports failure, and
// it does so through an `ErrorHolder`.
#ifndef VORT_BONES_BYTEARRAY_H
#define VORT_BONES_BYTEARRAY_H

#include <vort/vort_export.h>

#include <iosfwd>
#include <string>
#include <vector>

namespace VORT {

class ErrorHolder;

class VORT_EXPORT ByteArray {
public:
    ByteArray() = default;
    // Copy `count` bytes from `bytes`.
    ByteArray(const char *bytes, unsigned int count);
    ByteArray(const unsigned char *bytes, unsigned int count);
    // `count` copies of `fill`.
    ByteArray(unsigned int count, char fill);
    ByteArray(unsigned int count, unsigned char fill);

    unsigned int size() const { return static_cast<unsigned int>(m_bytes.size()); }
    bool isEmpty() const { return m_bytes.empty(); }
    // The first byte; null while the array has never had storage.
    const unsigned char *data() const { return m_bytes.data(); }

    unsigned char &operator[](unsigned int index) { return m_bytes[index]; }
    unsigned char &operator[](int index) { return m_bytes[static_cast<unsigned int>(index)]; }
    unsigned char operator[](unsigned int index) const { return m_bytes[index]; }
    unsigned char operator[](int index) const { return m_bytes[static_cast<unsigned int>(index)]; }

    void clear() { m_bytes.clear(); }

    ByteArray &append(ByteArray const &other);
    ByteArray &append(const char *bytes, unsigned int count);
    ByteArray &prepend(ByteArray const &other);
    ByteArray &prepend(const char *bytes, unsigned int count);
    // Inserts before the byte at `position`, which may be `size()` but no more.
    ByteArray &insert(unsigned int position, ByteArray const &other);
    ByteArray &insert(unsigned int position, const char *bytes, unsigned int count);

    // Growing appends `fill` bytes, shrinking drops the tail.
    void resize(unsigned int count, unsigned char fill);

    // The bytes from `start` up to but not including `end`: `end - start` bytes, computed
    // unsigned, so `end < start` asks for nearly 4 GB.
    ByteArray slice(unsigned int start, unsigned int end) const;

    // Sizes first, then the bytes.
    bool operator==(ByteArray const &other) const;
    bool operator!=(ByteArray const &other) const { return !(*this == other); }
    // Byte by byte as unsigned values; where one array runs out, the shorter is the smaller.
    bool operator<(ByteArray const &other) const;
    bool operator<=(ByteArray const &other) const { return !(other < *this); }
    bool operator>(ByteArray const &other) const { return other < *this; }
    bool operator>=(ByteArray const &other) const { return !(*this < other); }

    // Base64 with '=' padding and no line breaks. The string always ends in one NUL character
    // of its own: `size()` is one more than the number of Base64 characters (an empty array
    // gives a string holding only that NUL). `c_str()` is the proper text; the string as it
    // stands is not accepted by `fromBase64`, which rejects the NUL.
    std::string toBase64() const;

    // Decodes the Base64 alphabet, skipping every '=' wherever it stands; bits that do not
    // fill a last byte are dropped. Any other character (whitespace, line ends and NUL too)
    // sets `error` to "Can't convert string '<text>' from Base64." and gives an empty array.
    // An empty text decodes to an empty array without an error.
    static ByteArray fromBase64(std::string const &text, ErrorHolder &error);

private:
    std::vector<unsigned char> m_bytes;
};

// Writes the whole string that `toBase64` returns, its trailing NUL included.
VORT_EXPORT std::ostream &operator<<(std::ostream &stream, ByteArray const &bytes);
// Reads one whitespace-delimited word and decodes it. The target is assigned the result, an
// empty array when the word is not Base64, and then the stream's fail state is set. A word
// written by `operator<<` carries its NUL and so does not read back.
VORT_EXPORT std::istream &operator>>(std::istream &stream, ByteArray &bytes);

}  // namespace VORT

#endif  // VORT_BONES_BYTEARRAY_H
