#include "presentation/subscription_usage_card.h"

#include <algorithm>
#include <array>

#include "core/card_order.h"
#include "limits/plan_names.h"
#include "limits/recent_usage_result.h"
#include "limits/recent_usage_text.h"
#include "limits/usage_percent.h"
#include "presentation/freshness.h"
#include "presentation/time_texts.h"
#include "presentation/translated.h"

namespace brimwatch {
namespace {

using Provider = SubscriptionLimits::Provider;
using Window = std::optional<UsageWindow>;

QString fromUtf8(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

const Window& secondWindow(const SubscriptionLimits& limits) {
    static const Window none;
    return limits.sevenDay ? limits.fiveHour : none;
}

bool hasPassed(const UsageWindow& window, Instant now) {
    return window.resetsAt && *window.resetsAt <= now;
}

bool isAhead(const Window& window, Instant now) {
    return window && window->resetsAt && *window->resetsAt > now;
}

QString planText(const SubscriptionUsageCard& card) {
    if (card.planName) return *card.planName;
    const std::optional<std::string>& tier = card.limits.planTier;
    const auto name =
        card.limits.provider == Provider::codex ? codexPlanName(tier) : claudePlanName(tier);
    return name ? translated(*name) : translated("구독 한도");
}

QString percent(const UsageWindow& window, UsageDisplay display) {
    return QString::number(shownPercent(percentLeft(window), display)) + '%';
}

void addHeader(UsageCardContent& content, const SubscriptionUsageCard& card) {
    content.provider = fromUtf8(rawString(card.limits.provider));
    content.account = QString::fromStdString(card.limits.account);
    content.identifierSuffix = QString::fromStdString(card.limits.id());
    content.cardKey = QString::fromStdString(cardKey(card.limits.id()));
    content.title = QString::fromStdString(card.limits.title(card.titleAccount));
    content.plan = planText(card);
}

void addMainWindow(UsageCardContent& content, const SubscriptionUsageCard& card) {
    const Window& window = mainWindow(card.limits);
    content.hasMainWindow = window.has_value();
    if (!window) return;
    content.amount = percent(*window, card.display);
    content.amountSuffix = translated(shortSuffix(card.display));
    content.gaugeFraction =
        static_cast<double>(shownPercent(percentLeft(*window), card.display)) / 100;
    content.gaugeLabel =
        translated("%1 한도 %2").arg(mainWindowTitle(card.limits), content.amountSuffix);
    content.gaugeValue = content.amount;
    content.level = usageLevel(*window, card.warningRatio);
    content.statusText = translated(statusText(content.level));
    content.statusSymbol = fromUtf8(statusSymbol(content.level));
    if (!isAhead(window, card.now)) return;
    content.resetLabel =
        translated("%1에 초기화").arg(longResetTime(*window->resetsAt, card.locale));
}

void addSecondWindow(UsageCardContent& content, const SubscriptionUsageCard& card) {
    const Window& window = secondWindow(card.limits);
    content.hasSecondWindow = window.has_value();
    if (!window) return;
    content.fiveHourText = fiveHourValueText(*window, card.display, card.now);
    content.fiveHourPassed = hasPassed(*window, card.now);
    content.fiveHourLevel = usageLevel(*window, card.warningRatio);
    if (!isAhead(window, card.now)) return;
    const Instant reset = *window->resetsAt;
    content.fiveHourResetLabel =
        translated("%1에 초기화")
            .arg(isSameDay(reset, card.now) ? shortResetTime(reset, card.locale)
                                            : longResetTime(reset, card.locale));
}

QString recentUsageText(const SubscriptionUsageCard& card) {
    const RecentUsageResult result =
        RecentUsageResult::derive(card.limits, card.recentUsagePeriod, card.now);
    const std::optional<std::string> figure = figureText(result, card.locale);
    if (!figure) return translated(textWithoutFigure(result.status));
    return translated("%1 약 %2%")
        .arg(translated(result.basisName), QString::fromStdString(*figure));
}

void addRecentUsage(UsageCardContent& content, const SubscriptionUsageCard& card) {
    content.hasRecentUsage =
        content.hasMainWindow && card.recentUsagePeriod != RecentUsagePeriod::off;
    if (!content.hasRecentUsage) return;
    content.recentTitle = translated(label(card.recentUsagePeriod));
    content.recentText = recentUsageText(card);
}

void addCredit(UsageCardContent& content, const SubscriptionUsageCard& card) {
    if (!card.creditValue) return;
    content.credit = *card.creditValue;
    content.creditLabel =
        card.creditAccessibilityLabel.value_or(translated("크레딧 %1").arg(*card.creditValue));
}

}  // namespace

UsageCardContent content(const SubscriptionUsageCard& card) {
    UsageCardContent content;
    addHeader(content, card);
    addMainWindow(content, card);
    addSecondWindow(content, card);
    addRecentUsage(content, card);
    addCredit(content, card);
    updateCountdowns(content, card, card.now);
    const Freshness fresh = freshness(card.limits, card.now, card.locale);
    content.freshness = fresh.text;
    content.needsAttention = fresh.needsAttention;
    return content;
}

void updateCountdowns(UsageCardContent& content, const SubscriptionUsageCard& card, Instant now) {
    const auto text = [&](const Window& window, const char* pattern) {
        if (!isAhead(window, now)) return QString();
        return translated(pattern).arg(countdownText(*window->resetsAt, now, card.locale));
    };
    content.resetText = text(mainWindow(card.limits), "%1 후 초기화");
    content.fiveHourResetText = text(secondWindow(card.limits), "· %1 후");
}

bool hasLiveCountdown(const SubscriptionUsageCard& card, Instant now) {
    const std::array windows = {&card.limits.fiveHour, &card.limits.sevenDay};
    return std::any_of(windows.begin(), windows.end(), [now](const Window* window) {
        return isAhead(*window, now) && isLiveCountdown(*(*window)->resetsAt, now);
    });
}

bool wasResetSince(const SubscriptionUsageCard& card, Instant now) {
    const std::array windows = {&card.limits.fiveHour, &card.limits.sevenDay};
    return std::any_of(windows.begin(), windows.end(), [&](const Window* window) {
        return isAhead(*window, card.now) && hasPassed(**window, now);
    });
}

QString mainWindowTitle(const SubscriptionLimits& limits) {
    return limits.sevenDay ? translated("주간") : translated("5시간");
}

QString percentText(const UsageWindow& window, UsageDisplay display) {
    return percent(window, display) + ' ' + translated(shortSuffix(display));
}

QString fiveHourValueText(const UsageWindow& window, UsageDisplay display, Instant now) {
    return hasPassed(window, now) ? translated("새 값 대기") : percentText(window, display);
}

}  // namespace brimwatch
