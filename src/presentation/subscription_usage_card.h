// The card of one account, and every text on it.
//
// A card is a value, and what it shows depends on its fields alone, and on the time zone that the
// machine has now. Main thread.
#pragma once

#include <QString>
#include <optional>
#include <string>

#include "limits/recent_usage_period.h"
#include "limits/subscription_limits.h"
#include "limits/usage_display.h"
#include "presentation/usage_level.h"
#include "support/instant.h"

namespace brimwatch {

struct SubscriptionUsageCard {
    SubscriptionLimits limits;
    TitleAccount titleAccount = TitleAccount::hidden;
    double warningRatio = 0.8;  // the fraction used from which on a window is in warning
    UsageDisplay display = UsageDisplay::remaining;
    RecentUsagePeriod recentUsagePeriod = RecentUsagePeriod::off;
    Instant now;
    std::optional<QString> planName;
    std::optional<QString> creditValue;
    std::optional<QString> creditAccessibilityLabel;
    std::string locale;  // as in "ko" or "de_DE.UTF-8"
};

// What a view draws. The texts of what is not there are empty.
struct UsageCardContent {
    QString provider;  // "claude" or "codex"
    QString account;
    QString identifierSuffix;  // of accessibility identifiers, as in "claude-work"
    QString cardKey;           // as in "subscription.claude-work"
    QString title;
    QString plan;

    // The main window.
    QString amount;  // "82%"
    QString amountSuffix;
    QString gaugeLabel;
    QString gaugeValue;
    QString statusText;
    QString statusSymbol;  // name of a system image
    QString resetText;     // "3일 후 초기화"
    QString resetLabel;

    // The five-hour window beside a weekly one.
    QString fiveHourText;
    QString fiveHourResetText;  // "· 1:23:45 후"
    QString fiveHourResetLabel;

    QString recentTitle;
    QString recentText;
    QString credit;
    QString creditLabel;
    QString freshness;

    double gaugeFraction = 0;  // 0 to 1
    UsageLevel level = UsageLevel::comfortable;
    UsageLevel fiveHourLevel = UsageLevel::comfortable;
    bool hasMainWindow = false;
    bool hasSecondWindow = false;
    bool fiveHourPassed = false;  // its limit has started anew, and no figure came since
    bool hasRecentUsage = false;  // stands beside the amount
    bool needsAttention = false;

    bool operator==(const UsageCardContent&) const = default;
};

UsageCardContent content(const SubscriptionUsageCard& card);

// Moves the texts that count down on to `now`, and nothing else.
void updateCountdowns(UsageCardContent& content, const SubscriptionUsageCard& card, Instant now);

// Whether one of its texts counts down by the second.
bool hasLiveCountdown(const SubscriptionUsageCard& card, Instant now);

// Whether a limit of it has started anew after the card was made.
bool wasResetSince(const SubscriptionUsageCard& card, Instant now);

// "주간" or "5시간", translated; the window that the card's gauge shows.
QString mainWindowTitle(const SubscriptionLimits& limits);
// "82% 남음", as the gauge of a window shows it.
QString percentText(const UsageWindow& window, UsageDisplay display);
// The same of the five-hour window, or "새 값 대기" once its reset has passed.
QString fiveHourValueText(const UsageWindow& window, UsageDisplay display, Instant now);

}  // namespace brimwatch
