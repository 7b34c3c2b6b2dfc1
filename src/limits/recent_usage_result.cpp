#include "limits/recent_usage_result.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <tl/expected.hpp>

#include "limits/recent_usage_samples.h"

namespace brimwatch {
namespace {

using Status = RecentUsageResult::Status;
using Samples = RecentUsageSampleReferences;
// The percentage points, or why there are none.
using Figure = tl::expected<double, Status>;

constexpr std::chrono::minutes staleness{15};
// How far before the start of the period the first sample may lie.
constexpr std::chrono::minutes baselineTolerance{10};

// One of the two windows, as a record and a sample tell of it.
struct Basis {
    std::string_view name;
    std::optional<UsageWindow> SubscriptionLimits::*current;
    std::optional<UsageWindow> RecentUsageSample::*window;
    bool RecentUsageSample::*resetFlag;
};

constexpr Basis weekly = {"주간", &SubscriptionLimits::sevenDay, &RecentUsageSample::sevenDay,
                          &RecentUsageSample::sevenDayReset};
constexpr Basis fiveHourly = {"5시간", &SubscriptionLimits::fiveHour, &RecentUsageSample::fiveHour,
                              &RecentUsageSample::fiveHourReset};

bool isOver(const UsageWindow& window, Instant instant) {
    return window.resetsAt && *window.resetsAt <= instant;
}

std::optional<Status> obstacleInRecord(const SubscriptionLimits& limits, const UsageWindow& current,
                                       Instant now) {
    if (!isValid(current) || !std::isfinite(unixSeconds(limits.updatedAt))) {
        return Status::unavailable;
    }
    if (limits.updatedAt > now + recentUsageFutureAllowance) return Status::unavailable;
    if (now - limits.updatedAt > staleness) return Status::stale;
    if (isOver(current, now)) return Status::reset;
    return std::nullopt;
}

// Behind the newest sample that is not later than the instant.
Samples::const_iterator endOf(const Samples& samples, Instant instant) {
    return std::upper_bound(
        samples.begin(), samples.end(), instant,
        [](Instant wanted, const RecentUsageSample* sample) { return wanted < sample->updatedAt; });
}

std::optional<Status> obstacleInSample(const RecentUsageSample& baseline,
                                       const RecentUsageSample& previous,
                                       const RecentUsageSample& sample, const Basis& basis) {
    if (!(sample.*basis.window)) return Status::unavailable;
    if (isOver(*(baseline.*basis.window), sample.updatedAt) ||
        sample.planTier != baseline.planTier || sample.*basis.resetFlag ||
        wasReset(previous.*basis.window, sample.*basis.window)) {
        return Status::reset;
    }
    return std::nullopt;
}

Figure figureSince(Samples::const_iterator baseline, Samples::const_iterator end,
                   const SubscriptionLimits& limits, const Basis& basis) {
    const RecentUsageSample& first = **baseline;
    if (!(first.*basis.window)) return tl::unexpected(Status::unavailable);
    auto previous = baseline;
    for (auto sample = baseline + 1; sample != end; previous = sample++) {
        const auto obstacle = obstacleInSample(first, **previous, **sample, basis);
        if (obstacle) return tl::unexpected(*obstacle);
    }
    const UsageWindow& firstWindow = *(first.*basis.window);
    const std::optional<UsageWindow>& current = limits.*basis.current;
    if (isOver(firstWindow, limits.updatedAt) || limits.planTier != first.planTier ||
        wasReset((*previous)->*basis.window, current)) {
        return tl::unexpected(Status::reset);
    }
    return current->usedPercentage - firstWindow.usedPercentage;
}

Figure figureOf(const SubscriptionLimits& limits, const Basis& basis, RecentUsagePeriod period,
                Instant now) {
    if (period == RecentUsagePeriod::off) return tl::unexpected(Status::unavailable);
    const auto obstacle = obstacleInRecord(limits, *(limits.*basis.current), now);
    if (obstacle) return tl::unexpected(*obstacle);
    if (!limits.recentUsageHistory) return tl::unexpected(Status::collecting);
    const Samples samples =
        normalizedReferences(*limits.recentUsageHistory, now, SampleCapacity::newest300);
    const Instant target = now - duration(period);
    const auto behindBaseline = endOf(samples, target);
    if (behindBaseline == samples.begin()) return tl::unexpected(Status::collecting);
    const auto baseline = behindBaseline - 1;
    if (target - (*baseline)->updatedAt > baselineTolerance) {
        return tl::unexpected(Status::collecting);
    }
    return figureSince(baseline, endOf(samples, limits.updatedAt), limits, basis);
}

}  // namespace

RecentUsageResult RecentUsageResult::derive(const SubscriptionLimits& limits,
                                            RecentUsagePeriod period, Instant now) {
    const Basis& basis = limits.sevenDay ? weekly : fiveHourly;
    RecentUsageResult result;
    result.basisName = basis.name;
    if (!(limits.*basis.current)) return result;
    result.updatedAt = limits.updatedAt;
    const Figure figure = figureOf(limits, basis, period, now);
    result.status = figure ? Status::available : figure.error();
    if (figure) result.percentagePoints = *figure;
    return result;
}

std::string_view rawString(RecentUsageResult::Status status) {
    switch (status) {
        case Status::available:
            return "available";
        case Status::collecting:
            return "collecting";
        case Status::stale:
            return "stale";
        case Status::reset:
            return "reset";
        case Status::unavailable:
            break;
    }
    return "unavailable";
}

std::string_view textWithoutFigure(RecentUsageResult::Status status) {
    switch (status) {
        case Status::available:
        case Status::collecting:
            return "기록 모으는 중";
        case Status::stale:
            return "새 기록 대기";
        case Status::reset:
            return "초기화 후 기록 중";
        case Status::unavailable:
            break;
    }
    return "사용 기록 없음";
}

}  // namespace brimwatch
