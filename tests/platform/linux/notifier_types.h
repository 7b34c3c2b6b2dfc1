// What panels read of an item over the bus.
#pragma once

#include <QDBusArgument>
#include <QList>
#include <QString>

#include "platform/linux/notifier_pixmap.h"

namespace brimwatch {

using NotifierPixmaps = QList<NotifierPixmap>;

// D-Bus type (sa(iiay)ss).
struct NotifierToolTip {
    QString iconName;
    NotifierPixmaps pixmaps;
    QString title;
    QString description;
};

// Makes both known to Qt D-Bus. Any number of times.
void registerNotifierTypes();

QDBusArgument& operator<<(QDBusArgument& argument, const NotifierPixmap& pixmap);
const QDBusArgument& operator>>(const QDBusArgument& argument, NotifierPixmap& pixmap);
QDBusArgument& operator<<(QDBusArgument& argument, const NotifierToolTip& toolTip);
const QDBusArgument& operator>>(const QDBusArgument& argument, NotifierToolTip& toolTip);

}  // namespace brimwatch
