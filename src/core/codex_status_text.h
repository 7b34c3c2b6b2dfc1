// What the settings say of the last question to Codex. The texts are Korean, the keys of their
// translations. Pure functions, for any thread.
#pragma once

#include <string>
#include <string_view>

#include "codex/codex_read_result.h"
#include "support/instant.h"

namespace brimwatch {

// For Codex as a whole.
inline constexpr std::string_view codexNotFoundText =
    "codex를 못 찾았어요. ChatGPT 앱이나 codex CLI를 설치해 주세요.";

std::string codexReceivedText(Instant now, const std::string& locale);

std::string_view codexFailureText(const CodexReadFailure& failure);

}  // namespace brimwatch
