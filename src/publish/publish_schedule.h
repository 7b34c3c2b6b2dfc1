// Whether a publisher may send now: never what it has sent already, at most once a minute, and not
// before the retry time of a failure.
//
// A value that each publisher has one of, kept in memory only. Times are those of the wall clock; a
// time is passed in as that of the send, not of its end. One thread.
#pragma once

#include <array>
#include <chrono>
#include <optional>
#include <vector>

#include "limits/subscription_limits.h"
#include "support/instant.h"

namespace brimwatch {

// SHA-256.
using ContentDigest = std::array<unsigned char, 32>;

struct PublishSchedule {
    using Wait = std::chrono::duration<double>;

    static constexpr Wait shortestInterval{60};
    // How long the different failures of a send keep the next one back.
    static constexpr Wait noAccountWait{300};
    static constexpr Wait keychainWait{600};
    static constexpr Wait otherFailureWait{60};
    // As long as the cloud asks for, but at least a minute.
    static Wait cloudErrorWait(std::optional<double> retryAfterSeconds);

    std::optional<ContentDigest> sentDigest;  // of the content that last reached the server
    std::optional<Instant> lastSent;
    std::optional<Instant> retryAt;

    // Covers every figure, name and sample. Content that can't be encoded has the digest of no
    // bytes.
    static ContentDigest contentDigest(const std::vector<SubscriptionLimits>& limits);

    bool isDue(const ContentDigest& digest, Instant now) const;

    void noteSuccess(const ContentDigest& digest, Instant now);
    void noteFailure(Instant now, Wait wait);

    bool operator==(const PublishSchedule&) const = default;
};

}  // namespace brimwatch
