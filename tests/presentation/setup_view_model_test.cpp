#include "presentation/setup/setup_view_model.h"

#include <gmock/gmock.h>

#include <QSignalSpy>

#include "setup_fixture.h"

namespace brimwatch {
namespace {

class SetupSettings : public test::SetupFixture {
  protected:
    static void turn() { QCoreApplication::processEvents(); }
    int rows() { return settings_->claude()->accounts()->rowCount(); }
};

TEST_F(SetupSettings, AreUpToDateAsSoonAsTheyAreShown) {
    makeRegisteredFolder(".claude-a");
    start();
    makeSettings();
    EXPECT_EQ(rows(), 0);
    settings_->setShown(true);
    EXPECT_EQ(rows(), 1);
}

TEST_F(SetupSettings, RestWhileTheyAreHidden) {
    start();
    makeShownSettings();
    settings_->setShown(false);
    makeRegisteredFolder(".claude-a");
    model().refresh();
    turn();
    EXPECT_EQ(rows(), 0);
    settings_->setShown(true);
    EXPECT_EQ(rows(), 1);
}

TEST_F(SetupSettings, DropWhatTheyWereAboutToShowWhenTheyAreHidden) {
    start();
    makeShownSettings();
    makeRegisteredFolder(".claude-a");
    model().refresh();
    settings_->setShown(false);
    turn();
    EXPECT_EQ(rows(), 0);
}

TEST_F(SetupSettings, TakeTheChangesOfOneTurnTogether) {
    startWithThreeCards();
    makeShownSettings();
    QSignalSpy changed(settings_->claude()->accounts(), &QAbstractItemModel::dataChanged);
    settings_->setUsageName("claude-a", "one");
    settings_->setUsageName("claude-a", "two");
    EXPECT_EQ(changed.count(), 0);
    turn();
    EXPECT_EQ(changed.count(), 1);
}

// Each of the changes alone.
TEST_F(SetupSettings, FollowTheModel) {
    startWithThreeCards();
    makeShownSettings();
    const auto status = [this](int row) {
        turn();
        return settings_->codex()
            ->accounts()
            ->accounts()
            .at(static_cast<std::size_t>(row))
            .statusText;
    };
    const int row = static_cast<int>(model().codexAccounts().size()) - 1;
    for (int each = 0; each <= row; ++each)
        EXPECT_NE(status(each), "수집 중지됨");
    model().setCodexEnabled(false);
    EXPECT_EQ(status(row), "수집 중지됨");
    model().setCodexEnabled(true);
    EXPECT_NE(status(row), "수집 중지됨");
    model().setCodexAccount(model().codexAccounts().back(), false);
    EXPECT_EQ(status(row), "수집 중지됨");
    model().setClaudeUsagePaused(true);
    turn();
    EXPECT_FALSE(settings_->claude()->accounts()->accounts().front().isOn);
    EXPECT_TRUE(settings_->cardOrder()->isShown());
    model().reload();
    turn();
    EXPECT_FALSE(settings_->cardOrder()->isShown());
}

TEST_F(SetupSettings, FollowTheOrderOfTheCards) {
    startWithThreeCards();
    makeShownSettings();
    QSignalSpy moved(settings_->cardOrder(), &QAbstractItemModel::rowsMoved);
    model().moveCard("subscription.codex-c", -1);
    turn();
    EXPECT_EQ(moved.count(), 1);
}

TEST_F(SetupSettings, TellAFailureUntilItWasSeen) {
    start();
    makeShownSettings();
    QSignalSpy spy(settings_.get(), &SetupViewModel::failureChanged);
    model().connectClaude();
    turn();
    EXPECT_EQ(settings_->failure(),
              "Claude Code 계정을 찾지 못했어요. Claude Code에 로그인한 뒤 다시 연결해 주세요.");
    settings_->clearFailure();
    turn();
    EXPECT_EQ(model().failure(), std::nullopt);
    EXPECT_EQ(settings_->failure(), "");
    EXPECT_EQ(spy.count(), 2);
}

TEST_F(SetupSettings, TellAFailureThatCameWhileTheyWereHidden) {
    start();
    makeSettings();
    model().connectClaude();
    settings_->setShown(true);
    EXPECT_NE(settings_->failure(), "");
}

TEST_F(SetupSettings, RemoveEverything) {
    const std::string folder = makeRegisteredFolder(".claude-a");
    start();
    makeShownSettings();
    QSignalSpy removing(settings_.get(), &SetupViewModel::isRemovingChanged);
    QSignalSpy removed(settings_.get(), &SetupViewModel::removedEverythingChanged);
    settings_->removeEverything();
    EXPECT_TRUE(settings_->isRemoving());
    EXPECT_FALSE(settings_->removedEverything());
    settleAll();
    EXPECT_FALSE(settings_->isRemoving());
    EXPECT_TRUE(settings_->removedEverything());
    EXPECT_FALSE(isRegistered(folder));
    EXPECT_EQ(removing.count(), 2);
    EXPECT_EQ(removed.count(), 1);
}

TEST_F(SetupSettings, ASecondPressDuringARemovalDoesNothing) {
    makeRegisteredFolder(".claude-a");
    start();
    makeShownSettings();
    const test::SignalCount removing(model(), &HelperModel::isRemovingChanged);
    settings_->removeEverything();
    settings_->removeEverything();
    settleAll();
    EXPECT_EQ(removing.count(), 2);
}

TEST_F(SetupSettings, PromiseWithoutMarkupToWhoListens) {
    EXPECT_EQ(SetupViewModel::promise(),
              "AI 서비스 **약관**을 지키고, **AI 로그인 정보**는 수집하지 않아요.");
    EXPECT_EQ(SetupViewModel::spokenPromise(),
              "AI 서비스 약관을 지키고, AI 로그인 정보는 수집하지 않아요.");
}

}  // namespace
}  // namespace brimwatch
