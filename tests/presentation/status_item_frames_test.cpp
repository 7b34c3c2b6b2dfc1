// What the frames in the panel follow, one thing at a time.

#include <gmock/gmock.h>

#include <vector>

#include "limits/allocation_count.h"
#include "status_item_controller_fixture.h"

namespace brimwatch {
namespace {

using ::testing::ElementsAre;

class StatusItemFramesTest : public test::StatusItemControllerFixture {};

TEST_F(StatusItemFramesTest, TheNumberFollowsWhatTheUserWantsToSee) {
    fly(20);
    model().setUsageDisplay(UsageDisplay::used);
    settle();
    EXPECT_EQ(desktop_.item.title, "20%");
}

TEST_F(StatusItemFramesTest, AWeekThatChangesWithinAPercentIsAnUpdateToo) {
    fly(65.2);
    ASSERT_EQ(desktop_.item.title, "34%");
    desktop_.item.pictureCount = 0;
    useWeek(65.8);
    settle();
    EXPECT_EQ(desktop_.item.title, "34%");
    EXPECT_EQ(desktop_.item.pictureCount, 1);
}

TEST_F(StatusItemFramesTest, TheSpeedFollowsTheWeekAndNotTheArc) {
    fly(20.5);
    const MenuBarGauge gauge = model().menuGauge();
    ASSERT_EQ(gauge.remaining, 0.79);
    ASSERT_NE(gauge.weekly, 0.79);
    MenuBarMotion motion;
    for (int frame = 0; frame < 100; ++frame) {
        letPass(0.25);
        motion.step(0.25, gauge.weekly);
    }
    EXPECT_EQ(desktop_.item.picture, picture(0.79, motion.angle));
}

// One account has a week with something left; the other has nothing left of its five hours.
TEST_F(StatusItemFramesTest, TheTremblingFollowsTheWeekAndNotTheArc) {
    makeRegisteredFolder(".claude-a");
    makeRegisteredFolder(".claude-b");
    start();
    model().refresh();
    writeLimits("claude-a", 10, 60);
    LimitsFile hours = figures("claude-b", 100, 0);
    hours.windows.erase("seven_day");
    writeLimits(hours);
    model().reload();
    show();
    EXPECT_EQ(desktop_.item.title, "20%");
    EXPECT_EQ(desktop_.item.picture, picture(0.2, 0));
}

TEST_F(StatusItemFramesTest, ARepaintInAnotherInkTremblesNoFurther) {
    fly(100);
    letPass(0.1);
    const QImage before = desktop_.item.picture.copy();
    desktop_.item.setLook({.isDark = true, .ink = Qt::white, .scale = 1});
    EXPECT_NE(desktop_.item.picture, before);
    desktop_.item.setLook({.isDark = false, .ink = Qt::black, .scale = 1});
    EXPECT_EQ(desktop_.item.picture, before);
}

TEST_F(StatusItemFramesTest, ReducedMotionDoesNotTremble) {
    desktop_.appearance.setReducesMotion(true);
    fly(100);
    EXPECT_EQ(desktop_.item.picture, picture(0, 0));
}

TEST_F(StatusItemFramesTest, TheInkIsReadOnlyWhenThePanelTurnsLightOrDark) {
    desktop_.appearance.setReducesMotion(true);
    fly(20);
    const QImage black = desktop_.item.picture.copy();
    desktop_.item.setLook({.isDark = false, .ink = Qt::red, .scale = 1});
    desktop_.item.pictureCount = 0;
    desktop_.item.setVisible(true);
    ASSERT_EQ(desktop_.item.pictureCount, 1);
    EXPECT_EQ(desktop_.item.picture, black);
}

TEST_F(StatusItemFramesTest, AFrameThatCannotBePaintedLeavesThePlaceEmpty) {
    fly(20);
    ASSERT_FALSE(desktop_.item.picture.isNull());
    desktop_.item.setLook({.isDark = false, .ink = Qt::black, .scale = 0});
    EXPECT_TRUE(desktop_.item.picture.isNull());
    desktop_.item.setLook({.isDark = false, .ink = Qt::black, .scale = 2});
    EXPECT_EQ(desktop_.item.picture.size(), QSize(40, 40));
}

TEST_F(StatusItemFramesTest, ThePopoverGetsItsThemeAgainOnceItIsShown) {
    start();
    model().setAppTheme(AppTheme::dark);
    show();
    QObject::connect(&desktop_.popover, &Popover::willShow,
                     [this] { desktop_.popover.appearance = Appearance::light; });
    desktop_.item.click();
    EXPECT_THAT(desktop_.popover.log, ElementsAre("will show light", "did show dark"));
}

class ForgetfulItem final : public StatusItem {
  public:
    void show() override {}
    bool isVisible() const override { return true; }
    Look look() const override { return {.isDark = false, .ink = Qt::black, .scale = 2}; }
    void setTitle(const QString& /*text*/) override {}
    void setPicture(const QImage& picture) override { pictureCount += picture.isNull() ? 0 : 1; }
    void setMenu(const std::vector<MenuRow>& /*rows*/) override {}

    int pictureCount = 0;
};

TEST_F(StatusItemFramesTest, AFrameAsksForNoMemory) {
    startWithWeek(90);
    ForgetfulItem item;
    StatusItemController controller({.model = model(),
                                     .item = item,
                                     .popover = desktop_.popover,
                                     .session = desktop_.session,
                                     .appearance = desktop_.appearance,
                                     .timer = desktop_.timer,
                                     .uptime = [this] { return uptime_; },
                                     .rocket = sharedRocket()});
    letPass(0.1);
    item.pictureCount = 0;
    const std::size_t before = test::allocationCount();
    for (int frame = 0; frame < 20; ++frame)
        letPass(0.1);
    EXPECT_EQ(test::allocationCount(), before);
    EXPECT_EQ(item.pictureCount, 20);
}

}  // namespace
}  // namespace brimwatch
