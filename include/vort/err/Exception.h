// `VORT::Exception` and `VORT::TypedException<T>`: what operations without an `ErrorHolder`
// throw when they cannot go on (URIs, the XML reader and writer). The library never catches
// them; they go up to the caller.
#ifndef VORT_ERR_EXCEPTION_H
#define VORT_ERR_EXCEPTION_H

#include <vort/err/ErrorDescription.h>

#include <exception>
#include <string>

namespace VORT {

class VORT_EXPORT Exception : public std::exception {
public:
    Exception() = default;
    Exception(Exception const &) = default;
    Exception &operator=(Exception const &) = default;
    ~Exception() override;

    // The description's text. The pointer stays valid until the next `what()` on this
    // exception. If producing the text throws, a `std::exception`'s own text, or
    // "Internal error: Error report threw exception" for anything else.
    const char *what() const noexcept override;
    virtual ErrorDescription *description() const = 0;

    // The description's location; never throws, and returns what it has if reading fails.
    CodeLocation where() const noexcept;

private:
    mutable std::string m_what;
};

template <typename T>
class VORT_EXPORT TypedException : public Exception {
public:
    explicit TypedException(T const &description) : m_description(description) {}
    TypedException(TypedException const &) = default;
    ~TypedException() override = default;

    ErrorDescription *description() const override { return const_cast<T *>(&m_description); }

private:
    T m_description;
};

// The library's one throwing routine: throws `TypedException<SimpleErrorDescription>` built from
// `description`, by value.
[[noreturn]] VORT_EXPORT void throwException(SimpleErrorDescription const &description);

}  // namespace VORT

#endif  // VORT_ERR_EXCEPTION_H
