#include "updates/private_update_url.h"

#include <algorithm>

namespace brimwatch {
namespace {

constexpr std::string_view scheme = "https://";

bool take(std::string_view& text, std::string_view part) {
    if (!text.starts_with(part)) return false;
    text.remove_prefix(part.size());
    return true;
}

bool takeNumber(std::string_view& text) {
    const std::size_t length = std::min(text.find_first_not_of("0123456789"), text.size());
    text.remove_prefix(length);
    return length > 0;
}

bool takeVersion(std::string_view& text) {
    do {
        if (!takeNumber(text)) return false;
    } while (take(text, "."));
    return true;
}

}  // namespace

std::string privateUpdateFeed(std::string_view updateHost) {
    return std::string(scheme).append(updateHost) + "/brimwatch/mac/testing/appcast.xml";
}

bool isAllowedUpdateURL(const std::optional<std::string>& url, std::string_view updateHost) {
    if (!url || updateHost.empty()) return false;
    std::string_view rest = *url;
    return take(rest, scheme) && take(rest, updateHost) &&
           take(rest, "/brimwatch/mac/Brimwatch-") && takeVersion(rest) && take(rest, "-") &&
           takeNumber(rest) && rest == ".dmg";
}

}  // namespace brimwatch
