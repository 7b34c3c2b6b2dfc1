#include "platform/linux/secret_service_key_store.h"

#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <algorithm>
#include <utility>

namespace brimwatch {
namespace {

using Matches = SecretServiceConversation::Matches;

QString text(const std::string& bytes) {
    return QString::fromStdString(bytes);
}

BusAttributes attributesOf(const KeyItem& item) {
    return {{QStringLiteral("xdg:schema"), QStringLiteral("net.quillmoor.brimwatch.Item")},
            {QStringLiteral("service"), text(item.service)},
            {QStringLiteral("account"), text(item.account)}};
}

QVariantMap propertiesOf(const KeyItem& item) {
    // There are services that take no item without a label.
    const QString label = text(item.label.empty() ? item.service : item.label);
    return {{QStringLiteral("org.freedesktop.Secret.Item.Label"), label},
            {QStringLiteral("org.freedesktop.Secret.Item.Attributes"),
             QVariant::fromValue(attributesOf(item))}};
}

QByteArray encoded(const SecretBytes& value) {
    return QByteArray::fromRawData(reinterpret_cast<const char*>(value.data()),
                                   static_cast<qsizetype>(value.size()))
        .toBase64();
}

SecretBytes decoded(const QByteArray& value) {
    auto result = QByteArray::fromBase64Encoding(
        value, QByteArray::Base64Encoding | QByteArray::AbortOnBase64DecodingErrors);
    const QByteArray& bytes = result ? result.decoded : value;
    SecretBytes secret(std::string_view(bytes.constData(), static_cast<std::size_t>(bytes.size())));
    result.decoded.fill('\0');
    return secret;
}

KeyStatus statusOf(const KeyResult<void>& result) {
    return result ? key_status::success : result.error();
}

// The unlocked items, unlocked for that if need be; there is at least one.
KeyResult<QList<QDBusObjectPath>> usableItems(SecretServiceConversation& conversation,
                                              const KeyItem& item) {
    KeyResult<Matches> matches = conversation.search(attributesOf(item));
    if (!matches) return tl::unexpected(matches.error());
    if (matches->unlocked.isEmpty() && !matches->locked.isEmpty()) {
        const KeyResult<void> unlocked = conversation.unlock(matches->locked);
        if (!unlocked) return tl::unexpected(unlocked.error());
        matches = conversation.search(attributesOf(item));
        if (!matches) return tl::unexpected(matches.error());
    }
    if (!matches->unlocked.isEmpty()) return matches->unlocked;
    return tl::unexpected(matches->locked.isEmpty() ? key_status::itemNotFound
                                                    : key_status::interactionNotAllowed);
}

QDBusObjectPath latest(SecretServiceConversation& conversation,
                       const QList<QDBusObjectPath>& items) {
    QDBusObjectPath result = items.front();
    if (items.size() == 1) return result;
    quint64 latestChange = 0;
    for (const QDBusObjectPath& item : items) {
        const quint64 change = conversation.modified(item);
        if (change > latestChange) result = item;
        latestChange = std::max(latestChange, change);
    }
    return result;
}

KeyStatus create(SecretServiceConversation& conversation, const KeyItem& item,
                 const SecretBytes& value, KeyPrompt prompt) {
    const KeyResult<QDBusObjectPath> collection = conversation.defaultCollection();
    if (!collection) return collection.error();
    QByteArray text = encoded(value);
    KeyResult<void> created = conversation.createItem(*collection, propertiesOf(item), text);
    const bool isLocked = !created && created.error() == key_status::interactionNotAllowed;
    if (isLocked && prompt == KeyPrompt::allowed) {
        created = conversation.unlock({*collection});
        if (created) created = conversation.createItem(*collection, propertiesOf(item), text);
    }
    text.fill('\0');
    return statusOf(created);
}

}  // namespace

SecretServiceKeyStore::SecretServiceKeyStore(QString busAddress, SecretServiceTiming timing)
    : busAddress_(std::move(busAddress)), timing_(timing) {}

SecretServiceKeyStore::~SecretServiceKeyStore() = default;

KeyStatus SecretServiceKeyStore::add(const KeyItem& item, const SecretBytes& value,
                                     KeyPrompt prompt) {
    return perform(prompt, [&](SecretServiceConversation& conversation) {
        const auto items = usableItems(conversation, item);
        if (items) return key_status::duplicateItem;
        if (items.error() != key_status::itemNotFound) return items.error();
        return create(conversation, item, value, prompt);
    });
}

KeyStore::Match SecretServiceKeyStore::copyMatching(const KeyItem& item, KeyPrompt prompt) {
    SecretBytes value;
    const KeyStatus status = perform(prompt, [&](SecretServiceConversation& conversation) {
        const auto items = usableItems(conversation, item);
        if (!items) return items.error();
        KeyResult<QByteArray> secret = conversation.secretOf(latest(conversation, *items));
        if (!secret) return secret.error();
        value = decoded(*secret);
        secret->fill('\0');
        return key_status::success;
    });
    return {.status = status, .value = std::move(value)};
}

KeyStatus SecretServiceKeyStore::update(const KeyItem& item, const SecretBytes& value,
                                        KeyPrompt prompt) {
    return perform(prompt, [&](SecretServiceConversation& conversation) {
        const auto items = usableItems(conversation, item);
        if (!items) return items.error();
        QByteArray text = encoded(value);
        KeyStatus status = key_status::success;
        for (const QDBusObjectPath& each : *items) {
            const KeyStatus changed = statusOf(conversation.setSecret(each, text));
            if (status == key_status::success) status = changed;
        }
        text.fill('\0');
        return status;
    });
}

KeyStatus SecretServiceKeyStore::remove(const KeyItem& item, KeyPrompt prompt) {
    return perform(prompt, [&](SecretServiceConversation& conversation) {
        const auto items = usableItems(conversation, item);
        if (!items) return items.error();
        KeyStatus status = key_status::success;
        for (const QDBusObjectPath& each : *items) {
            const KeyStatus removed = statusOf(conversation.deleteItem(each));
            if (status == key_status::success) status = removed;
        }
        return status;
    });
}

KeyStatus SecretServiceKeyStore::perform(KeyPrompt prompt, const Operation& operation) {
    if (prompt == KeyPrompt::forbidden && !rest_.hasExpired()) return key_status::notAvailable;
    if (!connectToBus()) return key_status::notAvailable;
    SecretServiceConversation conversation(**bus_, timing_, prompt);
    KeyStatus status = operation(conversation);
    noteSilence(conversation);
    if (!conversation.hasLostSession()) return status;
    SecretServiceConversation again(**bus_, timing_, prompt);
    status = operation(again);
    noteSilence(again);
    return status;
}

void SecretServiceKeyStore::noteSilence(const SecretServiceConversation& conversation) {
    rest_ = conversation.wasSilent() ? QDeadlineTimer(timing_.rest) : QDeadlineTimer();
}

bool SecretServiceKeyStore::connectToBus() {
    if (bus_ && (*bus_)->isConnected()) return true;
    bus_.reset();
    if (busAddress_.isEmpty()) return false;
    bus_ = std::make_unique<OwnBus>(busAddress_);
    return (*bus_)->isConnected();
}

bool SecretServiceKeyStore::isMissing() {
    if (!connectToBus()) return true;
    if (!hasService()) return true;
    if (!rest_.hasExpired()) return false;
    SecretServiceConversation conversation(**bus_, timing_, KeyPrompt::forbidden);
    const bool hasNoCollection = conversation.lacksDefaultCollection();
    noteSilence(conversation);
    return hasNoCollection;
}

bool SecretServiceKeyStore::hasService() {
    const QString service = QStringLiteral("org.freedesktop.secrets");
    QDBusConnectionInterface* const daemon = (*bus_)->interface();
    if (daemon->isServiceRegistered(service)) return true;
    const QDBusReply<QStringList> offered = daemon->activatableServiceNames();
    return offered.isValid() && offered.value().contains(service);
}

}  // namespace brimwatch
