#include <vort/bones/AtomicCounter.h>
#include <vort/command/ChangeLevel.h>

namespace VORT {
namespace {

// Zero before any constructor runs (AtomicCounter has none), so a level drawn during static
// initialisation elsewhere is already part of the series. Never reset.
AtomicCounter s_levels;

}  // namespace

ChangeLevel ChangeLevel::next() {
    // The counter is a signed word; its bit pattern is the 32-bit level, so the series runs on
    // through 2^31 and wraps from 2^32 - 1 to 0 like an unsigned number.
    return ChangeLevel(static_cast<std::uint32_t>(++s_levels));
}

}  // namespace VORT
