// `VORT::ZQFErrorDescription` and `VORT::ZQFErrorType<code>`: failures told by a numbered
// message of the catalogue (see vort/bones/Library.h), with up to four string arguments.
//
// The text is formatted lazily, on the first `what()`, through the platform's `hsl_sprintm` in
// the language selected then; later calls return the cached text even if the language changes.
// Copies share the argument list (its count is atomic), so copies of one description may be
// read on different threads as long as each `what()` runs on its own copy.
#ifndef VORT_ERR_ZQFERRORDESCRIPTION_H
#define VORT_ERR_ZQFERRORDESCRIPTION_H

#include <vort/bones/VList.h>
#include <vort/err/ErrorDescription.h>

namespace VORT {

class VORT_EXPORT ZQFErrorDescription : public SimpleErrorDescription {
public:
    // Location ".\err\ZQFErrorDescription", line 16, generic id, code 0, no arguments.
    ZQFErrorDescription();
    ZQFErrorDescription(CodeLocation const &where, unsigned long code);
    ZQFErrorDescription(CodeLocation const &where, std::string const &id, unsigned long code);
    ZQFErrorDescription(CodeLocation const &where, unsigned long code, std::string const &a1);
    ZQFErrorDescription(CodeLocation const &where, unsigned long code, std::string const &a1,
                        std::string const &a2);
    ZQFErrorDescription(CodeLocation const &where, unsigned long code, std::string const &a1,
                        std::string const &a2, std::string const &a3);
    ZQFErrorDescription(CodeLocation const &where, unsigned long code, std::string const &a1,
                        std::string const &a2, std::string const &a3, std::string const &a4);
    ZQFErrorDescription(CodeLocation const &where, std::string const &id, unsigned long code,
                        std::string const &a1);
    ZQFErrorDescription(CodeLocation const &where, std::string const &id, unsigned long code,
                        std::string const &a1, std::string const &a2);
    ZQFErrorDescription(CodeLocation const &where, std::string const &id, unsigned long code,
                        std::string const &a1, std::string const &a2, std::string const &a3);
    ZQFErrorDescription(CodeLocation const &where, std::string const &id, unsigned long code,
                        std::string const &a1, std::string const &a2, std::string const &a3,
                        std::string const &a4);
    ZQFErrorDescription(ZQFErrorDescription const &) = default;
    ZQFErrorDescription &operator=(ZQFErrorDescription const &other);
    ~ZQFErrorDescription() override;

    // A plain `ZQFErrorDescription` with the same code, id, arguments and cached text.
    ErrorDescription *clone() override;
    // The catalogue text with the arguments put in; formatted once, then cached. An empty
    // formatted text is not cached.
    std::string what() const override;

    unsigned long getMessageCode() const { return m_code; }
    VList<std::string> const &arguments() const { return m_arguments; }

private:
    unsigned long m_code;  // 32 bits: facility high, message number low
    VList<std::string> m_arguments;
};

// A description whose dynamic type tells its message code apart. It overrides nothing but the
// destructor, on purpose not even `clone()`: a copy made through a holder comes back as a plain
// `ZQFErrorDescription`, so code that branches on a code after a copy uses `getMessageCode()`.
template <unsigned long code>
class ZQFErrorType : public ZQFErrorDescription {
public:
    explicit ZQFErrorType(CodeLocation const &where) : ZQFErrorDescription(where, code) {}
    ZQFErrorType(CodeLocation const &where, std::string const &a1)
        : ZQFErrorDescription(where, code, a1) {}
    ZQFErrorType(CodeLocation const &where, std::string const &a1, std::string const &a2)
        : ZQFErrorDescription(where, code, a1, a2) {}
    ZQFErrorType(CodeLocation const &where, std::string const &a1, std::string const &a2,
                 std::string const &a3)
        : ZQFErrorDescription(where, code, a1, a2, a3) {}
    ZQFErrorType(CodeLocation const &where, std::string const &a1, std::string const &a2,
                 std::string const &a3, std::string const &a4)
        : ZQFErrorDescription(where, code, a1, a2, a3, a4) {}
    ~ZQFErrorType() override = default;
};

}  // namespace VORT

#endif  // VORT_ERR_ZQFERRORDESCRIPTION_H
