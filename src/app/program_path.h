// Where the command lies that this desktop program belongs to, and what lies beside itself.
#pragma once

#include <optional>
#include <string>

#include "platform/bundle_info.h"
#include "support/file_system.h"

namespace brimwatch {

// `argv[0]` where it is the path that the command handed on; else, for a desktop program that was
// started by itself, the command of the same installation.
std::optional<std::string> commandPath(const std::string& argumentZero);

// Of the desktop program that runs.
BundleInfo ownBundleInfo(FileSystem& files);

}  // namespace brimwatch
