// Free functions on 8-bit strings: `StringReplace`, `SplitStringFromLeft`, `GetToken`, and
// `compareIgnoreCase`, the byte-wise comparison without regard to ASCII case that the library
// uses wherever texts are compared without case.
//
// Thread safety: none of these holds state; they may run on any thread. Failure: none; any
// bytes are taken, and outputs are changed only where a function says so.
#ifndef VORT_BONES_STRINGUTILS_H
#define VORT_BONES_STRINGUTILS_H

#include <vort/vort_export.h>

#include <cstddef>
#include <string>

namespace VORT {

// A copy of `text` with each occurrence of `from` replaced by `to`, found left to right without
// overlap; what is put in is not searched again. An empty `from` replaces nothing.
VORT_EXPORT std::string StringReplace(std::string const &text, std::string const &from,
                                      std::string const &to);

// Splits at the first `separator`: `left` gets what is before it, `right` what is after it, and
// the result is true. Without a separator the result is false and both outputs stay as they
// were. An empty separator is found at the start.
VORT_EXPORT bool SplitStringFromLeft(std::string const &text, std::string const &separator,
                                     std::string &left, std::string &right);

// `delimiters` is a set of characters. Skips them from `position` on; if nothing else is left,
// returns false and changes nothing. Otherwise `token` is the run up to the next delimiter or
// the end, `position` the index just after it (that of the delimiter), and the result is true.
VORT_EXPORT bool GetToken(std::string const &text, std::string const &delimiters,
                          std::string &token, std::size_t &position);

// Compares two NUL-terminated strings byte by byte, with 'A' to 'Z' read as 'a' to 'z' and
// every other byte as itself: negative, 0 or positive as `a` sorts before, with or after `b`
// (bytes compared as unsigned). Neither pointer may be null.
VORT_EXPORT int compareIgnoreCase(const char *a, const char *b);

}  // namespace VORT

#endif  // VORT_BONES_STRINGUTILS_H
