// What a build of the program was made with: the identifiers, addresses and tokens that stand in
// `bundle-info.json` beside the desktop program. cmake/BundleInfo.cmake writes the file.
//
// Nothing in it is a secret of a user. A member that is missing or not a text is empty here, and so
// is everything where the file can't be used. Main thread.
#pragma once

#include <string>
#include <string_view>

#include "support/file_system.h"

namespace brimwatch {

struct BundleInfo {
    std::string bundleIdentifier = {};
    std::string version = {};       // CFBundleVersion: by which builds are compared
    std::string shortVersion = {};  // CFBundleShortVersionString: for people

    std::string keychainAccessGroup = {};  // QMKeychainAccessGroup
    std::string cloudContainer = {};       // QMICloudContainer
    std::string cloudEnvironment = {};     // "development" or "production"
    std::string cloudApiToken = {};
    std::string cloudService = {};         // an address; empty: that of the provider
    std::string cloudSignInRedirect = {};  // an address with a loopback port, kept with the token

    std::string privateUpdatesKeychainGroup = {};  // QMPrivateUpdatesKeychainGroup
    std::string updateHost = {};
    std::string publicUpdateFeed = {};        // an address
    std::string publicUpdateSigningKey = {};  // base64 of an Ed25519 key

    // Two that no build can do without: where one is empty, a line on standard error says so and
    // the process ends with status 1.
    const std::string& requiredKeychainAccessGroup() const;
    const std::string& requiredCloudContainer() const;

    // Whether this build has the right to send anything to phones.
    bool canPublish() const;

    bool operator==(const BundleInfo&) const = default;
};

BundleInfo parseBundleInfo(std::string_view json);
BundleInfo readBundleInfo(FileSystem& files, const std::string& path);

// Where the file belongs, beside that executable.
std::string bundleInfoPath(std::string_view executable);

}  // namespace brimwatch
