// Where the program keeps its secrets: generic passwords, told apart by service and account.
//
// Every call tells its outcome by a status with the number that the errors of a keychain have,
// since users meet these numbers in texts. A key store never asks the user anything unless it is
// allowed to, and a call takes two seconds at most as long as it is not. Nothing throws. Main
// thread.
#pragma once

#include <cstdint>
#include <string>

#include "support/secret_bytes.h"

namespace brimwatch {

using KeyStatus = std::int32_t;

namespace key_status {
inline constexpr KeyStatus success = 0;
inline constexpr KeyStatus inputOutput = -36;
inline constexpr KeyStatus userCanceled = -128;
inline constexpr KeyStatus notAvailable = -25291;
inline constexpr KeyStatus duplicateItem = -25299;
inline constexpr KeyStatus itemNotFound = -25300;
inline constexpr KeyStatus interactionNotAllowed = -25308;
inline constexpr KeyStatus decode = -26275;
inline constexpr KeyStatus missingEntitlement = -34018;
inline constexpr KeyStatus internalError = -67671;
}  // namespace key_status

// May the store ask the user to unlock it? Only where he has just pressed something.
enum class KeyPrompt { forbidden, allowed };

struct KeyItem {
    std::string service;
    std::string account;
    std::string label = {};  // shown to the user by programs that list keys; not searched for

    bool operator==(const KeyItem&) const = default;
};

class KeyStore {
  public:
    struct Match {
        KeyStatus status = key_status::success;
        SecretBytes value = {};  // empty unless the status is success
    };

    KeyStore() = default;
    KeyStore(const KeyStore&) = delete;
    KeyStore& operator=(const KeyStore&) = delete;
    virtual ~KeyStore() = default;

    // Never overwrites: if there is such an item already, `duplicateItem`. A match that is locked
    // is told before one that is there.
    virtual KeyStatus add(const KeyItem& item, const SecretBytes& value, KeyPrompt prompt) = 0;
    virtual Match copyMatching(const KeyItem& item, KeyPrompt prompt) = 0;
    // Never creates: if there is no such item, `itemNotFound`.
    virtual KeyStatus update(const KeyItem& item, const SecretBytes& value, KeyPrompt prompt) = 0;
    virtual KeyStatus remove(const KeyItem& item, KeyPrompt prompt) = 0;
};

}  // namespace brimwatch
