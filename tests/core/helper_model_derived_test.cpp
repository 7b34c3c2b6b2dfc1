// What a model works out on demand, and what switching Codex on and off sets going.
#include <gmock/gmock.h>

#include <filesystem>

#include "core/helper_model.h"
#include "model_fixture.h"
#include "platform/spawn.h"
#include "support/path_digest.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

using test::ModelFixture;
using test::SignalLog;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
namespace key = settings_key;

class HelperModelDerived : public ModelFixture {
  protected:
    // A removal that has begun and goes on when time passes.
    void beginRemoval() {
        spawn(model().removeEverything());
        ASSERT_TRUE(model().isRemoving());
    }
    static CodexAccounts::Account codexAccount(const std::string& folder, const std::string& key) {
        return {.directory = folder, .name = key, .key = key};
    }
    void answerWith(const CodexPoller::Reading& reading) {
        codex_.answerAtOnce = [reading](const auto&) { return reading; };
    }
    static SubscriptionLimits record(SubscriptionLimits::Provider provider,
                                     const std::string& account) {
        SubscriptionLimits limits;
        limits.provider = provider;
        limits.account = account;
        return limits;
    }
};

TEST_F(HelperModelDerived, WantedClaudeAccountsAreTheRegisteredOnes) {
    makeClaudeFolder(".claude-new");
    makeRegisteredFolder(".claude");
    makeRegisteredFolder(".claude-work");
    test::writeFile(path(".claude-old/settings.json"),
                    R"({"statusLine":{"type":"command","command":"/h/.brimwatch/brimwatch.py"}})");
    start();
    EXPECT_EQ(model().accounts().size(), 4U);
    EXPECT_THAT(model().claudeIDs(), ElementsAre("default", "work"));
    executables_.clear();
    model().refresh();
    EXPECT_EQ(model().accounts().size(), 4U);
    EXPECT_THAT(model().claudeIDs(), IsEmpty());
}

TEST_F(HelperModelDerived, AnAccountAddedByHandIsWantedByItsWholeKey) {
    const std::string folder = resolvedPath(disk_, folder_.file("team")) + "/.claude";
    test::writeFile(folder + "/.claude.json", "{}");
    start();
    ASSERT_TRUE(model().addClaudeFolder(folder));
    ASSERT_EQ(model().accounts().size(), 1U);
    const std::string id = ClaudeCodeSetup::accountID(disk_, model().accounts().front(), home_);
    EXPECT_EQ(id.size(), std::string("team-").size() + 12);
    EXPECT_THAT(model().claudeIDs(), ElementsAre(id));
}

TEST_F(HelperModelDerived, ADeclinedFolderIsNotWantedThoughItsStatusLineIsOurs) {
    const std::string home = makeRegisteredFolder(".claude");
    makeRegisteredFolder(".claude-work");
    startWith(key::claudeAutoConnect, R"({"declined":[")" + home + R"("],"enabled":true})");
    EXPECT_THAT(model().claudeIDs(), ElementsAre("work"));
}

TEST_F(HelperModelDerived, NoClaudeAccountIsWantedDuringAPauseOrARemoval) {
    makeRegisteredFolder(".claude");
    makeRegisteredFolder(".claude-work");
    start();
    model().setClaudeUsagePaused(true);
    EXPECT_THAT(model().claudeIDs(), IsEmpty());
    model().setClaudeUsagePaused(false);
    EXPECT_THAT(model().claudeIDs(), ElementsAre("default", "work"));
    beginRemoval();
    model().setClaudeUsagePaused(false);
    makeRegisteredFolder(".claude-late");
    model().refresh();
    EXPECT_EQ(model().accounts().size(), 3U);
    EXPECT_THAT(model().claudeIDs(), IsEmpty());
    time_.settle();
}

TEST_F(HelperModelDerived, NothingIsWantedFromTheFirstMomentOfARemoval) {
    makeRegisteredFolder(".claude");
    const std::string home = makeCodexFolder(".codex");
    start();
    bool told = false;
    QObject::connect(&model(), &HelperModel::isRemovingChanged, &model(), [&] {
        if (!model().isRemoving()) return;
        told = true;
        EXPECT_TRUE(model().codexEnabled());
        EXPECT_FALSE(model().claudeUsagePaused());
        EXPECT_THAT(model().claudeIDs(), IsEmpty());
        EXPECT_THAT(model().codexIDs(), IsEmpty());
        EXPECT_FALSE(model().isCodexAccountOn(codexAccount(home, "default")));
    });
    beginRemoval();
    EXPECT_TRUE(told);
    time_.settle();
}

TEST_F(HelperModelDerived, WantedCodexAccountsAreThoseThatAreNotExcluded) {
    const std::string home = makeCodexFolder(".codex");
    makeCodexFolder(".codex-a");
    const std::string work = makeCodexFolder(".codex-work");
    start();
    EXPECT_THAT(model().codexIDs(), ElementsAre("a", "default", "work"));
    EXPECT_TRUE(model().isCodexAccountOn(codexAccount(work, "work")));
    model().setCodexAccount(codexAccount(work, "work"), false);
    EXPECT_THAT(model().codexIDs(), ElementsAre("a", "default"));
    EXPECT_FALSE(model().isCodexAccountOn(codexAccount(work, "work")));
    EXPECT_TRUE(model().isCodexAccountOn(codexAccount(home, "default")));
    EXPECT_EQ(model().codexAccounts().size(), 3U);
    model().setCodexEnabled(false);
    EXPECT_THAT(model().codexIDs(), IsEmpty());
    EXPECT_FALSE(model().isCodexAccountOn(codexAccount(home, "default")));
}

TEST_F(HelperModelDerived, NoCodexAccountIsOnDuringARemoval) {
    makeRegisteredFolder(".claude");
    makeRegisteredFolder(".claude-work");
    const std::string home = makeCodexFolder(".codex");
    start();
    beginRemoval();
    EXPECT_THAT(model().codexIDs(), IsEmpty());
    EXPECT_FALSE(model().isCodexAccountOn(codexAccount(home, "default")));
    time_.settle();
    EXPECT_FALSE(model().isRemoving());
}

TEST_F(HelperModelDerived, TheMenuFollowsTheOrderOfTheUser) {
    makeRegisteredFolder(".claude-b");
    for (const char* name : {"a", "c"})
        makeCodexFolder(".codex-" + std::string(name));
    for (const char* id : {"claude-b", "codex-a", "codex-c"})
        writeLimits(id, 10, 40);
    startWith(key::menuOrder, R"(["subscription.codex-c","subscription.gone"])");
    const std::vector<SubscriptionLimits> menu = model().menuLimits();
    ASSERT_EQ(menu.size(), 3U);
    EXPECT_EQ(menu[0].id(), "codex-c");
    EXPECT_EQ(menu[1].id(), "claude-b");
    EXPECT_EQ(menu[2].id(), "codex-a");
    EXPECT_THAT(shownIds(), ElementsAre("claude-b", "codex-a", "codex-c"));
}

TEST_F(HelperModelDerived, CreditsAreThoseOfTheReadingInTheLocaleOfTheUser) {
    CodexPoller::Reading reading = test::codexReading(20, 30, now());
    reading.credits = CodexCredits{
        .hasCredits = true, .unlimited = false, .balance = Decimal::fromDigits("1234.567")};
    HelperModel::Surroundings around = surroundings();
    around.locale = "de_DE";
    start(std::move(around));
    const auto codex = record(SubscriptionLimits::Provider::codex, "default");
    EXPECT_EQ(model().creditText(codex), std::nullopt);
    answerWith(reading);
    spawn(model().pollCodex());
    EXPECT_EQ(model().creditText(codex), CodexCredits::Text{"1.234,56"});
    EXPECT_EQ(model().creditText(record(SubscriptionLimits::Provider::codex, "work")),
              std::nullopt);
    EXPECT_EQ(model().creditText(record(SubscriptionLimits::Provider::claude, "default")),
              std::nullopt);
    answerWith(test::codexReading(20, 30, now()));
    spawn(model().pollCodex());
    EXPECT_EQ(model().creditText(codex), std::nullopt);
}

TEST_F(HelperModelDerived, SwitchingCodexOffForgetsItsAnswersAndTakesItsCardsAway) {
    start();
    answerWith(test::codexReading(20, 30, now()));
    spawn(model().pollCodex());
    codex_.installed.reset();
    spawn(model().pollCodex());
    ASSERT_NE(model().codexStatus(), std::nullopt);
    ASSERT_THAT(shownIds(), ElementsAre("codex-default"));
    SignalLog log(model());
    model().setCodexEnabled(false);
    EXPECT_EQ(model().codexConnectionRevision(), 1);
    EXPECT_THAT(model().receivedCodex(), IsEmpty());
    EXPECT_THAT(model().codexAccountStatuses(), IsEmpty());
    EXPECT_EQ(model().codexStatus(), std::nullopt);
    EXPECT_THAT(shownIds(), IsEmpty());
    EXPECT_EQ(model().menuTitle(), "");
    EXPECT_THAT(log.take(), ElementsAre("codexEnabled", "receivedCodex", "codexAccountStatuses",
                                        "codexStatus", "limits", "menuTitle", "menuGauge"));
    EXPECT_TRUE(test::exists(limitsFile("codex-default")));
}

TEST_F(HelperModelDerived, SwitchingCodexOnBringsItsCardsBackFromTheFiles) {
    start();
    answerWith(test::codexReading(20, 30, now()));
    spawn(model().pollCodex());
    model().setCodexEnabled(false);
    model().setCodexEnabled(true);
    EXPECT_EQ(model().codexConnectionRevision(), 2);
    EXPECT_THAT(model().receivedCodex(), IsEmpty());
    ASSERT_THAT(shownIds(), ElementsAre("codex-default"));
    EXPECT_EQ(model().limits().front().planTier, "Plus");
    EXPECT_EQ(codex_.questions().size(), 1U);
}

TEST_F(HelperModelDerived, CodexIsSwitchedInTheStoreBeforeTheFiguresFollow) {
    writeLimits("codex-default", 10, 40);
    start();
    std::string stored;
    QObject::connect(&model(), &HelperModel::limitsChanged, &model(),
                     [&] { stored = defaults_.stored("codexEnabled"); });
    model().setCodexEnabled(false);
    EXPECT_EQ(stored, "false");
    model().setCodexEnabled(true);
    EXPECT_EQ(stored, "true");
}

TEST_F(HelperModelDerived, SwitchingCodexToWhatItIsWritesAndReloadsButCountsAsNoChange) {
    start();
    writeLimits("codex-default", 10, 40);
    SignalLog log(model());
    model().setCodexEnabled(true);
    EXPECT_EQ(model().codexConnectionRevision(), 0);
    EXPECT_EQ(defaults_.stored("codexEnabled"), "true");
    EXPECT_THAT(log.take(), ElementsAre("limits", "menuTitle", "menuGauge"));
    model().setCodexEnabled(false);
    const std::size_t writes = defaults_.writes.size();
    model().setCodexEnabled(false);
    EXPECT_EQ(model().codexConnectionRevision(), 1);
    EXPECT_EQ(defaults_.writes.size(), writes + 1);
}

TEST_F(HelperModelDerived, SwitchingCodexOnWhereItIsOnForgetsNoAnswer) {
    start();
    answerWith(test::codexReading(20, 30, now()));
    spawn(model().pollCodex());
    SignalLog log(model());
    model().setCodexEnabled(true);
    EXPECT_EQ(model().receivedCodex().size(), 1U);
    EXPECT_EQ(model().codexAccountStatuses().size(), 1U);
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(HelperModelDerived, SwitchingCodexLooksForNoAccounts) {
    start();
    makeRegisteredFolder(".claude-work");
    makeCodexFolder(".codex-work");
    model().setCodexEnabled(false);
    model().setCodexEnabled(true);
    EXPECT_THAT(model().accounts(), IsEmpty());
    EXPECT_EQ(model().codexAccounts().size(), 1U);
}

TEST_F(HelperModelDerived, CodexCantBeSwitchedOnDuringARemoval) {
    makeRegisteredFolder(".claude");
    makeRegisteredFolder(".claude-work");
    start();
    beginRemoval();
    writeLimits("codex-default", 10, 40);
    const std::int64_t revision = model().codexConnectionRevision();
    const std::size_t writes = defaults_.writes.size();
    const std::size_t steps = files_.steps().size();
    SignalLog log(model());
    model().setCodexEnabled(true);
    EXPECT_FALSE(model().codexEnabled());
    EXPECT_EQ(model().codexConnectionRevision(), revision);
    EXPECT_EQ(defaults_.writes.size(), writes);
    EXPECT_EQ(files_.steps().size(), steps);
    EXPECT_THAT(log.take(), IsEmpty());
    time_.settle();
    EXPECT_EQ(defaults_.stored("codexEnabled"), "false");
    model().setCodexEnabled(true);
    EXPECT_TRUE(model().codexEnabled());
}

TEST_F(HelperModelDerived, AnAnswerThatComesAfterCodexWasSwitchedOffIsDropped) {
    start();
    spawn(model().pollCodex());
    ASSERT_TRUE(codex_.isAsking());
    model().setCodexEnabled(false);
    codex_.answer(test::codexReading(20, 30, now()));
    EXPECT_THAT(model().receivedCodex(), IsEmpty());
    EXPECT_THAT(model().codexAccountStatuses(), IsEmpty());
    EXPECT_FALSE(test::exists(limitsFile("codex-default")));
    EXPECT_FALSE(model().pollingCodex());
}

TEST_F(HelperModelDerived, AnAnswerToAQuestionFromBeforeASwitchThereAndBackIsDropped) {
    start();
    spawn(model().pollCodex());
    ASSERT_TRUE(codex_.isAsking());
    model().setCodexEnabled(false);
    model().setCodexEnabled(true);
    codex_.answer(test::codexReading(20, 30, now()));
    EXPECT_THAT(model().receivedCodex(), IsEmpty());
    EXPECT_FALSE(test::exists(limitsFile("codex-default")));
}

}  // namespace
}  // namespace brimwatch
