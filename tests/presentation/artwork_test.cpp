// The bitmaps that the program carries.

#include <gtest/gtest.h>

#include <QImage>
#include <QString>

#include "presentation/menu_bar_rocket.h"

namespace brimwatch {
namespace {

QImage resource(const char* name, const char* suffix) {
    return QImage(QStringLiteral(":/brimwatch/%1%2.png").arg(name, suffix));
}

QSize sizeOf(const char* name, const char* suffix) {
    return resource(name, suffix).size();
}

TEST(Artwork, LogosAreThereForLightAndDarkInThreeSizes) {
    for (const char* name : {"LogoLockup", "LogoLockupDark"}) {
        EXPECT_EQ(sizeOf(name, ""), QSize(151, 30));
        EXPECT_EQ(sizeOf(name, "@2x"), QSize(302, 60));
        EXPECT_EQ(sizeOf(name, "@3x"), QSize(453, 90));
    }
    for (const char* name : {"LogoLockupSmall", "LogoLockupSmallDark"}) {
        EXPECT_EQ(sizeOf(name, ""), QSize(103, 20));
        EXPECT_EQ(sizeOf(name, "@2x"), QSize(206, 40));
        EXPECT_EQ(sizeOf(name, "@3x"), QSize(309, 60));
    }
}

// How light the ink of the word is: below its middle the logo is nothing but ink there.
int lightnessOfInk(const char* name) {
    const QImage logo = resource(name, "@3x");
    int weight = 0;
    int sum = 0;
    for (int x = logo.width() / 4; x < logo.width() * 3 / 4; ++x) {
        const QColor color = logo.pixelColor(x, logo.height() * 3 / 5);
        weight += color.alpha();
        sum += color.alpha() * color.lightness();
    }
    return weight == 0 ? -1 : sum / weight;
}

TEST(Artwork, LogosAreDarkOnLightAndLightOnDark) {
    for (const char* name : {"LogoLockup", "LogoLockupSmall"}) {
        EXPECT_GE(lightnessOfInk(name), 0);
        EXPECT_LT(lightnessOfInk(name), 64);
    }
    for (const char* name : {"LogoLockupDark", "LogoLockupSmallDark"})
        EXPECT_GT(lightnessOfInk(name), 192);
}

TEST(Artwork, TheRocketOfTheProgramIsTheHighestOne) {
    ASSERT_TRUE(sharedRocket());
    EXPECT_EQ(sharedRocket()->image.size(), QSize(60, 99));
    EXPECT_EQ(&sharedRocket(), &sharedRocket());
}

TEST(Artwork, TheRocketHasAPortholeThatItsHaloHasNot) {
    const MenuBarRocket& rocket = sharedRocket().value();
    const int middle = rocket.image.width() / 2;
    EXPECT_EQ(qAlpha(rocket.image.pixel(middle, rocket.image.height() * 25 / 66)), 0);
    EXPECT_EQ(qAlpha(rocket.image.pixel(middle, rocket.image.height() / 2)), 255);

    // The halo's rocket begins 2.11 points below its top.
    const int portholeRow = static_cast<int>((2.11 + 8.28 * 25 / 66) * 4);
    EXPECT_EQ(qAlpha(rocket.halo.pixel(rocket.halo.width() / 2, portholeRow)), 255);
}

TEST(Artwork, TheRocketPointsUpward) {
    const QImage image = sharedRocket().value().image;
    const auto weightOfRow = [&image](int y) {
        int sum = 0;
        for (int x = 0; x < image.width(); ++x)
            sum += qAlpha(image.pixel(x, y));
        return sum;
    };
    EXPECT_LT(weightOfRow(image.height() / 20), weightOfRow(image.height() * 3 / 4) / 2);
}

}  // namespace
}  // namespace brimwatch
