#include "presentation/views/capsule.h"

#include <QPainter>
#include <algorithm>

namespace brimwatch {

Capsule::Capsule(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
}

void Capsule::setColor(const QColor& color) {
    if (color == color_) return;
    color_ = color;
    update();
    emit colorChanged();
}

void Capsule::paint(QPainter* painter) {
    const double radius = std::min(width(), height()) / 2;
    painter->setPen(Qt::NoPen);
    painter->setBrush(color_);
    painter->drawRoundedRect(QRectF(QPointF(), size()), radius, radius);
}

}  // namespace brimwatch
