#include "platform/linux/panel_traits.h"

#include <gtest/gtest.h>

namespace brimwatch {
namespace {

using NumberPlace = PanelTraits::NumberPlace;
using Shade = PanelTraits::Shade;

TEST(PanelTraits, LeaveTheNumberToPanelsThatShowLabels) {
    for (const QString desktop : {"GNOME", "ubuntu:GNOME", "MATE", "Unity", "gnome"})
        EXPECT_EQ(panelTraits(desktop, {}).numberPlace, NumberPlace::label)
            << desktop.toStdString();
}

TEST(PanelTraits, PutTheNumberIntoAnItemOfItsOwnWherePicturesAreSquare) {
    for (const QString desktop : {"XFCE", "LXQt", "KDE", "X-Cinnamon", "Budgie", "", "sway", "::"})
        EXPECT_EQ(panelTraits(desktop, {"some-panel"}).numberPlace, NumberPlace::ownItem)
            << desktop.toStdString();
}

TEST(PanelTraits, PutTheNumberIntoThePictureOfWaybar) {
    EXPECT_EQ(panelTraits(u"sway", {"waybar"}).numberPlace, NumberPlace::insidePicture);
    EXPECT_EQ(panelTraits(u"", {".waybar-wrapped"}).numberPlace, NumberPlace::insidePicture);
    EXPECT_EQ(panelTraits(u"GNOME", {"waybar"}).numberPlace, NumberPlace::insidePicture);
}

TEST(PanelTraits, DoNotSendWidePicturesWhereAnotherPanelIsBesideWaybar) {
    EXPECT_EQ(panelTraits(u"XFCE", {"waybar", "xfce4-panel"}).numberPlace, NumberPlace::ownItem);
}

TEST(PanelTraits, KnowTheSizeThatStaysSharp) {
    for (const QString desktop : {"XFCE", "LXQt", "KDE", "GNOME", ""})
        EXPECT_EQ(panelTraits(desktop, {"some-panel"}).pictureSidePixels, 22);
    EXPECT_EQ(panelTraits(u"sway", {"waybar"}).pictureSidePixels, 20);
}

TEST(PanelTraits, KnowThePanelsThatAreAlwaysDark) {
    EXPECT_EQ(panelTraits(u"ubuntu:GNOME", {}).shade, Shade::dark);
    EXPECT_EQ(panelTraits(u"X-Cinnamon", {}).shade, Shade::dark);
    EXPECT_EQ(panelTraits(u"sway", {"waybar"}).shade, Shade::dark);
    EXPECT_EQ(panelTraits(u"XFCE", {"xfce4-panel"}).shade, Shade::asDesktop);
    EXPECT_EQ(panelTraits(u"KDE", {"plasmashell"}).shade, Shade::asDesktop);
    EXPECT_EQ(panelTraits(u"", {}).shade, Shade::asDesktop);
}

}  // namespace
}  // namespace brimwatch
