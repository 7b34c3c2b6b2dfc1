// Signals that would end the process for what is only a failed write.
#pragma once

#include <csignal>

namespace brimwatch {

// For as long as the process lives, SIGPIPE and SIGXFSZ are ignored: a reader that went away and a
// file size limit are reported by the write instead. Gives the set of those that had their default
// action before, which is what a child has to be given back.
sigset_t ignoreWriteSignals();

}  // namespace brimwatch
