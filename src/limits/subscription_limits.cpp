#include "limits/subscription_limits.h"

#include <tuple>

#include "limits/limits_file.h"
#include "support/json_fields.h"
#include "support/json_reader.h"

namespace brimwatch {
namespace {

constexpr std::int64_t supportedVersion = 1;

// A window of the file, before the rules for showing it.
struct WindowFile {
    double usedPercentage = 0;
    std::optional<double> resetsAt;
};

using WindowFiles = std::vector<std::pair<std::string_view, WindowFile>>;

std::optional<WindowFiles> decodeWindows(const JsonObject& object) {
    WindowFiles windows;
    for (const JsonMember& member : object.members()) {
        const JsonObject* members = member.value.object();
        if (members == nullptr) return std::nullopt;
        JsonFields fields(*members);
        const WindowFile window{.usedPercentage = fields.number("used_percentage"),
                                .resetsAt = fields.optionalNumber("resets_at")};
        if (!fields.allRead()) return std::nullopt;
        windows.emplace_back(member.key, window);
    }
    return windows;
}

std::optional<UsageWindow> shownWindow(double usedPercentage, std::optional<double> resetsAt) {
    UsageWindow window{usedPercentage, std::nullopt};
    if (resetsAt) window.resetsAt = instantFromUnixSeconds(*resetsAt);
    if (!isValid(window)) return std::nullopt;
    return window;
}

std::optional<UsageWindow> shownWindow(const WindowFiles& windows, std::string_view key) {
    for (const auto& [name, window] : windows) {
        if (name == key) return shownWindow(window.usedPercentage, window.resetsAt);
    }
    return std::nullopt;
}

std::optional<UsageWindow> shownWindow(const LimitsFile::Windows& windows, std::string_view key) {
    const auto found = windows.find(key);
    if (found == windows.end()) return std::nullopt;
    const auto& [usedPercentage, resetsAt] = found->second;
    return shownWindow(usedPercentage, resetsAt
                                           ? std::optional<double>(static_cast<double>(*resetsAt))
                                           : std::nullopt);
}

}  // namespace

std::optional<SubscriptionLimits> SubscriptionLimits::fromFileData(std::string_view fileData) {
    const std::optional<JsonObject> object = parseJsonMembers(
        fileData, {"version", "provider", "account", "windows", "updated_at", "plan_tier"});
    if (!object) return std::nullopt;
    JsonFields fields(*object);
    const std::int64_t version = fields.integer("version");
    const std::optional<Provider> provider = providerFromRawString(fields.string("provider"));
    const std::optional<WindowFiles> windows = decodeWindows(fields.object("windows"));
    if (version != supportedVersion || !provider || !windows) return std::nullopt;
    SubscriptionLimits limits{.provider = *provider,
                              .account = fields.string("account"),
                              .fiveHour = shownWindow(*windows, "five_hour"),
                              .sevenDay = shownWindow(*windows, "seven_day"),
                              .updatedAt = instantFromUnixSeconds(fields.number("updated_at")),
                              .planTier = fields.optionalString("plan_tier"),
                              .displayName = std::nullopt,
                              .recentUsageHistory = std::nullopt};
    if (!fields.allRead() || (!limits.fiveHour && !limits.sevenDay)) return std::nullopt;
    return limits;
}

std::optional<SubscriptionLimits> SubscriptionLimits::fromFile(const LimitsFile& file) {
    const std::optional<Provider> provider = providerFromRawString(file.provider);
    if (file.version != supportedVersion || !provider) return std::nullopt;
    SubscriptionLimits limits{
        .provider = *provider,
        .account = file.account,
        .fiveHour = shownWindow(file.windows, "five_hour"),
        .sevenDay = shownWindow(file.windows, "seven_day"),
        .updatedAt = instantFromUnixSeconds(static_cast<double>(file.updatedAt)),
        .planTier = file.planTier,
        .displayName = std::nullopt,
        .recentUsageHistory = std::nullopt};
    if (!limits.fiveHour && !limits.sevenDay) return std::nullopt;
    return limits;
}

std::string SubscriptionLimits::id() const {
    std::string id(rawString(provider));
    id += '-';
    id += account;
    return id;
}

std::string_view rawString(SubscriptionLimits::Provider provider) {
    return provider == SubscriptionLimits::Provider::claude ? "claude" : "codex";
}

std::string_view displayName(SubscriptionLimits::Provider provider) {
    return provider == SubscriptionLimits::Provider::claude ? "Claude" : "Codex";
}

std::optional<SubscriptionLimits::Provider> providerFromRawString(std::string_view raw) {
    using enum SubscriptionLimits::Provider;
    for (const SubscriptionLimits::Provider provider : {claude, codex}) {
        if (raw == rawString(provider)) return provider;
    }
    return std::nullopt;
}

bool precedes(const SubscriptionLimits& a, const SubscriptionLimits& b) {
    return std::tuple(rawString(a.provider), std::string_view(a.account)) <
           std::tuple(rawString(b.provider), std::string_view(b.account));
}

}  // namespace brimwatch
