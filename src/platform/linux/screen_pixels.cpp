#include "platform/linux/screen_pixels.h"

#include <QGuiApplication>
#include <QScreen>
#include <algorithm>

namespace brimwatch {

namespace {

// The corner of a screen is the same in both measures, but for what lies between it and a place.
QPoint inPixels(const QScreen& screen, QPoint place) {
    const QPoint corner = screen.geometry().topLeft();
    return corner + (place - corner) * screen.devicePixelRatio();
}

}  // namespace

double largestPixelRatio() {
    double largest = 1;
    for (const QScreen* screen : QGuiApplication::screens())
        largest = std::max(largest, screen->devicePixelRatio());
    return largest;
}

QPoint edgeInPixels(const QRect& item, QPoint pointer) {
    const QScreen* screen = QGuiApplication::screenAt(pointer);
    if (screen == nullptr) return pointer;
    const bool isInUpperHalf = pointer.y() <= screen->geometry().center().y();
    const QPoint edge(pointer.x(), isInUpperHalf ? item.bottom() : item.top());
    return inPixels(*screen, item.contains(pointer) ? edge : pointer);
}

bool isOnScreen(QPoint pixel) {
    const QList<QScreen*> screens = QGuiApplication::screens();
    return std::any_of(screens.begin(), screens.end(), [pixel](const QScreen* screen) {
        const QRect geometry = screen->geometry();
        const QSize size = geometry.size() * screen->devicePixelRatio();
        return QRect(geometry.topLeft(), size).contains(pixel);
    });
}

}  // namespace brimwatch
