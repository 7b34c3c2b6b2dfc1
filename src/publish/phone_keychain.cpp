#include "publish/phone_keychain.h"

#include "publish/key_items.h"

namespace brimwatch {

const char* PhoneKeychain::Failure::what() const noexcept {
    return "the key store refused a call for the phone key";
}

std::optional<SymmetricKey> PhoneKeychain::load() {
    const KeyStore::Match match = store_.copyMatching(phoneKeyItem(), KeyPrompt::forbidden);
    if (match.status == key_status::itemNotFound) return std::nullopt;
    if (match.status != key_status::success) throw Failure(match.status);
    return SymmetricKey::fromBytes(match.value);
}

SymmetricKey PhoneKeychain::addIfAbsent(const SymmetricKey& candidate) {
    const KeyStatus status = store_.add(phoneKeyItem(), candidate.bytes(), KeyPrompt::forbidden);
    if (status != key_status::success && status != key_status::duplicateItem) throw Failure(status);
    if (const std::optional<SymmetricKey> stored = load()) return *stored;
    if (status == key_status::duplicateItem) replace(candidate);
    return candidate;
}

void PhoneKeychain::replace(const SymmetricKey& key) {
    KeyStatus status = store_.update(phoneKeyItem(), key.bytes(), KeyPrompt::forbidden);
    if (status == key_status::itemNotFound)
        status = store_.add(phoneKeyItem(), key.bytes(), KeyPrompt::forbidden);
    if (status != key_status::success) throw Failure(status);
}

void PhoneKeychain::remove() {
    const KeyStatus status = store_.remove(phoneKeyItem(), KeyPrompt::forbidden);
    if (status != key_status::success && status != key_status::itemNotFound) throw Failure(status);
}

}  // namespace brimwatch
