// Unpacking the archive of an update: a tar file, compressed with gzip, xz or zstd or not at all.
//
// Files, folders and symbolic links come out, for the user alone to change, and nothing else:
// no owners, times, special bits or attributes. An archive that holds a device, a hard link, a name
// twice, a path or a link that leaves the folder, or more than fits into the limits is refused.
// Nothing is written through a link. Any thread.
#pragma once

#include <atomic>
#include <cstdint>
#include <tl/expected.hpp>

namespace brimwatch {

enum class UnpackFailure {
    archive,  // is damaged, or holds what it must not
    disk,
    cancelled,
};

struct UnpackLimits {
    std::int64_t bytes = std::int64_t{2} << 30U;
    int entries = 20'000;
};

// Reads the archive from where the descriptor stands. The folder must be empty. What is unpacked
// has reached the disk before the call returns. After a failure the folder holds what came before
// it.
tl::expected<void, UnpackFailure> unpackArchive(int archive, int folder,
                                                const std::atomic<bool>& isCancelled,
                                                const UnpackLimits& limits = {});

// With the usual limits. The engine gets it as a value, since only who unpacks is to load the
// library that reads archives.
using UnpackUpdate = tl::expected<void, UnpackFailure>(int archive, int folder,
                                                       const std::atomic<bool>& isCancelled);
UnpackUpdate unpackUpdate;

}  // namespace brimwatch
