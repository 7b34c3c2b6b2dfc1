#include "core/codex_status_text.h"

#include <variant>

#include "limits/short_time_text.h"

namespace brimwatch {

std::string codexReceivedText(Instant now, const std::string& locale) {
    return shortTimeText(now, locale) + "에 받음";
}

std::string_view codexFailureText(const CodexReadFailure& failure) {
    using Kind = CodexPoller::Failure::Kind;
    if (const auto* answer = std::get_if<CodexPoller::Failure>(&failure)) {
        if (answer->kind == Kind::noLimits) {
            return "한도가 없어요. 이 계정으로 Codex에 로그인했는지 확인해 주세요.";
        }
        if (answer->kind == Kind::server) {
            return "조회하지 못했어요. 이 계정으로 Codex에 로그인했는지 확인해 주세요.";
        }
    }
    return "codex가 답하지 않았어요";
}

}  // namespace brimwatch
