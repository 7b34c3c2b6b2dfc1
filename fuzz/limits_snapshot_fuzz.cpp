// The document that phones receive: what is read of it is written so that it reads the same again,
// sealed or not, and what may be dropped of it is there.

#include <cstdint>
#include <string>
#include <string_view>

#include "publish/limits_cloud.h"
#include "publish/snapshot_json.h"
#include "require.h"

namespace {

using brimwatch::LimitsCloud;

void requireSoundCandidates(const LimitsCloud::Snapshot& snapshot) {
    std::size_t histories = 0;
    for (const auto& [id, mac] : snapshot.macs) {
        for (const brimwatch::SubscriptionLimits& limits : mac.limits)
            histories += limits.recentUsageHistory ? 1 : 0;
    }
    const auto candidates = LimitsCloud::candidates(snapshot);
    REQUIRE(candidates.size() == histories);
    bool sawLatest = false;
    for (const LimitsCloud::Candidate& candidate : candidates) {
        REQUIRE(snapshot.macs.at(candidate.mac).limits.at(candidate.index).recentUsageHistory);
        REQUIRE(candidate.latest || !sawLatest);
        sawLatest = candidate.latest;
    }
    REQUIRE(candidates.empty() || sawLatest);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto snapshot = brimwatch::decodeSnapshot(text);
    if (!snapshot) return 0;
    // What is not Unicode in a text is replaced on its first way through, and then stays.
    const std::string encoded = brimwatch::encodeSnapshot(*snapshot);
    const auto decoded = brimwatch::decodeSnapshot(encoded);
    REQUIRE(decoded.has_value());
    REQUIRE(brimwatch::encodeSnapshot(*decoded) == encoded);
    static const brimwatch::SymmetricKey key = brimwatch::SymmetricKey::random();
    REQUIRE(LimitsCloud::open(LimitsCloud::seal(*snapshot, key).bytes, key) == *decoded);
    requireSoundCandidates(*snapshot);
    return 0;
}
