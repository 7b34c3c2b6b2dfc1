// The rocket that flies round the ring, made from the program's artwork.
//
// Only the alpha of the artwork counts; its upward axis is the direction of flight. A value that is
// built once and never changes.
#pragma once

#include <QImage>
#include <QSizeF>
#include <optional>
#include <vector>

#include "presentation/bitmap.h"

namespace brimwatch {

struct MenuBarRocket {
    QImage image;     // the artwork with the most pixels; what is drawn is tinted from it
    QImage halo;      // what the rocket cuts out of the ring: see rocket_halo.h
    QSizeF size;      // of the drawn rocket in points
    QSizeF haloSize;  // of the drawn halo in points
};

// Takes the highest of the representations, the first of several. Absent if there is none, if that
// one could not be read, or if no bitmap can be had.
std::optional<MenuBarRocket> makeMenuBarRocket(const std::vector<QImage>& representations,
                                               const BitmapMaker& make = makeBitmap);

// The one of this program, built when it is first asked for.
const std::optional<MenuBarRocket>& sharedRocket();

}  // namespace brimwatch
