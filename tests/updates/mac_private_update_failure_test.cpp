#include "updates/mac_private_update_failure.h"

#include <gtest/gtest.h>

namespace brimwatch {
namespace {

using Reason = MacPrivateUpdateFailure::Reason;

std::string_view message(Reason reason) {
    return MacPrivateUpdateFailure{.reason = reason, .status = -25308}.message();
}

TEST(MacPrivateUpdateFailure, HasATextForEachReasonWithoutItsStatus) {
    EXPECT_EQ(message(Reason::keychain), "Private update Keychain access failed.");
    EXPECT_EQ(message(Reason::syntax),
              "Use --configure-private-updates <0600 JSON file> or --clear-private-updates.");
    EXPECT_EQ(message(Reason::fileUnreadable),
              "Cannot read a regular, non-symlink configuration file.");
    EXPECT_EQ(message(Reason::filePermissions),
              "Configuration file must be owned by this user with permissions 0600.");
    EXPECT_EQ(message(Reason::inputTooLarge), "Configuration file must contain 1–8192 bytes.");
    EXPECT_EQ(message(Reason::invalidCredentials),
              "Configuration must contain only valid username and password strings.");
    EXPECT_EQ(message(Reason::keychainGroup), "Private update Keychain group is unavailable.");
    EXPECT_EQ(message(Reason::corrupt), "Private update Keychain configuration is invalid.");
    EXPECT_EQ(message(Reason::disallowedUpdate),
              "Private update contains an unsupported URL or delta.");
    EXPECT_EQ(message(Reason::debugDisabled),
              "Private update configuration is disabled in development builds.");
}

}  // namespace
}  // namespace brimwatch
