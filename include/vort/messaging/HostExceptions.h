// `Corvane::System::IException` and `Corvane::System::IUserException`: the host's exception
// interfaces, as far as this library sees them.
//
// The library never throws these; it only catches them, around every delivery of a message to a
// listener (see `VTMS::ConnectedPacket::deliver`), before `std::exception` and anything else. A
// host that throws its own exceptions out of a listener derives them from these classes. The
// declarations are minimal stand-ins for the host's own: an interface with a code and a source,
// and a user-facing refinement that adds a text.
//
// Thread safety: the interfaces hold no state. Ownership: exceptions are thrown and caught by
// value as usual.
#ifndef VORT_MESSAGING_HOSTEXCEPTIONS_H
#define VORT_MESSAGING_HOSTEXCEPTIONS_H

#include <vort/vort_export.h>

namespace Corvane {
namespace System {

class VORT_EXPORT IException {
public:
    virtual ~IException();
    // A number that names the kind of failure, in the host's own scheme.
    virtual unsigned long getCode() const = 0;
    // Where the failure was raised, for a report; never null.
    virtual const char *getSource() const = 0;

protected:
    IException() = default;
    IException(const IException &) = default;
    IException &operator=(const IException &) = default;
};

// A failure that the host would show to its user: the fourth virtual operation of the family
// gives the text, which a catch reads even when it has nowhere to show it.
class VORT_EXPORT IUserException : public IException {
public:
    ~IUserException() override;
    virtual const char *getText() const = 0;

protected:
    IUserException() = default;
    IUserException(const IUserException &) = default;
    IUserException &operator=(const IUserException &) = default;
};

}  // namespace System
}  // namespace Corvane

#endif  // VORT_MESSAGING_HOSTEXCEPTIONS_H
