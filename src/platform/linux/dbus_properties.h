// What an object that is exported by hand has to answer for itself: calls of
// org.freedesktop.DBus.Properties, and the signatures of its own calls.
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QString>
#include <QVariant>

namespace brimwatch {

bool isPropertiesCall(const QDBusMessage& message);
// The reply to a call of the properties interface of an object that has one interface, `interface`,
// with these properties, all of them read only.
QDBusMessage propertiesReply(const QDBusMessage& message, const QString& interface,
                             const QVariantMap& properties);
// The reply to a call whose arguments are not what its method takes.
QDBusMessage wrongArguments(const QDBusMessage& message);
QDBusMessage unknownMethod(const QDBusMessage& message);
// Where the caller waits for one.
void sendReply(const QDBusMessage& message, const QDBusConnection& connection,
               const QDBusMessage& reply);

}  // namespace brimwatch
