#include "presentation/menu_bar_rocket.h"

#include <gtest/gtest.h>

#include "icon_fixture.h"

namespace brimwatch {
namespace {

using test::solidArtwork;

TEST(MenuBarRocket, IsAbsentWithoutArtwork) {
    EXPECT_FALSE(makeMenuBarRocket({}));
}

TEST(MenuBarRocket, IsAbsentIfNoRepresentationCouldBeRead) {
    EXPECT_FALSE(makeMenuBarRocket({QImage()}));
    EXPECT_FALSE(makeMenuBarRocket({QImage(QStringLiteral(":/brimwatch/NoSuchPicture.png"))}));
}

TEST(MenuBarRocket, IsAbsentIfNoBitmapCanBeHad) {
    EXPECT_FALSE(makeMenuBarRocket({solidArtwork({40, 80})}, [](QSize) { return QImage(); }));
}

TEST(MenuBarRocket, TakesTheHighestRepresentation) {
    const auto rocket = makeMenuBarRocket(
        {solidArtwork({90, 30}), solidArtwork({20, 50}), QImage(), solidArtwork({60, 40})});
    ASSERT_TRUE(rocket);
    EXPECT_EQ(rocket->image.size(), QSize(20, 50));
}

TEST(MenuBarRocket, TakesTheFirstOfRepresentationsOfOneHeight) {
    const auto rocket =
        makeMenuBarRocket({solidArtwork({30, 40}), solidArtwork({20, 60}), solidArtwork({30, 60})});
    ASSERT_TRUE(rocket);
    EXPECT_EQ(rocket->image.size(), QSize(20, 60));
}

TEST(MenuBarRocket, IsDrawnAtOneHeightAndAtTheWidthThatFollows) {
    const auto rocket = makeMenuBarRocket({solidArtwork({30, 60})});
    ASSERT_TRUE(rocket);
    EXPECT_DOUBLE_EQ(rocket->size.height(), 8.28);
    EXPECT_DOUBLE_EQ(rocket->size.width(), 4.14);
}

TEST(MenuBarRocket, HasAHaloOfFourPixelsAPoint) {
    // (4.14 + 4.2) * 4 = 33.36
    const auto rocket = makeMenuBarRocket({solidArtwork({30, 60})});
    ASSERT_TRUE(rocket);
    EXPECT_EQ(rocket->halo.size(), QSize(34, 50));
    EXPECT_DOUBLE_EQ(rocket->haloSize.width(), 8.5);
    EXPECT_DOUBLE_EQ(rocket->haloSize.height(), 12.5);
}

TEST(MenuBarRocket, TakesArtworkOfAnyFormat) {
    const QImage artwork = solidArtwork({30, 60});
    for (const QImage::Format format :
         {QImage::Format_Indexed8, QImage::Format_ARGB32, QImage::Format_Alpha8}) {
        const auto rocket = makeMenuBarRocket({artwork.convertToFormat(format)});
        ASSERT_TRUE(rocket);
        EXPECT_EQ(rocket->image, artwork);
    }
}

TEST(MenuBarRocket, IgnoresWhatDensityAnImageSaysItIsFor) {
    QImage artwork = solidArtwork({30, 60});
    artwork.setDevicePixelRatio(2);
    const auto rocket = makeMenuBarRocket({artwork});
    ASSERT_TRUE(rocket);
    EXPECT_EQ(rocket->halo, makeMenuBarRocket({solidArtwork({30, 60})})->halo);
    EXPECT_EQ(rocket->image.devicePixelRatio(), 1);
}

}  // namespace
}  // namespace brimwatch
