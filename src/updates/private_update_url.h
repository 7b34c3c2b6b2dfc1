// Which addresses may ever see the credentials of private updates.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace brimwatch {

// The feed of private updates.
std::string privateUpdateFeed(std::string_view updateHost);

// Whether the address is that of a download: exactly
//
//     https://HOST/brimwatch/mac/Brimwatch-VERSION-BUILD.dmg
//
// with numbers between dots as VERSION and a number as BUILD. It is the text that is tested, not
// what a parser would make of it: so there is no room for a port, a user, a query, a fragment, an
// escape or another spelling of the host. Without a host no address passes.
bool isAllowedUpdateURL(const std::optional<std::string>& url, std::string_view updateHost);

}  // namespace brimwatch
