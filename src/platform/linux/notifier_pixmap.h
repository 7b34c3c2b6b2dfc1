// A picture as status notifiers send it over the bus.
#pragma once

#include <QByteArray>
#include <QImage>

namespace brimwatch {

// D-Bus type (iiay).
struct NotifierPixmap {
    int width = 0;
    int height = 0;
    QByteArray bytes;  // of each pixel A, R, G, B, not premultiplied; row by row without padding

    bool operator==(const NotifierPixmap&) const = default;
};

// Writes the picture over the pixmap, in the memory that is there already if it has the same size.
void writePixmap(const QImage& picture, NotifierPixmap& pixmap);

}  // namespace brimwatch
