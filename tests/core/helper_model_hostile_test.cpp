// Files, clocks and names as no writer of ours makes them.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <limits>

#include "core/helper_model.h"
#include "harness/random_json.h"
#include "model_fixture.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

using namespace std::chrono_literals;
using test::ModelFixture;
using test::SignalLog;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class HelperModelHostile : public ModelFixture {
  protected:
    void SetUp() override {
        makeRegisteredFolder(".claude-work");
        writeLimits("claude-work", 10, 40);
        writeLimits("codex-default", 20, 50);
        start();
    }
    void reloadTwiceAndExpectRest() {
        model().reload();
        model().reload();
        SignalLog log(model());
        defaults_.writes.clear();
        model().reload();
        EXPECT_THAT(log.take(), IsEmpty());
        EXPECT_THAT(defaults_.writes, IsEmpty());
    }
    // A limits file of these JSON values.
    static std::string text(const std::string& version, const std::string& provider,
                            const std::string& account, const std::string& updatedAt,
                            const std::string& usedPercentage) {
        return R"({"version":)" + version + R"(,"provider":)" + provider + R"(,"account":)" +
               account + R"(,"updated_at":)" + updatedAt +
               R"(,"windows":{"seven_day":{"used_percentage":)" + usedPercentage + "}}}";
    }
    void setClock(std::chrono::seconds sinceStart) {
        time_.setWallClock(instantFromUnixSeconds(startSeconds) + sinceStart);
    }
};

TEST_F(HelperModelHostile, AFileCutAnywhereIsLeftOutAndSpoilsNothing) {
    const std::string whole = test::readFile(limitsFile("claude-work"));
    const LimitsMemory memory = model().memory();
    const std::size_t lastBrace = whole.rfind('}');
    for (std::size_t length = 0; length <= lastBrace; ++length) {
        test::writeFile(limitsFile("claude-work"), whole.substr(0, length));
        model().reload();
        ASSERT_THAT(shownIds(), ElementsAre("codex-default")) << length;
        ASSERT_EQ(model().memory(), memory) << length;
    }
    test::writeFile(limitsFile("claude-work"), whole);
    model().reload();
    EXPECT_THAT(shownIds(), ElementsAre("claude-work", "codex-default"));
}

TEST_F(HelperModelHostile, WhatNoWriterOfOursWritesIsLeftOut) {
    const LimitsMemory memory = model().memory();
    const std::vector<std::string> texts = {
        "[]",
        "null",
        "{}",
        "\xff\xfe",
        std::string(limitsFileSizeLimit + 1, ' '),
        text("2", R"("claude")", R"("work")", "1790000000", "90"),
        text("1", R"("Claude")", R"("work")", "1790000000", "90"),
        text("1", R"("claude")", "7", "1790000000", "90"),
        text("1", R"("claude")", R"("work")", "1790000000.5", "90"),
        text("1", R"("claude")", R"("work")", "1790000000", "100.0001"),
        text("1", R"("claude")", R"("work")", "1790000000", "-1"),
    };
    for (const std::string& text : texts) {
        test::writeFile(limitsFile("claude-work"), text);
        model().reload();
        EXPECT_THAT(shownIds(), ElementsAre("codex-default")) << text.substr(0, 100);
        EXPECT_EQ(model().memory(), memory) << text.substr(0, 100);
    }
    test::writeFile(limitsFile("claude-work"),
                    text("1", R"("claude")", R"("work")", "1790000000", "90"));
    model().reload();
    EXPECT_EQ(shownWeekly("claude-work"), 90);
}

TEST_F(HelperModelHostile, FoldersLinksAndPipesInThePlaceOfAFileAreLeftOut) {
    std::filesystem::remove(limitsFile("claude-work"));
    std::filesystem::create_directories(limitsFile("claude-work"));
    std::filesystem::create_symlink("/nowhere", limitsFile("claude-x"));
    std::filesystem::create_symlink(limitsFile("claude-loop"), limitsFile("claude-loop"));
    ASSERT_EQ(::mkfifo(limitsFile("claude-pipe").c_str(), 0600), 0);
    model().reload();
    EXPECT_THAT(shownIds(), ElementsAre("codex-default"));
}

TEST_F(HelperModelHostile, AnyJsonAtAllLeavesTheModelAtRestAndTheOtherCardInPlace) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    test::RandomJson json(random);
    for (int round = 0; round < 200; ++round) {
        const std::string window = json.object({json.member(R"("used_percentage")", json.value()),
                                                json.member(R"("resets_at")", json.number())});
        test::writeFile(
            limitsFile("claude-work"),
            json.object(
                {json.member(R"("version")", "1"), json.member(R"("provider")", R"("claude")"),
                 json.member(R"("account")", R"("work")"),
                 json.member(R"("updated_at")", json.number()),
                 json.member(R"("windows")", json.object({json.member(R"("seven_day")", window),
                                                          json.member(json.string(), window)}))}));
        ASSERT_NO_FATAL_FAILURE(reloadTwiceAndExpectRest());
        ASSERT_EQ(shownWeekly("codex-default"), 50);
    }
    const LimitsMemory memory = model().memory();
    EXPECT_EQ(start().memory(), memory);
}

TEST_F(HelperModelHostile, TwoFilesOfOneAccountGiveTwoCardsAndComeToRest) {
    LimitsFile newer = figures("claude-work", 10, 60);
    newer.updatedAt += 5;
    test::writeFile(limitsFile("z-renamed"), newer.encode());
    reloadTwiceAndExpectRest();
    EXPECT_THAT(shownIds(), ElementsAre("claude-work", "claude-work", "codex-default"));
    EXPECT_EQ(model().memory().files.at("claude-work").windows.at("seven_day").usedPercentage, 60);
    std::filesystem::remove(limitsFile("claude-work"));
    reloadTwiceAndExpectRest();
    EXPECT_THAT(shownIds(), ElementsAre("claude-work", "codex-default"));
    EXPECT_EQ(shownWeekly("claude-work"), 60);
}

TEST_F(HelperModelHostile, TwoFilesOfOneCodexAccountComeToRestAtTheNewerOne) {
    LimitsFile newer = figures("codex-default", 20, 30);
    newer.updatedAt += 5;
    test::writeFile(limitsFile("a-renamed"), newer.encode());
    reloadTwiceAndExpectRest();
    for (const SubscriptionLimits& limits : model().limits()) {
        if (limits.id() == "codex-default") {
            EXPECT_EQ(limits.sevenDay->usedPercentage, 30);
        }
    }
    EXPECT_THAT(model().limits(), SizeIs(3));
}

TEST_F(HelperModelHostile, ANameThatIsNotUtf8CountsByItsContent) {
    std::filesystem::rename(limitsFile("claude-work"), limitsFile("\xff\xfe"));
    model().reload();
    EXPECT_THAT(shownIds(), ElementsAre("claude-work", "codex-default"));
}

TEST_F(HelperModelHostile, FoldersWhoseNamesAreNotUtf8AreKeptApartAcrossAStart) {
    makeCodexFolder(".codex-\xff");
    makeCodexFolder(".codex-\xfe");
    makeClaudeFolder(".claude-\xff");
    model().refresh();
    EXPECT_THAT(model().claudeIDs(), ElementsAre("work"));
    ASSERT_THAT(model().codexAccounts(), SizeIs(3));
    for (const CodexAccounts::Account& account : model().codexAccounts()) {
        if (account.directory == path(".codex-\xff")) model().setCodexAccount(account, false);
    }
    start();
    ASSERT_THAT(model().codexAccounts(), SizeIs(3));
    for (const CodexAccounts::Account& account : model().codexAccounts())
        EXPECT_EQ(model().isCodexAccountOn(account), account.directory != path(".codex-\xff"));
}

TEST_F(HelperModelHostile, AClockSetBackChangesNoFigure) {
    const auto limits = model().limits();
    for (const auto shift : {-1h, -24h, -24h * 365 * 30, 1h, 0h}) {
        setClock(shift);
        model().reload();
        EXPECT_EQ(shownWeekly("claude-work"), 40);
        EXPECT_EQ(shownWeekly("codex-default"), 50);
        EXPECT_EQ(model().menuTitle(), "55%");
        reloadTwiceAndExpectRest();
    }
    ASSERT_EQ(model().limits().size(), limits.size());
    EXPECT_EQ(model().limits(), limits);
}

TEST_F(HelperModelHostile, AReportFromAClockSetBackCountsAsFarAsItIsNews) {
    setClock(-10h);
    writeLimits("claude-work", 10, 45);
    writeLimits("codex-default", 20, 30);
    model().reload();
    EXPECT_EQ(shownWeekly("claude-work"), 40);
    EXPECT_EQ(shownWeekly("codex-default"), 50);
    LimitsFile sameCycle = figures("claude-work", 10, 45);
    sameCycle.windows.at("seven_day").resetsAt =
        wholeUnixSeconds(instantFromUnixSeconds(startSeconds) + 96h);
    writeLimits(sameCycle);
    model().reload();
    EXPECT_EQ(shownWeekly("claude-work"), 45);
    reloadTwiceAndExpectRest();
}

TEST_F(HelperModelHostile, AClockThatJumpsFarAheadAndBackLosesSamplesAndNothingElse) {
    setClock(24h * 365 * 100);
    model().reload();
    EXPECT_EQ(model().recentHistory(), RecentUsageHistory{});
    setClock(0h);
    reloadTwiceAndExpectRest();
    EXPECT_EQ(shownWeekly("claude-work"), 40);
    EXPECT_THAT(model().recentHistory().accounts, SizeIs(2));
}

TEST_F(HelperModelHostile, ATimeOfMaximumSizeStaysOutOfTheSamples) {
    LimitsFile far = figures("codex-default", 20, 30);
    far.updatedAt = std::numeric_limits<std::int64_t>::max();
    writeLimits(far);
    reloadTwiceAndExpectRest();
    EXPECT_EQ(shownWeekly("codex-default"), 30);
    const auto& samples = model().recentHistory().accounts.at("codex-default");
    EXPECT_THAT(samples, SizeIs(1));
    const LimitsMemory memory = model().memory();
    EXPECT_EQ(start().memory(), memory);
}

}  // namespace
}  // namespace brimwatch
