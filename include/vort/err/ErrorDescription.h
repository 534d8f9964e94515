// What a failure says and where it was raised: `VORT::CodeLocation`, `VORT::ErrorDescription`
// and `VORT::SimpleErrorDescription`.
//
// A raising place builds a `CodeLocation` from its source path without extension (such as
// ".\bones\Registry", kept verbatim: it is data that callers read) and a literal line number.
// Descriptions are plain values; `clone()` makes a heap copy that the caller owns. They are not
// shared between threads by the library.
#ifndef VORT_ERR_ERRORDESCRIPTION_H
#define VORT_ERR_ERRORDESCRIPTION_H

#include <vort/vort_export.h>

#include <string>

namespace VORT {

class VORT_EXPORT CodeLocation {
public:
    // The line of a default location is unset and must not be read.
    CodeLocation() = default;
    CodeLocation(std::string const &file, unsigned int line) : m_file(file), m_line(line) {}

    std::string file() const { return m_file; }
    unsigned int line() const { return m_line; }

private:
    std::string m_file;
    unsigned int m_line = 0;
};

class VORT_EXPORT ErrorDescription {
public:
    explicit ErrorDescription(CodeLocation const &where) : m_where(where) {}
    ErrorDescription(ErrorDescription const &) = default;
    ErrorDescription &operator=(ErrorDescription const &other);
    virtual ~ErrorDescription();

    // A new heap copy of the same dynamic type as far as that type overrides it.
    virtual ErrorDescription *clone();
    // "Unspecified error".
    virtual std::string what() const;
    // "Nexlark::GenericError".
    virtual std::string id() const;

    CodeLocation where() const { return m_where; }

private:
    CodeLocation m_where;
};

// The generic id that descriptions carry unless given one.
VORT_EXPORT extern const char *const GENERIC_ERROR_ID;

class VORT_EXPORT SimpleErrorDescription : public ErrorDescription {
public:
    SimpleErrorDescription(CodeLocation const &where, std::string const &message);
    // The id comes first, the message second.
    SimpleErrorDescription(CodeLocation const &where, std::string const &id,
                           std::string const &message);
    SimpleErrorDescription(SimpleErrorDescription const &) = default;
    SimpleErrorDescription &operator=(SimpleErrorDescription const &other);
    ~SimpleErrorDescription() override;

    ErrorDescription *clone() override;
    std::string what() const override;
    std::string id() const override;

protected:
    // Mutable: a lazily formatted message caches its text here from a const `what()`.
    mutable std::string m_message;
    std::string m_id;
};

}  // namespace VORT

#endif  // VORT_ERR_ERRORDESCRIPTION_H
