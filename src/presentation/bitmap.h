// Bitmaps to paint on, and pictures made ready to be painted smaller or turned.
//
// All are 32 bits a pixel with premultiplied alpha. Main thread.
#pragma once

#include <QImage>
#include <QSize>
#include <QSizeF>
#include <functional>

namespace brimwatch {

// Gives a transparent bitmap of a size in pixels, or a null image where there can be none.
using BitmapMaker = std::function<QImage(QSize size)>;

QImage makeBitmap(QSize size);

// The picture with no more pixels than a painter can bring down to `drawnSize`, in pixels, without
// losing any: it looks at two by two of them for each that it paints. The picture itself if it has
// no more.
QImage reducedFor(const QImage& picture, QSizeF drawnSize);

// A picture with a transparent margin, so that its edges are smooth however it is turned, without
// the painter having to smooth them.
struct Stamp {
    QImage picture;
    QSizeF size;  // with the margin, in points
};

// `size` is that of the picture in points, to be drawn with `scale` pixels for each.
Stamp stampOf(const QImage& picture, QSizeF size, double scale);

}  // namespace brimwatch
