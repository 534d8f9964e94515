#include <vort/messaging/HostExceptions.h>

namespace Corvane {
namespace System {

// Out of line, so that the library holds the one type identity that every catch compares with.
IException::~IException() = default;
IUserException::~IUserException() = default;

}  // namespace System
}  // namespace Corvane
