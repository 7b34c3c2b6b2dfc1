// What the setup of Claude Code folders needs to know of the program's own location.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace brimwatch {

struct CommandEnvironment {
    // The path by which the program was started, absolute; never that of the desktop program.
    std::string executable;
    // Where installed copies are looked for, in this order.
    std::vector<std::string> installedCandidates;
    bool rejectDevelopmentLocations = true;
    // Whether the path names an executable file.
    std::function<bool(const std::string& path)> isExecutable;
};

}  // namespace brimwatch
