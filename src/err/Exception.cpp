#include <vort/err/Exception.h>

namespace VORT {

Exception::~Exception() = default;

const char *Exception::what() const noexcept {
    try {
        m_what = description()->what();
        return m_what.c_str();
    } catch (std::exception const &e) {
        // The caught exception dies with this handler, so its text is kept in the cache.
        try {
            m_what = e.what();
            return m_what.c_str();
        } catch (...) {
        }
    } catch (...) {
    }
    return "Internal error: Error report threw exception";
}

CodeLocation Exception::where() const noexcept {
    CodeLocation location;
    try {
        location = description()->where();
    } catch (...) {
    }
    return location;
}

void throwException(SimpleErrorDescription const &description) {
    throw TypedException<SimpleErrorDescription>(description);
}

}  // namespace VORT
