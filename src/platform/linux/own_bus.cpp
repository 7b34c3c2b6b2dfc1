#include "platform/linux/own_bus.h"

#include <QDBusVariant>

namespace brimwatch {

namespace {

QString nextName() {
    static int count = 0;
    return QStringLiteral("brimwatch-%1").arg(++count);
}

}  // namespace

OwnBus::OwnBus(const QString& address)
    : connection_(QDBusConnection::connectToBus(address, nextName())) {
    // Replies find the types of a slot by name, and this one is not among those that Qt knows so.
    qRegisterMetaType<QDBusVariant>();
}

OwnBus::~OwnBus() {
    QDBusConnection::disconnectFromBus(connection_.name());
}

}  // namespace brimwatch
