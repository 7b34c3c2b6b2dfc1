// The soft silhouette, a little fatter than the rocket and without its holes, that is cut out of
// the ring, so that the ring never shows through the rocket or close round it.
#pragma once

#include <QImage>
#include <QSizeF>

#include "presentation/bitmap.h"

namespace brimwatch {

constexpr double haloPixelsPerPoint = 4;

// Black with the halo as alpha, 50 pixels high. `size` is that of the drawn rocket in points. Null
// if no bitmap can be had.
QImage rocketHalo(const QImage& artwork, QSizeF size, const BitmapMaker& make);

}  // namespace brimwatch
