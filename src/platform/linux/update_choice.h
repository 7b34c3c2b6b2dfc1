// Which item of a feed an installation is offered. Any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/appcast.h"
#include "platform/update_engine.h"
#include "support/instant.h"

namespace brimwatch {

struct UpdateConditions {
    std::string runningVersion;
    // What is newer than the running version and ready already; only what is newer still is chosen.
    std::optional<std::string> readyVersion = {};
    std::string processor = {};  // as in "x86_64" and "arm64"
    UpdateCheck check = UpdateCheck::inBackground;
    std::optional<std::string> skippedVersion = {};
    std::uint32_t rolloutGroup = 0;  // any number
    Instant now = {};
};

// What the item means to that installation.
bool isCriticalFor(const AppcastItem& item, const std::string& runningVersion);
bool isInformationalFor(const AppcastItem& item, const std::string& runningVersion);
// Whether it may be installed without the user's having seen it.
bool isSilentFor(const AppcastItem& item, const std::string& runningVersion);

std::optional<AppcastItem> chooseUpdate(const std::vector<AppcastItem>& items,
                                        const UpdateConditions& conditions);

}  // namespace brimwatch
