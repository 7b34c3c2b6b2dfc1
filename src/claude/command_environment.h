// What the setup of Claude Code folders needs to know of the program's own location.
#pragma once

#include <functional>
#include <string>
#include <string_view>
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

// The `installedCandidates` of a user: in bundles, by a system package, below the home folder.
std::vector<std::string> installedCandidates(std::string_view home);

}  // namespace brimwatch
