#include <vort/bones/StringUtils.h>

namespace VORT {

namespace {

inline unsigned char lower(unsigned char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<unsigned char>(c - 'A' + 'a') : c;
}

}  // namespace

std::string StringReplace(std::string const &text, std::string const &from, std::string const &to) {
    if (from.empty()) {
        return text;
    }
    std::string::size_type found = text.find(from);
    if (found == std::string::npos) {
        return text;
    }
    std::string out;
    out.reserve(text.size() + (to.size() > from.size() ? to.size() - from.size() : 0));
    std::string::size_type done = 0;
    while (found != std::string::npos) {
        out.append(text, done, found - done);
        out.append(to);
        done = found + from.size();
        found = text.find(from, done);
    }
    out.append(text, done, std::string::npos);
    return out;
}

bool SplitStringFromLeft(std::string const &text, std::string const &separator, std::string &left,
                         std::string &right) {
    const std::string::size_type found = text.find(separator);
    if (found == std::string::npos) {
        return false;
    }
    // Both parts are cut before either output is written: callers split a text into itself,
    // as in `SplitStringFromLeft(rest, ".", head, rest)`.
    std::string after(text, found + separator.size());
    left.assign(text, 0, found);
    right.swap(after);
    return true;
}

bool GetToken(std::string const &text, std::string const &delimiters, std::string &token,
              std::size_t &position) {
    const std::string::size_type start = text.find_first_not_of(delimiters, position);
    if (start == std::string::npos) {
        return false;
    }
    std::string::size_type end = text.find_first_of(delimiters, start);
    if (end == std::string::npos) {
        end = text.size();
    }
    token.assign(text, start, end - start);
    position = end;
    return true;
}

int compareIgnoreCase(const char *a, const char *b) {
    const auto *x = reinterpret_cast<const unsigned char *>(a);
    const auto *y = reinterpret_cast<const unsigned char *>(b);
    for (;; ++x, ++y) {
        // Equal bytes need no folding, and most bytes of texts that are compared are equal.
        if (*x == *y) {
            if (*x == 0) {
                return 0;
            }
            continue;
        }
        const int difference = int(lower(*x)) - int(lower(*y));
        if (difference != 0) {
            return difference;
        }
    }
}

}  // namespace VORT
