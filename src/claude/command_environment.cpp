#include "claude/command_environment.h"

#include "support/paths.h"

namespace brimwatch {

std::vector<std::string> installedCandidates(std::string_view home) {
    return {
        "/Applications/Brimwatch.app/Contents/MacOS/Brimwatch",
        joinPath(home, "Applications/Brimwatch.app/Contents/MacOS/Brimwatch"),
        "/usr/bin/brimwatch",
        "/usr/local/bin/brimwatch",
        joinPath(home, ".local/bin/brimwatch"),
    };
}

}  // namespace brimwatch
