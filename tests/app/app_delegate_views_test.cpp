// What is seen of a change while something is shown.

#include <gmock/gmock.h>

#include <QColor>
#include <QCoroTask>
#include <QKeyEvent>
#include <QRasterWindow>
#include <functional>
#include <memory>
#include <utility>

#include "app_delegate_fixture.h"
#include "harness/process.h"
#include "log_capture.h"
#include "presentation/colors.h"
#include "publish/limits_cloud.h"
#include "publish/publish_examples.h"
#include "support/language.h"

namespace brimwatch {
namespace {

class AppDelegateViewsTest : public test::AppDelegateFixture {
  protected:
    static QString textOf(const QQuickItem* item) { return item->property("text").toString(); }
    static bool comesTrue(const std::function<bool()>& condition) {
        return test::eventually([&condition] {
            QCoreApplication::processEvents();
            return condition();
        });
    }
    static void pressControl(QWindow& window, Qt::Key key) {
        QKeyEvent press(QEvent::KeyPress, key, Qt::ControlModifier);
        QCoreApplication::sendEvent(&window, &press);
    }
    void speakEnglish() { model().setLanguage(languageOfCode("en")); }
};

TEST_F(AppDelegateViewsTest, TheMenuOfTheItemFollowsWhatTheUserChooses) {
    makeRegisteredFolder(".claude-a");
    makeRegisteredFolder(".claude-b");
    launchConnected();
    writeLimits("claude-a", 10, 20);
    writeLimits("claude-b", 10, 20);
    model().refresh();
    QCoreApplication::processEvents();
    const auto first = [this] { return desktop_.item.menu.front().label; };
    ASSERT_TRUE(first().contains("Claude · a"));
    ASSERT_TRUE(first().contains("80%"));
    model().setUsageDisplay(UsageDisplay::used);
    QCoreApplication::processEvents();
    EXPECT_TRUE(first().contains("20%"));
    model().moveCard("subscription.claude-b", -1);
    QCoreApplication::processEvents();
    EXPECT_TRUE(first().contains("Claude · b"));
    speakEnglish();
    QCoreApplication::processEvents();
    EXPECT_EQ(desktop_.item.menu.back().label, "Quit");
}

TEST_F(AppDelegateViewsTest, TheOpenPopoverFollowsTheLanguage) {
    launchConnected();
    choose(StatusMenuCommand::open);
    const QQuickItem* quit = popoverItem("menu.quit");
    const QQuickItem* empty = popoverItem("emptyText");
    const QQuickItem* sending = popoverItem("sending");
    ASSERT_TRUE(quit != nullptr && empty != nullptr && sending != nullptr);
    ASSERT_EQ(textOf(quit), "종료");
    const QString emptyBefore = textOf(empty);
    speakEnglish();
    EXPECT_TRUE(comesTrue(
        [&] { return textOf(sending) == "This development build sends nothing to iPhones."; }));
    EXPECT_EQ(textOf(quit), "Quit");
    EXPECT_NE(textOf(empty), emptyBefore);
}

TEST_F(AppDelegateViewsTest, TheOpenSettingsFollowTheLanguage) {
    launchConnected().reopen();
    const QQuickItem* button = settingsItem("settings.removeEverything");
    ASSERT_NE(button, nullptr);
    ASSERT_EQ(textOf(button), "모두 해제");
    speakEnglish();
    EXPECT_TRUE(comesTrue([button] { return textOf(button) == "Undo everything"; }));
}

TEST_F(AppDelegateViewsTest, ThePopoverAndTheLinkFollowTheTextSizeOfTheDesktop) {
    desktop_.appearance.setTextScale(2);
    AppDelegate& delegate = launchConnected();
    choose(StatusMenuCommand::open);
    const QQuickItem* sending = popoverItem("sending");
    ASSERT_NE(sending, nullptr);
    const auto size = [sending] { return sending->property("font").value<QFont>().pixelSize(); };
    EXPECT_EQ(size(), 24);
    delegate.showPhoneLink();
    EXPECT_EQ(sheet_.textScale, 2);
    desktop_.appearance.setTextScale(1);
    EXPECT_EQ(size(), 12);
    EXPECT_EQ(sheet_.textScale, 1);
}

QCoro::Task<CloudRecord> refusedWithoutAccount(ShareToSave /*share*/) {
    throw LimitsCloud::Failure(LimitsCloud::Failure::Reason::noAccount);
    co_return CloudRecord{};
}

TEST_F(AppDelegateViewsTest, ThePopoverWarnsWhereNothingReachesTheIPhone) {
    const test::LogCapture quiet;
    defaults_.put(std::string(settings_key::setupDone), "true");
    makeRegisteredFolder(".claude");
    writeLimits("claude-default", 10, 20);
    HelperModel::Surroundings around = surroundings();
    around.cloud = std::make_unique<CloudPublisher>(
        CloudPublisher::Surroundings{.defaults = &defaults_,
                                     .right = PublishingRight::granted,
                                     .now = [this] { return now(); },
                                     .sleep = time_.sleeper(),
                                     .loadKey = [] { return test::keyFilledWith('k'); },
                                     .save = refusedWithoutAccount,
                                     .remove = []() -> QCoro::Task<> { co_return; }});
    start(std::move(around));
    launch();
    choose(StatusMenuCommand::open);
    const QQuickItem* sending = popoverItem("sending");
    ASSERT_NE(sending, nullptr);
    const auto color = [sending] { return sending->property("color").value<QColor>(); };
    EXPECT_EQ(color(), colors::secondaryLabel.light);
    while (time_.wakeNext())
        QCoreApplication::processEvents();
    EXPECT_TRUE(comesTrue([&color] { return color() == colors::levelWarning.light; }));
}

TEST_F(AppDelegateViewsTest, TheKeysOfTheSettingsActInTheLinkToAPhoneToo) {
    AppDelegate& delegate = launchConnected();
    delegate.reopen();
    QRasterWindow link;
    link.show();
    sheet_.window = &link;
    delegate.showPhoneLink();
    pressControl(link, Qt::Key_Q);
    EXPECT_EQ(quitCount_, 1);
    pressControl(link, Qt::Key_W);
    EXPECT_FALSE(link.isVisible());
    EXPECT_TRUE(delegate.setupWindow().isVisible());
}

TEST_F(AppDelegateViewsTest, WhatTheKeysOfTheSettingsDoIsNamedInTheLanguage) {
    AppDelegate& delegate = launchConnected();
    const auto name = [&delegate] { return delegate.setupWindow().actions().front()->text(); };
    ASSERT_EQ(name(), "Brimwatch? 종료");
    speakEnglish();
    EXPECT_EQ(name(), "Quit Brimwatch?");
}

}  // namespace
}  // namespace brimwatch
