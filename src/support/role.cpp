#include "support/role.h"

#include <algorithm>

namespace brimwatch {

Role classifyArguments(std::span<const std::string_view> arguments) {
    constexpr std::string_view configure = "--configure-private-updates";
    constexpr std::string_view clear = "--clear-private-updates";
    const bool isPrivateUpdate = std::any_of(
        arguments.begin(), arguments.end(),
        [&](std::string_view argument) { return argument == configure || argument == clear; });
    if (!isPrivateUpdate) {
        const bool isStatusLine = !arguments.empty() && arguments.front() == "--statusline";
        return isStatusLine ? Role::statusLine : Role::application;
    }
    if (arguments.size() == 2 && arguments[0] == configure && !arguments[1].empty() &&
        !arguments[1].starts_with("--")) {
        return Role::configurePrivateUpdates;
    }
    if (arguments.size() == 1 && arguments[0] == clear) return Role::clearPrivateUpdates;
    return Role::usageFailure;
}

}  // namespace brimwatch
