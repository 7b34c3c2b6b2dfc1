// What asking the `codex` program gives.
#pragma once

#include <system_error>
#include <tl/expected.hpp>
#include <variant>

#include "codex/codex_poller.h"

namespace brimwatch {

// The error code is the system's: the program can't be started, or not be written to.
using CodexReadFailure = std::variant<CodexPoller::Failure, std::error_code>;

// A reading has at least one window.
using CodexReadResult = tl::expected<CodexPoller::Reading, CodexReadFailure>;

}  // namespace brimwatch
