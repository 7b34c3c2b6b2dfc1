#include "presentation/bitmap.h"

#include <QRect>
#include <cmath>

namespace brimwatch {

QImage makeBitmap(QSize size) {
    QImage bitmap(size, QImage::Format_ARGB32_Premultiplied);
    if (!bitmap.isNull()) bitmap.fill(Qt::transparent);
    return bitmap;
}

QImage reducedFor(const QImage& picture, QSizeF drawnSize) {
    const QSize enough(static_cast<int>(std::ceil(2 * drawnSize.width())),
                       static_cast<int>(std::ceil(2 * drawnSize.height())));
    if (enough.isEmpty() || picture.height() <= enough.height()) return picture;
    return picture.scaled(enough, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

Stamp stampOf(const QImage& picture, QSizeF size, double scale) {
    const QImage reduced = reducedFor(picture, size * scale);
    const QRect withMargin = reduced.rect().adjusted(-1, -1, 1, 1);
    return {reduced.copy(withMargin),
            QSizeF(size.width() * withMargin.width() / reduced.width(),
                   size.height() * withMargin.height() / reduced.height())};
}

}  // namespace brimwatch
