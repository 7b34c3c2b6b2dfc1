#include <gmock/gmock.h>

#include <memory>
#include <numbers>

#include "status_item_controller_fixture.h"

namespace brimwatch {
namespace {

using std::chrono::seconds;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr double fullTurn = 2 * std::numbers::pi;

class StatusItemControllerTest : public test::StatusItemControllerFixture {};

TEST_F(StatusItemControllerTest, ShowsTheItemOnce) {
    fly(20);
    EXPECT_EQ(desktop_.item.showCount, 1);
    EXPECT_EQ(desktop_.item.title, "80%");
}

TEST_F(StatusItemControllerTest, WithoutFiguresTheRocketStandsAtTheTop) {
    start();
    show();
    EXPECT_FALSE(desktop_.timer.isRunning());
    EXPECT_EQ(desktop_.item.title, "");
    EXPECT_EQ(desktop_.item.picture, picture(0, 0));
}

TEST_F(StatusItemControllerTest, AFigureStartsTheTimer) {
    makeRegisteredFolder(".claude");
    start();
    model().refresh();
    show();
    ASSERT_FALSE(desktop_.timer.isRunning());
    useWeek(20);
    settle();
    EXPECT_TRUE(desktop_.timer.isRunning());
}

TEST_F(StatusItemControllerTest, AFigureThatGoesStopsTheTimerAndTheNumber) {
    fly(20);
    ASSERT_EQ(desktop_.item.title, "80%");
    model().setClaudeUsagePaused(true);
    model().reload();
    settle();
    EXPECT_EQ(desktop_.item.title, "");
    EXPECT_FALSE(desktop_.timer.isRunning());
    EXPECT_EQ(desktop_.item.picture, picture(0, 0));
}

TEST_F(StatusItemControllerTest, ManyChangesInOneTurnAreOneUpdate) {
    fly(20);
    desktop_.item.pictureCount = 0;
    useWeek(30);
    useWeek(40);
    useWeek(50);
    EXPECT_EQ(desktop_.item.pictureCount, 0);
    settle();
    EXPECT_EQ(desktop_.item.pictureCount, 1);
    EXPECT_EQ(desktop_.item.title, "50%");
}

TEST_F(StatusItemControllerTest, AFrameAdvancesTheRocketByItsMotion) {
    StatusItemController& controller = fly(0);
    letPass(0.1);
    MenuBarMotion motion;
    motion.step(0.1, 1.0);
    EXPECT_NEAR(motion.angle, fullTurn / 20, 1e-9);
    EXPECT_EQ(desktop_.item.picture, picture(1, motion.angle));
    EXPECT_EQ(controller.frameCount(), 1U);
}

TEST_F(StatusItemControllerTest, AStallOfTwoSecondsAdvancesByAQuarterOfASecond) {
    fly(0);
    letPass(2);
    MenuBarMotion motion;
    motion.step(0.25, 1.0);
    EXPECT_EQ(desktop_.item.picture, picture(1, motion.angle));
}

TEST_F(StatusItemControllerTest, TheFirstStepAfterTheScreenWakesIsNotTheSleep) {
    fly(0);
    desktop_.session.setScreensAsleep(true);
    EXPECT_FALSE(desktop_.timer.isRunning());
    uptime_ += 3600;
    desktop_.session.setScreensAsleep(false);
    ASSERT_TRUE(desktop_.timer.isRunning());
    letPass(0.1);
    MenuBarMotion motion;
    motion.step(0.1, 1.0);
    EXPECT_EQ(desktop_.item.picture, picture(1, motion.angle));
}

TEST_F(StatusItemControllerTest, NothingIsSentWhileTheScreenIsLocked) {
    fly(20);
    desktop_.item.pictureCount = 0;
    desktop_.session.setScreensAsleep(true);
    for (int frame = 0; frame < 100; ++frame)
        letPass(0.1);
    useWeek(60);
    settle();
    EXPECT_EQ(desktop_.item.pictureCount, 0);
    desktop_.session.setScreensAsleep(false);
    EXPECT_EQ(desktop_.item.pictureCount, 1);
    EXPECT_EQ(desktop_.item.picture, picture(0.4, 0));
}

TEST_F(StatusItemControllerTest, ASessionInTheBackgroundRests) {
    fly(20);
    desktop_.session.setSessionActive(false);
    EXPECT_FALSE(desktop_.timer.isRunning());
    desktop_.item.pictureCount = 0;
    useWeek(70);
    settle();
    EXPECT_EQ(desktop_.item.pictureCount, 0);
    desktop_.session.setSessionActive(true);
    EXPECT_TRUE(desktop_.timer.isRunning());
    EXPECT_EQ(desktop_.item.pictureCount, 1);
}

TEST_F(StatusItemControllerTest, AnItemThatNobodySeesRests) {
    fly(20);
    desktop_.item.setVisible(false);
    EXPECT_FALSE(desktop_.timer.isRunning());
    desktop_.item.setVisible(true);
    EXPECT_TRUE(desktop_.timer.isRunning());
}

// Each of the conditions alone keeps the rocket on the ground.
TEST_F(StatusItemControllerTest, TheRocketMovesOnlyIfEverythingHolds) {
    fly(20);
    const std::vector<std::function<void(bool)>> conditions = {
        [&](bool holds) { desktop_.session.setScreensAsleep(!holds); },
        [&](bool holds) { desktop_.session.setSessionActive(holds); },
        [&](bool holds) { desktop_.appearance.setReducesMotion(!holds); },
        [&](bool holds) { desktop_.item.setVisible(holds); }};
    for (const auto& set : conditions) {
        set(false);
        EXPECT_FALSE(desktop_.timer.isRunning());
        for (const auto& other : conditions) {
            other(false);
            other(true);
        }
        set(true);
        EXPECT_TRUE(desktop_.timer.isRunning());
    }
}

TEST_F(StatusItemControllerTest, ReducedMotionPutsTheRocketInItsPlaceAtOnce) {
    fly(20);
    letPass(0.1);
    desktop_.appearance.setReducesMotion(true);
    EXPECT_FALSE(desktop_.timer.isRunning());
    EXPECT_EQ(desktop_.item.picture, picture(0.8, fullTurn * 0.8));
}

TEST_F(StatusItemControllerTest, ReducedMotionAtTheStartIsKnown) {
    desktop_.appearance.setReducesMotion(true);
    fly(20);
    EXPECT_FALSE(desktop_.timer.isRunning());
    EXPECT_EQ(desktop_.item.picture, picture(0.8, fullTurn * 0.8));
}

TEST_F(StatusItemControllerTest, AtTheThresholdNothingTrembles) {
    fly(65);
    const QImage still = desktop_.item.picture;
    EXPECT_EQ(still, picture(0.35, 0));
}

TEST_F(StatusItemControllerTest, AnEmptyWeekTremblesAnewOnEachFrame) {
    fly(100);
    std::vector<QImage> pictures;
    for (int frame = 0; frame < 4; ++frame) {
        letPass(0);
        pictures.push_back(desktop_.item.picture.copy());
    }
    // Without a step the angle is the same; what differs is the trembling.
    EXPECT_NE(pictures[0], pictures[1]);
    EXPECT_NE(pictures[1], pictures[2]);
    EXPECT_NE(pictures[2], pictures[3]);
}

TEST_F(StatusItemControllerTest, AnEmptyWeekStillFlies) {
    fly(100);
    for (int frame = 0; frame < 10; ++frame)
        letPass(0.1);
    EXPECT_TRUE(desktop_.timer.isRunning());
    EXPECT_EQ(desktop_.item.title, "0%");
}

TEST_F(StatusItemControllerTest, ADarkPanelGetsTheLightInkWithoutAStep) {
    StatusItemController& controller = fly(20);
    letPass(0.1);
    desktop_.session.setScreensAsleep(true);
    desktop_.session.setScreensAsleep(false);
    const std::uint64_t frames = controller.frameCount();
    MenuBarMotion motion;
    motion.step(0.1, 0.8);
    desktop_.item.setLook({.isDark = true, .ink = Qt::white, .scale = 1});
    EXPECT_EQ(controller.frameCount(), frames);
    EXPECT_EQ(desktop_.item.picture, picture(0.8, motion.angle));
}

TEST_F(StatusItemControllerTest, ADarkPanelIsRepaintedWhileTheTimerRests) {
    desktop_.appearance.setReducesMotion(true);
    StatusItemController& controller = fly(20);
    desktop_.item.setLook({.isDark = true, .ink = Qt::white, .scale = 1});
    EXPECT_EQ(desktop_.item.picture, picture(0.8, fullTurn * 0.8));
    EXPECT_EQ(controller.frameCount(), 0U);
}

TEST_F(StatusItemControllerTest, AnotherScaleIsRepaintedInItsSize) {
    fly(20);
    desktop_.item.setLook({.isDark = false, .ink = Qt::black, .scale = 3});
    EXPECT_EQ(desktop_.item.picture.size(), QSize(60, 60));
}

TEST_F(StatusItemControllerTest, ALookThatIsTheSameIsNotRepainted) {
    fly(20);
    desktop_.item.pictureCount = 0;
    emit desktop_.item.lookChanged();
    EXPECT_EQ(desktop_.item.pictureCount, 0);
}

// The ink belongs to the panel, which keeps the look of the desktop.
TEST_F(StatusItemControllerTest, TheThemeOfTheProgramLeavesTheInkAlone) {
    desktop_.appearance.setReducesMotion(true);
    fly(20);
    const QImage before = desktop_.item.picture.copy();
    model().setAppTheme(AppTheme::dark);
    settle();
    EXPECT_EQ(desktop_.item.picture, before);
    EXPECT_EQ(desktop_.popover.appearance, Appearance::dark);
}

TEST_F(StatusItemControllerTest, TheThemeReachesThePopover) {
    start();
    show();
    EXPECT_EQ(desktop_.popover.appearance, Appearance::light);
    model().setAppTheme(AppTheme::dark);
    settle();
    EXPECT_EQ(desktop_.popover.appearance, Appearance::dark);
    model().setAppTheme(AppTheme::light);
    settle();
    desktop_.appearance.setDark(true);
    EXPECT_EQ(desktop_.popover.appearance, Appearance::light);
    model().setAppTheme(AppTheme::system);
    settle();
    EXPECT_EQ(desktop_.popover.appearance, Appearance::dark);
    desktop_.appearance.setDark(false);
    EXPECT_EQ(desktop_.popover.appearance, Appearance::light);
}

TEST_F(StatusItemControllerTest, ThePopoverHasItsThemeBeforeItShows) {
    start();
    model().setAppTheme(AppTheme::dark);
    show();
    desktop_.popover.appearance.reset();
    desktop_.item.click();
    EXPECT_THAT(desktop_.popover.log, ElementsAre("will show dark", "did show dark"));
}

TEST_F(StatusItemControllerTest, AClickOpensAndAnotherCloses) {
    start();
    show();
    desktop_.item.click(QPoint(700, 12));
    EXPECT_TRUE(desktop_.popover.isShown());
    EXPECT_EQ(desktop_.popover.click, QPoint(700, 12));
    desktop_.item.click();
    EXPECT_FALSE(desktop_.popover.isShown());
}

TEST_F(StatusItemControllerTest, TheClickThatClosedItDoesNotOpenItAgain) {
    uptime_ = 0;  // so that the pause is no rounded number
    start();
    show();
    desktop_.item.click();
    desktop_.popover.loseFocus();
    uptime_ += 0.3;
    desktop_.item.click();
    EXPECT_FALSE(desktop_.popover.isShown());
    uptime_ += 0.01;
    desktop_.item.click();
    EXPECT_TRUE(desktop_.popover.isShown());
}

TEST_F(StatusItemControllerTest, TheFirstClickAfterTheStartOpens) {
    uptime_ = 0;
    start();
    show();
    desktop_.item.click();
    EXPECT_TRUE(desktop_.popover.isShown());
}

TEST_F(StatusItemControllerTest, TwoClicksASecondApartCloseAndOpenWithFreshFigures) {
    makeRegisteredFolder(".claude");
    start();
    show();
    desktop_.item.click();
    desktop_.item.click();
    ASSERT_FALSE(desktop_.popover.isShown());
    uptime_ += 1;
    writeLimits("claude-default", 10, 20);
    EXPECT_THAT(shownIds(), IsEmpty());
    desktop_.item.click();
    EXPECT_TRUE(desktop_.popover.isShown());
    EXPECT_THAT(shownIds(), ElementsAre("claude-default"));
}

TEST_F(StatusItemControllerTest, TheRefreshComesBeforeTheOpening) {
    makeRegisteredFolder(".claude");
    start();
    show();
    writeLimits("claude-default", 10, 20);
    std::vector<std::string> shownAtOpening;
    QObject::connect(&desktop_.popover, &Popover::willShow, [&] { shownAtOpening = shownIds(); });
    desktop_.item.click();
    EXPECT_THAT(shownAtOpening, ElementsAre("claude-default"));
}

TEST_F(StatusItemControllerTest, WithoutArtworkTheNumberStandsAlone) {
    startWithWeek(20);
    StatusItemController controller({.model = model(),
                                     .item = desktop_.item,
                                     .popover = desktop_.popover,
                                     .session = desktop_.session,
                                     .appearance = desktop_.appearance,
                                     .timer = desktop_.timer,
                                     .uptime = [this] { return uptime_; },
                                     .rocket = std::nullopt});
    letPass(0.1);
    EXPECT_EQ(desktop_.item.title, "80%");
    EXPECT_EQ(desktop_.item.pictureCount, 0);
}

TEST_F(StatusItemControllerTest, NothingHappensAfterItIsGone) {
    fly(20);
    useWeek(30);
    controller_.reset();
    desktop_.item.pictureCount = 0;
    settle();
    desktop_.session.setScreensAsleep(true);
    desktop_.item.click();
    EXPECT_EQ(desktop_.item.pictureCount, 0);
    EXPECT_FALSE(desktop_.popover.isShown());
    EXPECT_FALSE(desktop_.timer.isRunning());
}

}  // namespace
}  // namespace brimwatch
