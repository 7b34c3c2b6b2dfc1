#include <gmock/gmock.h>

#include <QRasterWindow>

#include "app_delegate_fixture.h"
#include "harness/process.h"
#include "presentation/colors.h"

namespace brimwatch {
namespace {

using ::testing::IsEmpty;
using ::testing::Not;

class AppDelegateTest : public test::AppDelegateFixture {};

TEST_F(AppDelegateTest, ShowsTheLinkToAPhoneInItsThemeAndTextSize) {
    AppDelegate& delegate = launchConnected();
    delegate.showPhoneLink();
    EXPECT_EQ(sheet_.showings, 1);
    EXPECT_EQ(sheet_.appearance, Appearance::light);
    EXPECT_EQ(sheet_.textScale, desktop_.appearance.textScale());
    model().setAppTheme(AppTheme::dark);
    EXPECT_TRUE(test::eventually([this] {
        QCoreApplication::processEvents();
        return sheet_.appearance == Appearance::dark;
    }));
    delegate.showPhoneLink();
    EXPECT_EQ(sheet_.showings, 2);
    EXPECT_EQ(sheetCount_, 1);
}

TEST_F(AppDelegateTest, TriesAgainToShowTheLinkIfTheViewsWereNotThere) {
    AppDelegate& delegate = launchConnected();
    hasViews_ = false;
    delegate.showPhoneLink();
    EXPECT_EQ(sheet_.showings, 0);
    hasViews_ = true;
    delegate.showPhoneLink();
    EXPECT_EQ(sheet_.showings, 1);
}

TEST_F(AppDelegateTest, TheLinkToAPhoneStaysBeforeTheSettingsItWasOpenedFrom) {
    AppDelegate& delegate = launchConnected();
    delegate.showPhoneLink();
    EXPECT_EQ(sheet_.parent, nullptr);
    delegate.reopen();
    QMetaObject::invokeMethod(settingsItem("phoneLink.show"), "clicked");
    EXPECT_EQ(sheet_.showings, 2);
    EXPECT_EQ(sheet_.parent, delegate.setupWindow().window());
}

TEST_F(AppDelegateTest, TheSettingsFollowTheThemeWhileTheyAreOpen) {
    AppDelegate& delegate = launchConnected();
    delegate.reopen();
    const auto ground = [&delegate] {
        return static_cast<QQuickView*>(delegate.setupWindow().window())
            ->grabWindow()
            .pixelColor(4, 4);
    };
    EXPECT_EQ(ground(), colors::surfaceFill.light);
    model().setAppTheme(AppTheme::dark);
    EXPECT_TRUE(test::eventually([&ground] {
        QCoreApplication::processEvents();
        return ground() == colors::surfaceFill.dark;
    }));
    model().setAppTheme(AppTheme::system);
    desktop_.appearance.setDark(true);
    EXPECT_EQ(ground(), colors::surfaceFill.dark);
    desktop_.appearance.setDark(false);
    EXPECT_EQ(ground(), colors::surfaceFill.light);
    desktop_.appearance.setDark(true);
    ASSERT_EQ(ground(), colors::surfaceFill.dark);
    model().setAppTheme(AppTheme::light);
    EXPECT_TRUE(test::eventually([&ground] {
        QCoreApplication::processEvents();
        return ground() == colors::surfaceFill.light;
    }));
}

TEST_F(AppDelegateTest, TheSettingsAreMadeInTheTextSizeOfTheDesktop) {
    desktop_.appearance.setTextScale(2);
    AppDelegate& delegate = launchConnected();
    delegate.reopen();
    EXPECT_EQ(promiseSize(), 24);
    desktop_.appearance.setTextScale(1);
    EXPECT_EQ(promiseSize(), 12);
}

TEST_F(AppDelegateTest, TheCardsOpenTheSettingsOnTheirOrder) {
    makeRegisteredFolder(".claude-a");
    makeRegisteredFolder(".claude-b");
    launchConnected();
    writeLimits("claude-a", 10, 20);
    writeLimits("claude-b", 10, 20);
    model().refresh();
    choose(StatusMenuCommand::open);
    QQuickItem* cards = popoverItem("cards");
    ASSERT_NE(cards, nullptr);
    QMetaObject::invokeMethod(cards, "reorderChosen");
    EXPECT_FALSE(delegate_->popover().isShown());
    EXPECT_TRUE(delegate_->setupWindow().isVisible());
    EXPECT_TRUE(settingsItem("menuCardOrder")->isVisible());
    EXPECT_TRUE(test::eventually([this] {
        QCoreApplication::processEvents();
        return !model().revealsMenuCardOrder();
    }));
    const QQuickItem* scroll = settingsItem("scroll");
    EXPECT_TRUE(test::eventually([scroll] {
        QCoreApplication::processEvents();
        return scroll->property("contentY").toDouble() > 0;
    }));
}

TEST_F(AppDelegateTest, UpdatesThatHaveSomethingToSayShowTheSettings) {
    AppDelegate& delegate = launchConnected();
    delegate.showUpdates();
    EXPECT_TRUE(delegate.setupWindow().isVisible());
    const auto* const view = static_cast<QQuickView*>(delegate.setupWindow().window());
    const auto* const waiting = view->rootObject()->findChild<QObject*>("revealUpdates");
    ASSERT_NE(waiting, nullptr);
    EXPECT_TRUE(waiting->property("running").toBool());
}

TEST_F(AppDelegateTest, AFirstRunShowsTheSettings) {
    start();
    launch();
    ASSERT_EQ(visibleWindows().size(), 1U);
    EXPECT_EQ(visibleWindows().front()->title(), "Brimwatch?");
}

TEST_F(AppDelegateTest, ASetupThatIsStoredAsNotDoneShowsTheSettings) {
    startWith(settings_key::setupDone, "false");
    launch();
    EXPECT_EQ(visibleWindows().size(), 1U);
}

TEST_F(AppDelegateTest, OnceConnectedTheItemAloneAppears) {
    launchConnected();
    EXPECT_EQ(desktop_.item.showCount, 1);
    EXPECT_THAT(visibleWindows(), IsEmpty());
}

TEST_F(AppDelegateTest, TheModelIsAtWorkBeforeTheLaunch) {
    startWithServices();
    EXPECT_THAT(services_.watch.folder, Not(IsEmpty()));
    EXPECT_EQ(desktop_.item.showCount, 0);
    launch();
    EXPECT_EQ(desktop_.item.showCount, 1);
}

TEST_F(AppDelegateTest, TheUserIsBusyWhileTheSettingsOrThePopoverAreBeforeHim) {
    AppDelegate& delegate = launchConnected();
    EXPECT_FALSE(updater_.isBusy());
    choose(StatusMenuCommand::open);
    EXPECT_TRUE(updater_.isBusy());
    delegate.popover().performClose();
    EXPECT_FALSE(updater_.isBusy());
    delegate.reopen();
    EXPECT_TRUE(updater_.isBusy());
    visibleWindows().front()->close();
    EXPECT_FALSE(updater_.isBusy());
}

TEST_F(AppDelegateTest, NobodyIsBusyInAProgramThatIsNotActive) {
    AppDelegate& delegate = launchConnected();
    delegate.reopen();
    choose(StatusMenuCommand::open);
    isActive_ = false;
    EXPECT_FALSE(updater_.isBusy());
}

TEST_F(AppDelegateTest, NobodyIsBusyBeforeTheLaunchAndAfterTheDelegate) {
    EXPECT_FALSE(updater_.isBusy());
    launchConnected().reopen();
    ASSERT_TRUE(updater_.isBusy());
    delegate_.reset();
    EXPECT_FALSE(updater_.isBusy());
}

TEST_F(AppDelegateTest, AReopenShowsTheSettings) {
    AppDelegate& delegate = launchConnected();
    delegate.reopen();
    EXPECT_EQ(visibleWindows().size(), 1U);
}

TEST_F(AppDelegateTest, AReopenBringsTheOneWindowForward) {
    AppDelegate& delegate = launchConnected();
    delegate.reopen();
    const std::vector<QWindow*> first = visibleWindows();
    delegate.reopen();
    EXPECT_EQ(visibleWindows(), first);
}

TEST_F(AppDelegateTest, AReopenBringsAWindowForwardThatLiesBehindAnother) {
    AppDelegate& delegate = launchConnected();
    delegate.reopen();
    const QWindow* settings = delegate.setupWindow().window();
    const auto becomesActive = [settings](bool active) {
        return test::eventually([settings, active] {
            QCoreApplication::processEvents();
            return settings->isActive() == active;
        });
    };
    ASSERT_TRUE(becomesActive(true));
    QRasterWindow other;
    other.show();
    other.requestActivate();
    ASSERT_TRUE(becomesActive(false));
    delegate.reopen();
    EXPECT_TRUE(becomesActive(true));
}

TEST_F(AppDelegateTest, AClosedWindowComesBackAsTheSame) {
    AppDelegate& delegate = launchConnected();
    delegate.reopen();
    const std::vector<QWindow*> first = visibleWindows();
    ASSERT_EQ(first.size(), 1U);
    first.front()->close();
    EXPECT_THAT(visibleWindows(), IsEmpty());
    EXPECT_EQ(quitCount_, 0);
    delegate.reopen();
    EXPECT_EQ(visibleWindows(), first);
}

TEST_F(AppDelegateTest, AClickOpensThePopoverAndTheMenuDoesToo) {
    AppDelegate& delegate = launchConnected();
    desktop_.item.click(QPoint(300, 10));
    EXPECT_TRUE(delegate.popover().isShown());
    delegate.popover().performClose();
    ASSERT_FALSE(delegate.popover().isShown());
}

TEST_F(AppDelegateTest, TheMenuOpensThePopover) {
    AppDelegate& delegate = launchConnected();
    choose(StatusMenuCommand::open);
    EXPECT_TRUE(delegate.popover().isShown());
}

TEST_F(AppDelegateTest, TheMenuLeavesAnOpenPopoverOpen) {
    AppDelegate& delegate = launchConnected();
    choose(StatusMenuCommand::open);
    choose(StatusMenuCommand::open);
    EXPECT_TRUE(delegate.popover().isShown());
}

TEST_F(AppDelegateTest, ThePopoverIsGoneBeforeTheSettingsCome) {
    AppDelegate& delegate = launchConnected();
    choose(StatusMenuCommand::open);
    bool wereSettingsThere = true;
    QObject::connect(&delegate.popover(), &Popover::didClose,
                     [&] { wereSettingsThere = delegate.setupWindow().isVisible(); });
    choose(StatusMenuCommand::setup);
    EXPECT_FALSE(wereSettingsThere);
}

TEST_F(AppDelegateTest, TheSettingsTakeThePlaceOfThePopover) {
    AppDelegate& delegate = launchConnected();
    choose(StatusMenuCommand::open);
    ASSERT_TRUE(delegate.popover().isShown());
    choose(StatusMenuCommand::setup);
    EXPECT_FALSE(delegate.popover().isShown());
    EXPECT_TRUE(delegate.setupWindow().isVisible());
}

TEST_F(AppDelegateTest, TheMenuReceivesFiguresAtOnce) {
    makeRegisteredFolder(".claude");
    launchConnected();
    model().refresh();
    writeLimits("claude-default", 10, 20);
    ASSERT_THAT(shownIds(), IsEmpty());
    choose(StatusMenuCommand::receiveNow);
    EXPECT_THAT(shownIds(), Not(IsEmpty()));
}

TEST_F(AppDelegateTest, TheMenuEndsTheProgram) {
    launchConnected();
    choose(StatusMenuCommand::quit);
    EXPECT_EQ(quitCount_, 1);
}

TEST_F(AppDelegateTest, ACommandThatNobodyKnowsDoesNothing) {
    launchConnected();
    emit desktop_.item.commandChosen(99);
    emit desktop_.item.commandChosen(0);
    EXPECT_EQ(quitCount_, 0);
    EXPECT_THAT(visibleWindows(), IsEmpty());
}

TEST_F(AppDelegateTest, TheMenuOfTheItemFollowsTheFigures) {
    makeRegisteredFolder(".claude");
    launchConnected();
    model().refresh();
    const std::size_t rowsWithoutFigures = desktop_.item.menu.size();
    writeLimits("claude-default", 10, 20);
    model().reload();
    QCoreApplication::processEvents();
    ASSERT_GT(desktop_.item.menu.size(), rowsWithoutFigures);
    EXPECT_TRUE(desktop_.item.menu.front().label.contains("80%"));
}

TEST_F(AppDelegateTest, OpeningTheMenuLooksForFreshFigures) {
    makeRegisteredFolder(".claude");
    launchConnected();
    writeLimits("claude-default", 10, 20);
    emit desktop_.item.menuOpened();
    EXPECT_THAT(shownIds(), Not(IsEmpty()));
}

TEST_F(AppDelegateTest, OpeningTheMenuTellsOfAResetThatPassedWithoutAFigure) {
    makeRegisteredFolder(".claude");
    launchConnected();
    writeLimits("claude-default", 60, 20);
    model().refresh();
    QCoreApplication::processEvents();
    ASSERT_TRUE(desktop_.item.menu.front().label.contains("40%"));
    advance(std::chrono::hours(3));
    emit desktop_.item.menuOpened();
    EXPECT_TRUE(desktop_.item.menu.front().label.contains("새 값 대기"));
}

}  // namespace
}  // namespace brimwatch
