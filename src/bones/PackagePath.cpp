#include <vort/bones/Library.h>
#include <vort/bones/PackagePath.h>

namespace VORT {

namespace {

bool isValidName(std::string const &text) {
    return !text.empty() && text.find_first_of(" .:") == std::string::npos;
}

// The package grammar tokenizes at '.', trimming one dot at each end and collapsing runs, and
// asks every token to be a valid name. Those tokens are exactly the non-empty runs between dots,
// so the path is valid when no blank or ':' appears anywhere; that is checked without
// tokenizing.
bool isValidPackagePath(std::string const &text) {
    return text.find_first_of(" :") == std::string::npos;
}

StringID joined(StringID const &left, char separator, StringID const &right) {
    std::string const &a = left.getString();
    std::string const &b = right.getString();
    std::string text;
    text.reserve(a.size() + 1 + b.size());
    text.append(a).push_back(separator);
    text.append(b);
    return StringID(text);
}

StringID before(StringID const &id, std::string::size_type at) {
    return at == std::string::npos ? StringID() : StringID(id.getString().substr(0, at));
}

StringID after(StringID const &id, std::string::size_type at) {
    return at == std::string::npos ? StringID() : StringID(id.getString().substr(at + 1));
}

}  // namespace

bool ClassName::isValid() const {
    return isValidName(m_id.getString());
}

bool PackageName::isValid() const {
    return isValidName(m_id.getString());
}

PackagePath PackageName::concat(PackageName const &right) const {
    return joined(m_id, PACKAGE_SEPARATOR, right.toStringID());
}

PackagePath PackageName::concat(PackagePath const &right) const {
    return joined(m_id, PACKAGE_SEPARATOR, right.toStringID());
}

ClassPath PackageName::concat(ClassName const &right) const {
    return joined(m_id, CLASS_SEPARATOR, right.toStringID());
}

ClassPath PackageName::concat(ClassPath const &right) const {
    return joined(m_id, PACKAGE_SEPARATOR, right.toStringID());
}

bool PackagePath::isValid() const {
    return isValidPackagePath(m_id.getString());
}

PackagePath PackagePath::getSuperPackagePath() const {
    return before(m_id, m_id.getString().rfind(PACKAGE_SEPARATOR));
}

PackageName PackagePath::getPackageName() const {
    const std::string::size_type dot = m_id.getString().rfind(PACKAGE_SEPARATOR);
    return dot == std::string::npos ? m_id : after(m_id, dot);
}

PackageName PackagePath::getFirstPackageName() const {
    const std::string::size_type dot = m_id.getString().find(PACKAGE_SEPARATOR);
    return dot == std::string::npos ? m_id : before(m_id, dot);
}

PackagePath PackagePath::concat(PackagePath const &right) const {
    return joined(m_id, PACKAGE_SEPARATOR, right.toStringID());
}

PackagePath PackagePath::concat(PackageName const &right) const {
    return joined(m_id, PACKAGE_SEPARATOR, right.toStringID());
}

ClassPath PackagePath::concat(ClassName const &right) const {
    return joined(m_id, CLASS_SEPARATOR, right.toStringID());
}

ClassPath PackagePath::concat(ClassPath const &right) const {
    return joined(m_id, PACKAGE_SEPARATOR, right.toStringID());
}

bool ClassPath::isValid() const {
    // A valid class name after the first ':' and a valid package path before it: no blank
    // anywhere, something after the ':' and no '.' or ':' there.
    std::string const &text = m_id.getString();
    const std::string::size_type colon = text.find(CLASS_SEPARATOR);
    return colon != std::string::npos && colon + 1 < text.size() &&
           text.find(' ') == std::string::npos &&
           text.find_first_of(".:", colon + 1) == std::string::npos;
}

bool ClassPath::isRoot() const {
    return !m_id.empty() && m_id.getString()[0] == CLASS_SEPARATOR;
}

ClassName ClassPath::getClassName() const {
    return after(m_id, m_id.getString().find(CLASS_SEPARATOR));
}

PackagePath ClassPath::getPackagePath() const {
    return before(m_id, m_id.getString().find(CLASS_SEPARATOR));
}

}  // namespace VORT
