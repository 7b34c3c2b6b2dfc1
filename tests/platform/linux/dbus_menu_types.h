// What com.canonical.dbusmenu sends over the bus.
#pragma once

#include <QDBusArgument>
#include <QDBusVariant>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantMap>

namespace brimwatch {

// D-Bus type (ia{sv}).
struct DBusMenuItem {
    int id = 0;
    QVariantMap properties;
};

// D-Bus type (ias).
struct DBusMenuRemovedProperties {
    int id = 0;
    QStringList names;
};

// An item with what lies below it, D-Bus type (ia{sv}av).
struct DBusMenuLayout {
    int id = 0;
    QVariantMap properties;
    QList<DBusMenuLayout> children;
};

// D-Bus type (isvu).
struct DBusMenuEvent {
    int id = 0;
    QString name;
    QDBusVariant data;
    uint timestamp = 0;
};

// Makes all of them known to Qt D-Bus. Any number of times.
void registerDBusMenuTypes();

QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuItem& item);
const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuItem& item);
QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuRemovedProperties& removed);
const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuRemovedProperties& removed);
QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuLayout& layout);
const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuLayout& layout);
QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuEvent& event);
const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuEvent& event);

}  // namespace brimwatch
