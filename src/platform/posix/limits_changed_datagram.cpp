#include "platform/posix/limits_changed_datagram.h"

#include <sys/socket.h>

#include <string_view>

#include "platform/posix/file_descriptor.h"
#include "platform/posix/socket_address.h"
#include "support/paths.h"

namespace brimwatch {

std::optional<std::string> limitsChangedSocket(const Environment& environment) {
    const std::optional<std::string_view> folder = environment.value("XDG_RUNTIME_DIR");
    if (!folder || !folder->starts_with('/')) return std::nullopt;
    return joinPath(*folder, "net.quillmoor.brimwatch.limitsChanged");
}

void postLimitsChanged(const Environment& environment) {
    const std::optional<std::string> path = limitsChangedSocket(environment);
    const std::optional<sockaddr_un> address = path ? socketAddress(*path) : std::nullopt;
    if (!address) return;
    const FileDescriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!socket.isOpen()) return;
    ::sendto(socket.get(), "", 0, MSG_DONTWAIT | MSG_NOSIGNAL,
             reinterpret_cast<const sockaddr*>(&*address), sizeof *address);
}

}  // namespace brimwatch
