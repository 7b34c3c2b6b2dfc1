// Paths as addresses of local sockets.
#pragma once

#include <sys/un.h>

#include <algorithm>
#include <optional>
#include <string>

namespace brimwatch {

// Nothing for a path that is too long to be one.
inline std::optional<sockaddr_un> socketAddress(const std::string& path) {
    sockaddr_un address{};
    if (path.size() >= sizeof address.sun_path) return std::nullopt;
    address.sun_family = AF_UNIX;
    std::copy(path.begin(), path.end(), &address.sun_path[0]);
    return address;
}

}  // namespace brimwatch
