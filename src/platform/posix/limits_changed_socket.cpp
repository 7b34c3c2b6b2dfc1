#include "platform/posix/limits_changed_socket.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <utility>

#include "platform/posix/retry.h"
#include "platform/posix/socket_address.h"
#include "platform/posix/system_error.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

constexpr mode_t socketMode = 0600;

FileDescriptor datagramSocket() {
    return FileDescriptor(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

// Locked until it is closed, as long as its holder looks at what has the name and replaces it:
// otherwise a second process could take the new socket for the one that it saw abandoned.
FileResult<FileDescriptor> lockFolder(const std::string& path) {
    FileDescriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder.isOpen()) return systemError(errno);
    if (::flock(folder.get(), LOCK_EX | LOCK_NB) != 0) return systemError(errno);
    return folder;
}

bool isBound(const FileDescriptor& socket, const sockaddr_un& address) {
    return ::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

bool isAbandoned(const std::string& path, const sockaddr_un& address) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0 || !S_ISSOCK(status.st_mode)) return false;
    const FileDescriptor probe = datagramSocket();
    const auto* target = reinterpret_cast<const sockaddr*>(&address);
    return ::connect(probe.get(), target, sizeof address) != 0 && errno == ECONNREFUSED;
}

// Sets errno if it fails.
bool bindInPlaceOfAbandoned(const FileDescriptor& socket, const std::string& path,
                            const sockaddr_un& address) {
    if (isBound(socket, address)) return true;
    if (errno != EADDRINUSE) return false;
    const bool isFree = isAbandoned(path, address) && ::unlink(path.c_str()) == 0;
    if (isFree) return isBound(socket, address);
    errno = EADDRINUSE;
    return false;
}

}  // namespace

FileResult<std::unique_ptr<LimitsChangedSocket>> LimitsChangedSocket::bind(
    const std::string& path) {
    const std::optional<sockaddr_un> address = socketAddress(path);
    if (!address) return systemError(ENAMETOOLONG);
    FileDescriptor socket = datagramSocket();
    // The file takes its mode from the socket.
    if (!socket.isOpen() || ::fchmod(socket.get(), socketMode) != 0) return systemError(errno);
    const FileResult<FileDescriptor> folder = lockFolder(parentPath(path));
    if (!folder) return tl::unexpected(folder.error());
    if (!bindInPlaceOfAbandoned(socket, path, *address)) return systemError(errno);
    return std::unique_ptr<LimitsChangedSocket>(new LimitsChangedSocket(path, std::move(socket)));
}

LimitsChangedSocket::LimitsChangedSocket(std::string path, FileDescriptor socket)
    : path_(std::move(path)), socket_(std::move(socket)), file_(identity(path_)) {}

LimitsChangedSocket::~LimitsChangedSocket() {
    // As long as the socket is open its name is taken from nobody, and its inode number given to
    // no other file.
    if (identity(path_) == file_) ::unlink(path_.c_str());
}

FileResult<std::size_t> LimitsChangedSocket::drain() const {
    std::size_t count = 0;
    for (; count < mostAtOnce; ++count) {
        char byte = 0;
        if (retryOnInterrupt([&] { return ::recv(socket_.get(), &byte, 1, 0); }) >= 0) continue;
        if (errno == EAGAIN || count > 0) break;
        return systemError(errno);
    }
    return count;
}

LimitsChangedSocket::FileIdentity LimitsChangedSocket::identity(const std::string& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) return {};
    return {.device = status.st_dev, .inode = status.st_ino};
}

}  // namespace brimwatch
