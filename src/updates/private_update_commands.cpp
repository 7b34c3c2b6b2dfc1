#include "updates/private_update_commands.h"

#include "updates/mac_private_update_keychain_store.h"

namespace brimwatch {
namespace {

using Reason = MacPrivateUpdateFailure::Reason;

Reason reasonOf(PrivateFileFailure failure) {
    switch (failure) {
        case PrivateFileFailure::permissions:
            return Reason::filePermissions;
        case PrivateFileFailure::size:
            return Reason::inputTooLarge;
        case PrivateFileFailure::unreadable:
            break;
    }
    return Reason::fileUnreadable;
}

}  // namespace

MacPrivateUpdateResult<void> configurePrivateUpdates(const std::string& path,
                                                     const ReadPrivateFile& readFile,
                                                     const ReadBundleInfo& readInfo,
                                                     KeyStore& keys) {
    const PrivateFileResult bytes = readFile(path);
    if (!bytes) return privateUpdateFailure(reasonOf(bytes.error()));
    const auto credentials = parseCredentials(bytes->view());
    if (!credentials) return tl::unexpected(credentials.error());
    return MacPrivateUpdateKeychainStore(keys, readInfo()).save(*credentials);
}

MacPrivateUpdateResult<void> clearPrivateUpdates(const ReadBundleInfo& readInfo, KeyStore& keys) {
    return MacPrivateUpdateKeychainStore(keys, readInfo()).clear();
}

}  // namespace brimwatch
