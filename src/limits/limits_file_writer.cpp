#include <memory>
#include <utility>

#include "limits/limits_file.h"
#include "limits/limits_memory.h"
#include "support/atomic_file.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

std::optional<LimitsFile> readExisting(FileSystem& files, const std::string& path) {
    const FileResult<std::string> bytes = files.read(path, limitsFileSizeLimit);
    if (!bytes) return std::nullopt;
    return LimitsFile::decode(*bytes);
}

// Equal figures refresh the file's time only at intervals: each write wakes the application. A
// stored time of the future counts as fresh.
bool isThrottled(const LimitsFile& existing, const LimitsFile& next, std::int64_t interval) {
    if (existing.windows != next.windows || existing.planTier != next.planTier) return false;
    if (interval <= 0) return existing.updatedAt > next.updatedAt;
    return !isMoreThanSecondsLater(existing.updatedAt, next.updatedAt,
                                   static_cast<std::uint64_t>(interval) - 1);
}

}  // namespace

FileResult<bool> LimitsFile::write(FileSystem& files, const WriteRequest& request) {
    const FileResult<void> folder = files.makeFolders(request.folder);
    if (!folder) return tl::unexpected(folder.error());
    // Without the lock a figure may be lost to another writer; without writing it surely is.
    const FileResult<std::unique_ptr<FileLock>> lock =
        files.lock(joinPath(request.folder, ".lock"), request.lockWait);
    LimitsFile next{.version = 1,
                    .provider = request.provider,
                    .account = request.account,
                    .windows = request.windows,
                    .updatedAt = wholeUnixSeconds(request.now),
                    .planTier = request.planTier};
    const std::string path = joinPath(request.folder, next.id() + ".json");
    if (const std::optional<LimitsFile> existing = readExisting(files, path)) {
        if (request.mergingExisting) {
            auto [merged, changed] =
                LimitsMemory::merge(existing->windows, next.windows, next.updatedAt);
            if (!changed) return false;
            next.windows = std::move(merged);
        }
        if (isThrottled(*existing, next, request.minimumIntervalSeconds)) return false;
    }
    if (lock) files.removeAbandonedTemporaries(request.folder);
    const FileResult<void> written = replaceFile(files, path, next.encode(), {});
    if (!written) return tl::unexpected(written.error());
    return true;
}

}  // namespace brimwatch
