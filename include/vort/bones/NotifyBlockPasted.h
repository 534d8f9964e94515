// `VORT::NotifyBlockPasted`: the process-wide emitter on which a tool announces that a block was
// pasted. Listeners connect to `getInstance()`; the library itself never sends on it.
//
// Thread safety: the first `getInstance()` is not guarded and happens before threads compete for
// it; connecting and sending then follow the messaging layer's rules. The instance is never
// destroyed.
#ifndef VORT_BONES_NOTIFYBLOCKPASTED_H
#define VORT_BONES_NOTIFYBLOCKPASTED_H

#include <vort/messaging/Emitter.h>
#include <vort/vort_export.h>

namespace VORT {

class VORT_EXPORT NotifyBlockPasted : public VTMS::Emitter0<void> {
public:
    // The one instance in use, made at the first call.
    static NotifyBlockPasted *getInstance();

    // Default mode `DirectOrQueue`. Public, though only the instance is used.
    NotifyBlockPasted();
};

}  // namespace VORT

#endif  // VORT_BONES_NOTIFYBLOCKPASTED_H
