// What outlives the end of the program, and what a store that can't be written changes.
#include <gmock/gmock.h>

#include "core/helper_model.h"
#include "model_fixture.h"
#include "platform/spawn.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

using namespace std::chrono_literals;
using test::ModelFixture;
using test::SignalLog;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class HelperModelRestart : public ModelFixture {
  protected:
    // A model in which the user and Codex have left something everywhere.
    void startAndUse() {
        for (const char* name : {".claude", ".claude-work"})
            makeRegisteredFolder(name);
        makeCodexFolder(".codex-work");
        test::writeFile(elsewhere_ + "/team/.claude.json", "{}");
        test::writeFile(elsewhere_ + "/client/config.toml", "");
        storeTier(path(".claude-work"), "claude_pro");
        writeLimits("claude-work", 10, 40);
        writeLimits("codex-default", 20, 50);
        start();
        codex_.answerAtOnce = [this](const auto&) {
            return test::codexReading(codexUsed_, 2 * codexUsed_, now());
        };
        spawn(model().pollCodex());
        model().addClaudeFolder(elsewhere_ + "/team");
        model().addCodexFolder(elsewhere_ + "/client");
        model().disconnectClaude({.directory = path(".claude")});
        model().setCodexAccount({.directory = path(".codex"), .name = "default", .key = "default"},
                                false);
        model().setUsageName("claude-work", "회사");
        model().moveCard("subscription.codex-work", -1);
        model().setUsageDisplay(UsageDisplay::used);
        model().setRecentUsagePeriod(RecentUsagePeriod::fourHours);
        model().setAppTheme(AppTheme::light);
    }

    std::string elsewhere_ = resolvedPath(disk_, folder_.path()) + "/elsewhere";
    double codexUsed_ = 20;
};

TEST_F(HelperModelRestart, FindsEverythingAsItWas) {
    startAndUse();
    const auto limits = model().limits();
    ASSERT_GE(limits.size(), 2U);
    const auto accounts = model().accounts();
    const auto codexAccounts = model().codexAccounts();
    const auto directories = model().claudeManualDirectories();
    const auto selection = model().codexSelection();
    const auto tiers = model().claudeTiers();
    const auto order = model().menuOrder();
    const auto names = model().usageNames();
    const auto title = model().menuTitle();
    const auto gauge = model().menuGauge();
    const auto autoConnect = model().autoConnect();
    const auto memory = model().memory();
    const auto history = model().recentHistory();
    defaults_.changes.clear();

    start();
    EXPECT_EQ(model().limits(), limits);
    EXPECT_EQ(model().accounts(), accounts);
    EXPECT_EQ(model().codexAccounts(), codexAccounts);
    EXPECT_EQ(model().claudeManualDirectories(), directories);
    EXPECT_EQ(model().codexSelection(), selection);
    EXPECT_EQ(model().claudeTiers(), tiers);
    EXPECT_EQ(model().menuOrder(), order);
    EXPECT_EQ(model().usageNames(), names);
    EXPECT_EQ(model().menuTitle(), title);
    EXPECT_EQ(model().menuGauge(), gauge);
    EXPECT_EQ(model().usageDisplay(), UsageDisplay::used);
    EXPECT_EQ(model().recentUsagePeriod(), RecentUsagePeriod::fourHours);
    EXPECT_EQ(model().appTheme(), AppTheme::light);
    EXPECT_EQ(model().autoConnect(), autoConnect);
    EXPECT_EQ(model().memory(), memory);
    EXPECT_EQ(model().recentHistory(), history);
    EXPECT_THAT(defaults_.changes, IsEmpty());
}

TEST_F(HelperModelRestart, FindsAPauseAndCodexSwitchedOff) {
    startAndUse();
    model().setClaudeUsagePaused(true);
    model().setCodexEnabled(false);
    start();
    EXPECT_TRUE(model().claudeUsagePaused());
    EXPECT_FALSE(model().codexEnabled());
    EXPECT_THAT(model().limits(), IsEmpty());
    EXPECT_EQ(model().menuTitle(), "");
}

TEST_F(HelperModelRestart, BeginsAnewWithWhatIsOfThisRunAlone) {
    startAndUse();
    model().setRevealsMenuCardOrder(true);
    model().addClaudeFolder("/nowhere");
    ASSERT_NE(model().failure(), std::nullopt);
    start();
    EXPECT_THAT(model().receivedCodex(), IsEmpty());
    EXPECT_THAT(model().codexAccountStatuses(), IsEmpty());
    EXPECT_EQ(model().codexConnectionRevision(), 0);
    EXPECT_EQ(model().failure(), std::nullopt);
    EXPECT_FALSE(model().revealsMenuCardOrder());
    spawn(model().removeEverything());
    time_.settle();
    ASSERT_TRUE(model().removedEverything());
    EXPECT_FALSE(start().removedEverything());
}

TEST_F(HelperModelRestart, HasTheFiguresOfAnAccountThatComesBack) {
    makeRegisteredFolder(".claude-work");
    writeLimits("claude-work", 10, 40);
    start();
    model().setClaudeUsagePaused(true);
    model().reload();
    writeLimits("claude-work", 5, 20);
    start();
    EXPECT_THAT(model().limits(), IsEmpty());
    model().setClaudeUsagePaused(false);
    model().reload();
    EXPECT_EQ(shownWeekly("claude-work"), 40);
}

TEST_F(HelperModelRestart, AStoreThatCantBeWrittenHoldsNobodyUp) {
    makeRegisteredFolder(".claude-work");
    defaults_.error = std::make_error_code(std::errc::no_space_on_device);
    start();
    EXPECT_TRUE(model().autoConnect().enabled);
    SignalLog log(model());
    model().setAppTheme(AppTheme::dark);
    model().setUsageDisplay(UsageDisplay::used);
    model().setRecentUsagePeriod(RecentUsagePeriod::oneHour);
    model().setCodexEnabled(false);
    EXPECT_THAT(log.take(),
                ElementsAre("appTheme", "usageDisplay", "recentUsagePeriod", "codexEnabled"));
    EXPECT_EQ(model().appTheme(), AppTheme::dark);
    writeLimits("claude-work", 10, 40);
    model().reload();
    EXPECT_EQ(shownWeekly("claude-work"), 40);
    EXPECT_EQ(model().menuTitle(), "40%");
    EXPECT_EQ(model().failure(), std::nullopt);
}

TEST_F(HelperModelRestart, AReloadDoesNotTryAgainWhatTheStoreKeepsTrying) {
    makeRegisteredFolder(".claude-work");
    writeLimits("claude-work", 10, 40);
    defaults_.error = std::make_error_code(std::errc::no_space_on_device);
    start();
    defaults_.writes.clear();
    model().reload();
    EXPECT_THAT(defaults_.writes, IsEmpty());
    writeLimits("claude-work", 10, 50);
    defaults_.error.reset();
    model().reload();
    EXPECT_THAT(defaults_.writes, ElementsAre("limitsMemory"));
}

TEST_F(HelperModelRestart, AnyNumberOfStartsAddsNothing) {
    startAndUse();
    start();
    defaults_.changes.clear();
    for (int times = 0; times < 5; ++times) {
        start();
        model().refresh();
    }
    EXPECT_THAT(defaults_.changes, IsEmpty());
}

}  // namespace
}  // namespace brimwatch
