#include "app/figures_text.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <string_view>

namespace brimwatch {
namespace {

std::string formatted(const char* format, double number) {
    std::array<char, 32> text{};
    const int length = std::snprintf(text.data(), text.size(), format, number);
    return {text.data(), static_cast<std::size_t>(length)};
}

std::string localTime(Instant instant) {
    const auto seconds = static_cast<std::time_t>(std::floor(unixSeconds(instant)));
    std::tm parts{};
    std::array<char, 32> text{};
    if (::localtime_r(&seconds, &parts) == nullptr) return "?";
    const std::size_t length = std::strftime(text.data(), text.size(), "%d.%m. %H:%M", &parts);
    return {text.data(), length};
}

std::string windowText(std::string_view name, const std::optional<UsageWindow>& window,
                       UsageDisplay display) {
    if (!window) return {};
    const bool isUsed = display == UsageDisplay::used;
    const double shown = isUsed ? window->usedPercentage : 100 - window->usedPercentage;
    std::string text =
        "  " + std::string(name) + ' ' + formatted("%.4g", shown) + (isUsed ? "% used" : "% left");
    if (window->resetsAt) text += " until " + localTime(*window->resetsAt);
    return text;
}

std::string cardLine(const HelperModel& model, const SubscriptionLimits& limits) {
    std::string line = "  " + limits.title(TitleAccount::shown);
    line += windowText("five hours", limits.fiveHour, model.usageDisplay());
    line += windowText("week", limits.sevenDay, model.usageDisplay());
    if (limits.planTier) line += "  " + *limits.planTier;
    if (const auto credits = model.creditText(limits)) line += "  " + credits->value();
    return line + '\n';
}

}  // namespace

std::string figuresText(const HelperModel& model) {
    const MenuBarGauge& gauge = model.menuGauge();
    std::string text = model.menuTitle().empty() ? "no figures yet" : model.menuTitle();
    text += "  gauge " + (gauge.remaining ? formatted("%.2f", *gauge.remaining) : "empty");
    text += ", weekly " + formatted("%.2f", gauge.weekly) + '\n';
    for (const SubscriptionLimits& limits : model.menuLimits())
        text += cardLine(model, limits);
    return text;
}

}  // namespace brimwatch
