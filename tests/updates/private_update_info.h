// What a build that may have private updates is made with.
#pragma once

#include "platform/bundle_info.h"

namespace brimwatch::test {

inline BundleInfo privateUpdateInfo() {
    return {.bundleIdentifier = "net.example.test.mac",
            .privateUpdatesKeychainGroup = "A1B2C3D4E5.net.example.test.mac"};
}

}  // namespace brimwatch::test
