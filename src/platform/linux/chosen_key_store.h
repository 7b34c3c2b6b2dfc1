// The key store of this machine: the secret service of the desktop, or files where there is none.
//
// The choice is made when the first item is made, and remembered in a file. From then on a service
// that is absent is `notAvailable`: looking into the other store would find no key, and a second
// one would be made. Where that file is lost, files that hold keys tell the choice. Main thread.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/key_store.h"
#include "support/file_system.h"

namespace brimwatch {

class ChosenKeyStore final : public KeyStore {
  public:
    // What is referred to must outlive it.
    struct Stores {
        KeyStore& secretService;
        std::function<bool()> isServiceMissing;  // for certain, not only for now
        KeyStore& files;
        std::function<bool()> hasFiles;
    };

    ChosenKeyStore(Stores stores, FileSystem& files, std::string choiceFile);

    KeyStatus add(const KeyItem& item, const SecretBytes& value, KeyPrompt prompt) override;
    Match copyMatching(const KeyItem& item, KeyPrompt prompt) override;
    KeyStatus update(const KeyItem& item, const SecretBytes& value, KeyPrompt prompt) override;
    KeyStatus remove(const KeyItem& item, KeyPrompt prompt) override;

  private:
    enum class Choice { secretService, files };

    // The chosen store, or nullptr.
    KeyStore* chosen();
    bool remember(Choice choice);
    KeyStatus unchosen(KeyStatus status) const;
    KeyStatus addFirst(const KeyItem& item, const SecretBytes& value, KeyPrompt prompt);

    Stores stores_;
    FileSystem& files_;
    std::string choiceFile_;
    std::optional<Choice> choice_;
};

}  // namespace brimwatch
