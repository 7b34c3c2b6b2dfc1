// The order of versions in feeds of updates. Any thread.
#pragma once

#include <compare>
#include <string_view>

namespace brimwatch {

// Part by part: numbers by their value, other text by its characters and below every number and
// the end ("1.0b" is below "1.0"); what stands behind a "-" does not count, and numbers that are
// missing count as zero ("1.0" is "1.0.0"). Two texts may be equivalent without being equal.
std::weak_ordering compareVersions(std::string_view left, std::string_view right);

}  // namespace brimwatch
