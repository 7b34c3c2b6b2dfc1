#include "platform/linux/secret_service_conversation.h"

#include <QDBusVariant>
#include <QLoggingCategory>
#include <algorithm>
#include <utility>

#include "platform/linux/bus_values.h"
#include "platform/linux/secret_prompt.h"

namespace brimwatch {
namespace {

Q_LOGGING_CATEGORY(keysLog, "net.quillmoor.brimwatch.mac.keys")

constexpr const char* serviceInterface = "org.freedesktop.Secret.Service";
constexpr const char* collectionInterface = "org.freedesktop.Secret.Collection";
constexpr const char* itemInterface = "org.freedesktop.Secret.Item";
constexpr const char* noSession = "org.freedesktop.Secret.Error.NoSession";

constexpr QLatin1String serviceName("org.freedesktop.secrets");
constexpr QLatin1String nothing("/");

QDBusObjectPath servicePath() {
    return QDBusObjectPath(QLatin1String("/org/freedesktop/secrets"));
}

QList<QDBusObjectPath> lasting(const QVariant& paths) {
    auto list = qdbus_cast<QList<QDBusObjectPath>>(paths);
    list.removeIf([](const QDBusObjectPath& path) {
        return path.path().startsWith(
            QLatin1String("/org/freedesktop/secrets/collection/session/"));
    });
    return list;
}

}  // namespace

SecretServiceConversation::SecretServiceConversation(QDBusConnection bus,
                                                     SecretServiceTiming timing, KeyPrompt prompt)
    : bus_(std::move(bus)), timing_(timing), prompt_(prompt), deadline_(timing.calls) {
    registerSecretServiceTypes();
}

SecretServiceConversation::~SecretServiceConversation() {
    if (session_.path().isEmpty()) return;
    tell(session_, "org.freedesktop.Secret.Session", "Close");
}

KeyResult<QVariantList> SecretServiceConversation::ask(const Call& call,
                                                       const QVariantList& arguments) {
    QDBusMessage message = QDBusMessage::createMethodCall(
        serviceName, call.path.path(), QLatin1String(call.interface), QLatin1String(call.method));
    message.setArguments(arguments);
    const auto left = static_cast<int>(deadline_.remainingTime());
    if (left <= 0) {
        wasSilent_ = true;
        return tl::unexpected(key_status::notAvailable);
    }
    const QDBusMessage answer = bus_.call(message, QDBus::Block, left);
    if (answer.type() == QDBusMessage::ReplyMessage) {
        if (answer.signature() == QLatin1String(call.answer)) return answer.arguments();
        qCWarning(keysLog, "%s: %s", call.method, qPrintable(answer.signature()));
        return tl::unexpected(key_status::internalError);
    }
    hasLostSession_ |= answer.errorName() == QLatin1String(noSession);
    // Not told by the error, which is the same for a service that has just ended. The timer of a
    // call may go off a twentieth early.
    wasSilent_ |= deadline_.remainingTime() * 10 <= left;
    const KeyStatus status = statusOfBusError(answer.errorName(), call.object);
    if (status == key_status::internalError)
        qCWarning(keysLog, "%s: %s", call.method, qPrintable(answer.errorName()));
    return tl::unexpected(status);
}

KeyResult<SecretServiceConversation::Matches> SecretServiceConversation::search(
    const BusAttributes& attributes) {
    const auto answer = ask({.path = servicePath(),
                             .interface = serviceInterface,
                             .method = "SearchItems",
                             .answer = "aoao"},
                            {QVariant::fromValue(attributes)});
    if (!answer) return tl::unexpected(answer.error());
    return Matches{.unlocked = lasting(answer->at(0)), .locked = lasting(answer->at(1))};
}

KeyResult<void> SecretServiceConversation::unlock(const QList<QDBusObjectPath>& objects) {
    // Not even asked for: a service might show a prompt of its own accord.
    if (prompt_ == KeyPrompt::forbidden) return tl::unexpected(key_status::interactionNotAllowed);
    const auto answer = ask(
        {.path = servicePath(), .interface = serviceInterface, .method = "Unlock", .answer = "aoo"},
        {QVariant::fromValue(objects)});
    if (!answer) return tl::unexpected(answer.error());
    return settle(answer->at(1).value<QDBusObjectPath>());
}

KeyResult<QDBusObjectPath> SecretServiceConversation::readAlias() {
    const auto answer = ask({.path = servicePath(),
                             .interface = serviceInterface,
                             .method = "ReadAlias",
                             .answer = "o"},
                            {QStringLiteral("default")});
    if (!answer) return tl::unexpected(answer.error());
    return answer->at(0).value<QDBusObjectPath>();
}

KeyResult<QDBusObjectPath> SecretServiceConversation::defaultCollection() {
    KeyResult<QDBusObjectPath> path = readAlias();
    if (path && path->path() == nothing) return tl::unexpected(key_status::notAvailable);
    return path;
}

bool SecretServiceConversation::lacksDefaultCollection() {
    const KeyResult<QDBusObjectPath> path = readAlias();
    return path && path->path() == nothing;
}

KeyResult<void> SecretServiceConversation::createItem(const QDBusObjectPath& collection,
                                                      const QVariantMap& properties,
                                                      const QByteArray& value) {
    const KeyResult<BusSecret> secret = secretFor(value);
    if (!secret) return tl::unexpected(secret.error());
    const auto answer = ask({.object = SecretObject::collection,
                             .path = collection,
                             .interface = collectionInterface,
                             .method = "CreateItem",
                             .answer = "oo"},
                            {properties, QVariant::fromValue(*secret), false});
    if (!answer) return tl::unexpected(answer.error());
    return settle(answer->at(1).value<QDBusObjectPath>());
}

KeyResult<QByteArray> SecretServiceConversation::secretOf(const QDBusObjectPath& item) {
    if (const auto opened = openSession(); !opened) return tl::unexpected(opened.error());
    const auto answer = ask({.object = SecretObject::item,
                             .path = item,
                             .interface = itemInterface,
                             .method = "GetSecret",
                             .answer = "(oayays)"},
                            {QVariant::fromValue(session_)});
    if (!answer) return tl::unexpected(answer.error());
    return qdbus_cast<BusSecret>(answer->at(0)).value;
}

KeyResult<void> SecretServiceConversation::setSecret(const QDBusObjectPath& item,
                                                     const QByteArray& value) {
    const KeyResult<BusSecret> secret = secretFor(value);
    if (!secret) return tl::unexpected(secret.error());
    const auto answer = ask({.object = SecretObject::item,
                             .path = item,
                             .interface = itemInterface,
                             .method = "SetSecret",
                             .answer = ""},
                            {QVariant::fromValue(*secret)});
    if (!answer) return tl::unexpected(answer.error());
    return {};
}

KeyResult<void> SecretServiceConversation::deleteItem(const QDBusObjectPath& item) {
    const auto answer = ask({.object = SecretObject::item,
                             .path = item,
                             .interface = itemInterface,
                             .method = "Delete",
                             .answer = "o"},
                            {});
    if (!answer) return tl::unexpected(answer.error());
    return settle(answer->at(0).value<QDBusObjectPath>());
}

quint64 SecretServiceConversation::modified(const QDBusObjectPath& item) {
    const auto answer = ask({.object = SecretObject::item,
                             .path = item,
                             .interface = "org.freedesktop.DBus.Properties",
                             .method = "Get",
                             .answer = "v"},
                            {QLatin1String(itemInterface), QStringLiteral("Modified")});
    return answer ? valueOf<quint64>(unwrapped(answer->at(0))).value_or(0) : 0;
}

KeyResult<BusSecret> SecretServiceConversation::secretFor(const QByteArray& value) {
    if (const auto opened = openSession(); !opened) return tl::unexpected(opened.error());
    return BusSecret{
        .session = session_, .value = value, .contentType = QStringLiteral("text/plain")};
}

KeyResult<void> SecretServiceConversation::openSession() {
    if (!session_.path().isEmpty()) return {};
    const auto answer =
        ask({.path = servicePath(),
             .interface = serviceInterface,
             .method = "OpenSession",
             .answer = "vo"},
            {QStringLiteral("plain"), QVariant::fromValue(QDBusVariant(QVariant(QString())))});
    if (!answer) return tl::unexpected(answer.error());
    session_ = answer->at(1).value<QDBusObjectPath>();
    return {};
}

KeyResult<void> SecretServiceConversation::settle(const QDBusObjectPath& prompt) {
    if (prompt.path() == nothing) return {};
    const KeyStatus status =
        prompt_ == KeyPrompt::allowed ? show(prompt) : key_status::interactionNotAllowed;
    if (status == key_status::success) return {};
    dismiss(prompt);
    return tl::unexpected(status);
}

KeyStatus SecretServiceConversation::show(const QDBusObjectPath& prompt) {
    const KeyStatus status = SecretPrompt(bus_, prompt.path()).show(timing_.prompt);
    deadline_ = QDeadlineTimer(timing_.calls);
    return status;
}

void SecretServiceConversation::dismiss(const QDBusObjectPath& prompt) {
    tell(prompt, "org.freedesktop.Secret.Prompt", "Dismiss");
}

void SecretServiceConversation::tell(const QDBusObjectPath& path, const char* interface,
                                     const char* method) {
    QDBusMessage message = QDBusMessage::createMethodCall(
        serviceName, path.path(), QLatin1String(interface), QLatin1String(method));
    // One that has ended meanwhile need not be started to hear that it is not needed.
    message.setAutoStartService(false);
    bus_.send(message);
}

}  // namespace brimwatch
