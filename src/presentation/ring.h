// The ring of the icon, stroked straight into the pixels of a bitmap.
//
// QPainter could do it, but Qt's raster engine hands strokes of this size to a pool of threads, and
// to wake these ten times a second costs more than the painting itself. Angles are in radians and
// grow clockwise from the top, lengths are in points.
#pragma once

#include <QColor>
#include <QImage>
#include <QPointF>
#include <numbers>

namespace brimwatch {

constexpr QPointF ringCentre(10, 10);
constexpr double ringRadius = 6.2816;
constexpr double ringWidth = 3.06;

struct RingArc {
    double head = 0;
    double length = 2 * std::numbers::pi;  // back from the head; a whole turn has no ends

    bool operator==(const RingArc&) const = default;
};

// A line along the ring with round ends. The bitmap has `scale` pixels a point.
void strokeRing(QImage& bitmap, double scale, const RingArc& arc, const QColor& color);

}  // namespace brimwatch
