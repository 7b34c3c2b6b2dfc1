#include "platform/linux/dbus_properties.h"

#include <QDBusError>
#include <QDBusVariant>

namespace brimwatch {

namespace {

QDBusMessage oneProperty(const QDBusMessage& message, const QVariantMap& properties) {
    const QString name = message.arguments().at(1).toString();
    const auto property = properties.constFind(name);
    if (property == properties.constEnd()) {
        return message.createErrorReply(QDBusError::UnknownProperty,
                                        QStringLiteral("There is no property ") + name);
    }
    return message.createReply(QVariant::fromValue(QDBusVariant(*property)));
}

}  // namespace

bool isPropertiesCall(const QDBusMessage& message) {
    return message.interface() == u"org.freedesktop.DBus.Properties";
}

QDBusMessage propertiesReply(const QDBusMessage& message, const QString& interface,
                             const QVariantMap& properties) {
    const QString signature = message.signature();
    if (!signature.startsWith(u's')) return wrongArguments(message);
    const QString wanted = message.arguments().constFirst().toString();
    if (!wanted.isEmpty() && wanted != interface) {
        return message.createErrorReply(QDBusError::UnknownInterface,
                                        QStringLiteral("There is no interface ") + wanted);
    }
    if (message.member() == u"GetAll" && signature == u"s") return message.createReply(properties);
    if (message.member() == u"Get" && signature == u"ss") return oneProperty(message, properties);
    if (message.member() == u"Set" && signature == u"ssv") {
        return message.createErrorReply(QDBusError::PropertyReadOnly,
                                        QStringLiteral("All properties are read only"));
    }
    return wrongArguments(message);
}

QDBusMessage wrongArguments(const QDBusMessage& message) {
    return message.createErrorReply(
        QDBusError::InvalidArgs,
        QStringLiteral("%1 does not take (%2)").arg(message.member(), message.signature()));
}

QDBusMessage unknownMethod(const QDBusMessage& message) {
    return message.createErrorReply(QDBusError::UnknownMethod,
                                    QStringLiteral("There is no method ") + message.member());
}

void sendReply(const QDBusMessage& message, const QDBusConnection& connection,
               const QDBusMessage& reply) {
    if (message.isReplyRequired()) connection.send(reply);
}

}  // namespace brimwatch
