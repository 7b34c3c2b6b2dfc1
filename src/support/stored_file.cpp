#include "support/stored_file.h"

#include <utility>

#include "support/paths.h"

namespace brimwatch {
namespace {

constexpr int linkLimit = 40;  // as many as the kernel follows
constexpr int damagedCopyLimit = 1000;
constexpr std::uint32_t ownerReadsAndWrites = 0600;

auto failure(std::errc error) {
    return tl::unexpected(std::make_error_code(error));
}

bool isMissing(const std::error_code& error) {
    return error == std::errc::no_such_file_or_directory;
}

// Also where the last link leads to nothing: what is written has to go there.
FileResult<std::string> behindLinks(FileSystem& files, std::string path) {
    for (int links = 0; links <= linkLimit; ++links) {
        const FileResult<std::string> target = files.linkTarget(path);
        if (!target) {
            const bool isNoLink = target.error() == std::errc::invalid_argument;
            if (isNoLink || isMissing(target.error())) return path;
            return tl::unexpected(target.error());
        }
        path = target->starts_with('/') ? *target : joinPath(parentPath(path), *target);
    }
    return failure(std::errc::too_many_symbolic_link_levels);
}

bool isKeptAs(FileSystem& files, const std::string& copy, const StoredFile& damaged) {
    if (!damaged.isUnreadable) return files.read(copy, damaged.bytes->size()) == *damaged.bytes;
    const FileResult<FileStatus> status = files.status(copy);
    return status && status->device == damaged.status.device &&
           status->inode == damaged.status.inode;
}

FileResult<void> keepAs(FileSystem& files, const std::string& copy, const StoredFile& damaged,
                        const ReplacementOptions& options) {
    if (damaged.isUnreadable) return files.addName(damaged.target, copy);
    return claimFile(files, copy, *damaged.bytes, options);
}

}  // namespace

FileResult<StoredFile> readStoredFile(FileSystem& files, const std::string& path,
                                      std::size_t maximumBytes) {
    FileResult<std::string> target = behindLinks(files, path);
    if (!target) return tl::unexpected(target.error());
    StoredFile file;
    file.target = *std::move(target);
    FileResult<std::string> bytes = files.read(file.target, maximumBytes);
    if (!bytes && isMissing(bytes.error())) return file;
    // After the bytes: as the last look before a renaming it tells of any later change, too.
    const FileResult<FileStatus> status = files.status(file.target);
    if (!status) return tl::unexpected(status.error());
    file.status = *status;
    file.isUnreadable = !bytes;
    if (bytes) file.bytes = *std::move(bytes);
    return file;
}

ReplacementOptions replacementLike(const StoredFile& former, std::uint32_t newFilePermissions) {
    ReplacementOptions options{.durability = Durability::synchronized,
                               .permissions = newFilePermissions,
                               .owner = std::nullopt};
    if (!former.exists()) return options;
    options.permissions = former.status.permissions;
    // What nobody could read for its mode would not be read any better after us.
    if (former.isUnreadable) options.permissions |= ownerReadsAndWrites;
    options.owner = FileOwner{.owner = former.status.owner, .group = former.status.group};
    return options;
}

FileResult<void> keepDamagedFile(FileSystem& files, const std::string& path,
                                 const StoredFile& damaged, const ReplacementOptions& options) {
    for (int number = 1; number <= damagedCopyLimit; ++number) {
        const std::string copy = path + ".brimwatch-damaged-" + std::to_string(number);
        if (isKeptAs(files, copy, damaged)) return {};
        const FileResult<void> kept = keepAs(files, copy, damaged, options);
        if (kept || kept.error() != std::errc::file_exists) return kept;
    }
    return failure(std::errc::file_exists);
}

}  // namespace brimwatch
