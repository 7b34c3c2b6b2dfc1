// A limits file: the figures of one account, as writers keep them on disk.
//
// This is the strict form: whole seconds, and any window keys carried along.
// `SubscriptionLimits` is the tolerant form for readers. Files are named
// `<provider>-<account>.json`, but only the content tells whose they are.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "support/file_system.h"
#include "support/instant.h"
#include "support/json_value.h"

namespace brimwatch {

// Far above what a writer of ours makes; a larger file is somebody else's and counts as none.
inline constexpr std::size_t limitsFileSizeLimit = 1U << 20U;

struct LimitsFile {
    struct Window {
        double usedPercentage = 0;             // percent, 0 to 100
        std::optional<std::int64_t> resetsAt;  // seconds since 1970-01-01 UTC

        bool operator==(const Window&) const = default;
    };
    // By window key; "five_hour" and "seven_day" are the ones that are shown.
    using Windows = std::map<std::string, Window, std::less<>>;

    struct WriteRequest {
        std::string provider;
        std::string account;
        Windows windows;
        std::optional<std::string> planTier;
        // Equal figures are written again only when the stored ones are this old.
        std::int64_t minimumIntervalSeconds = 0;
        // Whether stored windows are merged in, so that a stale figure can't undo a newer one.
        bool mergingExisting = false;
        Instant now;
        std::string folder;
        LockWait lockWait = LockWait::untilFree;
    };

    std::int64_t version = 1;
    std::string provider;
    std::string account;
    Windows windows;
    std::int64_t updatedAt = 0;  // seconds since 1970-01-01 UTC
    std::optional<std::string> planTier;

    // Nothing unless every key is there with its type; unknown keys are ignored.
    static std::optional<LimitsFile> decode(std::string_view bytes);
    static std::optional<LimitsFile> fromJson(const JsonObject& object);

    // Pretty-printed with sorted keys: equal values give equal bytes.
    std::string encode() const;
    JsonObject toJson() const;

    // Provider, "-", account, as in "claude-work": the key of everything that is kept by account.
    std::string id() const;

    // Writes the account's file under the lock of the folder, or decides that nothing changed.
    // True if it wrote. Fails only if the folder can't be made or the bytes can't be written; the
    // stored file is then as it was.
    static FileResult<bool> write(FileSystem& files, const WriteRequest& request);

    bool operator==(const LimitsFile&) const = default;
};

}  // namespace brimwatch
