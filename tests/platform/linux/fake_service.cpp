#include "platform/linux/fake_service.h"

#include <QDBusConnectionInterface>
#include <stdexcept>
#include <utility>

namespace brimwatch::test {
namespace {

QString nextName() {
    static int count = 0;
    return QStringLiteral("fake-%1").arg(++count);
}

}  // namespace

FakeService::FakeService(const QString& address)
    : connectionName_(nextName()),
      connection_(QDBusConnection::connectToBus(address, connectionName_)) {
    if (!connection_.isConnected()) throw std::runtime_error("no message bus for a fake service");
    connection_.registerVirtualObject(QStringLiteral("/"), this, QDBusConnection::SubPath);
}

FakeService::~FakeService() {
    vanish();
}

void FakeService::own(const QString& name) {
    if (!connection_.registerService(name)) throw std::runtime_error("the name is taken");
}

void FakeService::release(const QString& name) {
    connection_.unregisterService(name);
}

void FakeService::vanish() {
    connection_ = QDBusConnection(QString());
    QDBusConnection::disconnectFromBus(connectionName_);
}

bool FakeService::sees(const QString& name) const {
    return connection_.interface()->isServiceRegistered(name).value();
}

bool FakeService::seesOffer(const QString& name) const {
    return connection_.interface()->activatableServiceNames().value().contains(name);
}

void FakeService::say(const QString& path, const QString& interface, const QString& name,
                      const QVariantList& arguments) {
    QDBusMessage signal = QDBusMessage::createSignal(path, interface, name);
    signal.setArguments(arguments);
    connection_.send(signal);
}

bool FakeService::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    QStringList call = {message.member()};
    for (const QVariant& argument : message.arguments())
        call << argument.toString();
    calls_ << call.join(QLatin1Char(' '));
    const QDBusMessage answer =
        handler_ ? handler_(message)
                 : message.createErrorReply(QDBusError::UnknownMethod, QStringLiteral("no"));
    if (answer.type() != QDBusMessage::InvalidMessage) connection.send(answer);
    return true;
}

QString FakeService::introspect(const QString& /*path*/) const {
    return {};
}

}  // namespace brimwatch::test
