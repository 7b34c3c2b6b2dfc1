// The end of child processes that nobody waits for.
#pragma once

#include "platform/posix/child_process.h"

namespace brimwatch {

// Asks the child to end and returns at once; when it has ended, be it much later, it is reaped from
// the event loop of this thread. Until then it holds one descriptor. If the application ends before
// the child does, the child is left to the system. Main thread.
void endChild(ChildProcess child);

}  // namespace brimwatch
