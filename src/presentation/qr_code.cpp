#include "presentation/qr_code.h"

#include <qrencode.h>

#include <QByteArray>
#include <algorithm>
#include <memory>

namespace brimwatch {

namespace {

constexpr int borderModules = 1;
constexpr int wantedPoints = 200;
constexpr int leastScale = 2;
constexpr int anyVersion = 0;
constexpr unsigned char darkModule = 1;

}  // namespace

QImage qrCode(const QString& text) {
    const QByteArray bytes = text.toUtf8();
    if (bytes.isEmpty()) return {};
    const std::unique_ptr<QRcode, decltype(&QRcode_free)> code(
        QRcode_encodeData(static_cast<int>(bytes.size()),
                          reinterpret_cast<const unsigned char*>(bytes.constData()), anyVersion,
                          QR_ECLEVEL_M),
        QRcode_free);
    if (!code) return {};
    const int width = code->width + 2 * borderModules;
    QImage picture(width, width, QImage::Format_RGB32);
    picture.fill(Qt::white);
    for (int y = 0; y < code->width; ++y)
        for (int x = 0; x < code->width; ++x)
            if ((code->data[y * code->width + x] & darkModule) != 0)
                picture.setPixel(x + borderModules, y + borderModules, qRgb(0, 0, 0));
    return picture;
}

int qrCodeScale(int width) {
    return std::max(leastScale, wantedPoints / std::max(width, 1));
}

}  // namespace brimwatch
