// The feed of updates: RSS 2.0 with the elements of Sparkle.
//
// A feed is taken whole or not at all: one item that makes no sense spoils it, as do a document
// type and a file that is too large. What an item says of the feed's other systems is passed over.
// Any thread.
#pragma once

#include <QByteArray>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/update_engine.h"
#include "support/instant.h"

namespace brimwatch {

inline constexpr qsizetype appcastSizeLimit = 1 << 20;

struct AppcastItem {
    UpdateItem update;
    std::int64_t length = 0;     // of the file in bytes; 0 if the feed does not tell
    std::string signature = {};  // base64; empty if there is none

    // Which installations it is for.
    std::string operatingSystem = {};  // empty for any
    std::string processor = {};        // empty for any
    std::string channel = {};
    std::string installationType = {};
    std::optional<std::string> minimumUpdateVersion = {};
    std::optional<std::string> minimumAutoupdateVersion = {};

    std::optional<std::string> ignoreSkippedUpgradesBelowVersion = {};
    std::optional<Instant> published = {};
    std::optional<std::int64_t> phasedRolloutIntervalSeconds = {};
    bool isCritical = false;
    std::optional<std::string> criticalBelowVersion = {};  // otherwise for all
    bool isInformational = false;
    // Where both are empty, informational for all.
    std::vector<std::string> informationalVersions = {};
    std::vector<std::string> informationalBelowVersions = {};
};

// The language is that of the user, as in "ko": of several elements of one name, that in it counts,
// else that in English, which is what no language means.
std::optional<std::vector<AppcastItem>> parseAppcast(const QByteArray& bytes,
                                                     const std::string& feedURL,
                                                     const std::string& language);

// An address of the feed, made absolute by its text alone, so that nothing in it is decoded.
std::string resolvedAddress(const std::string& base, const std::string& reference);

}  // namespace brimwatch
