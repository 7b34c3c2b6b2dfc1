#include "presentation/freshness.h"

#include "limits/usage_percent.h"
#include "presentation/time_texts.h"
#include "presentation/translated.h"

namespace brimwatch {
namespace {

constexpr std::chrono::hours oldAge{6};

bool isCodex(const SubscriptionLimits& limits) {
    return limits.provider == SubscriptionLimits::Provider::codex;
}

QString hint(const SubscriptionLimits& limits) {
    return isCodex(limits) ? translated("맥이 켜져 있으면 5분마다 새로 받아요.")
                           : translated("이 계정으로 Claude Code에서 대화하면 새로 받아요.");
}

}  // namespace

Freshness freshness(const SubscriptionLimits& limits, Instant now, const std::string& locale) {
    const QString ago = agoText(limits.updatedAt, now, locale);
    if (now - limits.updatedAt > oldAge) {
        return {translated("%1 받은 값이에요. %2").arg(ago, hint(limits)), true};
    }
    const std::optional<UsageWindow>& window = mainWindow(limits);
    if (window && window->resetsAt && *window->resetsAt <= now) {
        const QString told = limits.sevenDay ? translated("주간 한도가 초기화됐어요. %1")
                                             : translated("5시간 한도가 초기화됐어요. %1");
        return {told.arg(hint(limits)), true};
    }
    const QString source = isCodex(limits) ? "Codex" : "Claude Code";
    return {translated("%1에서 %2 받음").arg(source, ago), false};
}

}  // namespace brimwatch
