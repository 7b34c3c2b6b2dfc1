#include "presentation/views/symbol.h"

#include <QPainter>
#include <algorithm>

#include "presentation/views/symbol_paths.h"

namespace brimwatch {

Symbol::Symbol(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
}

void Symbol::setName(const QString& name) {
    if (name == name_) return;
    name_ = name;
    update();
    emit nameChanged();
}

void Symbol::setColor(const QColor& color) {
    if (color == color_) return;
    color_ = color;
    update();
    emit colorChanged();
}

void Symbol::paint(QPainter* painter) {
    const double side = std::min(width(), height());
    painter->translate((width() - side) / 2, (height() - side) / 2);
    painter->scale(side, side);
    painter->fillPath(symbolPath(name_), color_);
}

}  // namespace brimwatch
