#include "platform/linux/notifier_pixmap.h"

#include <QDBusMetaType>
#include <QtEndian>

namespace brimwatch {

namespace {

constexpr qsizetype bytesPerPixel = 4;

QRgb asIs(QRgb pixel) {
    return pixel;
}

template <QRgb straight(QRgb)>
void writePixels(const QImage& picture, char* bytes) {
    for (int y = 0; y < picture.height(); ++y) {
        const auto* row = reinterpret_cast<const QRgb*>(picture.constScanLine(y));
        for (int x = 0; x < picture.width(); ++x) {
            qToBigEndian(straight(row[x]), bytes);
            bytes += bytesPerPixel;
        }
    }
}

}  // namespace

void writePixmap(const QImage& picture, NotifierPixmap& pixmap) {
    pixmap.width = picture.width();
    pixmap.height = picture.height();
    pixmap.bytes.resize(bytesPerPixel * pixmap.width * pixmap.height);
    if (picture.format() == QImage::Format_ARGB32_Premultiplied) {
        writePixels<qUnpremultiply>(picture, pixmap.bytes.data());
    } else if (picture.format() == QImage::Format_ARGB32) {
        writePixels<asIs>(picture, pixmap.bytes.data());
    } else {
        writePixels<asIs>(picture.convertToFormat(QImage::Format_ARGB32), pixmap.bytes.data());
    }
}

void registerNotifierTypes() {
    qDBusRegisterMetaType<NotifierPixmap>();
    qDBusRegisterMetaType<NotifierPixmaps>();
    qDBusRegisterMetaType<NotifierToolTip>();
}

QDBusArgument& operator<<(QDBusArgument& argument, const NotifierPixmap& pixmap) {
    argument.beginStructure();
    argument << pixmap.width << pixmap.height << pixmap.bytes;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, NotifierPixmap& pixmap) {
    argument.beginStructure();
    argument >> pixmap.width >> pixmap.height >> pixmap.bytes;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const NotifierToolTip& toolTip) {
    argument.beginStructure();
    argument << toolTip.iconName << toolTip.pixmaps << toolTip.title << toolTip.description;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, NotifierToolTip& toolTip) {
    argument.beginStructure();
    argument >> toolTip.iconName >> toolTip.pixmaps >> toolTip.title >> toolTip.description;
    argument.endStructure();
    return argument;
}

}  // namespace brimwatch
