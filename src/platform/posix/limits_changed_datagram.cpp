#include "platform/posix/limits_changed_datagram.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <string_view>

#include "platform/posix/file_descriptor.h"
#include "support/paths.h"

namespace brimwatch {

std::optional<std::string> limitsChangedSocket(const Environment& environment) {
    const std::optional<std::string_view> folder = environment.value("XDG_RUNTIME_DIR");
    if (!folder || !folder->starts_with('/')) return std::nullopt;
    return joinPath(*folder, "net.quillmoor.brimwatch.limitsChanged");
}

void postLimitsChanged(const Environment& environment) {
    const std::optional<std::string> path = limitsChangedSocket(environment);
    sockaddr_un address{};
    if (!path || path->size() >= sizeof address.sun_path) return;
    address.sun_family = AF_UNIX;
    std::copy(path->begin(), path->end(), &address.sun_path[0]);
    const FileDescriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!socket.isOpen()) return;
    ::sendto(socket.get(), "", 0, MSG_DONTWAIT | MSG_NOSIGNAL,
             reinterpret_cast<const sockaddr*>(&address), sizeof address);
}

}  // namespace brimwatch
