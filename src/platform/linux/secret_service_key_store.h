// Keys in the secret service of the desktop (org.freedesktop.secrets), in its default collection.
//
// A value is stored as base64, since some services keep only text; one that is no base64 is given
// as it is. Of several items with the attributes of one key, which a service allows, the one that
// was changed last is read, and all of them are updated and removed. What is locked is told apart
// from what is missing. The service is started if need be. One that hangs costs two seconds, and is
// then left alone for five minutes, except by calls that may prompt: whoever has just pressed
// something may wait once more. Main thread.
#pragma once

#include <QDBusConnection>
#include <QDeadlineTimer>
#include <QString>
#include <functional>
#include <memory>

#include "platform/key_store.h"
#include "platform/linux/own_bus.h"
#include "platform/linux/secret_service_conversation.h"

namespace brimwatch {

class SecretServiceKeyStore final : public KeyStore {
  public:
    // With an empty address there is no service. The bus is looked for when it is needed.
    explicit SecretServiceKeyStore(QString busAddress, SecretServiceTiming timing = {});
    SecretServiceKeyStore(const SecretServiceKeyStore&) = delete;
    SecretServiceKeyStore& operator=(const SecretServiceKeyStore&) = delete;
    ~SecretServiceKeyStore() override;

    KeyStatus add(const KeyItem& item, const SecretBytes& value, KeyPrompt prompt) override;
    Match copyMatching(const KeyItem& item, KeyPrompt prompt) override;
    KeyStatus update(const KeyItem& item, const SecretBytes& value, KeyPrompt prompt) override;
    KeyStatus remove(const KeyItem& item, KeyPrompt prompt) override;

    // Whether it is certain that nothing can be kept here: there is no bus, no service that runs or
    // could be started, or no collection to put anything into. One that does not answer is there.
    bool isMissing();

  private:
    using Operation = std::function<KeyStatus(SecretServiceConversation& conversation)>;

    KeyStatus perform(KeyPrompt prompt, const Operation& operation);
    void noteSilence(const SecretServiceConversation& conversation);
    bool connectToBus();
    bool hasService();

    QString busAddress_;
    SecretServiceTiming timing_;
    std::unique_ptr<OwnBus> bus_;
    QDeadlineTimer rest_;  // until then it is left alone
};

}  // namespace brimwatch
