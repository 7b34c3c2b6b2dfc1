#include "publish/publishers/phone_limits.h"

#include <chrono>
#include <cstddef>
#include <utility>

#include "limits/recent_usage_history.h"

namespace brimwatch {
namespace {

constexpr std::chrono::seconds keptPeriod{22'500};
constexpr RecentUsageSamples::size_type mostSamples = 78;

}  // namespace

SubscriptionLimits limitsForPhone(SubscriptionLimits limits) {
    if (!limits.recentUsageHistory) return limits;
    const Instant last = limits.updatedAt;
    const Instant first = last - keptPeriod;
    RecentUsageSamples samples = RecentUsageHistory::merged({&*limits.recentUsageHistory}, last);
    erase_if(samples, [first, last](const RecentUsageSample& sample) {
        return sample.updatedAt < first || sample.updatedAt > last;
    });
    if (samples.size() > mostSamples) {
        samples.erase(samples.begin(), samples.end() - mostSamples);
    }
    limits.recentUsageHistory.reset();
    if (!samples.empty()) limits.recentUsageHistory = std::move(samples);
    return limits;
}

std::vector<SubscriptionLimits> PhoneLimits::prepare(std::vector<SubscriptionLimits> limits) {
    accounts_.resize(limits.size());
    for (std::size_t index = 0; index < limits.size(); ++index) {
        Account& account = accounts_[index];
        if (account.given != limits[index])
            account = {.given = limits[index], .prepared = limitsForPhone(limits[index])};
        limits[index] = account.prepared;
    }
    return limits;
}

}  // namespace brimwatch
