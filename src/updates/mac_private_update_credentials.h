// The name and password by which a private installation gets its updates. They come from a file
// that the user supplies and live in the key store; nothing prints them. Any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "support/secret_bytes.h"
#include "updates/mac_private_update_failure.h"

namespace brimwatch {

// Larger configurations are none.
inline constexpr std::size_t privateUpdateSizeLimit = 8192;

struct MacPrivateUpdateCredentials {
    std::string username;  // 1 to 128 bytes of UTF-8, without ":" and control characters
    SecretBytes password;  // 1 to 1024 bytes of UTF-8, without control characters

    bool operator==(const MacPrivateUpdateCredentials&) const = default;
};

// From a JSON object of exactly two members, `username` and `password`.
MacPrivateUpdateResult<MacPrivateUpdateCredentials> parseCredentials(std::string_view bytes);

// What `parseCredentials` reads.
SecretBytes credentialsJson(const MacPrivateUpdateCredentials& credentials);

// The value of the header `Authorization` (RFC 7617).
std::string authorizationValue(const MacPrivateUpdateCredentials& credentials);

}  // namespace brimwatch
