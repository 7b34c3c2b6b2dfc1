#include "platform/linux/fake_logind.h"

#include <QDBusArgument>
#include <QDBusVariant>

namespace brimwatch::test {
namespace {

const QString sessionInterface = QStringLiteral("org.freedesktop.login1.Session");

}  // namespace

FakeLogind::FakeLogind(const QString& address)
    : FakeService(address), properties(QVariantMap{{"Active", true}, {"LockedHint", false}}) {
    handle([this](const QDBusMessage& call) { return answer(call); });
}

QDBusMessage FakeLogind::answer(const QDBusMessage& call) const {
    const QString method = call.member();
    const QString first = call.arguments().value(0).toString();
    if (silent.contains(method)) return {};
    if (method == "Get" && first == "org.freedesktop.login1.User" && display.isValid())
        return call.createReply(QVariant::fromValue(QDBusVariant(display)));
    if (method == "GetAll" && call.path() == sessionPath() && first == sessionInterface)
        return call.createReply(properties);
    const auto found = answers.find(method);
    if (found == answers.end()) return call.createErrorReply(QDBusError::Failed, "no");
    return call.createReply(found->second);
}

void FakeLogind::giveSession(const QString& method) {
    answers[method] = QVariant::fromValue(QDBusObjectPath(sessionPath()));
}

void FakeLogind::giveDisplay(const QString& id, const QString& path) {
    QDBusArgument structure;
    structure.beginStructure();
    structure << id << QDBusObjectPath(path);
    structure.endStructure();
    display = QVariant::fromValue(structure);
    answers["GetUser"] =
        QVariant::fromValue(QDBusObjectPath("/org/freedesktop/login1/user/_31000"));
}

void FakeLogind::sleepIs(const QVariantList& arguments) {
    say("/org/freedesktop/login1", "org.freedesktop.login1.Manager", "PrepareForSleep", arguments);
}

void FakeLogind::changeSession(const QVariantMap& changed, const QStringList& invalid) {
    say(sessionPath(), "org.freedesktop.DBus.Properties", "PropertiesChanged",
        {sessionInterface, changed, invalid});
}

}  // namespace brimwatch::test
