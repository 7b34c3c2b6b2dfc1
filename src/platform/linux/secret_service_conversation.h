// The calls that one operation makes on a secret service: each waits for its answer, all of them
// together no longer than the time that they have. A prompt of the service's is shown only if it is
// allowed; the time that the user takes does not count. Main thread.
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDeadlineTimer>
#include <QList>
#include <QString>
#include <QVariantList>
#include <chrono>
#include <tl/expected.hpp>

#include "platform/key_store.h"
#include "platform/linux/secret_service_statuses.h"
#include "platform/linux/secret_service_types.h"

namespace brimwatch {

struct SecretServiceTiming {
    std::chrono::milliseconds calls{std::chrono::seconds(2)};
    std::chrono::milliseconds prompt{std::chrono::minutes(1)};  // as long as the user may take
    std::chrono::milliseconds rest{std::chrono::minutes(5)};    // of a service that was silent
};

template <class Value>
using KeyResult = tl::expected<Value, KeyStatus>;

class SecretServiceConversation {
  public:
    struct Matches {
        QList<QDBusObjectPath> unlocked;
        QList<QDBusObjectPath> locked;
    };

    SecretServiceConversation(QDBusConnection bus, SecretServiceTiming timing, KeyPrompt prompt);
    SecretServiceConversation(const SecretServiceConversation&) = delete;
    SecretServiceConversation& operator=(const SecretServiceConversation&) = delete;
    ~SecretServiceConversation();

    // Items that lie in memory only are left out.
    KeyResult<Matches> search(const BusAttributes& attributes);
    // `interactionNotAllowed` where prompts are forbidden.
    KeyResult<void> unlock(const QList<QDBusObjectPath>& objects);
    // `notAvailable` if there is none.
    KeyResult<QDBusObjectPath> defaultCollection();
    // Whether the service says so itself.
    bool lacksDefaultCollection();

    KeyResult<void> createItem(const QDBusObjectPath& collection, const QVariantMap& properties,
                               const QByteArray& value);
    KeyResult<QByteArray> secretOf(const QDBusObjectPath& item);
    KeyResult<void> setSecret(const QDBusObjectPath& item, const QByteArray& value);
    KeyResult<void> deleteItem(const QDBusObjectPath& item);
    // When it was last changed, or 0 if that can't be told.
    quint64 modified(const QDBusObjectPath& item);

    // The service was started anew meanwhile.
    bool hasLostSession() const { return hasLostSession_; }
    // It did not answer in time.
    bool wasSilent() const { return wasSilent_; }

  private:
    struct Call {
        SecretObject object = SecretObject::service;
        QDBusObjectPath path;
        const char* interface = "";
        const char* method = "";
        const char* answer = "";  // its signature
    };

    KeyResult<QDBusObjectPath> readAlias();
    KeyResult<QVariantList> ask(const Call& call, const QVariantList& arguments);
    KeyResult<void> openSession();
    KeyResult<BusSecret> secretFor(const QByteArray& value);
    KeyResult<void> settle(const QDBusObjectPath& prompt);
    KeyStatus show(const QDBusObjectPath& prompt);
    void dismiss(const QDBusObjectPath& prompt);
    // Without waiting for an answer.
    void tell(const QDBusObjectPath& path, const char* interface, const char* method);

    QDBusConnection bus_;
    SecretServiceTiming timing_;
    KeyPrompt prompt_;
    QDeadlineTimer deadline_;
    QDBusObjectPath session_;  // empty while there is none
    bool hasLostSession_ = false;
    bool wasSilent_ = false;
};

}  // namespace brimwatch
