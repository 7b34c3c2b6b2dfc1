#include "presentation/menu_cards.h"

#include <algorithm>

#include "limits/plan_names.h"
#include "presentation/translated.h"

namespace brimwatch {
namespace {

// The plan of a record is the text to show, once it has passed through the model. What the model
// takes from a file that somebody else wrote may be anything.
std::optional<QString> planName(const SubscriptionLimits& limits) {
    if (!limits.planTier || !isPlanName(*limits.planTier)) return std::nullopt;
    return translated(*limits.planTier);
}

void addCredits(SubscriptionUsageCard& card, const CodexCredits::Text& credits) {
    const QString balance = QString::fromStdString(credits.balance.value_or(std::string()));
    if (!credits.balance) {
        card.creditValue = translated(credits.value());
        card.creditAccessibilityLabel = translated(credits.accessibilityLabel());
        return;
    }
    const CodexCredits::Text pattern{.balance = "%1"};
    card.creditValue = balance;
    card.creditAccessibilityLabel = translated(pattern.accessibilityLabel()).arg(balance);
}

}  // namespace

TitleAccount titleAccount(const SubscriptionLimits& limits,
                          const std::vector<SubscriptionLimits>& shown) {
    const auto count = std::count_if(
        shown.begin(), shown.end(),
        [&limits](const SubscriptionLimits& other) { return other.provider == limits.provider; });
    return count > 1 ? TitleAccount::shown : TitleAccount::hidden;
}

std::vector<SubscriptionUsageCard> menuCards(const HelperModel& model, Instant now,
                                             const std::string& locale) {
    const std::vector<SubscriptionLimits> shown = model.menuLimits();
    std::vector<SubscriptionUsageCard> cards;
    for (const SubscriptionLimits& limits : shown) {
        SubscriptionUsageCard card;
        card.limits = limits;
        card.titleAccount = titleAccount(limits, shown);
        card.display = model.usageDisplay();
        card.recentUsagePeriod = model.recentUsagePeriod();
        card.now = now;
        card.planName = planName(limits);
        card.locale = locale;
        if (const auto credits = model.creditText(limits)) addCredits(card, *credits);
        cards.push_back(std::move(card));
    }
    return cards;
}

double cardListHeight(const std::vector<double>& screenHeights) {
    constexpr double roomForTheRest = 220;
    constexpr double lowest = 260;
    constexpr double highest = 432;
    const auto smallest = std::min_element(screenHeights.begin(), screenHeights.end());
    if (smallest == screenHeights.end()) return highest;
    return std::clamp(*smallest - roomForTheRest, lowest, highest);
}

}  // namespace brimwatch
