#include <vort/err/ErrorHolder.h>

namespace VORT {

ErrorHolder::ErrorHolder(ErrorHolder const &other)
    : m_description(other.m_description ? other.m_description->clone() : nullptr) {}

ErrorHolder &ErrorHolder::operator=(ErrorHolder const &other) {
    if (this != &other) {
        copy(other);
    }
    return *this;
}

ErrorHolder::~ErrorHolder() {
    delete m_description;
}

void ErrorHolder::copy(ErrorHolder const &other) {
    delete m_description;
    m_description = nullptr;
    if (other.m_description != nullptr) {
        m_description = other.m_description->clone();
    }
}

void ErrorHolder::clear() {
    delete m_description;
    m_description = nullptr;
}

std::string ErrorHolder::what() const {
    return m_description ? m_description->what() : std::string();
}

std::string ErrorHolder::id() const {
    return m_description ? m_description->id() : std::string();
}

}  // namespace VORT
