// The figure that people read of the usage of the last hours.
#pragma once

#include <optional>
#include <string>

#include "limits/recent_usage_result.h"

namespace brimwatch {

// The figure with one decimal as the locale writes it, as in "12.3"; nothing where the status has
// to be told in its place. `locale` is an identifier as in "ko_KR".
std::optional<std::string> figureText(const RecentUsageResult& result, const std::string& locale);

}  // namespace brimwatch
