// The messaging demo of the Qt host kit, shared by the example host (examples/qthost) and
// `vort demo messaging`: a main thread and a worker thread, each with a Qt event loop,
// exchange queued and blocking messages, a throttled callback folds a burst of triggers, and
// everything shuts down in order. Each delivery is written to `out` with the time and the
// thread it ran on.
#ifndef VORT_EXAMPLES_QTHOST_MESSAGINGDEMO_H
#define VORT_EXAMPLES_QTHOST_MESSAGINGDEMO_H

#include <cstdio>

namespace vort_demo {

// Runs the demo on the calling thread, which must be the thread of the existing
// QCoreApplication. Returns 0 when every message arrived and the shutdown was clean.
int runMessagingDemo(std::FILE *out);

}  // namespace vort_demo

#endif  // VORT_EXAMPLES_QTHOST_MESSAGINGDEMO_H
