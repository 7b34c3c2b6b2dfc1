// Which accounts of Codex are wanted: connecting, folders added by hand, single accounts.

#include <gmock/gmock.h>

#include <filesystem>

#include "accounts_fixture.h"

namespace brimwatch {
namespace {

using test::SignalCount;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* refusal =
    "Codex 설정 폴더를 골라 주세요. auth.json이나 config.toml이 있는 폴더여야 해요.";

class HelperModelCodexConnection : public test::AccountsFixture {
  protected:
    // Three accounts: "alpha", "beta" and the default one.
    void startWithThree() {
        for (const char* name : {".codex-alpha", ".codex-beta", ".codex"})
            makeCodexFolder(name);
        start();
    }
    std::string makeManualFolder(const std::string& name) {
        test::writeFile(folder_.file(name) + "/config.toml", "");
        return folder_.file(name);
    }
    std::vector<std::string> excluded() {
        const auto& paths = model().codexSelection().excluded;
        return {paths.begin(), paths.end()};
    }
    std::string storedSelection() const { return stored("codexAccounts"); }
    // A removal has succeeded, and Codex is off.
    void startAfterRemoval() {
        startWithThree();
        removeEverything();
        settle();
        ASSERT_TRUE(model().removedEverything());
        ASSERT_FALSE(model().codexEnabled());
    }
};

TEST_F(HelperModelCodexConnection, ConnectingWantsAllAccountsAgainAndAsksThem) {
    startWithThree();
    model().setCodexAccount(codexAccount("alpha"), false);
    model().setCodexAccount(codexAccount("default"), false);
    model().setCodexEnabled(false);
    model().connectCodex();
    EXPECT_THAT(excluded(), IsEmpty());
    EXPECT_EQ(storedSelection(), R"({"excluded":[],"manualDirectories":[]})");
    EXPECT_TRUE(model().codexEnabled());
    EXPECT_EQ(stored("codexEnabled"), "true");
    EXPECT_THAT(model().codexIDs(), ElementsAre("alpha", "beta", "default"));
    EXPECT_FALSE(codex_.isAsking()) << "the poll is a task of its own";
    settle();
    answer(1);
    answer(2);
    answer(3);
    EXPECT_THAT(askedKeys(), ElementsAre("alpha", "beta", "default"));
}

TEST_F(HelperModelCodexConnection, ConnectingKeepsExclusionsOfAccountsThatAreGone) {
    defaults_.put("codexAccounts", R"({"manualDirectories":[],"excluded":["/gone/.codex-old",")" +
                                       path(".codex-alpha") + R"("]})");
    startWithThree();
    model().connectCodex();
    EXPECT_THAT(excluded(), ElementsAre("/gone/.codex-old"));
}

TEST_F(HelperModelCodexConnection, ConnectingIsFollowedByARefresh) {
    start();
    makeCodexFolder(".codex-new");
    model().connectCodex();
    EXPECT_THAT(model().codexIDs(), ElementsAre("default", "new"));
}

TEST_F(HelperModelCodexConnection, ConnectingClearsAFormerFailureAndTheLastRemoval) {
    startAfterRemoval();
    model().addCodexFolder(folder_.file("nowhere"));
    ASSERT_EQ(model().failure(), refusal);
    model().connectCodex();
    EXPECT_EQ(model().failure(), std::nullopt);
    EXPECT_FALSE(model().removedEverything());
    EXPECT_TRUE(model().codexEnabled());
}

TEST_F(HelperModelCodexConnection, AFolderThatIsAddedIsWantedAndAsked) {
    const std::string folder = makeManualFolder("team");
    startWithThree();
    EXPECT_TRUE(model().addCodexFolder(folder));
    EXPECT_EQ(model().failure(), std::nullopt);
    EXPECT_THAT(model().codexSelection().manualDirectories, ElementsAre(folder));
    EXPECT_EQ(storedSelection(), R"({"excluded":[],"manualDirectories":[")" + folder + R"("]})");
    EXPECT_EQ(model().codexIDs().size(), 4U);
    EXPECT_FALSE(codex_.isAsking());
    settle();
    EXPECT_TRUE(codex_.isAsking());
}

TEST_F(HelperModelCodexConnection, AFolderOfAnotherKindIsRefused) {
    startWithThree();
    std::filesystem::create_directories(folder_.file("empty"));
    makeCodexFolder(".codex-late");
    defaults_.changes.clear();
    for (const std::string& refused :
         {folder_.file("empty"), folder_.file("nowhere"), path(".codex/auth.json")}) {
        EXPECT_FALSE(model().addCodexFolder(refused)) << refused;
        EXPECT_EQ(model().failure(), refusal);
    }
    settle();
    EXPECT_EQ(model().codexConnectionRevision(), 0);
    EXPECT_THAT(defaults_.changes, IsEmpty());
    EXPECT_EQ(model().codexAccounts().size(), 3U) << "nobody looked for accounts";
    EXPECT_FALSE(codex_.isAsking());
}

TEST_F(HelperModelCodexConnection, AFolderIsStoredInItsStandardFormAndOnce) {
    const std::string folder = makeManualFolder("team");
    std::filesystem::create_directory_symlink(folder, folder_.file("link"));
    start();
    for (const std::string& spelling :
         {folder_.file("link"), folder + "/", folder_.file("team/../team"), folder}) {
        EXPECT_TRUE(model().addCodexFolder(spelling)) << spelling;
        EXPECT_THAT(model().codexSelection().manualDirectories, ElementsAre(folder)) << spelling;
    }
    EXPECT_EQ(model().codexAccounts().size(), 2U);
}

TEST_F(HelperModelCodexConnection, AddingWhileCodexIsOnLeavesTheOthersAsTheyAre) {
    startWithThree();
    model().setCodexAccount(codexAccount("alpha"), false);
    model().addCodexFolder(makeManualFolder("team"));
    EXPECT_THAT(excluded(), ElementsAre(path(".codex-alpha")));
}

TEST_F(HelperModelCodexConnection, AddingWhileCodexIsOffDoesNotBringTheOthersBack) {
    const std::string folder = makeManualFolder("team");
    startWithThree();
    model().setCodexEnabled(false);
    EXPECT_TRUE(model().addCodexFolder(folder));
    EXPECT_TRUE(model().codexEnabled());
    EXPECT_EQ(stored("codexEnabled"), "true");
    EXPECT_THAT(excluded(), ElementsAre(path(".codex"), path(".codex-alpha"), path(".codex-beta")));
    EXPECT_EQ(storedSelection(), R"({"excluded":[")" + path(".codex") + R"(",")" +
                                     path(".codex-alpha") + R"(",")" + path(".codex-beta") +
                                     R"("],"manualDirectories":[")" + folder + R"("]})");
    ASSERT_EQ(model().codexIDs().size(), 1U);
    settle();
    answer(1);
    EXPECT_THAT(askedKeys(), ElementsAre(*model().codexIDs().begin()));
}

TEST_F(HelperModelCodexConnection, AddingAKnownFolderThroughALinkExcludesTheOthersOnly) {
    startWithThree();
    std::filesystem::create_directory_symlink(path(".codex-alpha"), folder_.file("link"));
    model().setCodexEnabled(false);
    EXPECT_TRUE(model().addCodexFolder(folder_.file("link")));
    EXPECT_THAT(model().codexIDs(), ElementsAre("alpha"));
}

TEST_F(HelperModelCodexConnection, AddingAFolderThatWasSwitchedOffSwitchesItOn) {
    const std::string folder = makeManualFolder("team");
    start();
    model().addCodexFolder(folder);
    const std::string key = *model().codexIDs().rbegin();
    model().setCodexAccount(codexAccount(key), false);
    ASSERT_FALSE(model().codexIDs().contains(key));
    EXPECT_TRUE(model().addCodexFolder(folder));
    EXPECT_TRUE(model().codexIDs().contains(key));
    EXPECT_THAT(excluded(), IsEmpty());
}

TEST_F(HelperModelCodexConnection, AddingClearsTheLastRemovalAndARefusalDoesNot) {
    startAfterRemoval();
    EXPECT_FALSE(model().addCodexFolder(folder_.file("nowhere")));
    EXPECT_TRUE(model().removedEverything());
    EXPECT_FALSE(model().codexEnabled());
    EXPECT_TRUE(model().addCodexFolder(makeManualFolder("team")));
    EXPECT_FALSE(model().removedEverything());
}

TEST_F(HelperModelCodexConnection, AnAccountThatIsSwitchedOffIsForgottenAndKeptInTheList) {
    startWithThree();
    poll();
    answer(1);
    answer(2);
    answer(3);
    model().setCodexAccount(codexAccount("beta"), false);
    EXPECT_THAT(excluded(), ElementsAre(path(".codex-beta")));
    EXPECT_EQ(storedSelection(),
              R"({"excluded":[")" + path(".codex-beta") + R"("],"manualDirectories":[]})");
    EXPECT_FALSE(model().receivedCodex().contains("beta"));
    EXPECT_EQ(model().receivedCodex().size(), 2U);
    EXPECT_EQ(codexStatusOf("beta"), "");
    EXPECT_EQ(model().codexAccountStatuses().size(), 2U);
    EXPECT_EQ(model().codexAccounts().size(), 3U);
    EXPECT_THAT(shownIds(), ElementsAre("codex-alpha", "codex-default"));
    EXPECT_TRUE(test::exists(limitsFile("codex-beta")));
    EXPECT_TRUE(model().codexEnabled());
    settle();
    EXPECT_FALSE(codex_.isAsking()) << "switching off asks nobody";
}

TEST_F(HelperModelCodexConnection, AnAccountThatIsSwitchedOnIsAsked) {
    startWithThree();
    model().setCodexAccount(codexAccount("beta"), false);
    writeLimits("codex-beta", 10, 20);
    model().setCodexAccount(codexAccount("beta"), true);
    EXPECT_THAT(excluded(), IsEmpty());
    EXPECT_EQ(storedSelection(), R"({"excluded":[],"manualDirectories":[]})");
    EXPECT_THAT(shownIds(), ElementsAre("codex-beta")) << "its last figures are back at once";
    EXPECT_FALSE(codex_.isAsking());
    settle();
    EXPECT_TRUE(codex_.isAsking());
}

TEST_F(HelperModelCodexConnection, AnAccountSwitchedOnWhileCodexIsOffComesAlone) {
    startWithThree();
    model().setCodexEnabled(false);
    model().setCodexAccount(codexAccount("beta"), true);
    EXPECT_TRUE(model().codexEnabled());
    EXPECT_EQ(stored("codexEnabled"), "true");
    EXPECT_THAT(excluded(), ElementsAre(path(".codex"), path(".codex-alpha")));
    settle();
    answer(1);
    EXPECT_THAT(askedKeys(), ElementsAre("beta"));
}

TEST_F(HelperModelCodexConnection, AnAccountSwitchedOnWhileCodexIsOnLeavesTheOthersAsTheyAre) {
    startWithThree();
    model().setCodexAccount(codexAccount("alpha"), false);
    model().setCodexAccount(codexAccount("beta"), false);
    model().setCodexAccount(codexAccount("beta"), true);
    EXPECT_THAT(excluded(), ElementsAre(path(".codex-alpha")));
}

TEST_F(HelperModelCodexConnection, SwitchingAnAccountOnClearsTheLastRemovalAndOffDoesNot) {
    startAfterRemoval();
    model().setCodexAccount(codexAccount("beta"), false);
    EXPECT_TRUE(model().removedEverything());
    EXPECT_FALSE(model().codexEnabled());
    model().setCodexAccount(codexAccount("beta"), true);
    EXPECT_FALSE(model().removedEverything());
}

TEST_F(HelperModelCodexConnection, SwitchingAnAccountIsFollowedByARefresh) {
    startWithThree();
    makeCodexFolder(".codex-n1");
    model().setCodexAccount(codexAccount("beta"), false);
    EXPECT_EQ(codexAccount("n1").name, "n1");
    makeCodexFolder(".codex-n2");
    model().setCodexAccount(codexAccount("beta"), true);
    EXPECT_EQ(codexAccount("n2").name, "n2");
}

TEST_F(HelperModelCodexConnection, AnAccountIsOnIfCodexIsAndItIsNotExcluded) {
    startWithThree();
    const CodexAccounts::Account beta = codexAccount("beta");
    EXPECT_TRUE(model().isCodexAccountOn(beta));
    model().setCodexAccount(beta, false);
    EXPECT_FALSE(model().isCodexAccountOn(beta));
    EXPECT_TRUE(model().isCodexAccountOn(codexAccount("alpha")));
    model().setCodexAccount(beta, true);
    EXPECT_TRUE(model().isCodexAccountOn(beta));
    model().setCodexEnabled(false);
    EXPECT_FALSE(model().isCodexAccountOn(beta));
}

TEST_F(HelperModelCodexConnection, EveryChangeOfWhatIsWantedCountsAsOne) {
    const std::string folder = makeManualFolder("team");
    startWithThree();
    std::int64_t expected = model().codexConnectionRevision();
    EXPECT_EQ(expected, 0);
    model().setCodexEnabled(true);
    EXPECT_EQ(model().codexConnectionRevision(), expected) << "no change";
    model().setCodexEnabled(false);
    EXPECT_EQ(model().codexConnectionRevision(), ++expected);
    model().setCodexEnabled(true);
    EXPECT_EQ(model().codexConnectionRevision(), ++expected);
    model().connectCodex();
    EXPECT_EQ(model().codexConnectionRevision(), ++expected);
    model().addCodexFolder(folder);
    EXPECT_EQ(model().codexConnectionRevision(), ++expected);
    model().setCodexAccount(codexAccount("alpha"), false);
    EXPECT_EQ(model().codexConnectionRevision(), ++expected);
    model().setCodexAccount(codexAccount("alpha"), true);
    EXPECT_EQ(model().codexConnectionRevision(), ++expected);
    model().refresh();
    model().reload();
    poll();
    EXPECT_EQ(model().codexConnectionRevision(), expected);
}

TEST_F(HelperModelCodexConnection, SwitchingCodexOnByAnAccountCountsForBoth) {
    const std::string folder = makeManualFolder("team");
    startWithThree();
    for (int way = 0; way < 3; ++way) {
        model().setCodexEnabled(false);
        const std::int64_t before = model().codexConnectionRevision();
        if (way == 0) model().connectCodex();
        if (way == 1) model().addCodexFolder(folder);
        if (way == 2) model().setCodexAccount(codexAccount("beta"), true);
        EXPECT_EQ(model().codexConnectionRevision(), before + 2) << way;
    }
}

TEST_F(HelperModelCodexConnection, APollThatAnOperationStartsWaitsBehindTheOneThatRuns) {
    startWithThree();
    poll();
    model().setCodexAccount(codexAccount("beta"), false);
    model().setCodexAccount(codexAccount("beta"), true);
    settle();
    EXPECT_EQ(codex_.openCount(), 1U);
    EXPECT_TRUE(model().codexPollRequested());
    answer(1);
    answer(2);
    answer(3);
    settle();
    EXPECT_THAT(askedKeys(), ElementsAre("alpha", "beta", "default", "alpha"));
}

TEST_F(HelperModelCodexConnection, TheObserversHearOfRealChangesOnly) {
    startWithThree();
    const CodexAccounts::Account beta = codexAccount("beta");
    const SignalCount selections(model(), &HelperModel::codexSelectionChanged);
    const SignalCount switches(model(), &HelperModel::codexEnabledChanged);
    model().setCodexAccount(beta, true);
    model().connectCodex();
    EXPECT_EQ(selections.count(), 0);
    model().setCodexAccount(beta, false);
    model().setCodexAccount(beta, false);
    EXPECT_EQ(selections.count(), 1);
    EXPECT_EQ(switches.count(), 0);
}

TEST_F(HelperModelCodexConnection, TheChoicesOutliveTheProgram) {
    const std::string folder = makeManualFolder("team");
    startWithThree();
    model().addCodexFolder(folder);
    model().setCodexAccount(codexAccount("beta"), false);
    start();
    EXPECT_THAT(excluded(), ElementsAre(path(".codex-beta")));
    EXPECT_THAT(model().codexSelection().manualDirectories, ElementsAre(folder));
    EXPECT_EQ(model().codexIDs().size(), 3U);
}

// Every operation begins by taking the last failure away.
TEST_F(HelperModelCodexConnection, ANewOperationClearsTheFormerFailure) {
    const std::string claude = makeRegisteredFolder(".claude-work");
    startWithThree();
    const auto clears = [&](const char* name, const std::function<void()>& operation) {
        ASSERT_FALSE(model().addCodexFolder(folder_.file("nowhere")));
        ASSERT_EQ(model().failure(), refusal);
        operation();
        EXPECT_EQ(model().failure(), std::nullopt) << name;
    };
    clears("connectClaude", [&] { model().connectClaude(); });
    clears("disconnectClaude", [&] { model().disconnectClaude(claudeAccount(claude)); });
    clears("addClaudeFolder", [&] { model().addClaudeFolder(claude); });
    clears("connectCodex", [&] { model().connectCodex(); });
    clears("addCodexFolder", [&] { model().addCodexFolder(makeManualFolder("team")); });
    clears("off", [&] { model().setCodexAccount(codexAccount("alpha"), false); });
    clears("on", [&] { model().setCodexAccount(codexAccount("alpha"), true); });
    clears("name", [&] { model().setUsageName("claude-work", "Work"); });
    clears("move", [&] { model().moveCard("subscription.claude-work", 1); });
    clears("order", [&] { model().resetCardOrder(); });
    clears("login", [&] { model().setLaunchAtLogin(true); });
    clears("removal", [&] { removeEverything(); });
}

}  // namespace
}  // namespace brimwatch
