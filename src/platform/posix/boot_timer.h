// A timer on the clock that counts on while the machine sleeps.
#pragma once

#include <chrono>
#include <system_error>
#include <tl/expected.hpp>

#include "platform/posix/file_descriptor.h"

namespace brimwatch {

// A descriptor, closed on exec, that can be read once the time is over. A time of zero or less is
// over at once.
tl::expected<FileDescriptor, std::error_code> startBootTimer(std::chrono::milliseconds time);

}  // namespace brimwatch
