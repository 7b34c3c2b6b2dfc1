// The tolerant reader: what it gives can be shown, and the strict form never knows another account.

#include <cmath>
#include <cstdint>
#include <string_view>

#include "limits/limits_file.h"
#include "limits/subscription_limits.h"
#include "require.h"

namespace {

bool canBeShown(const std::optional<brimwatch::UsageWindow>& window) {
    return !window ||
           (window->usedPercentage >= 0 && window->usedPercentage <= 100 &&
            (!window->resetsAt || std::isfinite(brimwatch::unixSeconds(*window->resetsAt))));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto limits = brimwatch::SubscriptionLimits::fromFileData(text);
    if (!limits) return 0;
    REQUIRE(limits->fiveHour || limits->sevenDay);
    REQUIRE(canBeShown(limits->fiveHour));
    REQUIRE(canBeShown(limits->sevenDay));
    if (const auto file = brimwatch::LimitsFile::decode(text)) {
        REQUIRE(file->version == 1);
        REQUIRE(file->provider + "-" + file->account == limits->id());
        REQUIRE(brimwatch::SubscriptionLimits::fromFileData(file->encode()) == limits);
    }
    return 0;
}
