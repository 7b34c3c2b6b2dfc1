#include "platform/linux/notifier_pixmap.h"

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

}  // namespace brimwatch
