// The plan tier of a Claude Code account, from Claude Code's own `.claude.json`.
//
// The file can be large and the tier is asked for whenever limits change, so each state of a file
// is parsed at most once. Whatever is wrong gives no tier. Main thread.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "support/file_system.h"

namespace brimwatch {

struct ClaudeTierReader {
    struct Entry {
        std::int64_t modifiedNanoseconds = 0;  // since 1970-01-01 UTC
        std::optional<std::string> tier;       // nothing in a file that is known to hold none

        bool operator==(const Entry&) const = default;
    };
    using Read = std::function<std::optional<std::string>(const std::string& path)>;

    // `files` must outlive it.
    explicit ClaudeTierReader(FileSystem& files);

    // The tier in the `.claude.json` at that path, from `entries` while the file's date stays.
    std::optional<std::string> tier(const std::string& path);

    static std::optional<std::string> parseTier(std::string_view bytes);

    // How a file is read: as a whole, or nothing on any error.
    Read read;
    std::map<std::string, Entry> entries;  // by path

  private:
    FileSystem& files_;
};

}  // namespace brimwatch
