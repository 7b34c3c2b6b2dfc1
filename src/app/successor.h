// The program that takes the place of this one after an update.
#pragma once

#include <csignal>
#include <string>

namespace brimwatch {

// Becomes the program at that path, in the same process and environment, without arguments. The
// signals are those that have to have their default action in it. Returns only if that failed.
void becomeSuccessor(const std::string& path, const sigset_t& defaultSignals);

}  // namespace brimwatch
