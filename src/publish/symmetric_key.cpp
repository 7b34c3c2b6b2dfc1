#include "publish/symmetric_key.h"

namespace brimwatch {

SymmetricKey SymmetricKey::random(const RandomBytes& randomBytes) {
    SecretBytes bytes(byteCount);
    randomBytes({bytes.data(), bytes.size()});
    return SymmetricKey(std::move(bytes));
}

std::optional<SymmetricKey> SymmetricKey::fromBytes(SecretBytes bytes) {
    if (bytes.size() != byteCount) return std::nullopt;
    return SymmetricKey(std::move(bytes));
}

std::optional<SymmetricKey> SymmetricKey::fromBytes(std::string_view bytes) {
    return fromBytes(SecretBytes(bytes));
}

}  // namespace brimwatch
