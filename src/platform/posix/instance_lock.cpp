#include "platform/posix/instance_lock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>

#include "platform/posix/folders.h"
#include "platform/posix/retry.h"
#include "platform/posix/system_error.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

constexpr mode_t folderMode = 0700;
constexpr mode_t fileMode = 0600;

}  // namespace

FileResult<std::optional<InstanceLock>> InstanceLock::take(const std::string& stateFolder) {
    const FileResult<void> made = makeFolders(stateFolder, folderMode);
    if (!made) return tl::unexpected(made.error());
    const std::string path = joinPath(stateFolder, ".instance.lock");
    // Network file systems lock for writing only what is open for writing.
    FileDescriptor file(retryOnInterrupt(
        [&] { return ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK, fileMode); }));
    if (!file.isOpen()) return systemError(errno);
    if (retryOnInterrupt([&] { return ::flock(file.get(), LOCK_EX | LOCK_NB); }) == 0) {
        return InstanceLock(std::move(file));
    }
    if (errno == EWOULDBLOCK) return std::nullopt;
    return systemError(errno);
}

}  // namespace brimwatch
