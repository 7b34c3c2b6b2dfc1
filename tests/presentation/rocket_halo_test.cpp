#include "presentation/rocket_halo.h"

#include <gtest/gtest.h>

#include <QPainter>
#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "icon_fixture.h"

namespace brimwatch {
namespace {

using test::artworkOf;
using test::solidArtwork;

// The halo of a solid block of 4.9 by 8.28 points: 37 by 50 pixels, in which the block stands from
// 8.7 to 28.3 and from 8.44 to 41.56. So columns 9 to 27 are solid and, at more than a half, rows 8
// to 41; columns 8 and 28 are covered to three tenths.
class HaloOfABlock : public ::testing::Test {
  protected:
    int alphaAt(int x, int y) const { return qAlpha(halo_.pixel(x, y)); }

    const QImage halo_ = rocketHalo(solidArtwork({49, 83}), QSizeF(4.9, 8.28), makeBitmap);
};

TEST_F(HaloOfABlock, IsBlackWithTheHaloAsAlpha) {
    ASSERT_EQ(halo_.size(), QSize(37, 50));
    for (int y = 0; y < halo_.height(); ++y) {
        for (int x = 0; x < halo_.width(); ++x)
            ASSERT_EQ(halo_.pixel(x, y), qRgba(0, 0, 0, alphaAt(x, y)));
    }
}

TEST_F(HaloOfABlock, IsSolidWithinAndThreePixelsAround) {
    for (int y = 5; y <= 44; ++y)
        EXPECT_EQ(alphaAt(18, y), 255) << y;
    for (int x = 6; x <= 30; ++x)
        EXPECT_EQ(alphaAt(x, 25), 255) << x;
}

TEST_F(HaloOfABlock, FadesInTheFourthPixelAndEndsInTheFifth) {
    // (4.9 - 4) * 255 = 229.5
    EXPECT_EQ(alphaAt(18, 4), 230);
    EXPECT_EQ(alphaAt(18, 45), 230);
    EXPECT_EQ(alphaAt(18, 3), 0);
    EXPECT_EQ(alphaAt(18, 46), 0);
    EXPECT_EQ(alphaAt(5, 25), 230);
    EXPECT_EQ(alphaAt(31, 25), 230);
}

TEST_F(HaloOfABlock, TakesAFaintEdgeAsFaintAsItIs) {
    // Four pixels from columns 8 and 28, whose alpha is 0.3 * 255: 0.9 * 76.5 = 68.9
    EXPECT_NEAR(alphaAt(4, 25), 69, 3);
    EXPECT_NEAR(alphaAt(32, 25), 69, 3);
    EXPECT_EQ(alphaAt(3, 25), 0);
    EXPECT_EQ(alphaAt(33, 25), 0);
}

TEST_F(HaloOfABlock, IsRoundAtTheCorners) {
    // From the solid corner (9, 8): two and four pixels are 4.472, (4.9 - 4.472) * 255 = 109.1;
    // three and three are 4.243, 167.6; four and four are 5.657, which is too far, as it is from
    // the faint corner (8, 8).
    EXPECT_EQ(alphaAt(7, 4), 109);
    EXPECT_EQ(alphaAt(6, 5), 168);
    EXPECT_EQ(alphaAt(5, 4), 0);
}

TEST(RocketHalo, ShowsNoHole) {
    const QImage withPorthole =
        artworkOf({40, 66}, [](int x, int y) { return std::hypot(x - 19.5, y - 25) > 12; });
    const QSizeF size(8.28 * 40 / 66, 8.28);
    EXPECT_EQ(rocketHalo(withPorthole, size, makeBitmap),
              rocketHalo(solidArtwork({40, 66}), size, makeBitmap));
}

TEST(RocketHalo, KeepsABayThatIsOpenToTheOutside) {
    // Walls three pixels of the halo wide stand left and right of an open shaft.
    const QImage bay = artworkOf({40, 66}, [](int x, int y) { return x < 6 || x >= 34 || y > 55; });
    const QImage halo = rocketHalo(bay, QSizeF(8.28 * 40 / 66, 8.28), makeBitmap);
    EXPECT_EQ(qAlpha(halo.pixel(halo.width() / 2, 20)), 0);
    EXPECT_EQ(qAlpha(halo.pixel(halo.width() / 2, 40)), 255);
}

TEST(RocketHalo, OfNothingIsNothing) {
    const QImage empty = artworkOf({40, 66}, [](int, int) { return false; });
    const QImage halo = rocketHalo(empty, QSizeF(8.28 * 40 / 66, 8.28), makeBitmap);
    EXPECT_EQ(test::greatestDifference(halo, makeBitmap(halo.size())), 0);
}

TEST(RocketHalo, OfMuchLargerArtworkIsTheSame) {
    const auto isBody = [](double x, double y) { return std::abs(x - 0.5) < 0.1 + 0.4 * y; };
    const auto artwork = [&isBody](int scale) {
        return artworkOf({10 * scale, 20 * scale}, [&isBody, scale](int x, int y) {
            return isBody((x + 0.5) / (10 * scale), (y + 0.5) / (20 * scale));
        });
    };
    const QSizeF size(4.14, 8.28);
    const auto difference = test::greatestDifference(rocketHalo(artwork(16), size, makeBitmap),
                                                     rocketHalo(artwork(128), size, makeBitmap));
    ASSERT_TRUE(difference);
    EXPECT_LE(*difference, 24);
}

// The same halo in the plainest way: a flood that looks again and again at every pixel.
class PlainHalo {
  public:
    PlainHalo(const QImage& artwork, QSizeF size) : bitmap_(makeBitmap(bitmapSize(size))) {
        QPainter painter(&bitmap_);
        painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
        painter.drawImage(
            QRectF((bitmap_.width() - 4 * size.width()) / 2, 8.44, 4 * size.width(), 33.12),
            artwork);
    }

    QImage halo() const {
        const std::vector<std::vector<bool>> outside = flooded();
        QImage result = makeBitmap(bitmap_.size());
        for (int y = 0; y < result.height(); ++y) {
            for (int x = 0; x < result.width(); ++x)
                result.setPixel(x, y, qRgba(0, 0, 0, fattened(outside, x, y)));
        }
        return result;
    }

  private:
    static QSize bitmapSize(QSizeF size) {
        return {static_cast<int>(std::ceil((size.width() + 4.2) * 4)), 50};
    }

    bool isOnBorder(int x, int y) const {
        return x == 0 || y == 0 || x == bitmap_.width() - 1 || y == bitmap_.height() - 1;
    }

    std::vector<std::vector<bool>> flooded() const {
        std::vector<std::vector<bool>> outside(bitmap_.height(),
                                               std::vector<bool>(bitmap_.width()));
        bool hasGrown = true;
        while (hasGrown) {
            hasGrown = false;
            for (int y = 0; y < bitmap_.height(); ++y) {
                for (int x = 0; x < bitmap_.width(); ++x) {
                    if (outside[y][x] || qAlpha(bitmap_.pixel(x, y)) >= 128) continue;
                    outside[y][x] = isOnBorder(x, y) || outside[y][x - 1] || outside[y][x + 1] ||
                                    outside[y - 1][x] || outside[y + 1][x];
                    hasGrown = hasGrown || outside[y][x];
                }
            }
        }
        return outside;
    }

    int fattened(const std::vector<std::vector<bool>>& outside, int x, int y) const {
        double value = 0;
        for (int fromY = std::max(y - 5, 0); fromY <= std::min(y + 5, 49); ++fromY) {
            for (int fromX = std::max(x - 5, 0); fromX <= std::min(x + 5, bitmap_.width() - 1);
                 ++fromX) {
                const int alpha = outside[fromY][fromX] ? qAlpha(bitmap_.pixel(fromX, fromY)) : 255;
                const double weight = 4.9 - std::hypot(x - fromX, y - fromY);
                value = std::max(value, std::clamp(weight, 0.0, 1.0) * alpha);
            }
        }
        return static_cast<int>(std::round(value));
    }

    QImage bitmap_;
};

TEST(RocketHalo, IsThatOfAPlainerWayForAnyArtwork) {
    for (unsigned seed = 0; seed < 40; ++seed) {
        std::mt19937 random(seed);
        const QImage artwork = artworkOf({9 + static_cast<int>(seed % 6), 33},
                                         [&random](int, int) { return random() % 5 < 2; });
        const QSizeF size(8.28 * artwork.width() / artwork.height(), 8.28);
        EXPECT_EQ(rocketHalo(artwork, size, makeBitmap), PlainHalo(artwork, size).halo())
            << "seed " << seed;
    }
}

// A flood that went diagonally would seep through.
TEST(RocketHalo, ThinSlantingWallsKeepTheFloodOut) {
    for (int side = 25; side <= 65; ++side) {
        const QImage artwork = artworkOf({side, side}, [side](int x, int y) {
            const int distance = std::abs(x - side / 2) + std::abs(y - side / 2);
            return distance == side / 2 - 1 || distance == side / 2 - 2;
        });
        const QSizeF size(8.28, 8.28);
        const QImage halo = rocketHalo(artwork, size, makeBitmap);
        EXPECT_EQ(halo, PlainHalo(artwork, size).halo()) << side;
        EXPECT_EQ(qAlpha(halo.pixel(25, 25)), 255) << side;
    }
}

TEST(RocketHalo, IsNullIfNoBitmapCanBeHad) {
    EXPECT_TRUE(rocketHalo(solidArtwork({4, 8}), QSizeF(4.14, 8.28), [](QSize) {
                    return QImage();
                }).isNull());
}

}  // namespace
}  // namespace brimwatch
