#include "platform/posix/posix_temporary_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <utility>

#include "platform/posix/retry.h"
#include "platform/posix/system_error.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

constexpr std::string_view namePrefix = ".brimwatch-";
constexpr std::string_view nameSuffix = ".tmp";
// Process numbers repeat where several machines or containers share a folder.
constexpr int attempts = 100;

std::string temporaryName(int attempt) {
    std::string name(namePrefix);
    name += std::to_string(::getpid()) + '-' + std::to_string(attempt);
    name += nameSuffix;
    return name;
}

bool isNumber(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

bool isNamed(const FileDescriptor& file, const std::string& path) {
    struct stat opened {};
    struct stat named {};
    return ::fstat(file.get(), &opened) == 0 && ::lstat(path.c_str(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

// Before it is locked, a new file looks abandoned: another writer may hold it to remove it, or have
// removed it. A file system without locks has none to tell the living by, and loses only that.
bool secureOwnership(const FileDescriptor& file, const std::string& path) {
    if (::flock(file.get(), LOCK_EX | LOCK_NB) != 0) return errno != EWOULDBLOCK;
    return isNamed(file, path);
}

}  // namespace

FileResult<std::unique_ptr<TemporaryFile>> PosixTemporaryFile::make(const std::string& folder,
                                                                    std::uint32_t permissions) {
    for (int attempt = 0; attempt < attempts; ++attempt) {
        std::string path = joinPath(folder, temporaryName(attempt));
        FileDescriptor file(retryOnInterrupt([&] {
            return ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, permissions);
        }));
        if (!file.isOpen() && errno != EEXIST) return systemError(errno);
        if (file.isOpen() && secureOwnership(file, path)) {
            return std::make_unique<PosixTemporaryFile>(std::move(path), std::move(file));
        }
    }
    return systemError(EEXIST);
}

bool PosixTemporaryFile::isTemporaryName(std::string_view name) {
    if (!name.starts_with(namePrefix) || !name.ends_with(nameSuffix)) return false;
    name.remove_prefix(namePrefix.size());
    name.remove_suffix(std::min(nameSuffix.size(), name.size()));
    const std::size_t hyphen = name.find('-');
    return hyphen != std::string_view::npos && isNumber(name.substr(0, hyphen)) &&
           isNumber(name.substr(hyphen + 1));
}

void PosixTemporaryFile::removeIfAbandoned(const std::string& path) {
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!file.isOpen() || ::flock(file.get(), LOCK_EX | LOCK_NB) != 0) return;
    // Another writer may have removed it by now, and a living one may have taken the name.
    if (isNamed(file, path)) ::unlink(path.c_str());
}

PosixTemporaryFile::PosixTemporaryFile(std::string path, FileDescriptor file)
    : path_(std::move(path)), file_(std::move(file)) {}

PosixTemporaryFile::~PosixTemporaryFile() {
    if (hasOwnName_) ::unlink(path_.c_str());
}

FileResult<void> PosixTemporaryFile::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count =
            retryOnInterrupt([&] { return ::write(file_.get(), bytes.data(), bytes.size()); });
        if (count < 0) return systemError(errno);
        if (count == 0) return systemError(EIO);
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return {};
}

FileResult<void> PosixTemporaryFile::setOwner(std::uint32_t owner, std::uint32_t group) {
    if (::fchown(file_.get(), owner, group) != 0) return systemError(errno);
    return {};
}

FileResult<void> PosixTemporaryFile::setPermissions(std::uint32_t permissions) {
    if (::fchmod(file_.get(), permissions) != 0) return systemError(errno);
    return {};
}

FileResult<void> PosixTemporaryFile::synchronize() {
    if (retryOnInterrupt([this] { return ::fsync(file_.get()); }) != 0) return systemError(errno);
    return {};
}

FileResult<void> PosixTemporaryFile::replace(const std::string& path) {
    if (::rename(path_.c_str(), path.c_str()) != 0) return systemError(errno);
    hasOwnName_ = false;
    return {};
}

FileResult<void> PosixTemporaryFile::claim(const std::string& path) {
    if (::renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE) == 0) {
        hasOwnName_ = false;
        return {};
    }
    // A file system that can't do that may have hard links; the other name goes with the
    // destructor.
    const bool isUnknown = errno == EINVAL || errno == ENOSYS;
    if (!isUnknown || ::link(path_.c_str(), path.c_str()) != 0) return systemError(errno);
    return {};
}

}  // namespace brimwatch
