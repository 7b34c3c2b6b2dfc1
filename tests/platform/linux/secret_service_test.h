// Tests with a message bus of their own and a secret service on it: a real keyring, or one that
// does what a test tells it to.
#pragma once

#include <QDBusMessage>
#include <QEventLoop>
#include <QThread>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "harness/process.h"
#include "harness/temporary_folder.h"
#include "platform/linux/bus_test.h"
#include "platform/linux/secret_service_key_store.h"

namespace brimwatch::test {

// Answers on a thread of its own, since the store waits for its answers on that of the test.
class FakeSecretService {
  public:
    // By the name of the method.
    using Answers =
        std::map<QString, std::function<QDBusMessage(FakeService&, const QDBusMessage&)>>;

    FakeSecretService(const QString& address, Answers answers);
    FakeSecretService(const FakeSecretService&) = delete;
    FakeSecretService& operator=(const FakeSecretService&) = delete;
    ~FakeSecretService() { stop(); }

    void stop();
    // "METHOD ARGUMENT..." of each call that came. Once it has stopped.
    const QStringList& calls() const { return calls_; }
    bool wasCalled(const QString& method) const;

  private:
    std::unique_ptr<QThread> thread_;
    QStringList calls_;
};

class SecretServiceTest : public BusTest {
  protected:
    enum class Keyring { unlocked, locked, none };

    void SetUp() override;
    void TearDown() override;

    // In place of the former one, with the same folder of keys.
    void startKeyring(Keyring state = Keyring::unlocked);
    void stopKeyring();
    // Locks everything in it.
    void lock();
    QDBusMessage call(const QString& path, const QString& interface, const QString& method,
                      const QVariantList& arguments) const;
    // Makes an item past the store.
    void makeItem(const KeyItem& item, const QByteArray& value) const;
    qsizetype countOf(const KeyItem& item) const;
    void makeStore(SecretServiceTiming timing = {.calls = std::chrono::seconds(20)});

    TemporaryFolder home_;
    std::optional<Process> keyring_;
    std::optional<FakeService> other_;  // another program on the bus
    std::optional<SecretServiceKeyStore> store_;
};

inline const KeyItem phoneKey = {.service = "net.quillmoor.brimwatch.sync",
                                 .account = "phone-key-v1",
                                 .label = "Brimwatch? 폰 연결 키"};

}  // namespace brimwatch::test
