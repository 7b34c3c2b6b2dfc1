// What a reload makes of the files of the limits folder, step by step.
#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>

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
using ::testing::SizeIs;
namespace key = settings_key;

class HelperModelReload : public ModelFixture {
  protected:
    const SubscriptionLimits& shown(const std::string& id) {
        const auto limits =
            std::find_if(model().limits().begin(), model().limits().end(),
                         [&](const SubscriptionLimits& candidate) { return candidate.id() == id; });
        return limits != model().limits().end() ? *limits : missing_;
    }
    std::optional<double> rememberedWeekly(const std::string& id) {
        const auto file = model().memory().files.find(id);
        if (file == model().memory().files.end()) return std::nullopt;
        return file->second.windows.at("seven_day").usedPercentage;
    }
    std::vector<std::string> stepsOfReload() {
        const std::size_t before = files_.steps().size();
        model().reload();
        return {files_.steps().begin() + static_cast<std::ptrdiff_t>(before), files_.steps().end()};
    }
    CodexAccounts::Account codexAccount(const std::string& name) {
        return {.directory = path(".codex-" + name), .name = name, .key = name};
    }

    SubscriptionLimits missing_;
};

TEST_F(HelperModelReload, TellsOfTheFiguresThenOfTitleAndGauge) {
    makeRegisteredFolder(".claude-work");
    start();
    writeLimits("claude-work", 10, 40);
    std::vector<std::string> storedAtLimits;
    std::vector<std::string> storedAtTitle;
    QObject::connect(&model(), &HelperModel::limitsChanged, &model(),
                     [&] { storedAtLimits = defaults_.changes; });
    QObject::connect(&model(), &HelperModel::menuTitleChanged, &model(),
                     [&] { storedAtTitle = defaults_.changes; });
    defaults_.changes.clear();
    SignalLog log(model());
    model().reload();
    EXPECT_THAT(log.take(), ElementsAre("limits", "menuTitle", "menuGauge"));
    EXPECT_THAT(storedAtLimits, ElementsAre("recentUsageHistory"));
    EXPECT_THAT(storedAtTitle, ElementsAre("recentUsageHistory", "limitsMemory"));
    EXPECT_EQ(model().menuTitle(), "60%");
    EXPECT_EQ(model().menuGauge(), (MenuBarGauge{.remaining = 0.6, .weekly = 0.6}));
}

TEST_F(HelperModelReload, OfUnchangedFilesTellsNobodyAndWritesNothing) {
    makeRegisteredFolder(".claude-work");
    const LimitsFile file = figures("claude-work", 10, 40);
    writeLimits(file);
    writeLimits("codex-default", 20, 50);
    start();
    SignalLog log(model());
    defaults_.writes.clear();
    model().reload();
    advance(299s);
    writeLimits(file);
    model().reload();
    EXPECT_THAT(log.take(), IsEmpty());
    EXPECT_THAT(defaults_.writes, IsEmpty());
}

TEST_F(HelperModelReload, OfAFileWithTheSameFiguresInOtherWordsTellsNobody) {
    makeRegisteredFolder(".claude-work");
    writeLimits("claude-work", 10, 40);
    start();
    SignalLog log(model());
    defaults_.writes.clear();
    test::writeFile(limitsFile("claude-work"),
                    R"({"x":1,"windows":{"seven_day":{"used_percentage":4e1,)"
                    R"("resets_at":1790345600},"five_hour":{"resets_at":1790007200,)"
                    R"("used_percentage":10.0}},"account":"work","version":1,)"
                    R"("updated_at":1790000000,"provider":"claude"})");
    model().reload();
    EXPECT_THAT(log.take(), IsEmpty());
    EXPECT_THAT(defaults_.writes, IsEmpty());
}

TEST_F(HelperModelReload, OfAnOlderReportTellsNobody) {
    makeRegisteredFolder(".claude-work");
    writeLimits("claude-work", 10, 40);
    start();
    SignalLog log(model());
    defaults_.writes.clear();
    LimitsFile late = figures("claude-work", 9, 39);
    late.updatedAt += 10;
    writeLimits(late);
    model().reload();
    EXPECT_THAT(log.take(), IsEmpty());
    EXPECT_THAT(defaults_.writes, IsEmpty());
}

TEST_F(HelperModelReload, OfEqualFiguresThatAreNewerLeavesTitleAndGaugeAlone) {
    makeRegisteredFolder(".claude-work");
    writeLimits("claude-work", 10, 40);
    start();
    SignalLog log(model());
    LimitsFile again = figures("claude-work", 10, 40);
    again.updatedAt += 10;
    writeLimits(again);
    model().reload();
    EXPECT_THAT(log.take(), ElementsAre("limits"));
    EXPECT_EQ(unixSeconds(shown("claude-work").updatedAt), startSeconds + 10);
}

TEST_F(HelperModelReload, ListsTheFolderOnceReadsEachFileOnceAndTakesNoLock) {
    for (const char* name : {"a", "b"}) {
        makeRegisteredFolder(".claude-" + std::string(name));
        writeLimits("claude-" + std::string(name), 10, 40);
    }
    writeLimits("codex-default", 20, 50);
    writeLimits("codex-unknown", 20, 50);
    test::writeFile(limitsFolder(home_) + "/.lock", "");
    test::writeFile(limitsFolder(home_) + "/.hidden.json", "");
    test::writeFile(limitsFolder(home_) + "/notes.txt", "");
    start();
    std::vector<std::string> steps = stepsOfReload();
    std::sort(steps.begin(), steps.end());
    EXPECT_THAT(steps,
                ElementsAre("entries " + limitsFolder(home_), "read " + limitsFile("claude-a"),
                            "read " + limitsFile("claude-b"), "read " + limitsFile("codex-default"),
                            "read " + limitsFile("codex-unknown")));
}

TEST_F(HelperModelReload, SortsByProviderThenAccount) {
    for (const char* name : {"b", "a"})
        makeRegisteredFolder(".claude-" + std::string(name));
    for (const char* id : {"codex-default", "claude-b", "claude-a"})
        writeLimits(id, 10, 40);
    start();
    EXPECT_THAT(shownIds(), ElementsAre("claude-a", "claude-b", "codex-default"));
}

TEST_F(HelperModelReload, DuringAPauseReadsNoFigureOfClaudeCodeIntoTheMemory) {
    makeRegisteredFolder(".claude-work");
    writeLimits("claude-work", 10, 40);
    writeLimits("codex-default", 20, 50);
    start();
    model().setClaudeUsagePaused(true);
    EXPECT_THAT(shownIds(), ElementsAre("claude-work", "codex-default"));
    model().reload();
    EXPECT_THAT(shownIds(), ElementsAre("codex-default"));
    EXPECT_EQ(model().menuTitle(), "50%");
    writeLimits("claude-work", 10, 60);
    model().reload();
    EXPECT_EQ(rememberedWeekly("claude-work"), 40);
    model().setClaudeUsagePaused(false);
    model().reload();
    EXPECT_EQ(rememberedWeekly("claude-work"), 60);
    EXPECT_EQ(shownWeekly("claude-work"), 60);
}

TEST_F(HelperModelReload, LeavesFilesOfUnknownAndExcludedAccountsOnTheDiskAndOutOfTheCards) {
    makeCodexFolder(".codex-work");
    writeLimits("codex-work", 20, 50);
    writeLimits("codex-gone", 20, 50);
    writeLimits("claude-gone", 20, 50);
    start();
    EXPECT_THAT(shownIds(), ElementsAre("codex-work"));
    model().setCodexAccount(codexAccount("work"), false);
    EXPECT_THAT(shownIds(), IsEmpty());
    EXPECT_TRUE(test::exists(limitsFile("codex-work")));
    EXPECT_EQ(rememberedWeekly("codex-work"), 50);
    EXPECT_EQ(rememberedWeekly("codex-gone"), std::nullopt);
    EXPECT_EQ(rememberedWeekly("claude-gone"), std::nullopt);
}

TEST_F(HelperModelReload, ThePlanOfClaudeCodeIsItsTierAndNeverThatOfTheFile) {
    const std::string folder = makeRegisteredFolder(".claude-work");
    LimitsFile file = figures("claude-work", 10, 40);
    file.planTier = "Pro Lite";
    writeLimits(file);
    start();
    EXPECT_EQ(shown("claude-work").planTier, std::nullopt);
    storeTier(folder, "claude_max_5x");
    model().refresh();
    EXPECT_EQ(shown("claude-work").planTier, "Max 5배");
}

TEST_F(HelperModelReload, ThePlanOfCodexIsThatOfTheReadingElseThatOfTheFile) {
    LimitsFile file = figures("codex-default", 10, 40);
    file.planTier = "As written";
    writeLimits(file);
    start();
    EXPECT_EQ(shown("codex-default").planTier, "As written");
    CodexPoller::Reading reading = test::codexReading(20, 50, now());
    reading.planType = "prolite";
    codex_.answerAtOnce = [&](const auto&) { return reading; };
    spawn(model().pollCodex());
    EXPECT_EQ(shown("codex-default").planTier, "Pro Lite");
    file.updatedAt += 60;
    writeLimits(file);
    model().reload();
    EXPECT_EQ(shown("codex-default").planTier, "Pro Lite");
    reading.planType = "unheard of";
    spawn(model().pollCodex());
    file.updatedAt += 60;
    writeLimits(file);
    model().reload();
    EXPECT_EQ(shown("codex-default").planTier, std::nullopt);
}

TEST_F(HelperModelReload, ANameOfTheUserIsNormalisedAndElseTheDefaultOneCounts) {
    makeRegisteredFolder(".claude-work");
    writeLimits("claude-work", 10, 40);
    writeLimits("codex-default", 10, 40);
    const std::string forty(40, 'x');
    startWith(key::usageNames, R"({"subscription.claude-work":"  내\t 계정 ",)"
                               R"("subscription.codex-default":")" +
                                   forty + R"(y"})");
    EXPECT_EQ(shown("claude-work").displayName, "내 계정");
    EXPECT_EQ(shown("codex-default").displayName, forty);
    startWith(key::usageNames, R"({"subscription.claude-work":"  ","claude-work":"x"})");
    EXPECT_EQ(shown("claude-work").displayName, std::nullopt);
    EXPECT_EQ(shown("codex-default").displayName, std::nullopt);
}

TEST_F(HelperModelReload, AnAccountElsewhereIsCalledByItsFolder) {
    const std::string elsewhere = resolvedPath(disk_, folder_.file("x"));
    test::writeFile(elsewhere + "/team/.claude/.claude.json", "{}");
    test::writeFile(elsewhere + "/client/auth.json", "{}");
    test::writeFile(elsewhere + "/.codex/auth.json", "{}");
    makeCodexFolder(".codex-work");
    makeRegisteredFolder(".claude-work");
    start();
    model().addClaudeFolder(elsewhere + "/team/.claude");
    model().addCodexFolder(elsewhere + "/client");
    model().addCodexFolder(elsewhere + "/.codex");
    for (const std::string& account : model().claudeIDs())
        writeLimits("claude-" + account, 10, 40);
    for (const std::string& account : model().codexIDs())
        writeLimits("codex-" + account, 10, 40);
    model().reload();
    std::vector<std::string> names;
    for (const SubscriptionLimits& limits : model().limits())
        names.push_back(limits.displayName.value_or("none"));
    // Of Claude Code team and work; of Codex client, default, the other default, and work.
    EXPECT_THAT(names, ElementsAre("team", "none", "client", "none", "none", "none"));
    const std::string team = model().limits().front().id();
    startWith(key::usageNames, R"({"subscription.)" + team + R"(":" \t"})");
    EXPECT_EQ(shown(team).displayName, "team");
}

TEST_F(HelperModelReload, TakesASampleOfEachCardAndGivesItItsSamples) {
    storeTier(makeRegisteredFolder(".claude-work"), "claude_pro");
    writeLimits("claude-work", 10, 40);
    writeLimits("codex-default", 20, 50);
    start();
    advance(300s);
    writeLimits("claude-work", 10, 42);
    model().reload();
    ASSERT_TRUE(shown("claude-work").recentUsageHistory);
    EXPECT_THAT(*shown("claude-work").recentUsageHistory, SizeIs(2));
    EXPECT_EQ(shown("claude-work").recentUsageHistory->back().planTier, "Pro");
    EXPECT_THAT(*shown("codex-default").recentUsageHistory, SizeIs(1));
    EXPECT_THAT(model().recentHistory().accounts, SizeIs(2));
}

TEST_F(HelperModelReload, TellsOfSamplesThatCameOrWentThoughTheFiguresStay) {
    makeRegisteredFolder(".claude-work");
    LimitsFile ahead = figures("claude-work", 10, 40);
    ahead.updatedAt += 120;
    writeLimits(ahead);
    start();
    EXPECT_EQ(shown("claude-work").recentUsageHistory, std::nullopt);
    EXPECT_EQ(defaults_.stored("recentUsageHistory"), "");
    SignalLog log(model());
    advance(60s);
    model().reload();
    EXPECT_THAT(log.take(), ElementsAre("limits"));
    EXPECT_THAT(shown("claude-work").recentUsageHistory.value(), SizeIs(1));
    EXPECT_NE(defaults_.stored("recentUsageHistory"), "");
    advance(25h);
    model().reload();
    EXPECT_THAT(log.take(), ElementsAre("limits"));
    EXPECT_EQ(shown("claude-work").recentUsageHistory, std::nullopt);
    EXPECT_EQ(defaults_.stored("recentUsageHistory"), "");
}

TEST_F(HelperModelReload, KeepsAFigureHoweverOldItIs) {
    makeRegisteredFolder(".claude-work");
    writeLimits("claude-work", 10, 40);
    start();
    advance(24h * 400);
    model().refresh();
    EXPECT_EQ(shownWeekly("claude-work"), 40);
    EXPECT_EQ(model().menuTitle(), "60%");
}

TEST_F(HelperModelReload, OfAFolderThatCantBeListedShowsNothingAndForgetsNothing) {
    makeRegisteredFolder(".claude-work");
    writeLimits("claude-work", 10, 40);
    start();
    const LimitsMemory memory = model().memory();
    const RecentUsageHistory history = model().recentHistory();
    files_.failEveryStepNamed("entries", std::errc::permission_denied);
    SignalLog log(model());
    defaults_.writes.clear();
    model().reload();
    EXPECT_THAT(log.take(), ElementsAre("limits", "menuTitle", "menuGauge"));
    EXPECT_THAT(model().limits(), IsEmpty());
    EXPECT_EQ(model().menuTitle(), "");
    EXPECT_EQ(model().menuGauge(), MenuBarGauge{});
    EXPECT_EQ(model().memory(), memory);
    EXPECT_EQ(model().recentHistory(), history);
    EXPECT_THAT(defaults_.writes, IsEmpty());
    EXPECT_EQ(model().failure(), std::nullopt);
}

TEST_F(HelperModelReload, LeavesOutADamagedFileForAsLongAsItIsDamaged) {
    makeRegisteredFolder(".claude-work");
    writeLimits("claude-work", 10, 40);
    writeLimits("codex-default", 20, 50);
    start();
    const std::string good = test::readFile(limitsFile("claude-work"));
    test::writeFile(limitsFile("claude-work"), good.substr(0, good.size() / 2));
    model().reload();
    EXPECT_THAT(shownIds(), ElementsAre("codex-default"));
    EXPECT_EQ(rememberedWeekly("claude-work"), 40);
    test::writeFile(limitsFile("claude-work"), good);
    model().reload();
    EXPECT_THAT(shownIds(), ElementsAre("claude-work", "codex-default"));
}

TEST_F(HelperModelReload, TheDisplayChangesTheTitleWithoutAReload) {
    makeRegisteredFolder(".claude-work");
    writeLimits("claude-work", 10, 42);
    start();
    writeLimits("claude-work", 10, 70);
    const std::size_t steps = files_.steps().size();
    SignalLog log(model());
    model().setUsageDisplay(UsageDisplay::used);
    EXPECT_EQ(model().menuTitle(), "42%");
    EXPECT_THAT(log.take(), ElementsAre("usageDisplay", "menuTitle"));
    EXPECT_EQ(files_.steps().size(), steps);
    model().reload();
    EXPECT_EQ(model().menuTitle(), "70%");
    EXPECT_EQ(model().menuGauge().remaining, 0.3);
}

}  // namespace
}  // namespace brimwatch
