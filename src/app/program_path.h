// Where the command lies that this desktop program belongs to.
#pragma once

#include <optional>
#include <string>

namespace brimwatch {

// `argv[0]` where it is the path that the command handed on; else, for a desktop program that was
// started by itself, the command of the same installation.
std::optional<std::string> commandPath(const std::string& argumentZero);

}  // namespace brimwatch
