#include "presentation/ring.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "icon_fixture.h"
#include "presentation/bitmap.h"

namespace brimwatch {
namespace {

using test::pi;

QImage stroked(double scale, const RingArc& arc, const QColor& color) {
    const int side = static_cast<int>(std::round(20 * scale));
    QImage bitmap = makeBitmap({side, side});
    strokeRing(bitmap, scale, arc, color);
    return bitmap;
}

// How far a place is from the line of the arc, in points from the centre of the ring.
double offLine(double x, double y, const RingArc& arc) {
    const auto offPlaceAt = [x, y](double angle) {
        return std::hypot(x - 6.2816 * std::sin(angle), y + 6.2816 * std::cos(angle));
    };
    const double behindHead = std::fmod(arc.head - std::atan2(x, -y) + 8 * pi, 2 * pi);
    if (behindHead <= arc.length) return std::abs(std::hypot(x, y) - 6.2816);
    return std::min(offPlaceAt(arc.head), offPlaceAt(arc.head - arc.length));
}

// How much of a pixel is within half the width of the line, by a look at 64 places in it.
double coverage(int column, int row, double scale, const RingArc& arc) {
    constexpr int steps = 8;
    int inside = 0;
    for (int index = 0; index < steps * steps; ++index) {
        const double x = (column + (index % steps + 0.5) / steps) / scale - 10;
        const double y = (row + (std::floor(index / steps) + 0.5) / steps) / scale - 10;
        inside += offLine(x, y, arc) <= 1.53;
    }
    return 1.0 * inside / (steps * steps);
}

// The curve within a pixel counts as straight, which is a tenth off in the round ends at scale 1.
constexpr double tolerance = 26;

TEST(StrokeRing, CoversEachPixelAsFarAsTheLineDoes) {
    for (const double scale : {1.0, 1.33, 2.0}) {
        for (const double length : {0.06, 0.5, pi, 4.0, 5.6, 2 * pi}) {
            for (const double head : {0.0, 0.7, 2.5, 4.4, 6.2, -1.0}) {
                const RingArc arc{head, length};
                const QImage bitmap = stroked(scale, arc, Qt::black);
                for (int y = 0; y < bitmap.height(); ++y) {
                    for (int x = 0; x < bitmap.width(); ++x) {
                        ASSERT_NEAR(qAlpha(bitmap.pixel(x, y)), 255 * coverage(x, y, scale, arc),
                                    tolerance)
                            << x << ' ' << y << ' ' << scale << ' ' << length << ' ' << head;
                    }
                }
            }
        }
    }
}

TEST(StrokeRing, ChangesNothingBesideItsLine) {
    QImage bitmap = makeBitmap({40, 40});
    bitmap.fill(qRgba(9, 8, 7, 200));
    const QImage before = bitmap.copy();
    strokeRing(bitmap, 2, RingArc{}, Qt::red);
    for (int y = 0; y < 40; ++y) {
        for (int x = 0; x < 40; ++x) {
            const double offRing = std::abs(std::hypot(x + 0.5 - 20, y + 0.5 - 20) - 2 * 6.2816);
            if (offRing > 2 * 1.53 + 0.51) {
                ASSERT_EQ(bitmap.pixel(x, y), before.pixel(x, y)) << x << ' ' << y;
            }
            if (offRing < 2 * 1.53 - 0.51) {
                ASSERT_EQ(bitmap.pixel(x, y), qRgb(255, 0, 0)) << x << ' ' << y;
            }
        }
    }
}

TEST(StrokeRing, LiesOverWhatIsThere) {
    QImage bitmap = makeBitmap({20, 20});
    bitmap.fill(qRgba(0, 0, 255, 255));
    strokeRing(bitmap, 1, RingArc{}, QColor(255, 0, 0, 102));
    EXPECT_EQ(bitmap.pixel(10, 3), qRgba(102, 0, 153, 255));
    strokeRing(bitmap, 1, RingArc{}, QColor(255, 0, 0, 0));
    EXPECT_EQ(bitmap.pixel(10, 3), qRgba(102, 0, 153, 255));
}

TEST(StrokeRing, AnArcOfNoLengthIsARoundDot) {
    const QImage dot = stroked(10, {.head = pi / 2, .length = 1e-9}, Qt::black);
    for (int y = 0; y < dot.height(); ++y) {
        for (int x = 0; x < dot.width(); ++x) {
            const double away = std::hypot(x + 0.5 - 162.816, y + 0.5 - 100);
            if (away > 15.3 + 0.51) {
                ASSERT_EQ(qAlpha(dot.pixel(x, y)), 0);
            }
            if (away < 15.3 - 0.51) {
                ASSERT_EQ(qAlpha(dot.pixel(x, y)), 255);
            }
        }
    }
}

TEST(StrokeRing, AWholeTurnIsTheSameWhereverItsHeadIs) {
    const QImage ring = stroked(3, {.head = 0, .length = 2 * pi}, Qt::black);
    for (const double head : {0.3, 1.0, 4.0, 20.0})
        EXPECT_EQ(stroked(3, {.head = head, .length = 2 * pi}, Qt::black), ring);
    EXPECT_EQ(stroked(3, {.head = 1, .length = 9}, Qt::black), ring);
}

}  // namespace
}  // namespace brimwatch
