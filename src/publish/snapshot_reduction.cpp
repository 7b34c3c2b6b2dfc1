#include <algorithm>
#include <chrono>
#include <functional>
#include <string_view>
#include <tuple>
#include <unordered_map>

#include "publish/limits_cloud.h"
#include "publish/limits_wire.h"
#include "publish/snapshot_json.h"

namespace brimwatch {
namespace {

using Snapshot = LimitsCloud::Snapshot;
using Candidate = LimitsCloud::Candidate;

// Six hours and ten minutes: the longest period that phones show, and some tolerance.
constexpr std::chrono::seconds narrowHistory{22'200};

bool fits(std::size_t documentBytes) {
    return documentBytes <= LimitsCloud::largestDocumentBytes;
}

void narrow(SubscriptionLimits& limits) {
    const Instant last = limits.updatedAt;
    if (!limits.recentUsageHistory) return;
    erase_if(*limits.recentUsageHistory, [last](const RecentUsageSample& sample) {
        return sample.updatedAt < last - narrowHistory || sample.updatedAt > last;
    });
    if (limits.recentUsageHistory->empty()) limits.recentUsageHistory.reset();
}

void narrow(Snapshot& snapshot) {
    for (auto& [id, mac] : snapshot.macs) {
        for (SubscriptionLimits& limits : mac.limits)
            narrow(limits);
    }
}

std::vector<const MacId*> macsByLatestSending(const Snapshot& snapshot) {
    std::vector<const MacId*> ids;
    for (const auto& [id, mac] : snapshot.macs)
        ids.push_back(&id);
    std::stable_sort(ids.begin(), ids.end(), [&](const MacId* a, const MacId* b) {
        return snapshot.macs.at(*a).sentAt > snapshot.macs.at(*b).sentAt;
    });
    return ids;
}

// Whose copy of an account is the newest.
struct Holder {
    const MacId* mac = nullptr;
    Instant updatedAt;
};
using Holders = std::unordered_map<std::string, Holder>;

Holders holdersOfHistories(const Snapshot& snapshot) {
    Holders holders;
    for (const MacId* id : macsByLatestSending(snapshot)) {
        for (const SubscriptionLimits& limits : snapshot.macs.at(*id).limits) {
            if (!limits.recentUsageHistory) continue;
            const auto [entry, isNew] = holders.try_emplace(limits.id());
            if (isNew || limits.updatedAt > entry->second.updatedAt)
                entry->second = {id, limits.updatedAt};
        }
    }
    return holders;
}

std::size_t encodedSize(const SubscriptionLimits& limits) {
    std::string json;
    appendLimits(json, limits);
    return json.size();
}

// Gives the bytes that this saves.
std::size_t dropHistory(SubscriptionLimits& limits) {
    const std::size_t size = encodedSize(limits);
    limits.recentUsageHistory.reset();
    return size - encodedSize(limits);
}

}  // namespace

std::vector<Candidate> LimitsCloud::candidates(const Snapshot& snapshot) {
    const Holders holders = holdersOfHistories(snapshot);
    std::vector<Candidate> candidates;
    for (const auto& [id, mac] : snapshot.macs) {
        for (std::size_t index = 0; index < mac.limits.size(); ++index) {
            const SubscriptionLimits& limits = mac.limits[index];
            if (!limits.recentUsageHistory) continue;
            const bool isLatest = holders.at(limits.id()).mac == &id;
            candidates.push_back(
                {.mac = id, .index = index, .latest = isLatest, .sentAt = mac.sentAt});
        }
    }
    // Those that are equal here stand by Mac and index already.
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const Candidate& a, const Candidate& b) {
                         return std::tie(a.latest, a.sentAt) < std::tie(b.latest, b.sentAt);
                     });
    return candidates;
}

std::string LimitsCloud::encodedPayload(const Snapshot& snapshot) {
    std::string json = encodeSnapshot(snapshot);
    if (fits(json.size())) return json;
    Snapshot reduced = snapshot;
    narrow(reduced);
    json = encodeSnapshot(reduced);
    if (fits(json.size())) return json;
    std::size_t size = json.size();
    for (const Candidate& candidate : candidates(reduced)) {
        if (fits(size)) break;
        size -= dropHistory(reduced.macs.at(candidate.mac).limits[candidate.index]);
    }
    return encodeSnapshot(reduced);
}

}  // namespace brimwatch
