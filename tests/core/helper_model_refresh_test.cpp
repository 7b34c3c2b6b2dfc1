// How a model is built, and what a refresh does, in which order.
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
using ::testing::Pair;
namespace key = settings_key;

// Doors that write down who knocked.
struct RecordingDoors final : FolderWatch, LimitsChangedBroadcast, LoginItem, AgentStopper {
    void watch(const std::string& folder, std::function<void()> /*changed*/) override {
        calls.push_back("watch " + folder);
    }
    void listen(std::function<void()> /*received*/) override { calls.emplace_back("listen"); }
    bool isEnabled() override {
        calls.emplace_back("login item");
        return false;
    }
    FileResult<void> setEnabled(bool /*enabled*/) override { return {}; }
    void stop(const std::string& definition) override { calls.push_back("stop " + definition); }

    std::vector<std::string> calls;
};

class HelperModelRefresh : public ModelFixture {
  protected:
    HelperModel& startWith(RecordingDoors& doors) {
        HelperModel::Surroundings around = surroundings();
        around.systemServices.emplace(HelperModel::SystemServices{doors, doors, doors, doors});
        return start(std::move(around));
    }
    using ModelFixture::startWith;

    std::size_t stepCount(const std::string& step) const {
        return static_cast<std::size_t>(
            std::count(files_.steps().begin(), files_.steps().end(), step));
    }
    std::string limitsFolderStep() const { return "entries " + limitsFolder(home_); }
};

TEST_F(HelperModelRefresh, HappensOnceAtTheStartAndWithoutServicesNothingElseDoes) {
    makeRegisteredFolder(".claude-work");
    makeCodexFolder(".codex-work");
    writeLimits("claude-work", 10, 40);
    start();
    EXPECT_FALSE(model().usesSystemServices());
    EXPECT_EQ(model().accounts().size(), 1U);
    EXPECT_THAT(shownIds(), ElementsAre("claude-work"));
    EXPECT_EQ(model().menuTitle(), "60%");
    EXPECT_EQ(model().codexBinary(), "/usr/bin/codex");
    EXPECT_EQ(stepCount(limitsFolderStep()), 1U);
    EXPECT_EQ(time_.sleeperCount(), 0U);
    writeLimits("claude-work", 20, 60);
    advance(1h);
    EXPECT_EQ(shownWeekly("claude-work"), 40);
    EXPECT_THAT(codex_.questions(), IsEmpty());
    EXPECT_EQ(stepCount(limitsFolderStep()), 1U);
}

TEST_F(HelperModelRefresh, WithoutServicesNoFolderIsMadeAndNoAgentRemoved) {
    const std::string agent = path("Library/LaunchAgents/net.quillmoor.brimwatch.codex.plist");
    test::writeFile(agent, "x");
    start();
    spawn(model().pollCodex());
    ASSERT_TRUE(codex_.isAsking());
    EXPECT_TRUE(test::exists(agent));
    EXPECT_FALSE(test::exists(limitsFolder(home_)));
    EXPECT_FALSE(model().launchAtLogin());
}

TEST_F(HelperModelRefresh, ComesBeforeTheModelListensAndWatches) {
    makeRegisteredFolder(".claude-work");
    writeLimits("claude-work", 10, 40);
    RecordingDoors doors;
    startWith(doors);
    EXPECT_TRUE(model().usesSystemServices());
    EXPECT_THAT(doors.calls, ElementsAre("login item", "listen", "watch " + limitsFolder(home_)));
    EXPECT_THAT(shownIds(), ElementsAre("claude-work"));
    EXPECT_THAT(codex_.questions(), IsEmpty());
    model_.reset();
}

TEST_F(HelperModelRefresh, TheWatchedFolderIsMadeWithAllAboveIt) {
    RecordingDoors doors;
    startWith(doors);
    EXPECT_TRUE(std::filesystem::is_directory(limitsFolder(home_)));
    model_.reset();
}

TEST_F(HelperModelRefresh, AFolderThatCantBeMadeStopsNothing) {
    files_.failEveryStepNamed("makeFolders", std::errc::no_space_on_device);
    startWithServices();
    time_.settle();
    EXPECT_TRUE(codex_.isAsking());
    writeLimits("codex-default", 10, 40);
    services_.broadcast.received();
    advance(300ms);
    EXPECT_THAT(shownIds(), ElementsAre("codex-default"));
}

TEST_F(HelperModelRefresh, TellsOfItsStepsInTheirOrder) {
    startWithServices();
    services_.login.enabled = true;
    codex_.installed = "/opt/codex";
    makeCodexFolder(".codex-work");
    storeTier(makeRegisteredFolder(".claude-work"), "default_claude_max_20x");
    writeLimits("claude-work", 10, 40);
    SignalLog log(model());
    model().refresh();
    EXPECT_THAT(log.take(), ElementsAre("codexAccounts", "accounts", "claudeTiers", "limits",
                                        "menuTitle", "menuGauge", "codexBinary", "launchAtLogin"));
    model().refresh();
    EXPECT_THAT(log.take(), IsEmpty());
}

TEST_F(HelperModelRefresh, FindsCodexFoldersByHomeSelectionAndEnvironment) {
    const std::string elsewhere = resolvedPath(disk_, folder_.file("x")) + "/y";
    const std::string manual = resolvedPath(disk_, folder_.file("m"));
    environment_.set("CODEX_HOME", elsewhere);
    makeCodexFolder(".codex-work");
    startWith(key::codexAccounts, R"({"excluded":[],"manualDirectories":[")" + manual + R"("]})");
    std::vector<std::string> folders;
    for (const CodexAccounts::Account& account : model().codexAccounts())
        folders.push_back(account.directory);
    EXPECT_THAT(folders, ElementsAre(manual, path(".codex-work"), elsewhere));
}

TEST_F(HelperModelRefresh, ConnectsWhatIsNewAndShowsItAtOnce) {
    makeRegisteredFolder(".claude");
    start();
    const std::string work = makeClaudeFolder(".claude-work");
    storeTier(work, "claude_pro");
    writeLimits("claude-work", 10, 40);
    SignalLog log(model());
    model().refresh();
    EXPECT_TRUE(isRegistered(work));
    EXPECT_THAT(model().claudeIDs(), ElementsAre("default", "work"));
    EXPECT_THAT(shownIds(), ElementsAre("claude-work"));
    EXPECT_EQ(model().limits().front().planTier, "Pro");
    EXPECT_THAT(log.take(), ElementsAre("accounts", "accounts", "claudeTiers", "limits",
                                        "menuTitle", "menuGauge"));
}

TEST_F(HelperModelRefresh, TriesAnAccountThatCantBeConnectedOnlyOnce) {
    makeRegisteredFolder(".claude");
    start();
    const std::string work = makeClaudeFolder(".claude-work");
    files_.failEveryStepNamed("makeTemporary", std::errc::read_only_file_system);
    model().refresh();
    EXPECT_THAT(model().autoConnectFailed(), ElementsAre(work));
    EXPECT_EQ(model().failure(), std::nullopt);
    files_.failEveryStepNamed("none", std::errc::read_only_file_system);
    model().refresh();
    EXPECT_FALSE(isRegistered(work));
    start();
    EXPECT_TRUE(isRegistered(work));
}

TEST_F(HelperModelRefresh, ReadsTheTiersOfWantedAccountsThatHaveAText) {
    storeTier(makeRegisteredFolder(".claude-a"), "default_claude_max_20x");
    storeTier(makeRegisteredFolder(".claude-b"), "unheard_of");
    storeTier(makeRegisteredFolder(".claude-c"), "");
    const std::string declined = makeRegisteredFolder(".claude-d");
    storeTier(declined, "claude_pro");
    makeRegisteredFolder(".claude");
    test::writeFile(path(".claude.json"),
                    R"({"oauthAccount":{"organizationRateLimitTier":"claude_max_5x"}})");
    startWith(key::claudeAutoConnect, R"({"declined":[")" + declined + R"("],"enabled":true})");
    EXPECT_THAT(model().claudeTiers(),
                ElementsAre(Pair("a", "Max 20배"), Pair("default", "Max 5배")));
    model().setClaudeUsagePaused(true);
    model().refresh();
    EXPECT_THAT(model().claudeTiers(), IsEmpty());
}

TEST_F(HelperModelRefresh, ReadsAnUnchangedTierOnce) {
    const std::string folder = makeRegisteredFolder(".claude-work");
    storeTier(folder, "claude_pro");
    start();
    model().refresh();
    model().refresh();
    EXPECT_EQ(stepCount("read " + folder + "/.claude.json"), 1U);
    EXPECT_THAT(model().claudeTiers(), ElementsAre(Pair("work", "Pro")));
}

TEST_F(HelperModelRefresh, AReloadLooksForNeitherAccountsNorTiers) {
    start();
    makeRegisteredFolder(".claude-work");
    makeCodexFolder(".codex-work");
    codex_.installed = "/opt/codex";
    SignalLog log(model());
    model().reload();
    EXPECT_THAT(log.take(), IsEmpty());
    EXPECT_THAT(model().accounts(), IsEmpty());
}

TEST_F(HelperModelRefresh, LooksForCodexBelowTheHomeUnlessToldHow) {
    HelperModel::Surroundings around = surroundings();
    around.findCodex = {};
    start(std::move(around));
    EXPECT_EQ(model().codexBinary(), std::nullopt);
    executables_.insert(path(".local/bin/codex"));
    model().refresh();
    EXPECT_EQ(model().codexBinary(), path(".local/bin/codex"));
    executables_.insert("/usr/local/bin/codex");
    model().refresh();
    EXPECT_EQ(model().codexBinary(), "/usr/local/bin/codex");
}

TEST_F(HelperModelRefresh, AHomeThatCantBeListedHasNoAccountsButTheDefaultOfCodex) {
    makeRegisteredFolder(".claude-work");
    makeCodexFolder(".codex-work");
    writeLimits("claude-work", 10, 40);
    start();
    files_.failEveryStepNamed("entries", std::errc::permission_denied);
    model().refresh();
    EXPECT_THAT(model().accounts(), IsEmpty());
    ASSERT_EQ(model().codexAccounts().size(), 1U);
    EXPECT_EQ(model().codexAccounts().front().key, "default");
    EXPECT_THAT(shownIds(), IsEmpty());
    files_.failEveryStepNamed("none", std::errc::permission_denied);
    model().refresh();
    EXPECT_THAT(shownIds(), ElementsAre("claude-work"));
}

}  // namespace
}  // namespace brimwatch
