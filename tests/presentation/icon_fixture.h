// Artwork of known shape, a renderer whose makers are counted and can fail, and looks at pixels.
#pragma once

#include <QColor>
#include <QImage>
#include <QPoint>
#include <optional>

#include "presentation/menu_bar_renderer.h"

namespace brimwatch::test {

constexpr double pi = 3.14159265358979323846;

// A picture that is black and solid wherever `isSolid(x, y)`, and transparent elsewhere.
template <typename Predicate>
QImage artworkOf(QSize size, Predicate isSolid) {
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, isSolid(x, y) ? qRgba(0, 0, 0, 255) : 0);
    }
    return image;
}

QImage solidArtwork(QSize size);

// A rocket that is drawn 4.14 points wide and 8.28 high.
MenuBarRocket solidRocket();

// The biggest difference of a channel in any pixel; absent for pictures of unlike sizes.
std::optional<int> greatestDifference(const QImage& left, const QImage& right);

// A renderer that tells how often it made something, and can be kept from making it.
struct CountedRenderer {
    explicit CountedRenderer(const MenuBarRocket& rocket = solidRocket());

    int bitmapCount = 0;
    int tintCount = 0;
    bool bitmapsFail = false;
    bool tintsFail = false;
    MenuBarRenderer renderer;
};

// A frame at ten pixels a point, for a look at places given in points from the top left.
class LargeFrame {
  public:
    LargeFrame(const MenuBarRocket& rocket, const MenuBarIcon& icon, const QColor& ink = Qt::black);

    QColor at(double x, double y) const;
    // A place on the line of the ring; the angle is clockwise from its top.
    QColor onRing(double angle, double radius = 6.2816) const;

    const QImage picture;
};

}  // namespace brimwatch::test
