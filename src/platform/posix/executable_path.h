// Executable files, and where the running program lies.
#pragma once

#include <optional>
#include <string>

namespace brimwatch {

// Whether the path names a file, not a folder, that this user may execute. Follows links.
bool isExecutableFile(const std::string& path);

// The file that runs, without symbolic links; the place of its successor if it has been replaced.
std::optional<std::string> resolvedExecutablePath();

// The path by which the program was started, made absolute, its symbolic links kept: the path that
// goes on working when a newer version takes the place of this one. The resolved path where it was
// started by a descriptor instead of a path.
std::optional<std::string> calledExecutablePath();

}  // namespace brimwatch
