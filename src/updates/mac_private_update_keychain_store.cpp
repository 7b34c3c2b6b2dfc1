#include "updates/mac_private_update_keychain_store.h"

#include <algorithm>
#include <string_view>

namespace brimwatch {
namespace {

using Reason = MacPrivateUpdateFailure::Reason;

bool isTeamIdentifier(std::string_view text) {
    constexpr std::size_t length = 10;
    return text.size() == length && std::all_of(text.begin(), text.end(), [](char c) {
               return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
           });
}

MacPrivateUpdateResult<void> resultOf(KeyStatus status) {
    if (status == key_status::success) return {};
    return privateUpdateFailure(Reason::keychain, status);
}

}  // namespace

KeyItem privateUpdateItem() {
    return {.service = "net.quillmoor.brimwatch.mac.private-updates",
            .account = "http-basic-v1",
            .label = "Brimwatch? 비공개 업데이트"};
}

MacPrivateUpdateKeychainStore::MacPrivateUpdateKeychainStore(KeyStore& access,
                                                             const BundleInfo& info)
    : access_(access),
      accessGroup_(info.privateUpdatesKeychainGroup),
      bundleIdentifier_(info.bundleIdentifier) {}

MacPrivateUpdateResult<std::optional<MacPrivateUpdateCredentials>>
MacPrivateUpdateKeychainStore::load() {
    if (!hasGroup()) return privateUpdateFailure(Reason::keychainGroup);
    const KeyStore::Match match = access_.copyMatching(privateUpdateItem(), KeyPrompt::forbidden);
    if (match.status == key_status::itemNotFound) return std::nullopt;
    if (match.status != key_status::success) {
        return privateUpdateFailure(Reason::keychain, match.status);
    }
    if (match.value.empty()) return privateUpdateFailure(Reason::corrupt);
    return parseCredentials(match.value.view());
}

MacPrivateUpdateResult<void> MacPrivateUpdateKeychainStore::save(
    const MacPrivateUpdateCredentials& credentials) {
    if (!hasGroup()) return privateUpdateFailure(Reason::keychainGroup);
    const SecretBytes value = credentialsJson(credentials);
    const KeyStatus status = access_.update(privateUpdateItem(), value, KeyPrompt::forbidden);
    if (status != key_status::itemNotFound) return resultOf(status);
    return resultOf(access_.add(privateUpdateItem(), value, KeyPrompt::forbidden));
}

MacPrivateUpdateResult<void> MacPrivateUpdateKeychainStore::clear() {
    if (!hasGroup()) return privateUpdateFailure(Reason::keychainGroup);
    const KeyStatus status = access_.remove(privateUpdateItem(), KeyPrompt::forbidden);
    return status == key_status::itemNotFound ? MacPrivateUpdateResult<void>() : resultOf(status);
}

// The group is the team identifier, a dot and the bundle identifier.
bool MacPrivateUpdateKeychainStore::hasGroup() const {
    const std::string suffix = '.' + bundleIdentifier_;
    if (!bundleIdentifier_.ends_with(".mac") || !accessGroup_.ends_with(suffix)) return false;
    return isTeamIdentifier(
        std::string_view(accessGroup_).substr(0, accessGroup_.size() - suffix.size()));
}

}  // namespace brimwatch
