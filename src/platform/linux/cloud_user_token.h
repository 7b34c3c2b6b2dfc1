// The token by which the cloud knows the user of this machine: given at the sign-in, replaced by
// its successor with every answer, kept in a key store.
//
// A successor that could not be stored is used all the same, and stored with the next occasion. So
// is one that comes while the user is asked to unlock the store; a token that is forgotten then is
// not kept. Nothing throws. Main thread.
#pragma once

#include <optional>
#include <string_view>

#include "platform/key_store.h"
#include "platform/linux/cloud_container.h"
#include "support/secret_bytes.h"

namespace brimwatch {

class CloudUserToken {
  public:
    // Printable ASCII without blanks, at most 8 KiB: anything else is no token.
    static bool isPlausible(std::string_view text);

    // The store must outlive it.
    CloudUserToken(KeyStore& store, const CloudContainer& container);

    // Reads the store until there is a token. `itemNotFound`: nobody is signed in.
    KeyStore::Match current();
    // What the user just signed in with.
    KeyStatus set(const SecretBytes& token, KeyPrompt prompt);
    // In place of the token that was sent, unless another one has come meanwhile.
    void succeed(const SecretBytes& sent, const SecretBytes& successor);
    // The server does not know it; forgotten unless another one has come meanwhile.
    void refuse(const SecretBytes& sent);
    KeyStatus forget(KeyPrompt prompt);

  private:
    KeyStatus store(KeyPrompt prompt);

    KeyStore& store_;
    KeyItem item_;
    std::optional<SecretBytes> token_;
    bool isStored_ = true;
};

}  // namespace brimwatch
