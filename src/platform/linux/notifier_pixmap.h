// A picture as status notifiers send it over the bus.
#pragma once

#include <QByteArray>
#include <QDBusArgument>
#include <QImage>
#include <QList>
#include <QString>

namespace brimwatch {

// D-Bus type (iiay).
struct NotifierPixmap {
    int width = 0;
    int height = 0;
    QByteArray bytes;  // of each pixel A, R, G, B, not premultiplied; row by row without padding

    bool operator==(const NotifierPixmap&) const = default;
};

using NotifierPixmaps = QList<NotifierPixmap>;

// D-Bus type (sa(iiay)ss).
struct NotifierToolTip {
    QString iconName;
    NotifierPixmaps pixmaps;
    QString title;
    QString description;  // a little markup; so "<" and "&" stand escaped
};

// Writes the picture over the pixmap, in the memory that is there already if it has the same size.
void writePixmap(const QImage& picture, NotifierPixmap& pixmap);

// Makes both known to Qt D-Bus. Any number of times.
void registerNotifierTypes();

QDBusArgument& operator<<(QDBusArgument& argument, const NotifierPixmap& pixmap);
const QDBusArgument& operator>>(const QDBusArgument& argument, NotifierPixmap& pixmap);
QDBusArgument& operator<<(QDBusArgument& argument, const NotifierToolTip& toolTip);
const QDBusArgument& operator>>(const QDBusArgument& argument, NotifierToolTip& toolTip);

}  // namespace brimwatch
