#include "platform/linux/login_session.h"

#include <unistd.h>

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <utility>

#include "platform/linux/bus_properties.h"
#include "platform/linux/bus_values.h"

namespace brimwatch {
namespace {

constexpr QLatin1String managerPath("/org/freedesktop/login1");
constexpr QLatin1String managerInterface("org.freedesktop.login1.Manager");
constexpr QLatin1String sessionInterface("org.freedesktop.login1.Session");
constexpr QLatin1String userInterface("org.freedesktop.login1.User");

// Signals never come from the paths that stand for "my own".
std::optional<QString> objectPath(const QDBusMessage& answer) {
    if (answer.type() != QDBusMessage::ReplyMessage) return std::nullopt;
    if (answer.signature() != QLatin1String("o")) return std::nullopt;
    return answer.arguments().at(0).value<QDBusObjectPath>().path();
}

// Of a structure of an id and a path; a user without a session has "" and "/".
std::optional<QString> displaySession(const QDBusMessage& answer) {
    const QVariant value = variantAnswer(answer);
    if (value.metaType() != QMetaType::fromType<QDBusArgument>()) return std::nullopt;
    const auto display = value.value<QDBusArgument>();
    if (display.currentSignature() != QLatin1String("(so)")) return std::nullopt;
    QString id;
    QDBusObjectPath path;
    display.beginStructure();
    display >> id >> path;
    display.endStructure();
    if (id.isEmpty()) return std::nullopt;
    return path.path();
}

}  // namespace

LoginSession::Process LoginSession::thisProcess(const Environment& environment) {
    const std::string_view session = environment.value("XDG_SESSION_ID").value_or("");
    return {.sessionId = QString::fromLatin1(session.data(), qsizetype(session.size())),
            .id = static_cast<std::uint32_t>(::getpid()),
            .user = ::getuid()};
}

LoginSession::LoginSession(BusConnection& systemBus, Process process)
    : process_(std::move(process)), logind_(systemBus, QStringLiteral("org.freedesktop.login1")) {
    connect(&logind_, &BusService::ownerChanged, this, &LoginSession::start);
}

void LoginSession::start() {
    set({});
    logind_.listen({.path = managerPath,
                    .interface = managerInterface,
                    .name = QStringLiteral("PrepareForSleep")},
                   [this](const QDBusMessage& message) {
                       const auto starts = valueOf<bool>(message.arguments().value(0));
                       if (!starts) return;
                       State state = state_;
                       state.isAboutToSleep = *starts;
                       set(state);
                   });
    if (process_.sessionId.isEmpty()) {
        findByProcess();
    } else {
        findById();
    }
}

void LoginSession::findById() {
    callManager(QStringLiteral("GetSession"), process_.sessionId,
                [this](const QDBusMessage& answer) {
                    if (const auto session = objectPath(answer)) return follow(*session);
                    findByProcess();
                });
}

void LoginSession::findByProcess() {
    callManager(QStringLiteral("GetSessionByPID"), process_.id, [this](const QDBusMessage& answer) {
        if (const auto session = objectPath(answer)) return follow(*session);
        findByUser();
    });
}

void LoginSession::findByUser() {
    callManager(QStringLiteral("GetUser"), process_.user, [this](const QDBusMessage& answer) {
        if (const auto user = objectPath(answer)) askUser(*user);
    });
}

void LoginSession::askUser(const QString& user) {
    logind_.call(user, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"),
                 {QString(userInterface), QStringLiteral("Display")},
                 [this](const QDBusMessage& answer) {
                     if (const auto session = displaySession(answer)) follow(*session);
                 });
}

void LoginSession::follow(const QString& session) {
    watchProperties(logind_, session, sessionInterface,
                    [this](const QVariantMap& properties) { take(properties); });
}

void LoginSession::callManager(const QString& method, const QVariant& argument,
                               BusConnection::Answered answered) {
    logind_.call(managerPath, managerInterface, method, {argument}, std::move(answered));
}

void LoginSession::take(const QVariantMap& properties) {
    State state = state_;
    state.isActive =
        valueOf<bool>(properties.value(QStringLiteral("Active"))).value_or(state.isActive);
    state.isLocked =
        valueOf<bool>(properties.value(QStringLiteral("LockedHint"))).value_or(state.isLocked);
    set(state);
}

void LoginSession::set(const State& state) {
    if (state == state_) return;
    state_ = state;
    emit changed();
}

}  // namespace brimwatch
