#include <vort/err/ErrorDescription.h>

namespace VORT {

const char *const GENERIC_ERROR_ID = "Nexlark::GenericError";

ErrorDescription &ErrorDescription::operator=(ErrorDescription const &other) {
    if (this != &other) {
        m_where = other.m_where;
    }
    return *this;
}

ErrorDescription::~ErrorDescription() = default;

ErrorDescription *ErrorDescription::clone() {
    return new ErrorDescription(*this);
}

std::string ErrorDescription::what() const {
    return "Unspecified error";
}

std::string ErrorDescription::id() const {
    return GENERIC_ERROR_ID;
}

SimpleErrorDescription::SimpleErrorDescription(CodeLocation const &where,
                                               std::string const &message)
    : ErrorDescription(where), m_message(message), m_id(GENERIC_ERROR_ID) {}

SimpleErrorDescription::SimpleErrorDescription(CodeLocation const &where, std::string const &id,
                                               std::string const &message)
    : ErrorDescription(where), m_message(message), m_id(id) {}

SimpleErrorDescription &SimpleErrorDescription::operator=(SimpleErrorDescription const &other) {
    if (this != &other) {
        ErrorDescription::operator=(other);
        m_message = other.m_message;
        m_id = other.m_id;
    }
    return *this;
}

SimpleErrorDescription::~SimpleErrorDescription() = default;

ErrorDescription *SimpleErrorDescription::clone() {
    return new SimpleErrorDescription(*this);
}

std::string SimpleErrorDescription::what() const {
    return m_message;
}

std::string SimpleErrorDescription::id() const {
    return m_id;
}

}  // namespace VORT
