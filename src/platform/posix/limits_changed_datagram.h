// The broadcast that tells the running application to read the limits folder again.
#pragma once

#include <optional>
#include <string>

#include "support/environment.h"

namespace brimwatch {

// Where the application listens: the datagram socket `net.quillmoor.brimwatch.limitsChanged` in
// `$XDG_RUNTIME_DIR`. Nothing without such a folder.
std::optional<std::string> limitsChangedSocket(const Environment& environment);

// Sends one empty datagram there. Never waits and reports nothing: with nobody listening, or a full
// socket, the application finds the change by watching the folder.
void postLimitsChanged(const Environment& environment);

}  // namespace brimwatch
