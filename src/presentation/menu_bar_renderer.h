// Paints the ring that shows what is left, with the rocket at its head: 20 by 20 points.
//
// It paints ten times a second for as long as somebody can see it. So it keeps its bitmap, the
// painter on it and the rocket tinted for two inks, that of light panels and that of dark ones; a
// frame makes nothing new, asks for no memory and wakes no thread. Main thread.
#pragma once

#include <QColor>
#include <QImage>
#include <QPainter>
#include <functional>
#include <optional>
#include <vector>

#include "presentation/bitmap.h"
#include "presentation/menu_bar_icon.h"
#include "presentation/menu_bar_rocket.h"
#include "presentation/ring.h"

namespace brimwatch {

// Gives the artwork in one colour, which its alpha fades, or a null image.
using TintMaker = std::function<QImage(const QImage& artwork, const QColor& ink)>;

QImage tinted(const QImage& artwork, const QColor& ink);

// The arc that shows what is left: all of the ring from 99.9 percent on, none for nothing.
std::optional<RingArc> remainingArc(const MenuBarIcon& icon);

class MenuBarRenderer {
  public:
    explicit MenuBarRenderer(MenuBarRocket rocket, BitmapMaker makeBitmap = brimwatch::makeBitmap,
                             TintMaker makeTint = tinted);
    MenuBarRenderer(const MenuBarRenderer&) = delete;
    MenuBarRenderer& operator=(const MenuBarRenderer&) = delete;
    ~MenuBarRenderer() = default;

    // The frame, `scale` pixels a point, its background transparent. It is the renderer's own and
    // changes with the next call; a copy of it is a deep one. Null when no bitmap or no tint can be
    // had, and each call tries again.
    const QImage* render(const MenuBarIcon& icon, const QColor& ink, double scale);

  private:
    struct Tint {
        QColor ink;
        QImage rocket;
        Stamp stamp;  // of the rocket, for the scale of the bitmap
    };

    void prepareScale(double scale);
    const Tint* tintOf(const QColor& ink);
    void makeTintOf(const QColor& ink);
    void drawRing(const MenuBarIcon& icon, const QColor& ink);
    void drawRocket(const MenuBarIcon& icon, const Stamp& rocket);
    void draw(const Stamp& stamp, QPainter::CompositionMode mode);

    const MenuBarRocket rocket_;
    const BitmapMaker makeBitmap_;
    const TintMaker makeTint_;
    double scale_ = 0;
    QImage bitmap_;
    QPainter painter_;  // on the bitmap, and so after it
    Stamp halo_;
    std::vector<Tint> tints_;
};

}  // namespace brimwatch
