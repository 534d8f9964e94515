#include <hsl/hsl.h>
#include <vort/err/ZQFErrorDescription.h>

namespace VORT {
namespace {

constexpr unsigned long kCodeMask = 0xFFFFFFFFUL;

VList<std::string> listOf(std::initializer_list<const std::string *> arguments) {
    VList<std::string> list;
    for (const std::string *argument : arguments) {
        list.append(*argument);
    }
    return list;
}

}  // namespace

ZQFErrorDescription::ZQFErrorDescription()
    : ZQFErrorDescription(CodeLocation(".\\err\\ZQFErrorDescription", 16), 0) {}

ZQFErrorDescription::ZQFErrorDescription(CodeLocation const &where, unsigned long code)
    : SimpleErrorDescription(where, std::string()), m_code(code & kCodeMask) {}

ZQFErrorDescription::ZQFErrorDescription(CodeLocation const &where, std::string const &id,
                                         unsigned long code)
    : SimpleErrorDescription(where, id, std::string()), m_code(code & kCodeMask) {}

ZQFErrorDescription::ZQFErrorDescription(CodeLocation const &where, unsigned long code,
                                         std::string const &a1)
    : ZQFErrorDescription(where, code) {
    m_arguments = listOf({&a1});
}

ZQFErrorDescription::ZQFErrorDescription(CodeLocation const &where, unsigned long code,
                                         std::string const &a1, std::string const &a2)
    : ZQFErrorDescription(where, code) {
    m_arguments = listOf({&a1, &a2});
}

ZQFErrorDescription::ZQFErrorDescription(CodeLocation const &where, unsigned long code,
                                         std::string const &a1, std::string const &a2,
                                         std::string const &a3)
    : ZQFErrorDescription(where, code) {
    m_arguments = listOf({&a1, &a2, &a3});
}

ZQFErrorDescription::ZQFErrorDescription(CodeLocation const &where, unsigned long code,
                                         std::string const &a1, std::string const &a2,
                                         std::string const &a3, std::string const &a4)
    : ZQFErrorDescription(where, code) {
    m_arguments = listOf({&a1, &a2, &a3, &a4});
}

ZQFErrorDescription::ZQFErrorDescription(CodeLocation const &where, std::string const &id,
                                         unsigned long code, std::string const &a1)
    : ZQFErrorDescription(where, id, code) {
    m_arguments = listOf({&a1});
}

ZQFErrorDescription::ZQFErrorDescription(CodeLocation const &where, std::string const &id,
                                         unsigned long code, std::string const &a1,
                                         std::string const &a2)
    : ZQFErrorDescription(where, id, code) {
    m_arguments = listOf({&a1, &a2});
}

ZQFErrorDescription::ZQFErrorDescription(CodeLocation const &where, std::string const &id,
                                         unsigned long code, std::string const &a1,
                                         std::string const &a2, std::string const &a3)
    : ZQFErrorDescription(where, id, code) {
    m_arguments = listOf({&a1, &a2, &a3});
}

ZQFErrorDescription::ZQFErrorDescription(CodeLocation const &where, std::string const &id,
                                         unsigned long code, std::string const &a1,
                                         std::string const &a2, std::string const &a3,
                                         std::string const &a4)
    : ZQFErrorDescription(where, id, code) {
    m_arguments = listOf({&a1, &a2, &a3, &a4});
}

ZQFErrorDescription &ZQFErrorDescription::operator=(ZQFErrorDescription const &other) {
    if (this != &other) {
        SimpleErrorDescription::operator=(other);
        m_code = other.m_code;
        m_arguments = other.m_arguments;
    }
    return *this;
}

ZQFErrorDescription::~ZQFErrorDescription() = default;

ErrorDescription *ZQFErrorDescription::clone() {
    return new ZQFErrorDescription(*this);
}

std::string ZQFErrorDescription::what() const {
    if (!m_message.empty()) {
        return m_message;
    }
    const int count = m_arguments.size();
    const char *a[4] = {nullptr, nullptr, nullptr, nullptr};
    for (int i = 0; i < count && i < 4; ++i) {
        a[i] = m_arguments.at(i).c_str();
    }
    // The argument list of hsl_sprintm ends at the first null, so unused slots end it.
    char buffer[2048];
    hsl_sprintm(hslGetMessageContext(), buffer, sizeof buffer, static_cast<uint32_t>(m_code), a[0],
                a[1], a[2], a[3], static_cast<const char *>(nullptr));
    m_message = buffer;
    return m_message;
}

}  // namespace VORT
