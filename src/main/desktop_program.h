// Handing over to the desktop program, which lies beside this one in a folder of its own:
// `<prefix>/bin/brimwatch` and `<prefix>/libexec/brimwatch/brimwatch-desktop`.
#pragma once

#include <optional>
#include <string>
#include <system_error>

namespace brimwatch {

// Where the desktop program belongs, found from where this one really lies.
std::optional<std::string> desktopProgramPath();

// Becomes the desktop program, with the same arguments and environment. Its `argv[0]` is the path
// by which this program was called. Returns only if that failed, with the reason.
std::error_code becomeDesktopProgram(const std::string& path, char* const* arguments);

}  // namespace brimwatch
