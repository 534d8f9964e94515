#include <vort/bones/Any.h>

namespace VORT {

// Out of line, so that the placeholder's and the exception's type information live in the
// library once and a client's `catch` and `dynamic_cast` agree with the library's.
any::placeholder::~placeholder() = default;

bad_any_cast::~bad_any_cast() = default;

const char *bad_any_cast::what() const noexcept {
    return "VORT::bad_any_cast: failed conversion using VORT::any_cast";
}

}  // namespace VORT
