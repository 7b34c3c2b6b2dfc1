// Which container of records is meant, and where it is asked for.
#pragma once

#include <string>

namespace brimwatch {

struct CloudContainer {
    std::string identifier;   // as in "iCloud.net.example"
    std::string environment;  // "development" or "production"
    std::string apiToken;     // of the build, not of a user
    std::string address = "https://api.apple-cloudkit.com";

    bool operator==(const CloudContainer&) const = default;
};

}  // namespace brimwatch
