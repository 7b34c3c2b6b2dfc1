#include "presentation/menu_bar_renderer.h"

#include <QPointF>
#include <QRectF>
#include <QTransform>
#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace brimwatch {
namespace {

constexpr double canvasSide = 20;
constexpr float trackAlpha = 0.27F;
constexpr QColor gaugeAccent(47, 181, 165);
constexpr double closedFrom = 0.999;
constexpr std::size_t tintLimit = 2;

// No size where there can be no bitmap anyway.
QSize bitmapSize(double scale) {
    const double side = std::round(scale * canvasSide);
    if (!(side >= 1 && side <= INT16_MAX)) return {};
    return {static_cast<int>(side), static_cast<int>(side)};
}

}  // namespace

QImage tinted(const QImage& artwork, const QColor& ink) {
    QImage result = makeBitmap(artwork.size());
    if (result.isNull()) return result;
    QPainter painter(&result);
    painter.drawImage(0, 0, artwork);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(result.rect(), ink);
    return result;
}

std::optional<RingArc> remainingArc(const MenuBarIcon& icon) {
    if (icon.remaining >= closedFrom) return RingArc{.head = icon.angle};
    if (!(icon.remaining > 0)) return std::nullopt;
    return RingArc{.head = icon.angle, .length = 2 * std::numbers::pi * icon.remaining};
}

MenuBarRenderer::MenuBarRenderer(MenuBarRocket rocket, BitmapMaker makeBitmap, TintMaker makeTint)
    : rocket_(std::move(rocket)),
      makeBitmap_(std::move(makeBitmap)),
      makeTint_(std::move(makeTint)) {}

const QImage* MenuBarRenderer::render(const MenuBarIcon& icon, const QColor& ink, double scale) {
    if (bitmap_.isNull() || scale != scale_) prepareScale(scale);
    if (tintOf(ink) == nullptr) makeTintOf(ink);
    const Tint* tint = tintOf(ink);
    if (bitmap_.isNull() || tint == nullptr) return nullptr;

    bitmap_.fill(Qt::transparent);
    drawRing(icon, ink);
    drawRocket(icon, tint->stamp);
    return &bitmap_;
}

void MenuBarRenderer::prepareScale(double scale) {
    if (painter_.isActive()) painter_.end();
    bitmap_ = makeBitmap_(bitmapSize(scale));
    scale_ = scale;
    if (bitmap_.isNull()) return;
    painter_.begin(&bitmap_);
    painter_.setRenderHint(QPainter::SmoothPixmapTransform);
    halo_ = stampOf(rocket_.halo, rocket_.haloSize, scale);
    for (Tint& tint : tints_)
        tint.stamp = stampOf(tint.rocket, rocket_.size, scale);
}

const MenuBarRenderer::Tint* MenuBarRenderer::tintOf(const QColor& ink) {
    const auto tint = std::find_if(tints_.begin(), tints_.end(),
                                   [&ink](const Tint& candidate) { return candidate.ink == ink; });
    return tint == tints_.end() ? nullptr : &*tint;
}

void MenuBarRenderer::makeTintOf(const QColor& ink) {
    const QImage rocket = makeTint_(rocket_.image, ink);
    if (rocket.isNull()) return;
    if (tints_.size() == tintLimit) tints_.erase(tints_.begin());
    // Without a bitmap the scale may be none; all are stamped anew when there is one.
    tints_.push_back(
        {ink, rocket, bitmap_.isNull() ? Stamp{} : stampOf(rocket, rocket_.size, scale_)});
}

void MenuBarRenderer::drawRing(const MenuBarIcon& icon, const QColor& ink) {
    QColor track = ink;
    track.setAlphaF(trackAlpha);
    strokeRing(bitmap_, scale_, RingArc{}, track);
    if (const auto arc = remainingArc(icon)) strokeRing(bitmap_, scale_, *arc, gaugeAccent);
}

void MenuBarRenderer::drawRocket(const MenuBarIcon& icon, const Stamp& rocket) {
    const double angle = icon.angle + icon.shake.angle;
    const double radius = ringRadius + icon.shake.radial;
    const QPointF place = ringCentre + radius * QPointF(std::sin(angle), -std::cos(angle));
    painter_.setTransform(QTransform::fromScale(scale_, scale_)
                              .translate(place.x(), place.y())
                              .rotateRadians(angle + std::numbers::pi / 2));
    draw(halo_, QPainter::CompositionMode_DestinationOut);
    draw(rocket, QPainter::CompositionMode_SourceOver);
}

void MenuBarRenderer::draw(const Stamp& stamp, QPainter::CompositionMode mode) {
    const QPointF corner(-stamp.size.width() / 2, -stamp.size.height() / 2);
    painter_.setCompositionMode(mode);
    painter_.drawImage(QRectF(corner, stamp.size), stamp.picture);
}

}  // namespace brimwatch
