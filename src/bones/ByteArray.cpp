#include <vort/bones/ByteArray.h>
#include <vort/err/ErrorDescription.h>
#include <vort/err/ErrorHolder.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <istream>
#include <ostream>

namespace VORT {

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Two Base64 characters for every 12-bit value: a group of three bytes is then two look-ups
// instead of four shifts, masks and look-ups.
struct PairTable {
    char pairs[4096][2];
    constexpr PairTable() : pairs() {
        for (int i = 0; i < 4096; ++i) {
            pairs[i][0] = kAlphabet[i >> 6];
            pairs[i][1] = kAlphabet[i & 63];
        }
    }
};
constexpr PairTable kPairTable;

// Decoding tables, one per place in a quadruple, each holding the character's six bits already
// shifted into that place. Anything that is not a plain digit, the padding character included,
// carries kOffAlphabet, so that OR-ing four look-ups tells at once whether the quadruple can be
// taken whole.
constexpr std::uint32_t kOffAlphabet = 0x01000000;

struct DecodeTables {
    std::uint32_t place[4][256];
    constexpr DecodeTables() : place() {
        for (int c = 0; c < 256; ++c) {
            for (int p = 0; p < 4; ++p) {
                place[p][c] = kOffAlphabet;
            }
        }
        for (int v = 0; v < 64; ++v) {
            const unsigned char c = static_cast<unsigned char>(kAlphabet[v]);
            const auto value = static_cast<std::uint32_t>(v);
            place[0][c] = value << 18;
            place[1][c] = value << 12;
            place[2][c] = value << 6;
            place[3][c] = value;
        }
    }
};
constexpr DecodeTables kDecode;

}  // namespace

ByteArray::ByteArray(const char *bytes, unsigned int count)
    : ByteArray(reinterpret_cast<const unsigned char *>(bytes), count) {}

ByteArray::ByteArray(const unsigned char *bytes, unsigned int count) {
    if (count != 0) {
        m_bytes.assign(bytes, bytes + count);
    }
}

ByteArray::ByteArray(unsigned int count, char fill)
    : ByteArray(count, static_cast<unsigned char>(fill)) {}

ByteArray::ByteArray(unsigned int count, unsigned char fill) : m_bytes(count, fill) {}

ByteArray &ByteArray::append(ByteArray const &other) {
    return insert(size(), reinterpret_cast<const char *>(other.data()), other.size());
}

ByteArray &ByteArray::append(const char *bytes, unsigned int count) {
    return insert(size(), bytes, count);
}

ByteArray &ByteArray::prepend(ByteArray const &other) {
    return insert(0, reinterpret_cast<const char *>(other.data()), other.size());
}

ByteArray &ByteArray::prepend(const char *bytes, unsigned int count) {
    return insert(0, bytes, count);
}

ByteArray &ByteArray::insert(unsigned int position, ByteArray const &other) {
    return insert(position, reinterpret_cast<const char *>(other.data()), other.size());
}

ByteArray &ByteArray::insert(unsigned int position, const char *bytes, unsigned int count) {
    if (count == 0) {
        return *this;
    }
    const auto *first = reinterpret_cast<const unsigned char *>(bytes);
    const unsigned char *own = m_bytes.data();
    // A vector may not insert a range of its own elements, and `a.append(a)` is a fair request.
    if (own != nullptr && std::less_equal<const unsigned char *>()(own, first) &&
        std::less<const unsigned char *>()(first, own + m_bytes.size())) {
        const std::vector<unsigned char> copy(first, first + count);
        m_bytes.insert(m_bytes.begin() + position, copy.begin(), copy.end());
    } else {
        m_bytes.insert(m_bytes.begin() + position, first, first + count);
    }
    return *this;
}

void ByteArray::resize(unsigned int count, unsigned char fill) {
    m_bytes.resize(count, fill);
}

ByteArray ByteArray::slice(unsigned int start, unsigned int end) const {
    const unsigned int count = end - start;
    if (count == 0) {
        return ByteArray();
    }
    return ByteArray(m_bytes.data() + start, count);
}

bool ByteArray::operator==(ByteArray const &other) const {
    const std::size_t count = m_bytes.size();
    return count == other.m_bytes.size() &&
           (count == 0 || std::memcmp(m_bytes.data(), other.m_bytes.data(), count) == 0);
}

bool ByteArray::operator<(ByteArray const &other) const {
    return std::lexicographical_compare(m_bytes.begin(), m_bytes.end(), other.m_bytes.begin(),
                                        other.m_bytes.end());
}

std::string ByteArray::toBase64() const {
    const std::size_t count = m_bytes.size();
    const std::size_t whole = count / 3;
    const std::size_t rest = count % 3;
    const std::size_t characters = (whole + (rest != 0 ? 1 : 0)) * 4;

    // One more than the characters: the terminating NUL is part of the string.
    std::string text(characters + 1, '\0');
    char *out = &text[0];
    const unsigned char *in = m_bytes.data();

    for (std::size_t group = 0; group < whole; ++group, in += 3, out += 4) {
        const std::uint32_t bits = static_cast<std::uint32_t>(in[0]) << 16 |
                                   static_cast<std::uint32_t>(in[1]) << 8 | in[2];
        std::memcpy(out, kPairTable.pairs[bits >> 12], 2);
        std::memcpy(out + 2, kPairTable.pairs[bits & 0xFFF], 2);
    }

    if (rest != 0) {
        std::uint32_t bits = static_cast<std::uint32_t>(in[0]) << 16;
        if (rest == 2) {
            bits |= static_cast<std::uint32_t>(in[1]) << 8;
        }
        std::memcpy(out, kPairTable.pairs[bits >> 12], 2);
        out[2] = rest == 2 ? kAlphabet[(bits >> 6) & 63] : '=';
        out[3] = '=';
    }
    return text;
}

ByteArray ByteArray::fromBase64(std::string const &text, ErrorHolder &error) {
    const std::size_t length = text.size();
    const auto *in = reinterpret_cast<const unsigned char *>(text.data());

    ByteArray result;
    result.m_bytes.resize(length * 3 / 4);
    unsigned char *const begin = result.m_bytes.data();
    unsigned char *out = begin;

    std::uint32_t accumulator = 0;
    int bitCount = 0;
    std::size_t i = 0;
    while (i < length) {
        // Whenever the accumulator is empty, whole quadruples of digits go three bytes at a
        // time; a quadruple with anything else in it is walked one character at a time.
        if (bitCount == 0) {
            while (i + 4 <= length) {
                const std::uint32_t group = kDecode.place[0][in[i]] | kDecode.place[1][in[i + 1]] |
                                            kDecode.place[2][in[i + 2]] |
                                            kDecode.place[3][in[i + 3]];
                if (group & kOffAlphabet) {
                    break;
                }
                out[0] = static_cast<unsigned char>(group >> 16);
                out[1] = static_cast<unsigned char>(group >> 8);
                out[2] = static_cast<unsigned char>(group);
                out += 3;
                i += 4;
            }
            if (i == length) {
                break;
            }
        }

        const unsigned char c = in[i++];
        const std::uint32_t value = kDecode.place[3][c];
        if (value != kOffAlphabet) {
            accumulator = accumulator << 6 | value;
            bitCount += 6;
            if (bitCount >= 8) {
                bitCount -= 8;
                *out++ = static_cast<unsigned char>(accumulator >> bitCount);
                accumulator &= (1u << bitCount) - 1;
            }
        } else if (c != '=') {
            error.setError(
                SimpleErrorDescription(CodeLocation(".\\types\\ByteArrayType", 290),
                                       "Can't convert string '" + text + "' from Base64."));
            return ByteArray();
        }
    }

    result.m_bytes.resize(static_cast<std::size_t>(out - begin));
    return result;
}

std::ostream &operator<<(std::ostream &stream, ByteArray const &bytes) {
    return stream << bytes.toBase64();
}

std::istream &operator>>(std::istream &stream, ByteArray &bytes) {
    std::string word;
    stream >> word;
    ErrorHolder error;
    bytes = ByteArray::fromBase64(word, error);
    if (error.hasError()) {
        stream.setstate(std::ios_base::failbit);
    }
    return stream;
}

}  // namespace VORT
