// The key of the link to Android phones, in the user's key store, which is never allowed to ask the
// user. Main thread.
#pragma once

#include <exception>

#include "platform/key_store.h"
#include "publish/phone_key_store.h"

namespace brimwatch {

// Every call may throw `Failure`. An item that is no key of 32 bytes counts as none, and the next
// key takes its place.
class PhoneKeychain : public PhoneKeyStore {
  public:
    class Failure : public std::exception {
      public:
        explicit Failure(KeyStatus status) noexcept : status_(status) {}

        KeyStatus status() const noexcept { return status_; }
        const char* what() const noexcept override;

      private:
        KeyStatus status_;
    };

    // The store must outlive this.
    explicit PhoneKeychain(KeyStore& store) : store_(store) {}

    std::optional<SymmetricKey> load() override;
    SymmetricKey addIfAbsent(const SymmetricKey& candidate) override;
    void replace(const SymmetricKey& key) override;
    void remove() override;

  private:
    KeyStore& store_;
};

}  // namespace brimwatch
