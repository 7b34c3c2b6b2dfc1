// Where the credentials of private updates are kept: one item of the user's key store, which is
// never allowed to ask the user. Main thread.
#pragma once

#include <optional>
#include <string>

#include "platform/bundle_info.h"
#include "platform/key_store.h"
#include "updates/mac_private_update_credentials.h"

namespace brimwatch {

KeyItem privateUpdateItem();

class MacPrivateUpdateKeychainStore {
  public:
    // The access must outlive the store. A build whose group does not belong to its identifier has
    // no right to the item: every call then fails without touching the key store.
    MacPrivateUpdateKeychainStore(KeyStore& access, const BundleInfo& info);

    // Nothing if no credentials are stored.
    MacPrivateUpdateResult<std::optional<MacPrivateUpdateCredentials>> load();
    // In place of any others.
    MacPrivateUpdateResult<void> save(const MacPrivateUpdateCredentials& credentials);
    // That there are none is no failure.
    MacPrivateUpdateResult<void> clear();

  private:
    bool hasGroup() const;

    KeyStore& access_;
    std::string accessGroup_;
    std::string bundleIdentifier_;
};

}  // namespace brimwatch
