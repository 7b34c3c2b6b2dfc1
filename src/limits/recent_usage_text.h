// What people read of the usage of the last hours.
#pragma once

#include <string>

#include "limits/recent_usage_result.h"

namespace brimwatch {

// "주간 약 12.3%", with the figure as the locale writes it, or what stands in place of a number.
// `locale` is an identifier as in "ko_KR".
std::string text(const RecentUsageResult& result, const std::string& locale);

}  // namespace brimwatch
