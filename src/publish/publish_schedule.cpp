#include "publish/publish_schedule.h"

#include <openssl/sha.h>

#include <cmath>
#include <string>

#include "publish/limits_cloud.h"
#include "publish/limits_wire.h"

namespace brimwatch {
namespace {

std::string encodedContent(const std::vector<SubscriptionLimits>& limits) {
    std::string json;
    json.reserve(expectedBytes(limits));
    json += R"({"limits":[)";
    for (const SubscriptionLimits& element : limits) {
        if (&element != &limits.front()) json += ',';
        appendLimits(json, element);
    }
    json += "]}";
    return json;
}

ContentDigest sha256(std::string_view bytes) {
    ContentDigest digest{};
    ::SHA256(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size(), digest.data());
    return digest;
}

}  // namespace

PublishSchedule::Wait PublishSchedule::cloudErrorWait(std::optional<double> retryAfterSeconds) {
    const Wait asked(retryAfterSeconds.value_or(0));
    return std::isfinite(asked.count()) && asked > otherFailureWait ? asked : otherFailureWait;
}

ContentDigest PublishSchedule::contentDigest(const std::vector<SubscriptionLimits>& limits) {
    try {
        return sha256(encodedContent(limits));
    } catch (const LimitsCloud::EncodingError&) {
        return sha256({});
    }
}

bool PublishSchedule::isDue(const ContentDigest& digest, Instant now) const {
    if (sentDigest == digest) return false;
    if (retryAt && now < *retryAt) return false;
    return !lastSent || now - *lastSent >= shortestInterval;
}

void PublishSchedule::noteSuccess(const ContentDigest& digest, Instant now) {
    sentDigest = digest;
    lastSent = now;
    retryAt.reset();
}

void PublishSchedule::noteFailure(Instant now, Wait wait) {
    retryAt = now + wait;
}

}  // namespace brimwatch
