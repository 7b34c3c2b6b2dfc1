#include "publish/shared_key.h"

#include <utility>

#include "publish/key_items.h"

namespace brimwatch {

const char* SharedKey::Failure::what() const noexcept {
    return "the key store refused the shared key";
}

SharedKey::SharedKey(KeyStore& store, RandomBytes randomBytes)
    : store_(store), randomBytes_(std::move(randomBytes)) {}

std::optional<SymmetricKey> SharedKey::load() const {
    const KeyStore::Match match = store_.copyMatching(sharedKeyItem(), KeyPrompt::forbidden);
    if (match.status != key_status::success) return std::nullopt;
    return SymmetricKey::fromBytes(match.value);
}

SymmetricKey SharedKey::loadOrCreate() const {
    if (const std::optional<SymmetricKey> stored = load()) return *stored;
    const SymmetricKey key = SymmetricKey::random(randomBytes_);
    const KeyStatus status = store_.add(sharedKeyItem(), key.bytes(), KeyPrompt::forbidden);
    if (status != key_status::success && status != key_status::duplicateItem) throw Failure(status);
    return load().value_or(key);
}

}  // namespace brimwatch
