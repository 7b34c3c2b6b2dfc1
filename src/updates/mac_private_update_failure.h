// Why private updates could not be configured, read or taken.
#pragma once

#include <string_view>
#include <tl/expected.hpp>

#include "platform/key_store.h"

namespace brimwatch {

struct MacPrivateUpdateFailure {
    enum class Reason {
        keychain,
        syntax,
        fileUnreadable,
        filePermissions,
        inputTooLarge,
        invalidCredentials,
        keychainGroup,
        corrupt,
        disallowedUpdate,
        debugDisabled,  // of development builds alone
    };

    Reason reason = Reason::syntax;
    KeyStatus status = key_status::success;  // of `keychain`

    // For the user. Holds neither a credential nor a status.
    std::string_view message() const;

    bool operator==(const MacPrivateUpdateFailure&) const = default;
};

template <class Value>
using MacPrivateUpdateResult = tl::expected<Value, MacPrivateUpdateFailure>;

inline tl::unexpected<MacPrivateUpdateFailure> privateUpdateFailure(
    MacPrivateUpdateFailure::Reason reason, KeyStatus status = key_status::success) {
    return tl::unexpected(MacPrivateUpdateFailure{.reason = reason, .status = status});
}

}  // namespace brimwatch
