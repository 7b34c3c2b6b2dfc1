#include "presentation/views/qr_code_item.h"

#include <QPainter>

#include "presentation/qr_code.h"

namespace brimwatch {

namespace {

constexpr int marginModules = 3;
constexpr double cornerRadius = 10;

}  // namespace

QrCodeItem::QrCodeItem(QQuickItem* parent) : QQuickPaintedItem(parent) {}

void QrCodeItem::setText(const QString& text) {
    if (text == text_) return;
    text_ = text;
    code_ = qrCode(text);
    const int side =
        code_.isNull() ? 0 : (code_.width() + 2 * marginModules) * qrCodeScale(code_.width());
    setImplicitSize(side, side);
    update();
    emit textChanged();
}

void QrCodeItem::paint(QPainter* painter) {
    if (code_.isNull()) return;
    const int scale = qrCodeScale(code_.width());
    painter->setPen(Qt::NoPen);
    painter->setBrush(Qt::white);
    painter->setRenderHint(QPainter::Antialiasing);
    painter->drawRoundedRect(boundingRect(), cornerRadius, cornerRadius);
    painter->setRenderHint(QPainter::SmoothPixmapTransform, false);
    const int side = code_.width() * scale;
    painter->drawImage(QRect(marginModules * scale, marginModules * scale, side, side), code_);
}

}  // namespace brimwatch
