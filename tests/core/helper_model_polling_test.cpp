// When Codex is asked, and how the requests fold into runs.

#include <gmock/gmock.h>

#include <filesystem>

#include "accounts_fixture.h"
#include "core/codex_status_text.h"

namespace brimwatch {
namespace {

using namespace std::chrono_literals;
using test::SignalCount;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class HelperModelPolling : public test::AccountsFixture {
  protected:
    // Three accounts: "alpha", "beta" and the default one.
    void startWithThree() {
        makeCodexFolder(".codex-alpha");
        makeCodexFolder(".codex-beta");
        makeCodexFolder(".codex");
        start();
    }
    bool isIdle() { return !model().pollingCodex() && !model().codexPollRequested(); }
};

TEST_F(HelperModelPolling, DoesNothingWhileCodexIsOff) {
    start();
    model().setCodexEnabled(false);
    makeCodexFolder(".codex-late");
    poll();
    settle();
    EXPECT_FALSE(codex_.isAsking());
    EXPECT_TRUE(isIdle());
    EXPECT_EQ(model().codexAccounts().size(), 1U);
}

TEST_F(HelperModelPolling, DoesNothingDuringARemoval) {
    startAndBeginRemoval();
    makeCodexFolder(".codex-late");
    poll();
    EXPECT_FALSE(codex_.isAsking());
    EXPECT_TRUE(isIdle());
    EXPECT_EQ(model().codexAccounts().size(), 1U);
}

TEST_F(HelperModelPolling, IsRunningWhileTheQuestionIsOpenAndIdleAfterTheAnswer) {
    start();
    EXPECT_TRUE(isIdle());
    poll();
    EXPECT_TRUE(model().pollingCodex());
    EXPECT_FALSE(model().codexPollRequested());
    answer(10);
    EXPECT_TRUE(isIdle());
}

TEST_F(HelperModelPolling, ASecondCallerStartsNoSecondRun) {
    start();
    poll();
    poll();
    settle();
    EXPECT_EQ(codex_.openCount(), 1U);
    EXPECT_EQ(codex_.questions().size(), 1U);
    EXPECT_TRUE(model().pollingCodex());
    EXPECT_TRUE(model().codexPollRequested());
}

TEST_F(HelperModelPolling, ExactlyOneMoreRunFollowsHoweverManyAreAskedFor) {
    start();
    poll();
    for (int i = 0; i < 5; ++i)
        poll();
    answer(10);
    EXPECT_FALSE(codex_.isAsking()) << "the next run is a task of its own";
    EXPECT_TRUE(isIdle());
    settle();
    EXPECT_EQ(codex_.questions().size(), 2U);
    answer(11);
    settle();
    EXPECT_EQ(codex_.questions().size(), 2U);
    EXPECT_TRUE(isIdle());
}

TEST_F(HelperModelPolling, ARequestDuringTheSecondRunLeadsToAThird) {
    start();
    poll();
    poll();
    answer(10);
    settle();
    poll();
    answer(11);
    settle();
    EXPECT_EQ(codex_.questions().size(), 3U);
}

TEST_F(HelperModelPolling, ARequestOutlivesARunThatWasCutShort) {
    start();
    poll();
    poll();
    model().setCodexEnabled(false);
    answer(10);
    EXPECT_TRUE(isIdle());
    model().setCodexEnabled(true);
    settle();
    EXPECT_EQ(codex_.questions().size(), 2U);
}

TEST_F(HelperModelPolling, TheRunThatWasRequestedDoesNothingIfCodexIsOffByThen) {
    start();
    poll();
    poll();
    model().setCodexEnabled(false);
    answer(10);
    settle();
    EXPECT_EQ(codex_.questions().size(), 1U);
    EXPECT_TRUE(isIdle());
}

TEST_F(HelperModelPolling, LooksForAccountsBeforeItAsks) {
    start();
    model().setCodexAccount(codexAccount("default"), false);
    makeCodexFolder(".codex-new");
    poll();
    EXPECT_THAT(askedKeys(), ElementsAre("new"));
}

TEST_F(HelperModelPolling, AsksTheExecutableThatIsFoundAtTheStartOfTheRun) {
    start();
    codex_.installed = "/opt/one/codex";
    poll();
    codex_.installed = "/opt/two/codex";
    answer(10);
    poll();
    ASSERT_EQ(codex_.questions().size(), 2U);
    EXPECT_EQ(codex_.questions()[0].executable, "/opt/one/codex");
    EXPECT_EQ(codex_.questions()[1].executable, "/opt/two/codex");
}

TEST_F(HelperModelPolling, OneExecutableServesTheWholeRun) {
    startWithThree();
    codex_.installed = "/opt/one/codex";
    poll();
    codex_.installed = std::nullopt;
    answer(10);
    ASSERT_EQ(codex_.questions().size(), 2U);
    EXPECT_EQ(codex_.questions()[1].executable, "/opt/one/codex");
    EXPECT_EQ(model().codexStatus(), std::nullopt);
}

TEST_F(HelperModelPolling, WithoutAnExecutableTheStatusOfCodexSaysSoAndNobodyIsAsked) {
    start();
    codex_.installed.reset();
    poll();
    EXPECT_EQ(model().codexStatus(),
              "codex를 못 찾았어요. ChatGPT 앱이나 codex CLI를 설치해 주세요.");
    EXPECT_FALSE(codex_.isAsking());
    EXPECT_TRUE(isIdle());
}

TEST_F(HelperModelPolling, WithoutAnExecutableTheAccountsKeepTheirStatuses) {
    startWithThree();
    poll();
    codex_.answer(test::codexFailure(Kind::noLimits));
    answer(20);
    codex_.answer(test::codexFailure(Kind::server));
    const HelperModel::Texts former = model().codexAccountStatuses();
    ASSERT_EQ(former.size(), 3U);
    codex_.installed.reset();
    poll();
    EXPECT_EQ(model().codexAccountStatuses(), former);
    EXPECT_THAT(shownIds(), ElementsAre("codex-beta"));
}

TEST_F(HelperModelPolling, ARequestDuringARunWithoutAnExecutableLeadsToOneMore) {
    start();
    codex_.installed.reset();
    QObject::connect(&model(), &HelperModel::codexStatusChanged, &model(), [this] {
        if (!model().pollingCodex()) return;
        codex_.installed = "/usr/bin/codex";
        poll();
    });
    poll();
    EXPECT_TRUE(isIdle());
    EXPECT_FALSE(codex_.isAsking());
    settle();
    EXPECT_TRUE(codex_.isAsking());
}

TEST_F(HelperModelPolling, AsksOneAccountAfterTheOtherInTheOrderOfTheList) {
    startWithThree();
    poll();
    EXPECT_THAT(askedKeys(), ElementsAre("alpha"));
    settle();
    EXPECT_EQ(codex_.openCount(), 1U);
    answer(10);
    EXPECT_THAT(askedKeys(), ElementsAre("alpha", "beta"));
    EXPECT_EQ(codex_.openCount(), 1U);
    codex_.answer(test::codexFailure(Kind::timedOut));
    EXPECT_THAT(askedKeys(), ElementsAre("alpha", "beta", "default"));
    EXPECT_EQ(codex_.openCount(), 1U);
    answer(12);
    EXPECT_FALSE(codex_.isAsking());
    EXPECT_THAT(shownIds(), ElementsAre("codex-alpha", "codex-default"));
}

TEST_F(HelperModelPolling, AnAccountThatAppearsDuringARunIsAskedInTheNextOne) {
    makeCodexFolder(".codex-alpha");
    start();
    poll();
    makeCodexFolder(".codex-beta");
    answer(10);
    answer(11);
    EXPECT_THAT(askedKeys(), ElementsAre("alpha", "default"));
    EXPECT_EQ(codexAccount("beta").name, "beta") << "an answer is followed by a refresh";
    poll();
    answer(12);
    EXPECT_THAT(askedKeys(), ElementsAre("alpha", "default", "alpha", "beta"));
}

TEST_F(HelperModelPolling, AnAccountThatGoesAwayDuringARunIsNotAsked) {
    startWithThree();
    poll();
    std::filesystem::remove_all(path(".codex-beta"));
    answer(10);
    EXPECT_THAT(askedKeys(), ElementsAre("alpha", "default"));
}

TEST_F(HelperModelPolling, AnExcludedAccountIsNotAsked) {
    startWithThree();
    model().setCodexAccount(codexAccount("beta"), false);
    poll();
    answer(10);
    EXPECT_THAT(askedKeys(), ElementsAre("alpha", "default"));
}

TEST_F(HelperModelPolling, AnAccountSwitchedOffDuringARunIsNotAsked) {
    startWithThree();
    poll();
    model().setCodexAccount(codexAccount("beta"), false);
    answer(10);
    EXPECT_THAT(askedKeys(), ElementsAre("alpha", "default"));
}

TEST_F(HelperModelPolling, AnAccountSwitchedOnDuringARunIsStillAskedInIt) {
    startWithThree();
    model().setCodexAccount(codexAccount("beta"), false);
    poll();
    model().setCodexAccount(codexAccount("beta"), true);
    answer(10);
    EXPECT_THAT(askedKeys(), ElementsAre("alpha", "beta"));
}

TEST_F(HelperModelPolling, AChangeSpoilsOnlyTheQuestionDuringWhichItHappens) {
    startWithThree();
    poll();
    model().setCodexAccount(codexAccount("default"), false);
    answer(10);
    EXPECT_EQ(codexStatusOf("alpha"), "");
    answer(11);
    EXPECT_EQ(codexStatusOf("beta"), receivedNow());
}

TEST_F(HelperModelPolling, ARunThatFindsCodexClearsTheStatusAtItsEnd) {
    startWithThree();
    codex_.installed.reset();
    poll();
    codex_.installed = "/usr/bin/codex";
    const SignalCount changes(model(), &HelperModel::codexStatusChanged);
    poll();
    answer(10);
    answer(11);
    EXPECT_EQ(model().codexStatus(), std::string(codexNotFoundText));
    answer(12);
    EXPECT_EQ(model().codexStatus(), std::nullopt);
    EXPECT_EQ(changes.count(), 1);
}

TEST_F(HelperModelPolling, ARunInWhichAllAccountsFailClearsTheStatusToo) {
    start();
    codex_.installed.reset();
    poll();
    codex_.installed = "/usr/bin/codex";
    poll();
    codex_.answer(test::codexFailure(Kind::notFound));
    EXPECT_EQ(model().codexStatus(), std::nullopt);
}

TEST_F(HelperModelPolling, ARunWithNobodyToAskClearsTheStatusAndRefreshesOnce) {
    int searches = 0;
    HelperModel::Surroundings around = surroundings();
    around.findCodex = [this, &searches] {
        ++searches;
        return codex_.installed;
    };
    start(std::move(around));
    codex_.installed.reset();
    poll();
    ASSERT_NE(model().codexStatus(), std::nullopt);
    model().setCodexAccount(codexAccount("default"), false);
    codex_.installed = "/usr/bin/codex";
    writeLimits("claude-work", 10, 20);
    makeRegisteredFolder(".claude-work");
    searches = 0;
    poll();
    EXPECT_EQ(model().codexStatus(), std::nullopt);
    EXPECT_THAT(askedKeys(), IsEmpty());
    EXPECT_TRUE(isIdle());
    EXPECT_THAT(shownIds(), ElementsAre("claude-work"));
    EXPECT_EQ(searches, 2) << "once for the run, once for its one refresh";
}

TEST_F(HelperModelPolling, SwitchingCodexOffEndsTheRunAtItsNextAnswer) {
    startWithThree();
    poll();
    model().setCodexEnabled(false);
    EXPECT_TRUE(model().pollingCodex());
    answer(10);
    EXPECT_TRUE(isIdle());
    EXPECT_THAT(askedKeys(), ElementsAre("alpha"));
}

TEST_F(HelperModelPolling, SwitchingCodexOffForAMomentSkipsOnlyTheOpenQuestion) {
    startWithThree();
    poll();
    model().setCodexEnabled(false);
    model().setCodexEnabled(true);
    answer(10);
    EXPECT_TRUE(model().pollingCodex());
    EXPECT_THAT(askedKeys(), ElementsAre("alpha", "beta"));
    EXPECT_EQ(codexStatusOf("alpha"), "");
}

TEST_F(HelperModelPolling, ARunEndsIfARemovalBeginsDuringAQuestion) {
    makeCodexFolder(".codex-alpha");
    for (const char* name : {".claude-a", ".claude-b"})
        makeRegisteredFolder(name);
    start();
    poll();
    removeEverything();
    ASSERT_TRUE(model().isRemoving());
    answer(10);
    EXPECT_TRUE(isIdle());
    EXPECT_THAT(askedKeys(), ElementsAre("alpha"));
    settle();
    EXPECT_FALSE(codex_.isAsking());
}

TEST_F(HelperModelPolling, AQuestionThatTheEndOfTheProgramCutsShortLeavesNoTrace) {
    startWithThree();
    codex_.installed.reset();
    poll();
    codex_.installed = "/usr/bin/codex";
    poll();
    poll();
    codex_.answer(test::codexSystemError(std::errc::operation_canceled));
    EXPECT_THAT(askedKeys(), ElementsAre("alpha")) << "nobody else is asked";
    EXPECT_THAT(model().codexAccountStatuses(), IsEmpty());
    EXPECT_EQ(model().codexStatus(), std::string(codexNotFoundText));
    EXPECT_TRUE(isIdle());
    time_.cancelSleeps();
    EXPECT_FALSE(codex_.isAsking()) << "nor in the run that was requested";
}

TEST_F(HelperModelPolling, AnObserverMayAskForAPollWhenAReadingArrives) {
    start();
    QObject::connect(&model(), &HelperModel::receivedCodexChanged, &model(), [this] {
        if (codex_.questions().size() < 3) poll();
    });
    poll();
    answer(10);
    settle();
    answer(11);
    settle();
    answer(12);
    settle();
    EXPECT_EQ(codex_.questions().size(), 3U);
    EXPECT_TRUE(isIdle());
}

TEST_F(HelperModelPolling, APollThatWasStartedByAModelThatIsGoneDoesNothing) {
    start();
    model().connectCodex();
    model_.reset();
    settle();
    EXPECT_FALSE(codex_.isAsking());
    EXPECT_EQ(time_.sleeperCount(), 0U);
}

}  // namespace
}  // namespace brimwatch
