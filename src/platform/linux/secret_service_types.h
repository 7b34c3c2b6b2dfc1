// What goes over the bus to a secret service and comes from it.
#pragma once

#include <QByteArray>
#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QMap>
#include <QMetaType>
#include <QString>

namespace brimwatch {

// (oayays)
struct BusSecret {
    QDBusObjectPath session;
    QByteArray parameters = {};
    QByteArray value = {};
    QString contentType = {};
};

// a{ss}
using BusAttributes = QMap<QString, QString>;

QDBusArgument& operator<<(QDBusArgument& argument, const BusSecret& secret);
const QDBusArgument& operator>>(const QDBusArgument& argument, BusSecret& secret);

// Lets the bus know these types. Any number of times.
void registerSecretServiceTypes();

}  // namespace brimwatch

Q_DECLARE_METATYPE(brimwatch::BusSecret)
