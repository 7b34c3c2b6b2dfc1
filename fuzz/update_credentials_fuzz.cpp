// The file with the credentials of private updates: what is read of it keeps to its limits, comes
// back as it was written, and is one line of a header.

#include <cstdint>
#include <string_view>

#include "require.h"
#include "updates/mac_private_update_credentials.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto credentials = brimwatch::parseCredentials(text);
    if (!credentials) return 0;
    REQUIRE(!credentials->username.empty() && credentials->username.size() <= 128);
    REQUIRE(!credentials->password.empty() && credentials->password.size() <= 1024);
    REQUIRE(credentials->username.find(':') == std::string::npos);
    for (const std::string_view value :
         {std::string_view(credentials->username), credentials->password.view()}) {
        for (const char c : value)
            REQUIRE(static_cast<unsigned char>(c) >= ' ' && c != '\x7f');
    }
    const auto again = brimwatch::parseCredentials(brimwatch::credentialsJson(*credentials).view());
    REQUIRE(again.has_value() && *again == *credentials);
    const std::string header = brimwatch::authorizationValue(*credentials);
    REQUIRE(header.starts_with("Basic "));
    REQUIRE(
        header.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"
                                 "+/=",
                                 6) == std::string::npos);
    return 0;
}
