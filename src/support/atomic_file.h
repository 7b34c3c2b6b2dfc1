// Replacing a file as a whole: readers see the old bytes or the new ones, never
// a mixture, also when the writer dies on the way.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "support/file_system.h"

namespace brimwatch {

enum class Durability {
    renamed,       // other processes see it at once; a power cut may leave an empty file
    synchronized,  // bytes and name are on the disk before the call returns
};

struct FileOwner {
    std::uint32_t owner = 0;
    std::uint32_t group = 0;
};

struct ReplacementOptions {
    Durability durability = Durability::renamed;
    std::uint32_t permissions = 0644;
    // Who the file shall belong to and have exactly `permissions`, as far as the system lets us
    // give it away; a group that can't have it loses its part of them. Without an owner it is ours,
    // with `permissions` less the umask.
    std::optional<FileOwner> owner;
};

// On failure the file is as it was, unless only the last step failed: waiting for the folder.
FileResult<void> replaceFile(FileSystem& files, const std::string& path, std::string_view bytes,
                             const ReplacementOptions& options);

// As `replaceFile`, but fails with `file_exists` where the name is taken.
FileResult<void> claimFile(FileSystem& files, const std::string& path, std::string_view bytes,
                           const ReplacementOptions& options);

// The steps of `replaceFile`, for who has to look at something between them: a file that has its
// bytes but not its name, and its naming.
FileResult<std::unique_ptr<TemporaryFile>> prepareReplacement(FileSystem& files,
                                                              const std::string& path,
                                                              std::string_view bytes,
                                                              const ReplacementOptions& options);
FileResult<void> finishReplacement(FileSystem& files, const std::string& path, TemporaryFile& file,
                                   Durability durability);

}  // namespace brimwatch
