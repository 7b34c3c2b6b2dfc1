#include "platform/linux/screen_pixels.h"

#include <QGuiApplication>
#include <QScreen>

#include "platform/linux/panel_fixture.h"

namespace brimwatch {
namespace {

class ScreenPixels : public test::PanelTest {
  protected:
    QRect screen() const { return QGuiApplication::primaryScreen()->geometry(); }
};

TEST_F(ScreenPixels, PutAWindowBelowAnItemAtTheUpperEdge) {
    EXPECT_EQ(edgeInPixels({100, 0, 28, 28}, {110, 14}), QPoint(110, 27));
}

TEST_F(ScreenPixels, PutAWindowAboveAnItemAtTheLowerEdge) {
    const int top = screen().bottom() - 27;
    EXPECT_EQ(edgeInPixels({100, top, 28, 28}, {110, top + 14}), QPoint(110, top));
}

TEST_F(ScreenPixels, KeepThePointerWhereTheItemIsNotThere) {
    EXPECT_EQ(edgeInPixels({}, {110, 14}), QPoint(110, 14));
    EXPECT_EQ(edgeInPixels({300, 0, 28, 28}, {110, 14}), QPoint(110, 14));
}

TEST_F(ScreenPixels, KnowWhatLiesOnNoScreen) {
    EXPECT_TRUE(isOnScreen(screen().topLeft()));
    EXPECT_TRUE(isOnScreen(screen().bottomRight()));
    EXPECT_FALSE(isOnScreen(screen().bottomRight() + QPoint(1, 0)));
    EXPECT_FALSE(isOnScreen({-1, 5}));
}

}  // namespace
}  // namespace brimwatch
