// Where the key of the link to Android phones is kept. A key of its own, never the shared one.
// Main thread.
#pragma once

#include <optional>

#include "publish/symmetric_key.h"

namespace brimwatch {

// What a call throws is told by the class that carries it out.
class PhoneKeyStore {
  public:
    PhoneKeyStore() = default;
    PhoneKeyStore(const PhoneKeyStore&) = delete;
    PhoneKeyStore& operator=(const PhoneKeyStore&) = delete;
    virtual ~PhoneKeyStore() = default;

    virtual std::optional<SymmetricKey> load() = 0;
    // Stores the candidate unless there is a key, and gives the key that is then in force.
    virtual SymmetricKey addIfAbsent(const SymmetricKey& candidate) = 0;
    // Creates what is not there.
    virtual void replace(const SymmetricKey& key) = 0;
    // That there is no key is no failure.
    virtual void remove() = 0;
};

// For places where no key store may be touched. Nothing throws.
class MemoryPhoneKeyStore : public PhoneKeyStore {
  public:
    std::optional<SymmetricKey> load() override { return key; }
    SymmetricKey addIfAbsent(const SymmetricKey& candidate) override;
    void replace(const SymmetricKey& newKey) override { key = newKey; }
    void remove() override { key.reset(); }

    std::optional<SymmetricKey> key;
};

}  // namespace brimwatch
