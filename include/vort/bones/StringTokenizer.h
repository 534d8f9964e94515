// `VORT::StringTokenizer`: splits a text at a delimiter that is a whole string, not a set of
// characters.
//
// The tokenizer holds the text and where it stands in it, and hands the text out token by token;
// a copy goes on from where the original stood and then keeps its own position. Taking a token
// costs its own length, not the length of what is left.
//
// Quirk kept on purpose: when `nextToken()` takes a token that ends the text at a delimiter, it
// leaves the one-character text "/" behind, whatever the delimiter is. So without `trim` a text
// that ends in the delimiter yields one token more: "a,b," with "," gives "a", "b", "/"; with
// "/" as the delimiter that last token is empty. Code that needs clean tails passes `trim`.
//
// Thread safety: none; a tokenizer belongs to one thread at a time. Failure: none; any text and
// any delimiter are taken. An empty text or delimiter gives a tokenizer with no tokens.
#ifndef VORT_BONES_STRINGTOKENIZER_H
#define VORT_BONES_STRINGTOKENIZER_H

#include <vort/vort_export.h>

#include <string>

namespace VORT {

class VORT_EXPORT StringTokenizer {
public:
    // `collapse` turns every run of delimiters into one; `trim` then drops one delimiter at the
    // start and one at the end of the text.
    StringTokenizer(std::string const &text, std::string const &delimiter, bool trim,
                    bool collapse);

    // 0 when nothing is left, else 1 plus the delimiters left (found left to right, without
    // overlap). Consumes nothing. A count, not a promise: a text that ends in an empty token
    // and a delimiter ("," or "a,,") yields one token fewer than it counts.
    int countTokens() const;
    bool hasMoreTokens() const { return m_position < m_text.size(); }

    // The text up to the next delimiter, or all that is left; "" once nothing is left.
    std::string nextToken();
    // The same with `delimiter` for this call only, and without the "/" left at the end. An
    // empty `delimiter` is never found, so the token is all that is left.
    std::string nextToken(std::string const &delimiter);
    // `nextToken()` read as a number the way `atoi` and `atof` read, in the C locale whatever
    // the process's locale is; text that is no number gives 0. An int out of range wraps to its
    // low 32 bits, as `atoi` does on this platform.
    int nextIntToken();
    double nextFloatToken();
    // `nextToken()` with every occurrence of `filter` in it (left to right, without overlap)
    // erased; an empty `filter` erases nothing.
    std::string filterNextToken(std::string const &filter);

    std::string remainingString() const { return m_text.substr(m_position); }

private:
    std::string take(std::string const &delimiter, bool markTail);

    std::string m_text;  // what is left starts at `m_position`
    std::string m_delimiter;
    std::string::size_type m_position = 0;
};

}  // namespace VORT

#endif  // VORT_BONES_STRINGTOKENIZER_H
