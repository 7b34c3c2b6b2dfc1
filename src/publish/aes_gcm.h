// AES-256-GCM in its combined form: a nonce of 12 bytes, the ciphertext, a tag of 16 bytes, and
// nothing else authenticated. Any thread.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "publish/symmetric_key.h"

namespace brimwatch::aes_gcm {

inline constexpr std::size_t nonceBytes = 12;
inline constexpr std::size_t tagBytes = 16;

using Nonce = std::array<unsigned char, nonceBytes>;

// A nonce may serve a key only once. Nothing where the cipher can't be had or the text is too long
// for it.
std::optional<std::string> seal(std::string_view text, const SymmetricKey& key, const Nonce& nonce);

// Nothing unless the whole was sealed with this key.
std::optional<std::string> open(std::string_view sealed, const SymmetricKey& key);

}  // namespace brimwatch::aes_gcm
