// What the user reads of updates. Any thread.
#pragma once

#include <string>
#include <string_view>

#include "platform/update_engine.h"

namespace brimwatch {

// A line for each status but idle, which has none.
std::string updateStatusText(const UpdateStatus& status);

std::string_view updateUnavailabilityText(UpdateUnavailability reason);

}  // namespace brimwatch
