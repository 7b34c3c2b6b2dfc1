// The document that phones receive, as JSON text. Any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "publish/limits_cloud.h"

namespace brimwatch {

// Compact, and as large as it comes. Throws `LimitsCloud::EncodingError`.
std::string encodeSnapshot(const LimitsCloud::Snapshot& snapshot);

// Nothing unless it is of the supported version and has everything with its type. Only the accounts
// of a Mac are forgiven: those that can't be read are left out. Unknown keys are ignored.
std::optional<LimitsCloud::Snapshot> decodeSnapshot(std::string_view json);

}  // namespace brimwatch
