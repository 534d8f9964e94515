// Not public API: what the rest of the messaging module needs of Thread.cpp.
#ifndef VORT_MESSAGING_THREAD_P_H
#define VORT_MESSAGING_THREAD_P_H

namespace VTMS {

// Creates the key of the thread-specific slot that holds each thread's `Thread`, if it doesn't
// exist yet. The key is deleted at process end.
void ensureThreadSlot();

}  // namespace VTMS

#endif  // VORT_MESSAGING_THREAD_P_H
