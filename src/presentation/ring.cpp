#include "presentation/ring.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace brimwatch {
namespace {

// In pixels from the centre of the ring.
struct Place {
    float x = 0;
    float y = 0;
};

float squared(float value) {
    return value * value;
}

float distance(Place left, Place right) {
    return std::sqrt(squared(left.x - right.x) + squared(left.y - right.y));
}

// A stroke along the ring, at the size at which it is painted.
class Stroke {
  public:
    Stroke(const RingArc& arc, double scale)
        : radius_(static_cast<float>(ringRadius * scale)),
          halfWidth_(static_cast<float>(ringWidth * scale / 2)),
          innerSquared_(squared(std::max(radius_ - halfWidth_ - 0.5F, 0.0F))),
          outerSquared_(squared(radius_ + halfWidth_ + 0.5F)),
          head_(onRing(arc.head)),
          tail_(onRing(arc.head - arc.length)),
          middle_(onRing(arc.head - arc.length / 2)),
          isClosed_(arc.length >= 2 * std::numbers::pi),
          leastCosine_(radius_ * static_cast<float>(std::cos(arc.length / 2))) {}

    // How much of a pixel it covers, up to 1.
    float coverage(Place place) const {
        const float radiusSquared = squared(place.x) + squared(place.y);
        if (radiusSquared <= innerSquared_ || radiusSquared >= outerSquared_) return 0;
        const float radius = std::sqrt(radiusSquared);
        const float offRing = std::abs(radius - radius_);
        const float offLine = isClosed_ || liesBeside(place, radius)
                                  ? offRing
                                  : std::min(distance(place, head_), distance(place, tail_));
        return std::clamp(halfWidth_ + 0.5F - offLine, 0.0F, 1.0F);
    }

  private:
    Place onRing(double angle) const {
        return {radius_ * static_cast<float>(std::sin(angle)),
                -radius_ * static_cast<float>(std::cos(angle))};
    }

    // Whether the nearest place of the ring is on the arc.
    bool liesBeside(Place place, float radius) const {
        return place.x * middle_.x + place.y * middle_.y >= radius * leastCosine_;
    }

    float radius_;
    float halfWidth_;
    float innerSquared_;  // where nothing of the stroke reaches
    float outerSquared_;
    Place head_;
    Place tail_;
    Place middle_;
    bool isClosed_;
    float leastCosine_;
};

// Every second channel of a colour by an alpha over 255, rounded.
std::uint32_t fadedPair(std::uint32_t pair, std::uint32_t alpha) {
    const std::uint32_t product = pair * alpha;
    return (product + ((product >> 8U) & 0xff00ffU) + 0x800080U) >> 8U;
}

QRgb faded(QRgb color, int alpha) {
    const auto factor = static_cast<std::uint32_t>(alpha);
    return (fadedPair(color & 0xff00ffU, factor) & 0xff00ffU) |
           ((fadedPair((color >> 8U) & 0xff00ffU, factor) & 0xff00ffU) << 8U);
}

// The middle of a pixel.
Place placeOf(int column, int row, Place centre) {
    return {static_cast<float>(column) + 0.5F - centre.x,
            static_cast<float>(row) + 0.5F - centre.y};
}

void paint(QRgb& pixel, QRgb ink, float coverage) {
    const QRgb color = faded(ink, static_cast<int>(std::lround(coverage * UINT8_MAX)));
    pixel = color + faded(pixel, UINT8_MAX - qAlpha(color));
}

}  // namespace

void strokeRing(QImage& bitmap, double scale, const RingArc& arc, const QColor& color) {
    const Stroke stroke(arc, scale);
    const QRgb ink = qPremultiply(color.rgba());
    const Place centre{static_cast<float>(ringCentre.x() * scale),
                       static_cast<float>(ringCentre.y() * scale)};
    const int width = bitmap.width();
    for (int row = 0; row < bitmap.height(); ++row) {
        auto* pixels = reinterpret_cast<QRgb*>(bitmap.scanLine(row));
        for (int column = 0; column < width; ++column) {
            const float coverage = stroke.coverage(placeOf(column, row, centre));
            if (coverage > 0) paint(pixels[column], ink, coverage);
        }
    }
}

}  // namespace brimwatch
