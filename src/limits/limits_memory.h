// The last known limits file of each account, kept across restarts, and the rules that tell which
// of two figures to believe.
//
// Several processes report for one account, and a report may carry an older figure than the one
// already known. Nothing here forgets: an account that went away and comes back has its figures
// again. Belongs to one thread.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "limits/limits_file.h"
#include "limits/subscription_limits.h"
#include "support/file_system.h"
#include "support/instant.h"
#include "support/json_value.h"

namespace brimwatch {

struct LimitsMemory {
    std::map<std::string, LimitsFile, std::less<>> files;  // by id

    struct Merged {
        LimitsFile::Windows windows;
        bool changed = false;  // whether a figure of `next` counts as news

        bool operator==(const Merged&) const = default;
    };

    // Joins what is stored with what was reported, key by key. Within one reset cycle a figure only
    // rises; a later cycle replaces an earlier one; a report already past its reset never displaces
    // a live one. Reset times up to an hour apart are one cycle. `now` in seconds since 1970-01-01
    // UTC.
    static Merged merge(const LimitsFile::Windows& old, const LimitsFile::Windows& next,
                        std::int64_t now);

    // Takes in what was reported and gives what is to be believed of that account, until the next
    // change. Figures of Codex come from their source, so the newer file counts as a whole; others
    // are merged, and `updatedAt` then marks the last figure that was news. `now` in seconds since
    // 1970-01-01 UTC.
    const LimitsFile& remember(LimitsFile file, std::int64_t now);

    // Takes in every limits file of the folder whose account is wanted, in the order of their
    // names, and gives a record for each, sorted. What can't be read, decoded or shown is passed
    // over; a folder that can't be listed is empty. Two files of one account both feed the memory
    // and both give a record, each as the account stood after it.
    std::vector<SubscriptionLimits> load(FileSystem& fileSystem, const std::string& folder,
                                         const SubscriptionIds& wanted, Instant now);

    // The stored form. Damage anywhere gives nothing; unknown keys are ignored.
    static std::optional<LimitsMemory> fromJson(const JsonValue& value);
    JsonObject toJson() const;

    bool operator==(const LimitsMemory&) const = default;
};

}  // namespace brimwatch
