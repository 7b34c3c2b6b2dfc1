// The key store of the user who runs the program: the secret service of his session, or files of
// his where there is none. Needs a QCoreApplication. Main thread.
#pragma once

#include <memory>

#include "platform/linux/chosen_key_store.h"
#include "platform/linux/file_key_store.h"
#include "platform/linux/secret_service_key_store.h"
#include "support/environment.h"
#include "support/file_system.h"

namespace brimwatch {

class UserKeys {
  public:
    // Nothing for a user without a home folder. The files must outlive it.
    static std::unique_ptr<UserKeys> open(const Environment& environment, FileSystem& files);

    UserKeys(const UserKeys&) = delete;
    UserKeys& operator=(const UserKeys&) = delete;
    ~UserKeys() = default;

    KeyStore& store() { return chosen_; }

  private:
    struct Places {
        QString busAddress;
        std::string keyFolder;
        std::string choiceFile;
    };

    UserKeys(const Places& places, FileSystem& files);

    SecretServiceKeyStore secretService_;
    FileKeyStore keyFiles_;
    ChosenKeyStore chosen_;
};

}  // namespace brimwatch
