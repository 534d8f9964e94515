// Not public API: numbers in text exactly as a text stream left at its defaults writes and reads
// them, for the string forms of the type family.
//
// The forms are those of the stream: `%g` with six significant digits for floating point, plain
// decimal for ints, whitespace skipped before every extraction, the process's global locale in
// force. While that locale is the classic one, the work is done here directly, without a
// stream; under any other locale a real stream does it, so the text always follows the locale.
#ifndef VORT_TYPES_TEXTFORM_P_H
#define VORT_TYPES_TEXTFORM_P_H

#include <cstddef>
#include <memory>
#include <sstream>
#include <string>

namespace VORT {
namespace TextForm {

// Whether the process's global locale is the classic one, so that the direct path may serve.
bool classicLocale();

// An output text stream at its defaults, writing into a string.
class Writer {
public:
    Writer() : m_classic(classicLocale()) {}

    Writer &operator<<(int value);
    // A `float` goes through here as well, as it does on a stream.
    Writer &operator<<(double value);
    Writer &operator<<(char c) {
        m_text += c;
        return *this;
    }
    Writer &operator<<(char const *text) {
        m_text += text;
        return *this;
    }

    std::string &text() { return m_text; }

private:
    bool m_classic;
    std::string m_text;
};

// An input text stream at its defaults, reading a string that must outlive it. Its state is the
// stream's eof and fail flags, and an extraction on a stream that isn't good fails and leaves its
// variable alone, as a stream's does.
class Reader {
public:
    explicit Reader(std::string const &text);
    ~Reader();
    Reader(Reader const &) = delete;
    Reader &operator=(Reader const &) = delete;

    Reader &operator>>(int &value);
    Reader &operator>>(float &value);
    Reader &operator>>(double &value);
    // Skips whitespace, then takes whatever character follows.
    Reader &operator>>(char &c);
    // The next character as `std::istream::peek` gives it: an unsigned char's value, or EOF at
    // the end of the text and on a stream that isn't good (which then fails).
    int peek();

    bool fail() const;

private:
    bool good() const { return !m_eof && !m_fail; }
    // The stream's sentry: false (and failed) when the stream isn't good or only whitespace is
    // left.
    bool skipWhitespace();
    template <class T>
    void extractFloating(T &value);

    std::string const &m_text;
    std::size_t m_position = 0;
    bool m_eof = false;
    bool m_fail = false;
    // Set only when the global locale isn't the classic one.
    std::unique_ptr<std::istringstream> m_stream;
};

}  // namespace TextForm
}  // namespace VORT

#endif  // VORT_TYPES_TEXTFORM_P_H
