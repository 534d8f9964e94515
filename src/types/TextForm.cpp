#include "TextForm_p.h"

#include <charconv>
#include <climits>
#include <cstdio>
#include <locale>
#include <system_error>

namespace VORT {
namespace TextForm {

namespace {

// The whitespace of the classic locale's `ctype`, which the stream skips.
bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

}  // namespace

bool classicLocale() {
    return std::locale() == std::locale::classic();
}

Writer &Writer::operator<<(int value) {
    if (m_classic) {
        char buffer[16];
        const std::to_chars_result end = std::to_chars(buffer, buffer + sizeof buffer, value);
        m_text.append(buffer, end.ptr);
    } else {
        std::ostringstream stream;
        stream << value;
        m_text += stream.str();
    }
    return *this;
}

Writer &Writer::operator<<(double value) {
    if (m_classic) {
        // The stream's own conversion is `%.*g` with its default precision, 6; `to_chars` with a
        // precision is defined as that conversion in the C locale, infinities and NaNs included.
        char buffer[32];
        const std::to_chars_result end =
            std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::general, 6);
        m_text.append(buffer, end.ptr);
    } else {
        std::ostringstream stream;
        stream << value;
        m_text += stream.str();
    }
    return *this;
}

Reader::Reader(std::string const &text) : m_text(text) {
    if (!classicLocale()) {
        m_stream.reset(new std::istringstream(text));
    }
}

Reader::~Reader() = default;

bool Reader::fail() const {
    return m_stream ? m_stream->fail() : m_fail;
}

bool Reader::skipWhitespace() {
    if (!good()) {
        m_fail = true;
        return false;
    }
    while (m_position < m_text.size() && isSpace(m_text[m_position])) {
        ++m_position;
    }
    if (m_position == m_text.size()) {
        m_eof = true;
        m_fail = true;
        return false;
    }
    return true;
}

Reader &Reader::operator>>(char &c) {
    if (m_stream) {
        *m_stream >> c;
    } else if (skipWhitespace()) {
        c = m_text[m_position++];
    }
    return *this;
}

int Reader::peek() {
    if (m_stream) {
        return m_stream->peek();
    }
    if (!good()) {
        m_fail = true;
        return EOF;
    }
    if (m_position == m_text.size()) {
        m_eof = true;
        return EOF;
    }
    return static_cast<unsigned char>(m_text[m_position]);
}

Reader &Reader::operator>>(int &value) {
    if (m_stream) {
        *m_stream >> value;
        return *this;
    }
    if (!skipWhitespace()) {
        return *this;
    }
    // Decimal only: a sign, then digits. The stream reads a `long` and then tests the range of
    // `int`, so any number outside it fails, however many digits it has.
    const std::size_t size = m_text.size();
    bool negative = false;
    if (m_text[m_position] == '-' || m_text[m_position] == '+') {
        negative = m_text[m_position] == '-';
        ++m_position;
    }
    const long long limit = negative ? -static_cast<long long>(INT_MIN) : INT_MAX;
    long long magnitude = 0;
    bool digits = false;
    bool overflow = false;
    while (m_position < size && isDigit(m_text[m_position])) {
        digits = true;
        if (!overflow) {
            magnitude = magnitude * 10 + (m_text[m_position] - '0');
            overflow = magnitude > limit;
        }
        ++m_position;
    }
    m_eof = m_position == size;
    if (!digits) {
        m_fail = true;
        value = 0;
    } else if (overflow) {
        m_fail = true;
        value = negative ? INT_MIN : INT_MAX;
    } else {
        value = static_cast<int>(negative ? -magnitude : magnitude);
    }
    return *this;
}

template <class T>
void Reader::extractFloating(T &value) {
    if (!skipWhitespace()) {
        return;
    }
    // The characters that the stream's number extraction takes: a sign, digits with at most one
    // decimal point, then, once a digit was seen, an exponent mark with an optional sign and
    // digits. It stops at the first character that doesn't fit, and the whole run taken must
    // then be a number, so a run such as "1e" or "." fails.
    const std::size_t size = m_text.size();
    const std::size_t start = m_position;
    std::size_t at = start;
    if (at < size && (m_text[at] == '+' || m_text[at] == '-')) {
        ++at;
    }
    bool mantissa = false;
    bool point = false;
    bool exponent = false;
    while (at < size) {
        const char c = m_text[at];
        if (isDigit(c)) {
            mantissa = true;
        } else if (c == '.' && !point && !exponent) {
            point = true;
        } else if ((c == 'e' || c == 'E') && !exponent && mantissa) {
            exponent = true;
            if (at + 1 < size && (m_text[at + 1] == '+' || m_text[at + 1] == '-')) {
                ++at;
            }
        } else {
            break;
        }
        ++at;
    }
    m_position = at;
    m_eof = at == size;

    // `from_chars` takes no leading '+'; what remains is the same text.
    const char *const first = m_text.data() + start + (m_text[start] == '+' ? 1 : 0);
    const char *const last = m_text.data() + at;
    T parsed = 0;
    const std::from_chars_result result = std::from_chars(first, last, parsed);
    if (result.ec == std::errc() && result.ptr == last) {
        value = parsed;
        return;
    }
    if (result.ec == std::errc::result_out_of_range && result.ptr == last) {
        // Overflow fails on a stream, but a result that underflows to zero or to a denormal
        // doesn't: the stream's own conversion decides these rare cases.
        std::istringstream stream(std::string(first, last));
        stream.imbue(std::locale::classic());
        stream >> value;
        m_fail = stream.fail();
        return;
    }
    m_fail = true;
    value = 0;
}

Reader &Reader::operator>>(float &value) {
    if (m_stream) {
        *m_stream >> value;
    } else {
        extractFloating(value);
    }
    return *this;
}

Reader &Reader::operator>>(double &value) {
    if (m_stream) {
        *m_stream >> value;
    } else {
        extractFloating(value);
    }
    return *this;
}

}  // namespace TextForm
}  // namespace VORT
