#include <vort/bones/NotifyBlockPasted.h>

namespace VORT {

NotifyBlockPasted::NotifyBlockPasted() : VTMS::Emitter0<void>(VTMS::DirectOrQueue) {}

NotifyBlockPasted *NotifyBlockPasted::getInstance() {
    // Never destroyed: listeners in other modules may still disconnect from it during exit.
    static NotifyBlockPasted *const instance = new NotifyBlockPasted;
    return instance;
}

}  // namespace VORT
