#include "presentation/views/popover_placement.h"

#include <algorithm>

namespace brimwatch {
namespace {

constexpr int gap = 6;

QRect pixelsOf(const ScreenPlace& screen) {
    return {screen.geometry.topLeft(), screen.geometry.size() * screen.pixelRatio};
}

// 0 within the rectangle.
int distance(QPoint point, const QRect& rectangle) {
    const int x = std::clamp(point.x(), rectangle.left(), rectangle.right());
    const int y = std::clamp(point.y(), rectangle.top(), rectangle.bottom());
    return (point - QPoint(x, y)).manhattanLength();
}

const ScreenPlace& screenAt(QPoint click, const std::vector<ScreenPlace>& screens) {
    return *std::min_element(
        screens.begin(), screens.end(), [click](const ScreenPlace& one, const ScreenPlace& other) {
            return distance(click, pixelsOf(one)) < distance(click, pixelsOf(other));
        });
}

// The side of a popover of this length that begins at `wanted`, moved to lie between the two.
int within(int wanted, int length, int first, int last) {
    return std::max(first, std::min(wanted, last - length + 1));
}

// Beside a panel at an edge of the screen.
QPoint besidePanel(QPoint click, QSize popover, const QRect& available) {
    QPoint place(click.x() - popover.width() / 2, click.y() - popover.height() / 2);
    if (click.y() < available.top()) {
        place.setY(available.top() + gap);
    } else if (click.y() > available.bottom()) {
        place.setY(available.bottom() + 1 - gap - popover.height());
    } else if (click.x() < available.left()) {
        place.setX(available.left() + gap);
    } else {
        place.setX(available.right() + 1 - gap - popover.width());
    }
    return place;
}

QPoint besideClick(QPoint click, QSize popover, const QRect& available) {
    const bool isInUpperHalf = click.y() <= available.center().y();
    return {click.x() - popover.width() / 2,
            isInUpperHalf ? click.y() + gap : click.y() - gap - popover.height()};
}

}  // namespace

QPoint popoverPlace(QPoint click, QSize popover, const std::vector<ScreenPlace>& screens) {
    const ScreenPlace& screen = screenAt(click, screens);
    const QPoint corner = screen.geometry.topLeft();
    const QPoint point = corner + (click - corner) / screen.pixelRatio;
    const QRect& available = screen.available;
    const QPoint place = available.contains(point) ? besideClick(point, popover, available)
                                                   : besidePanel(point, popover, available);
    return {within(place.x(), popover.width(), available.left() + gap, available.right() - gap),
            within(place.y(), popover.height(), available.top() + gap, available.bottom() - gap)};
}

}  // namespace brimwatch
