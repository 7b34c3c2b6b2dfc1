#include "icon_fixture.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace brimwatch::test {

QImage solidArtwork(QSize size) {
    return artworkOf(size, [](int, int) { return true; });
}

MenuBarRocket solidRocket() {
    return makeMenuBarRocket({solidArtwork({40, 80})}).value();
}

std::optional<int> greatestDifference(const QImage& left, const QImage& right) {
    if (left.size() != right.size()) return std::nullopt;
    const QImage first = left.convertToFormat(QImage::Format_RGBA8888_Premultiplied);
    const QImage second = right.convertToFormat(QImage::Format_RGBA8888_Premultiplied);
    int greatest = 0;
    for (int y = 0; y < first.height(); ++y) {
        for (int byte = 0; byte < 4 * first.width(); ++byte) {
            const int difference = first.constScanLine(y)[byte] - second.constScanLine(y)[byte];
            greatest = std::max(greatest, std::abs(difference));
        }
    }
    return greatest;
}

CountedRenderer::CountedRenderer(const MenuBarRocket& rocket)
    : renderer(
          rocket,
          [this](QSize size) {
              if (bitmapsFail) return QImage();
              ++bitmapCount;
              return makeBitmap(size);
          },
          [this](const QImage& artwork, const QColor& ink) {
              if (tintsFail) return QImage();
              ++tintCount;
              return tinted(artwork, ink);
          }) {}

LargeFrame::LargeFrame(const MenuBarRocket& rocket, const MenuBarIcon& icon, const QColor& ink)
    : picture(MenuBarRenderer(rocket).render(icon, ink, 10)->copy()) {}

QColor LargeFrame::at(double x, double y) const {
    return picture.pixelColor(static_cast<int>(x * 10), static_cast<int>(y * 10));
}

QColor LargeFrame::onRing(double angle, double radius) const {
    return at(10 + radius * std::sin(angle), 10 - radius * std::cos(angle));
}

}  // namespace brimwatch::test
