#include "presentation/rocket_halo.h"

#include <QPainter>
#include <QRectF>
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

namespace brimwatch {
namespace {

constexpr int haloHeight = 50;             // pixels
constexpr double allowance = 4.2;          // points, beyond the width of the rocket
constexpr std::uint8_t solidFrom = 128;    // alpha that the flood does not enter
constexpr int reach = 5;                   // pixels, of the fattening
constexpr double distanceOfNothing = 4.9;  // pixels, from where on the halo is transparent

// The alpha of each pixel, row by row.
struct Silhouette {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> alpha;

    std::size_t index(int x, int y) const { return static_cast<std::size_t>(y) * width + x; }
    bool contains(int x, int y) const { return x >= 0 && x < width && y >= 0 && y < height; }
};

struct Tap {
    int dx;
    int dy;
    double weight;
};

void drawArtwork(QImage& bitmap, const QImage& artwork, QSizeF size) {
    const QSizeF drawn = size * haloPixelsPerPoint;
    const QPointF corner((bitmap.width() - drawn.width()) / 2,
                         (bitmap.height() - drawn.height()) / 2);
    QPainter painter(&bitmap);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter.drawImage(QRectF(corner, drawn), reducedFor(artwork, drawn));
}

Silhouette silhouetteOf(const QImage& bitmap) {
    Silhouette result{bitmap.width(), bitmap.height(), {}};
    result.alpha.reserve(result.index(0, result.height));
    for (int y = 0; y < result.height; ++y) {
        for (int x = 0; x < result.width; ++x)
            result.alpha.push_back(static_cast<std::uint8_t>(qAlpha(bitmap.pixel(x, y))));
    }
    return result;
}

std::vector<std::pair<int, int>> borderOf(const Silhouette& silhouette) {
    std::vector<std::pair<int, int>> border;
    for (int x = 0; x < silhouette.width; ++x) {
        border.emplace_back(x, 0);
        border.emplace_back(x, silhouette.height - 1);
    }
    for (int y = 0; y < silhouette.height; ++y) {
        border.emplace_back(0, y);
        border.emplace_back(silhouette.width - 1, y);
    }
    return border;
}

// What a flood from the border reaches without entering the rocket, pixel by pixel.
std::vector<bool> outsideOf(const Silhouette& silhouette) {
    std::vector<bool> outside(silhouette.alpha.size(), false);
    std::vector<std::pair<int, int>> open = borderOf(silhouette);
    while (!open.empty()) {
        const auto [x, y] = open.back();
        open.pop_back();
        if (!silhouette.contains(x, y)) continue;
        const std::size_t index = silhouette.index(x, y);
        if (outside[index] || silhouette.alpha[index] >= solidFrom) continue;
        outside[index] = true;
        open.emplace_back(x - 1, y);
        open.emplace_back(x + 1, y);
        open.emplace_back(x, y - 1);
        open.emplace_back(x, y + 1);
    }
    return outside;
}

void fillInside(Silhouette& silhouette) {
    const std::vector<bool> outside = outsideOf(silhouette);
    for (std::size_t index = 0; index < outside.size(); ++index) {
        if (!outside[index]) silhouette.alpha[index] = UINT8_MAX;
    }
}

std::vector<Tap> kernel() {
    std::vector<Tap> taps;
    for (int dy = -reach; dy <= reach; ++dy) {
        for (int dx = -reach; dx <= reach; ++dx) {
            const double weight = std::clamp(distanceOfNothing - std::hypot(dx, dy), 0.0, 1.0);
            if (weight > 0) taps.push_back({dx, dy, weight});
        }
    }
    return taps;
}

double fattened(const Silhouette& silhouette, const std::vector<Tap>& taps, int x, int y) {
    double value = 0;
    for (const auto [dx, dy, weight] : taps) {
        if (!silhouette.contains(x + dx, y + dy)) continue;
        value = std::max(value, weight * silhouette.alpha[silhouette.index(x + dx, y + dy)]);
    }
    return value;
}

void writeHalo(QImage& bitmap, const Silhouette& silhouette) {
    const std::vector<Tap> taps = kernel();
    for (int y = 0; y < silhouette.height; ++y) {
        auto* line = reinterpret_cast<QRgb*>(bitmap.scanLine(y));
        for (int x = 0; x < silhouette.width; ++x)
            line[x] =
                qRgba(0, 0, 0, static_cast<int>(std::round(fattened(silhouette, taps, x, y))));
    }
}

}  // namespace

QImage rocketHalo(const QImage& artwork, QSizeF size, const BitmapMaker& make) {
    const int width = static_cast<int>(std::ceil((size.width() + allowance) * haloPixelsPerPoint));
    QImage bitmap = make({width, haloHeight});
    if (bitmap.isNull()) return {};
    drawArtwork(bitmap, artwork, size);
    Silhouette silhouette = silhouetteOf(bitmap);
    fillInside(silhouette);
    writeHalo(bitmap, silhouette);
    return bitmap;
}

}  // namespace brimwatch
