// A file that the user might have made or changed, as it stood at one moment, and what to do with
// it before it is replaced: nothing that stood in it may be lost.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "support/atomic_file.h"
#include "support/file_system.h"

namespace brimwatch {

struct StoredFile {
    std::string target;                // the file itself, behind symbolic links
    FileStatus status;                 // of a file that is there
    std::optional<std::string> bytes;  // nothing if there is no file, or it can't be read
    bool isUnreadable = false;         // there is a file, but its bytes can't be had

    bool exists() const { return bytes || isUnreadable; }

    bool operator==(const StoredFile&) const = default;
};

// A larger file counts as unreadable; that there is none is no failure.
FileResult<StoredFile> readStoredFile(FileSystem& files, const std::string& path,
                                      std::size_t maximumBytes);

// Waiting for the disk; with the mode and owner of the former file, or those permissions where
// there was none. Of a file that could not be read the owner may read and write the new one.
ReplacementOptions replacementLike(const StoredFile& former, std::uint32_t newFilePermissions);

// Sees to it that the file lies beside it under a second name, `PATH.brimwatch-damaged-N`: its
// bytes as a copy, one that can't be read by itself. Done already, it is not done again.
FileResult<void> keepDamagedFile(FileSystem& files, const std::string& path,
                                 const StoredFile& damaged, const ReplacementOptions& options);

}  // namespace brimwatch
