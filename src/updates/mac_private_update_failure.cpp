#include "updates/mac_private_update_failure.h"

namespace brimwatch {

std::string_view MacPrivateUpdateFailure::message() const {
    switch (reason) {
        case Reason::keychain:
            return "Private update Keychain access failed.";
        case Reason::syntax:
            return "Use --configure-private-updates <0600 JSON file> or --clear-private-updates.";
        case Reason::fileUnreadable:
            return "Cannot read a regular, non-symlink configuration file.";
        case Reason::filePermissions:
            return "Configuration file must be owned by this user with permissions 0600.";
        case Reason::inputTooLarge:
            return "Configuration file must contain 1–8192 bytes.";
        case Reason::invalidCredentials:
            return "Configuration must contain only valid username and password strings.";
        case Reason::keychainGroup:
            return "Private update Keychain group is unavailable.";
        case Reason::corrupt:
            return "Private update Keychain configuration is invalid.";
        case Reason::disallowedUpdate:
            return "Private update contains an unsupported URL or delta.";
        case Reason::debugDisabled:
            break;
    }
    return "Private update configuration is disabled in development builds.";
}

}  // namespace brimwatch
