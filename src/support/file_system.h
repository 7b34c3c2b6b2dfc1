// The seam between the rules and the disk.
//
// Rules are given a `FileSystem`; the program carries it out with POSIX calls,
// tests with one that records, fails, stops and truncates. Every operation is one
// step that can fail alone, so that a test can fail or stop the program between
// any two of them.
//
// Paths are bytes without NUL. Nothing here throws: a failure is the error of the
// system, in `std::generic_category()`. May be used from any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <tl/expected.hpp>
#include <vector>

namespace brimwatch {

template <class Value>
using FileResult = tl::expected<Value, std::error_code>;

enum class FileKind { regular, folder, other };

struct FileStatus {
    FileKind kind = FileKind::other;
    std::uint32_t permissions = 0;  // the low twelve bits of st_mode
    std::uint32_t owner = 0;
    std::uint32_t group = 0;
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::int64_t modifiedNanoseconds = 0;  // since 1970-01-01 UTC
    std::int64_t size = 0;                 // bytes

    bool operator==(const FileStatus&) const = default;
};

// A file of its own that is being written beside the one that it will replace. Destroying it
// closes it; one that was not renamed before is removed.
class TemporaryFile {
  public:
    TemporaryFile() = default;
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    virtual ~TemporaryFile() = default;

    // All of the bytes, or a failure.
    virtual FileResult<void> write(std::string_view bytes) = 0;
    // `sameOwner` leaves the user as it is.
    static constexpr std::uint32_t sameOwner = ~std::uint32_t{0};
    virtual FileResult<void> setOwner(std::uint32_t owner, std::uint32_t group) = 0;
    virtual FileResult<void> setPermissions(std::uint32_t permissions) = 0;
    // Waits until the bytes have reached the disk.
    virtual FileResult<void> synchronize() = 0;
    // Gives the file its name, in place of whatever had it. At most once, as the last step.
    virtual FileResult<void> replace(const std::string& path) = 0;
    // As `replace`, but fails where the name is taken.
    virtual FileResult<void> claim(const std::string& path) = 0;
};

// An exclusive advisory lock (flock) that lasts until it is destroyed.
class FileLock {
  public:
    FileLock() = default;
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;
    virtual ~FileLock() = default;
};

enum class LockWait { untilFree, atMostTwoSeconds };

class FileSystem {
  public:
    FileSystem() = default;
    FileSystem(const FileSystem&) = delete;
    FileSystem& operator=(const FileSystem&) = delete;
    virtual ~FileSystem() = default;

    // The whole of a regular file. Anything else, a larger file included, is a failure; a pipe or
    // a device is never waited for.
    virtual FileResult<std::string> read(const std::string& path, std::size_t maximumBytes) = 0;
    // Follows symbolic links.
    virtual FileResult<FileStatus> status(const std::string& path) = 0;
    // Names, "." and ".." left out, in no particular order.
    virtual FileResult<std::vector<std::string>> entries(const std::string& folder) = 0;
    // The path that a symbolic link holds, as it stands there. `invalid_argument` if the path names
    // something other than a link.
    virtual FileResult<std::string> linkTarget(const std::string& path) = 0;
    // The absolute path without symbolic links, "." and ".."; the file must exist.
    virtual FileResult<std::string> realPath(const std::string& path) = 0;
    // Gives a file one more name (a hard link), without opening it; fails where the name is taken.
    virtual FileResult<void> addName(const std::string& path, const std::string& name) = 0;
    // Takes the name away from a file or a symbolic link; a folder is a failure.
    virtual FileResult<void> remove(const std::string& path) = 0;
    // The folder and all that is missing above it. That the name is taken is no failure: whoever
    // uses the folder finds out by whom.
    virtual FileResult<void> makeFolders(const std::string& folder) = 0;
    // Creates the lock file if it is missing, mode 0644.
    virtual FileResult<std::unique_ptr<FileLock>> lock(const std::string& path, LockWait wait) = 0;
    // A hidden file with a name of its own, with `permissions` less the umask.
    virtual FileResult<std::unique_ptr<TemporaryFile>> makeTemporary(const std::string& folder,
                                                                     std::uint32_t permissions) = 0;
    // Removes what writers that died left of `makeTemporary`; the files of living ones stay.
    virtual void removeAbandonedTemporaries(const std::string& folder) = 0;
    // Waits until the names in the folder have reached the disk, where the disk knows of that.
    virtual FileResult<void> synchronizeFolder(const std::string& folder) = 0;
};

}  // namespace brimwatch
