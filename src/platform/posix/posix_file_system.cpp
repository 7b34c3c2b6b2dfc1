#include "platform/posix/posix_file_system.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <ctime>
#include <utility>

#include "platform/posix/file_descriptor.h"
#include "platform/posix/folders.h"
#include "platform/posix/posix_temporary_file.h"
#include "platform/posix/retry.h"
#include "platform/posix/system_error.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

constexpr mode_t folderMode = 0755;
constexpr mode_t lockFileMode = 0644;
constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;

class PosixFileLock final : public FileLock {
  public:
    explicit PosixFileLock(FileDescriptor file) : file_(std::move(file)) {}
    PosixFileLock(const PosixFileLock&) = delete;
    PosixFileLock& operator=(const PosixFileLock&) = delete;
    ~PosixFileLock() override { ::flock(file_.get(), LOCK_UN); }

  private:
    FileDescriptor file_;
};

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};
using FolderStream = std::unique_ptr<DIR, CloseFolder>;

std::int64_t nowNanoseconds() {
    timespec now{};
    ::clock_gettime(CLOCK_BOOTTIME, &now);
    return now.tv_sec * nanosecondsPerSecond + now.tv_nsec;
}

bool lockWithinTwoSeconds(int file) {
    constexpr timespec pause = {.tv_sec = 0, .tv_nsec = 10'000'000};
    const std::int64_t deadline = nowNanoseconds() + 2 * nanosecondsPerSecond;
    while (retryOnInterrupt([file] { return ::flock(file, LOCK_EX | LOCK_NB); }) != 0) {
        if (errno != EWOULDBLOCK || nowNanoseconds() >= deadline) return false;
        ::nanosleep(&pause, nullptr);
    }
    return true;
}

FileKind kindOf(mode_t mode) {
    if (S_ISREG(mode)) return FileKind::regular;
    return S_ISDIR(mode) ? FileKind::folder : FileKind::other;
}

FileResult<std::string> readToEnd(int file, std::size_t size, std::size_t maximumBytes) {
    std::string bytes(std::min(size, maximumBytes) + 1, '\0');
    std::size_t filled = 0;
    while (true) {
        const ssize_t count = retryOnInterrupt(
            [&] { return ::read(file, bytes.data() + filled, bytes.size() - filled); });
        if (count < 0) return systemError(errno);
        filled += static_cast<std::size_t>(count);
        if (filled > maximumBytes) return systemError(EFBIG);
        if (count == 0) break;
        if (filled == bytes.size()) bytes.resize(2 * bytes.size());
    }
    bytes.resize(filled);
    return bytes;
}

}  // namespace

FileResult<std::string> PosixFileSystem::read(const std::string& path, std::size_t maximumBytes) {
    // Without O_NONBLOCK, opening a pipe waits for its writer.
    const FileDescriptor file(
        retryOnInterrupt([&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK); }));
    if (!file.isOpen()) return systemError(errno);
    struct stat status {};
    if (::fstat(file.get(), &status) != 0) return systemError(errno);
    if (!S_ISREG(status.st_mode)) return systemError(S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
    const auto size = static_cast<std::size_t>(status.st_size);
    if (size > maximumBytes) return systemError(EFBIG);
    return readToEnd(file.get(), size, maximumBytes);
}

FileResult<FileStatus> PosixFileSystem::status(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) return systemError(errno);
    return FileStatus{
        .kind = kindOf(status.st_mode),
        .permissions = status.st_mode & 07777U,
        .owner = status.st_uid,
        .group = status.st_gid,
        .device = status.st_dev,
        .inode = status.st_ino,
        .modifiedNanoseconds =
            status.st_mtim.tv_sec * nanosecondsPerSecond + status.st_mtim.tv_nsec,
        .size = status.st_size,
    };
}

FileResult<std::vector<std::string>> PosixFileSystem::entries(const std::string& folder) {
    const FolderStream stream(::opendir(folder.c_str()));
    if (!stream) return systemError(errno);
    std::vector<std::string> names;
    while (true) {
        errno = 0;
        const dirent* entry = ::readdir(stream.get());  // NOLINT(concurrency-mt-unsafe): own stream
        if (entry == nullptr) break;
        std::string name = &entry->d_name[0];
        if (name != "." && name != "..") names.push_back(std::move(name));
    }
    if (errno != 0) return systemError(errno);
    return names;
}

FileResult<std::string> PosixFileSystem::linkTarget(const std::string& path) {
    std::string target(PATH_MAX, '\0');
    const ssize_t length = ::readlink(path.c_str(), target.data(), target.size());
    if (length < 0) return systemError(errno);
    target.resize(static_cast<std::size_t>(length));
    return target;
}

FileResult<std::string> PosixFileSystem::realPath(const std::string& path) {
    struct Free {
        void operator()(char* text) const { std::free(text); }  // NOLINT: realpath allocates
    };
    const std::unique_ptr<char, Free> resolved(::realpath(path.c_str(), nullptr));
    if (!resolved) return systemError(errno);
    return std::string(resolved.get());
}

FileResult<void> PosixFileSystem::addName(const std::string& path, const std::string& name) {
    if (::link(path.c_str(), name.c_str()) != 0) return systemError(errno);
    return {};
}

FileResult<void> PosixFileSystem::remove(const std::string& path) {
    if (::unlink(path.c_str()) != 0) return systemError(errno);
    return {};
}

FileResult<void> PosixFileSystem::makeFolders(const std::string& folder) {
    return brimwatch::makeFolders(folder, folderMode);
}

FileResult<std::unique_ptr<FileLock>> PosixFileSystem::lock(const std::string& path,
                                                            LockWait wait) {
    FileDescriptor file(retryOnInterrupt([&] {
        return ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK, lockFileMode);
    }));
    if (!file.isOpen()) return systemError(errno);
    const int descriptor = file.get();
    const bool locked = wait == LockWait::atMostTwoSeconds
                            ? lockWithinTwoSeconds(descriptor)
                            : retryOnInterrupt([&] { return ::flock(descriptor, LOCK_EX); }) == 0;
    if (!locked) return systemError(errno);
    return std::make_unique<PosixFileLock>(std::move(file));
}

FileResult<std::unique_ptr<TemporaryFile>> PosixFileSystem::makeTemporary(
    const std::string& folder, std::uint32_t permissions) {
    return PosixTemporaryFile::make(folder, permissions);
}

void PosixFileSystem::removeAbandonedTemporaries(const std::string& folder) {
    const FileResult<std::vector<std::string>> names = entries(folder);
    if (!names) return;
    for (const std::string& name : *names) {
        if (PosixTemporaryFile::isTemporaryName(name)) {
            PosixTemporaryFile::removeIfAbandoned(joinPath(folder, name));
        }
    }
}

FileResult<void> PosixFileSystem::synchronizeFolder(const std::string& folder) {
    const FileDescriptor file(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (file.isOpen() && ::fsync(file.get()) == 0) return {};
    // Network and user-space file systems have no such wait, and a folder that we may only write
    // into can't be opened for it.
    const bool hasNoWait =
        errno == EINVAL || errno == ENOTSUP || errno == ENOSYS || errno == EACCES;
    if (hasNoWait) return {};
    return systemError(errno);
}

}  // namespace brimwatch
