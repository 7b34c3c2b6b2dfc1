// The key of the channel to iPhones, in the user's key store.
//
// It is made at the first send and then stays: nothing here replaces or deletes it. The store is
// never allowed to ask the user. Main thread.
#pragma once

#include <exception>
#include <optional>

#include "platform/key_store.h"
#include "publish/random_bytes.h"
#include "publish/symmetric_key.h"

namespace brimwatch {

class SharedKey {
  public:
    // The store refused a new key.
    class Failure : public std::exception {
      public:
        explicit Failure(KeyStatus status) noexcept : status_(status) {}

        KeyStatus status() const noexcept { return status_; }
        const char* what() const noexcept override;

      private:
        KeyStatus status_;
    };

    // The store must outlive this.
    explicit SharedKey(KeyStore& store, RandomBytes randomBytes = fillWithRandomBytes);

    // Nothing whenever there is no key to be had, whatever the reason.
    std::optional<SymmetricKey> load() const;

    // The stored key, or one that is stored by this call. An item that is there but is no key stays
    // as it is, and the key that is given then was not stored. Throws `Failure`.
    SymmetricKey loadOrCreate() const;

  private:
    KeyStore& store_;
    RandomBytes randomBytes_;
};

}  // namespace brimwatch
