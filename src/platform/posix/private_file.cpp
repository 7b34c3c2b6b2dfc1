#include "platform/posix/private_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>

#include "platform/posix/retry.h"

namespace brimwatch {
namespace {

constexpr mode_t permissionBits = 07777;
constexpr mode_t ownerReadsAndWrites = 0600;

auto failure(PrivateFileFailure reason) {
    return tl::unexpected(reason);
}

}  // namespace

PrivateFileResult readPrivateFile(const std::string& path, uid_t user, std::size_t maximumBytes) {
    const auto file = openPrivateFile(path, user, maximumBytes);
    return file ? readOpenedFile(*file, maximumBytes) : failure(file.error());
}

tl::expected<FileDescriptor, PrivateFileFailure> openPrivateFile(const std::string& path,
                                                                 uid_t user,
                                                                 std::size_t maximumBytes) {
    FileDescriptor file(retryOnInterrupt(
        [&] { return ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC); }));
    if (!file.isOpen()) return failure(PrivateFileFailure::unreadable);
    struct stat status {};
    if (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return failure(PrivateFileFailure::unreadable);
    }
    if (status.st_uid != user || (status.st_mode & permissionBits) != ownerReadsAndWrites) {
        return failure(PrivateFileFailure::permissions);
    }
    if (status.st_size < 1 || static_cast<std::size_t>(status.st_size) > maximumBytes) {
        return failure(PrivateFileFailure::size);
    }
    return file;
}

PrivateFileResult readOpenedFile(const FileDescriptor& file, std::size_t maximumBytes) {
    SecretBytes buffer(maximumBytes + 1);
    std::size_t filled = 0;
    while (filled < buffer.size()) {
        const ssize_t count = retryOnInterrupt(
            [&] { return ::read(file.get(), buffer.data() + filled, buffer.size() - filled); });
        if (count < 0) return failure(PrivateFileFailure::unreadable);
        if (count == 0) break;
        filled += static_cast<std::size_t>(count);
    }
    if (filled < 1 || filled > maximumBytes) return failure(PrivateFileFailure::size);
    return SecretBytes(buffer.view().substr(0, filled));
}

}  // namespace brimwatch
