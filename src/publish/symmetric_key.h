// A key of 256 bits, for sealing and for naming records.
//
// It is wiped when it is dropped or replaced, comparing takes a time that tells nothing, and
// nothing prints it. Any thread.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>

#include "publish/random_bytes.h"
#include "support/secret_bytes.h"

namespace brimwatch {

class SymmetricKey {
  public:
    static constexpr std::size_t byteCount = 32;

    static SymmetricKey random(const RandomBytes& randomBytes = fillWithRandomBytes);
    // Nothing unless there are exactly 32 bytes.
    static std::optional<SymmetricKey> fromBytes(SecretBytes bytes);
    static std::optional<SymmetricKey> fromBytes(std::string_view bytes);

    // Without a move, which would leave a key of no bytes behind.
    SymmetricKey(const SymmetricKey&) = default;
    SymmetricKey& operator=(const SymmetricKey&) = default;
    ~SymmetricKey() = default;

    const SecretBytes& bytes() const { return bytes_; }

    friend bool operator==(const SymmetricKey&, const SymmetricKey&) = default;

  private:
    explicit SymmetricKey(SecretBytes bytes) : bytes_(std::move(bytes)) {}

    SecretBytes bytes_;
};

}  // namespace brimwatch
