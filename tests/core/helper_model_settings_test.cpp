// What a model takes out of the settings, and what it puts into them.
#include <gmock/gmock.h>

#include "core/helper_model.h"
#include "harness/stored_json.h"
#include "model_fixture.h"
#include "platform/spawn.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

using test::ModelFixture;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::Pair;
namespace key = settings_key;

class HelperModelSettings : public ModelFixture {
  protected:
    // Starts with something unusable under the key, and expects that nothing touches it.
    HelperModel& startWithUnusable(std::string_view key, std::string_view json) {
        HelperModel& model = startWith(key, json);
        model.refresh();
        EXPECT_EQ(defaults_.stored(std::string(key)), json);
        EXPECT_THAT(defaults_.writes, Not(Contains(std::string(key))));
        return model;
    }
    std::string stored(std::string_view key) { return defaults_.stored(std::string(key)); }
    static CodexAccounts::Account codexAccount(const std::string& folder) {
        return {.directory = folder, .name = "work", .key = "work"};
    }
};

TEST_F(HelperModelSettings, AFirstConnectionIsRememberedOnceItSucceeded) {
    makeClaudeFolder(".claude-work");
    start();
    EXPECT_EQ(stored(key::setupDone), "");
    executables_.clear();
    model().connectClaude();
    EXPECT_EQ(stored(key::setupDone), "");
    executables_ = {program};
    model().connectClaude();
    EXPECT_EQ(stored(key::setupDone), "true");
}

TEST_F(HelperModelSettings, FiguresOfClaudeCodeAreHiddenByAStoredTrueAlone) {
    EXPECT_FALSE(start().claudeUsagePaused());
    EXPECT_EQ(stored(key::claudeUsagePaused), "");
    EXPECT_TRUE(startWith(key::claudeUsagePaused, "true").claudeUsagePaused());
    EXPECT_FALSE(startWith(key::claudeUsagePaused, "false").claudeUsagePaused());
    for (const char* json : {"1", R"("true")", "[true]", "{}"})
        EXPECT_FALSE(startWithUnusable(key::claudeUsagePaused, json).claudeUsagePaused()) << json;
    model().setClaudeUsagePaused(true);
    EXPECT_EQ(stored(key::claudeUsagePaused), "true");
    model().setClaudeUsagePaused(false);
    EXPECT_EQ(stored(key::claudeUsagePaused), "false");
}

TEST_F(HelperModelSettings, FoldersAddedByHandAreAListOfPaths) {
    const std::string folder = resolvedPath(disk_, folder_.file("elsewhere"));
    test::writeFile(folder + "/.claude.json", "{}");
    EXPECT_TRUE(start().claudeManualDirectories().empty());
    EXPECT_EQ(stored(key::claudeManualDirectories), "");
    for (const char* json : {R"("/a")", R"(["/a",1])", R"(["/a",null])", "{}", "true"}) {
        startWithUnusable(key::claudeManualDirectories, json);
        EXPECT_TRUE(model().claudeManualDirectories().empty()) << json;
    }
    ASSERT_TRUE(model().addClaudeFolder(folder));
    EXPECT_EQ(stored(key::claudeManualDirectories), "[\"" + folder + "\"]");
    start();
    EXPECT_THAT(model().claudeManualDirectories(), ElementsAre(folder));
    ASSERT_EQ(model().accounts().size(), 1U);
    EXPECT_TRUE(model().accounts().front().isManual);
    startWith(key::claudeManualDirectories, R"(["/a\udcff","/b"])");
    EXPECT_THAT(model().claudeManualDirectories(), ElementsAre("/a\xff", "/b"));
}

TEST_F(HelperModelSettings, AutomaticConnectionIsOffForWhoConnectedNothingAndStoredAtOnce) {
    makeClaudeFolder(".claude");
    start();
    EXPECT_EQ(model().autoConnect(), ClaudeCodeSetup::AutoConnect{});
    EXPECT_EQ(stored(key::claudeAutoConnect), R"({"declined":[],"enabled":false})");
}

TEST_F(HelperModelSettings, AutomaticConnectionIsWorkedOutFromWhatIsConnectedAndStoredAtOnce) {
    const std::string left = makeClaudeFolder(".claude");
    makeRegisteredFolder(".claude-work");
    start();
    EXPECT_TRUE(model().autoConnect().enabled);
    EXPECT_THAT(model().autoConnect().declined, ElementsAre(left));
    EXPECT_EQ(stored(key::claudeAutoConnect), R"({"declined":[")" + left + R"("],"enabled":true})");
    EXPECT_FALSE(isRegistered(left));
}

TEST_F(HelperModelSettings, AutomaticConnectionAsStoredIsNotWorkedOutAgain) {
    makeRegisteredFolder(".claude-work");
    const char* json = R"({"declined":["/gone"],"enabled":false})";
    startWith(key::claudeAutoConnect, json);
    EXPECT_FALSE(model().autoConnect().enabled);
    EXPECT_THAT(model().autoConnect().declined, ElementsAre("/gone"));
    EXPECT_EQ(stored(key::claudeAutoConnect), json);
    EXPECT_THAT(defaults_.writes, Not(Contains(std::string(key::claudeAutoConnect))));
}

TEST_F(HelperModelSettings, AutomaticConnectionIsWorkedOutFromFoldersAddedByHandToo) {
    const std::string folder = resolvedPath(disk_, folder_.file("elsewhere"));
    test::writeFile(folder + "/.claude.json", "{}");
    makeRegisteredFolder(".claude-work");
    startWith(key::claudeManualDirectories, "[\"" + folder + "\"]");
    EXPECT_THAT(model().autoConnect().declined, ElementsAre(folder));
    EXPECT_FALSE(isRegistered(folder));
}

TEST_F(HelperModelSettings, AutomaticConnectionThatCantBeReadIsWorkedOutAndLeftInTheStore) {
    const std::string left = makeClaudeFolder(".claude");
    const std::string work = makeRegisteredFolder(".claude-work");
    for (const char* json :
         {"5", R"("x")", "[]", R"({"enabled":true})", R"({"declined":[]})",
          R"({"declined":[1],"enabled":true})", R"({"declined":[],"enabled":1})"}) {
        startWithUnusable(key::claudeAutoConnect, json);
        EXPECT_TRUE(model().autoConnect().enabled) << json;
        EXPECT_THAT(model().autoConnect().declined, ElementsAre(left)) << json;
    }
    model().disconnectClaude({.directory = work});
    EXPECT_EQ(stored(key::claudeAutoConnect),
              R"({"declined":[")" + left + R"(",")" + work + R"("],"enabled":true})");
}

TEST_F(HelperModelSettings, TheOrderOfCardsIsAListOfCardKeys) {
    makeCodexFolder(".codex-a");
    makeCodexFolder(".codex-b");
    writeLimits("codex-a", 10, 20);
    writeLimits("codex-b", 10, 20);
    EXPECT_TRUE(start().menuOrder().empty());
    startWith(key::menuOrder, R"(["subscription.codex-b","subscription.gone"])");
    EXPECT_THAT(model().menuOrder(), ElementsAre("subscription.codex-b", "subscription.gone"));
    for (const char* json : {R"("subscription.codex-b")", R"(["subscription.codex-b",2])", "{}"})
        EXPECT_TRUE(startWithUnusable(key::menuOrder, json).menuOrder().empty()) << json;
    model().moveCard("subscription.codex-b", -1);
    EXPECT_EQ(stored(key::menuOrder), R"(["subscription.codex-b","subscription.codex-a"])");
    model().resetCardOrder();
    EXPECT_EQ(stored(key::menuOrder), "[]");
}

TEST_F(HelperModelSettings, NamesAreADictionaryOfTextsOrNothingAtAll) {
    EXPECT_TRUE(start().usageNames().empty());
    startWith(key::usageNames, R"({"subscription.claude-a":"집","x":""})");
    EXPECT_THAT(model().usageNames(),
                ElementsAre(Pair("subscription.claude-a", "집"), Pair("x", "")));
    for (const char* json : {R"({"subscription.claude-a":"집","x":1})",
                             R"({"subscription.claude-a":null})", R"(["집"])", R"("집")"}) {
        EXPECT_TRUE(startWithUnusable(key::usageNames, json).usageNames().empty()) << json;
    }
    model().setUsageName("claude-b", " 회사  계정 ");
    EXPECT_EQ(stored(key::usageNames), R"({"subscription.claude-b":"회사 계정"})");
    model().setUsageName("claude-b", std::nullopt);
    EXPECT_EQ(stored(key::usageNames), "{}");
}

TEST_F(HelperModelSettings, TheSelectionOfCodexFoldersNeedsBothItsKeys) {
    const std::string work = makeCodexFolder(".codex-work");
    EXPECT_EQ(start().codexSelection(), CodexAccounts::Selection{});
    EXPECT_EQ(stored(key::codexAccounts), "");
    startWith(key::codexAccounts, R"({"excluded":["/b","/a"],"manualDirectories":["/z","/y"]})");
    EXPECT_THAT(model().codexSelection().manualDirectories, ElementsAre("/z", "/y"));
    EXPECT_THAT(model().codexSelection().excluded, ElementsAre("/a", "/b"));
    for (const char* json : {"7", "[]", "{}", R"({"excluded":[]})", R"({"manualDirectories":[]})",
                             R"({"excluded":[],"manualDirectories":[3]})",
                             R"({"excluded":"/a","manualDirectories":[]})"}) {
        startWithUnusable(key::codexAccounts, json);
        EXPECT_EQ(model().codexSelection(), CodexAccounts::Selection{}) << json;
    }
    model().setCodexAccount(codexAccount(work), false);
    EXPECT_EQ(stored(key::codexAccounts),
              R"({"excluded":[")" + work + R"("],"manualDirectories":[]})");
}

TEST_F(HelperModelSettings, CodexIsCollectedUnlessAFalseIsStored) {
    EXPECT_TRUE(start().codexEnabled());
    EXPECT_EQ(stored(key::codexEnabled), "");
    EXPECT_FALSE(startWith(key::codexEnabled, "false").codexEnabled());
    EXPECT_TRUE(startWith(key::codexEnabled, "true").codexEnabled());
    for (const char* json : {"0", R"("false")", "[false]", "{}"})
        EXPECT_TRUE(startWithUnusable(key::codexEnabled, json).codexEnabled()) << json;
    EXPECT_EQ(model().codexConnectionRevision(), 0);
    model().setCodexEnabled(false);
    EXPECT_EQ(stored(key::codexEnabled), "false");
    model().setCodexEnabled(true);
    EXPECT_EQ(stored(key::codexEnabled), "true");
}

TEST_F(HelperModelSettings, TheMemoryIsKeptAsTheFilesItHolds) {
    makeRegisteredFolder(".claude-work");
    EXPECT_EQ(start().memory(), LimitsMemory{});
    EXPECT_EQ(stored(key::limitsMemory), "");
    const char* fractionalTime = R"({"files":{"claude-work":{"account":"work",)"
                                 R"("provider":"claude","updated_at":1.5,"version":1,)"
                                 R"("windows":{}}}})";
    for (const char* json :
         {"7", "[]", "{}", R"({"files":[]})", R"({"files":{"claude-work":{}}})", fractionalTime}) {
        EXPECT_EQ(startWithUnusable(key::limitsMemory, json).memory(), LimitsMemory{}) << json;
    }
    writeLimits("claude-work", 10, 40);
    model().reload();
    EXPECT_EQ(stored(key::limitsMemory),
              R"({"files":{"claude-work":{"account":"work","provider":"claude",)"
              R"("updated_at":1790000000,"version":1,"windows":{)"
              R"("five_hour":{"resets_at":1790007200,"used_percentage":10},)"
              R"("seven_day":{"resets_at":1790345600,"used_percentage":40}}}}})");
    const LimitsMemory memory = model().memory();
    writeLimits("claude-work", 5, 30);
    start();
    EXPECT_EQ(model().memory(), memory);
    EXPECT_EQ(shownWeekly("claude-work"), 40);
}

TEST_F(HelperModelSettings, TheRecentPeriodIsOneOfFiveNumbers) {
    using enum RecentUsagePeriod;
    EXPECT_EQ(start().recentUsagePeriod(), off);
    for (const RecentUsagePeriod period : {off, oneHour, twoHours, fourHours, sixHours}) {
        const std::string json = std::to_string(rawValue(period));
        EXPECT_EQ(startWith(key::recentUsagePeriod, json).recentUsagePeriod(), period);
    }
    for (const char* json : {"3", "5", "-1", "7", "258", "1.5", R"("2")", "true", "[2]"})
        EXPECT_EQ(startWithUnusable(key::recentUsagePeriod, json).recentUsagePeriod(), off) << json;
    model().setRecentUsagePeriod(sixHours);
    EXPECT_EQ(stored(key::recentUsagePeriod), "6");
    model().setRecentUsagePeriod(off);
    EXPECT_EQ(stored(key::recentUsagePeriod), "0");
}

TEST_F(HelperModelSettings, TheRecentHistoryIsKeptWithTimesSince2001AndRemovedWhenEmpty) {
    makeRegisteredFolder(".claude-work");
    for (const char* json : {"7", "[]", "{}", R"({"accounts":[]})", R"({"accounts":{"a":[{}]}})"}) {
        startWithUnusable(key::recentUsageHistory, json);
        EXPECT_EQ(model().recentHistory(), RecentUsageHistory{}) << json;
    }
    writeLimits("claude-work", 10, 40);
    model().reload();
    EXPECT_EQ(stored(key::recentUsageHistory),
              R"({"accounts":{"claude-work":[{)"
              R"("fiveHour":{"resetsAt":811700000,"usedPercentage":10},"fiveHourReset":false,)"
              R"("sevenDay":{"resetsAt":812038400,"usedPercentage":40},"sevenDayReset":false,)"
              R"("updatedAt":811692800}]}})");
    const RecentUsageHistory history = model().recentHistory();
    EXPECT_EQ(start().recentHistory(), history);
    advance(std::chrono::hours(25));
    model().reload();
    EXPECT_EQ(model().recentHistory(), RecentUsageHistory{});
    EXPECT_EQ(stored(key::recentUsageHistory), "");
}

TEST_F(HelperModelSettings, FiguresAreShownAsUsedOnlyWhereThatIsStored) {
    EXPECT_EQ(start().usageDisplay(), UsageDisplay::remaining);
    EXPECT_EQ(startWith(key::usageDisplay, R"("used")").usageDisplay(), UsageDisplay::used);
    for (const char* json : {R"("Used")", R"("")", R"("percent")", "1", "true", R"(["used"])"}) {
        startWithUnusable(key::usageDisplay, json);
        EXPECT_EQ(model().usageDisplay(), UsageDisplay::remaining) << json;
    }
    model().setUsageDisplay(UsageDisplay::used);
    EXPECT_EQ(stored(key::usageDisplay), R"("used")");
    model().setUsageDisplay(UsageDisplay::remaining);
    EXPECT_EQ(stored(key::usageDisplay), R"("remaining")");
}

TEST_F(HelperModelSettings, TheThemeIsThatOfTheSystemUnlessOneIsStored) {
    EXPECT_EQ(start().appTheme(), AppTheme::system);
    for (const AppTheme theme : allAppThemes) {
        startWith(key::appTheme, '"' + std::string(rawString(theme)) + '"');
        EXPECT_EQ(model().appTheme(), theme);
    }
    for (const char* json : {R"("Dark")", R"("")", R"("blue")", "1", R"(["dark"])"})
        EXPECT_EQ(startWithUnusable(key::appTheme, json).appTheme(), AppTheme::system) << json;
    model().setAppTheme(AppTheme::light);
    EXPECT_EQ(stored(key::appTheme), R"("light")");
}

TEST(AppTheme, IsListedWithItsTextsInTheOrderOfTheSettings) {
    EXPECT_THAT(allAppThemes, ElementsAre(AppTheme::system, AppTheme::light, AppTheme::dark));
    EXPECT_EQ(rawString(AppTheme::system), "system");
    EXPECT_EQ(rawString(AppTheme::light), "light");
    EXPECT_EQ(rawString(AppTheme::dark), "dark");
    EXPECT_EQ(label(AppTheme::system), "시스템 설정");
    EXPECT_EQ(label(AppTheme::light), "라이트");
    EXPECT_EQ(label(AppTheme::dark), "다크");
}

TEST_F(HelperModelSettings, WhatBelongsToOthersStays) {
    const std::map<std::string, std::string> others = {{"macID", R"("an id")"},
                                                       {"unheardOf", R"({"a":[1.50]})"}};
    for (const auto& [name, json] : others)
        defaults_.put(name, json);
    makeClaudeFolder(".claude");
    start();
    model().connectClaude();
    model().setCodexEnabled(false);
    spawn(model().removeEverything());
    time_.settle();
    ASSERT_TRUE(model().removedEverything());
    for (const auto& [name, json] : others) {
        EXPECT_EQ(defaults_.stored(name), json);
        EXPECT_THAT(defaults_.writes, Not(Contains(name)));
    }
}

TEST_F(HelperModelSettings, AnEqualValueIsWrittenOverWhatCantBeReadAndTellsNobody) {
    for (const auto key : {key::claudeUsagePaused, key::codexEnabled, key::usageDisplay,
                           key::appTheme, key::recentUsagePeriod, key::usageNames}) {
        defaults_.put(std::string(key), R"(["unusable"])");
    }
    start();
    test::SignalLog log(model());
    model().setClaudeUsagePaused(false);
    model().setCodexEnabled(true);
    model().setUsageDisplay(UsageDisplay::remaining);
    model().setAppTheme(AppTheme::system);
    model().setRecentUsagePeriod(RecentUsagePeriod::off);
    model().setUsageName("claude-work", std::nullopt);
    EXPECT_THAT(log.take(), IsEmpty());
    EXPECT_EQ(stored(key::claudeUsagePaused), "false");
    EXPECT_EQ(stored(key::codexEnabled), "true");
    EXPECT_EQ(stored(key::usageDisplay), R"("remaining")");
    EXPECT_EQ(stored(key::appTheme), R"("system")");
    EXPECT_EQ(stored(key::recentUsagePeriod), "0");
    EXPECT_EQ(stored(key::usageNames), "{}");
}

}  // namespace
}  // namespace brimwatch
