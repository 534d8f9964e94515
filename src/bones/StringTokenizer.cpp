#include <vort/bones/StringTokenizer.h>

#include <cstdlib>
#include <locale.h>

namespace VORT {

namespace {

// Hosts built on Qt run in the user's locale (QCoreApplication sets it), where `atof` would
// read "1.5" as 1 under a comma-decimal locale; a token's numbers are always C numbers.
locale_t cLocale() {
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", locale_t(nullptr));
    return locale;
}

// Keeps the first delimiter of every run. The text after a run is never searched backwards,
// which is what erasing each run in place would give.
void collapseRuns(std::string &text, std::string const &delimiter) {
    const std::string::size_type width = delimiter.size();
    std::string::size_type found = text.find(delimiter);
    if (found == std::string::npos) {
        return;
    }
    std::string out;
    out.reserve(text.size());
    std::string::size_type from = 0;  // the start of what is not copied yet
    while (found != std::string::npos) {
        std::string::size_type end = found + width;
        out.append(text, from, end - from);
        while (text.compare(end, width, delimiter) == 0) {
            end += width;
        }
        from = end;
        found = text.find(delimiter, from);
    }
    out.append(text, from, std::string::npos);
    text.swap(out);
}

bool startsWith(std::string const &text, std::string const &part) {
    return text.size() >= part.size() && text.compare(0, part.size(), part) == 0;
}

bool endsWith(std::string const &text, std::string const &part) {
    return text.size() >= part.size() &&
           text.compare(text.size() - part.size(), part.size(), part) == 0;
}

}  // namespace

StringTokenizer::StringTokenizer(std::string const &text, std::string const &delimiter, bool trim,
                                 bool collapse) {
    if (text.empty() || delimiter.empty()) {
        return;
    }
    m_text = text;
    m_delimiter = delimiter;
    if (collapse) {
        collapseRuns(m_text, m_delimiter);
    }
    if (trim) {
        if (startsWith(m_text, m_delimiter)) {
            m_text.erase(0, m_delimiter.size());
        }
        if (endsWith(m_text, m_delimiter)) {
            m_text.erase(m_text.size() - m_delimiter.size());
        }
    }
}

int StringTokenizer::countTokens() const {
    if (!hasMoreTokens()) {
        return 0;
    }
    int count = 1;
    for (std::string::size_type found = m_text.find(m_delimiter, m_position);
         found != std::string::npos; found = m_text.find(m_delimiter, found + m_delimiter.size())) {
        ++count;
    }
    return count;
}

std::string StringTokenizer::take(std::string const &delimiter, bool markTail) {
    if (!hasMoreTokens()) {
        return std::string();
    }
    const std::string::size_type found =
        delimiter.empty() ? std::string::npos : m_text.find(delimiter, m_position);
    if (found == std::string::npos) {
        std::string token(m_text, m_position);
        m_text.clear();
        m_position = 0;
        return token;
    }
    std::string token(m_text, m_position, found - m_position);
    m_position = found + delimiter.size();
    if (markTail && m_position == m_text.size() && !token.empty()) {
        m_text.assign(1, '/');
        m_position = 0;
    }
    return token;
}

std::string StringTokenizer::nextToken() {
    return take(m_delimiter, true);
}

std::string StringTokenizer::nextToken(std::string const &delimiter) {
    return take(delimiter, false);
}

int StringTokenizer::nextIntToken() {
    const std::string token = nextToken();
    // `atoi` is `strtol` cut to int here; the cut is spelled out so that it is defined.
    return static_cast<int>(strtol_l(token.c_str(), nullptr, 10, cLocale()));
}

double StringTokenizer::nextFloatToken() {
    const std::string token = nextToken();
    return strtod_l(token.c_str(), nullptr, cLocale());
}

std::string StringTokenizer::filterNextToken(std::string const &filter) {
    std::string token = nextToken();
    if (filter.empty()) {
        return token;
    }
    std::string::size_type found = token.find(filter);
    if (found == std::string::npos) {
        return token;
    }
    std::string out;
    out.reserve(token.size());
    std::string::size_type from = 0;
    while (found != std::string::npos) {
        out.append(token, from, found - from);
        from = found + filter.size();
        found = token.find(filter, from);
    }
    out.append(token, from, std::string::npos);
    return out;
}

}  // namespace VORT
