// Making folders.
#pragma once

#include <sys/types.h>

#include <string>

#include "support/file_system.h"

namespace brimwatch {

// The folder and all that is missing above it, with that mode less the umask. That the name is
// taken is no failure: whoever uses the folder finds out by whom.
FileResult<void> makeFolders(const std::string& folder, mode_t mode);

}  // namespace brimwatch
