// What Plasma's file of settings for all programs, `kdeglobals`, tells.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "support/file_system.h"

namespace brimwatch {

// The factor of the durations of animations, `AnimationDurationFactor` of the group `KDE`; 0 means
// that nothing is to move. Where it stands twice, the last counts.
std::optional<double> animationDurationFactor(std::string_view kdeGlobals);

// Whether the file in that folder takes all motion away. One that can't be read, or is larger than
// a mebibyte, doesn't.
bool kdeStopsMotion(FileSystem& files, const std::optional<std::string>& configFolder);

}  // namespace brimwatch
