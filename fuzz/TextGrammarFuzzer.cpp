// Fuzzes the text splitters and the name grammar: StringTokenizer, GetToken, StringReplace and
// SplitStringFromLeft, and the validity and parts of ClassName, PackagePath and ClassPath. Beyond
// not crashing, leaking or hanging, the tokenizer must cut exactly as a plain, erase-in-place
// rendering of its rules does (quirks included), the other splitters must give back what they
// were given, and each name must judge its validity as its grammar's own steps do.
//
// Input: byte 0 holds the tokenizer's flags (bit 0 trims, bit 1 collapses); byte 1, modulo 4, is
// the delimiter's length; the delimiter follows, then the text.
#include "FuzzCheck.h"
#include <vort/bones/PackagePath.h>
#include <vort/bones/StringTokenizer.h>
#include <vort/bones/StringUtils.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace {

using vort_fuzz::check;

std::size_t occurrences(std::string const &text, std::string const &part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); !part.empty() && at != std::string::npos;
         at = text.find(part, at + part.size())) {
        ++count;
    }
    return count;
}

bool endsWith(std::string const &text, std::string const &part) {
    return text.size() >= part.size() &&
           text.compare(text.size() - part.size(), part.size(), part) == 0;
}

// The tokenizer's rules taken word for word, erasing in place: slow and plain.
class Reference {
public:
    Reference(std::string const &text, std::string const &delimiter, bool trim, bool collapse) {
        if (text.empty() || delimiter.empty()) {
            return;
        }
        m_text = text;
        m_delimiter = delimiter;
        const std::size_t width = delimiter.size();
        for (std::size_t at = m_text.find(delimiter); collapse && at != std::string::npos;
             at = m_text.find(delimiter, at)) {
            at += width;
            while (m_text.compare(at, width, delimiter) == 0) {
                m_text.erase(at, width);
            }
        }
        if (trim && m_text.compare(0, width, delimiter) == 0) {
            m_text.erase(0, width);
        }
        if (trim && endsWith(m_text, delimiter)) {
            m_text.erase(m_text.size() - width);
        }
    }

    std::string next() {
        const std::size_t at = m_text.find(m_delimiter);
        std::string token = m_text.substr(0, at);
        m_text.erase(0, at == std::string::npos ? at : at + m_delimiter.size());
        if (at != std::string::npos && m_text.empty() && !token.empty()) {
            m_text = "/";
        }
        return token;
    }

    std::string const &text() const { return m_text; }

private:
    std::string m_text;
    std::string m_delimiter;
};

void fuzzTokenizer(std::string const &text, std::string const &delimiter, bool trim,
                   bool collapse) {
    VORT::StringTokenizer tokenizer(text, delimiter, trim, collapse);
    Reference reference(text, delimiter, trim, collapse);
    check(tokenizer.remainingString() == reference.text(), "collapsing and trimming as the rules");
    const std::string start = reference.text();
    check(tokenizer.countTokens() == (start.empty() ? 0 : 1 + int(occurrences(start, delimiter))),
          "the count is one more than the delimiters");
    // Every token shortens the text or turns its tail into the one "/", so this bounds the run.
    for (std::size_t steps = 0; steps <= start.size() + 1 && tokenizer.hasMoreTokens(); ++steps) {
        check(tokenizer.nextToken() == reference.next(), "tokens as the rules");
        check(tokenizer.remainingString() == reference.text(), "the rest as the rules");
    }
    check(!tokenizer.hasMoreTokens() && reference.text().empty(), "the tokens run out");

    // The per-call form leaves no "/": its tokens join back into the text.
    VORT::StringTokenizer again(text, delimiter, trim, collapse);
    std::string joined;
    for (std::size_t steps = 0; steps <= start.size() && again.hasMoreTokens(); ++steps) {
        joined += (steps == 0 ? "" : delimiter) + again.nextToken(delimiter);
    }
    check(!again.hasMoreTokens(), "the per-call tokens run out");
    // The last delimiter found, left to right, takes nothing after it into a token.
    bool cutAtTheEnd = false;
    for (std::size_t at = start.find(delimiter); !delimiter.empty() && at != std::string::npos;
         at = start.find(delimiter, at + delimiter.size())) {
        cutAtTheEnd = at + delimiter.size() == start.size();
    }
    check(joined + (cutAtTheEnd ? delimiter : "") == start,
          "the per-call tokens join back into the text");
}

void fuzzSplitters(std::string const &text, std::string const &delimiter) {
    std::string token = "unset";
    std::size_t position = 0;
    for (std::size_t steps = 0; steps <= text.size(); ++steps) {
        const std::size_t before = position;
        if (!VORT::GetToken(text, delimiter, token, position)) {
            check(position == before, "a failed GetToken leaves the position");
            break;
        }
        check(!token.empty() && token.find_first_of(delimiter) == std::string::npos,
              "a GetToken token holds no delimiter");
        check(position > before && text.compare(position - token.size(), token.size(), token) == 0,
              "a GetToken token ends at the position");
        check(position == text.size() || delimiter.find(text[position]) != std::string::npos,
              "a GetToken token stops at a delimiter");
    }

    const std::size_t count = occurrences(text, delimiter);
    check(VORT::StringReplace(text, delimiter, delimiter) == text, "replacing by itself");
    check(VORT::StringReplace(text, delimiter, "").size() == text.size() - count * delimiter.size(),
          "erasing every occurrence");

    std::string left = "left", right = "right";
    if (VORT::SplitStringFromLeft(text, delimiter, left, right)) {
        check(left + delimiter + right == text && text.find(delimiter) == left.size(),
              "a split at the first separator");
    } else {
        check(left == "left" && right == "right" && text.find(delimiter) == std::string::npos,
              "a failed split leaves the outputs");
    }
}

bool validName(std::string const &text) {
    return !text.empty() && text.find_first_of(" .:") == std::string::npos;
}

// The package grammar's own steps: the tokens of a trimmed and collapsed tokenizer.
bool validPackagePath(std::string const &text) {
    VORT::StringTokenizer tokens(text, ".", true, true);
    while (tokens.hasMoreTokens()) {
        if (!validName(tokens.nextToken())) {
            return false;
        }
    }
    return true;
}

void fuzzNames(std::string const &text) {
    const VORT::StringID id(text);
    const std::string name = id.getString();  // up to the first NUL
    const std::size_t colon = name.find(':');
    const std::size_t dot = name.rfind('.');

    check(VORT::ClassName(id).isValid() == validName(name), "class name grammar");
    const VORT::PackagePath path(id);
    check(path.isValid() == validPackagePath(name), "package path grammar");
    check(VORT::ClassPath(id).isValid() ==
              (colon != std::string::npos && validName(name.substr(colon + 1)) &&
               validPackagePath(name.substr(0, colon))),
          "class path grammar");

    const std::string super = path.getSuperPackagePath().toString();
    const std::string last = path.getPackageName().toString();
    check(dot == std::string::npos ? super.empty() && last == name : super + "." + last == name,
          "a package path is its super path and its name");
    check(path.getFirstPackageName().toString() == name.substr(0, name.find('.')),
          "the first name leads the path");
    const VORT::ClassPath classPath(id);
    check(colon == std::string::npos
              ? classPath.getPackagePath().isRoot() && classPath.getClassName().toString().empty()
              : classPath.getPackagePath().toString() + ":" + classPath.getClassName().toString() ==
                    name,
          "a class path is its package path and its class");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size < 2) {
        return 0;
    }
    const bool trim = (data[0] & 1) != 0;
    const bool collapse = (data[0] & 2) != 0;
    const std::size_t width = std::min<std::size_t>(data[1] % 4, size - 2);
    const char *bytes = reinterpret_cast<const char *>(data + 2);
    const std::string delimiter(bytes, width);
    const std::string text(bytes + width, size - 2 - width);

    fuzzTokenizer(text, delimiter, trim, collapse);
    fuzzSplitters(text, delimiter);
    // Interned ids live as long as the process: long texts would only fill memory.
    if (text.size() <= 256) {
        fuzzNames(text);
    }
    return 0;
}
