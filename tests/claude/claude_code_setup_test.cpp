#include "claude/claude_code_setup.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "claude/claude_folders.h"
#include "harness/scripted_file_system.h"
#include "support/path_digest.h"

namespace brimwatch {
namespace {

using ::testing::ElementsAre;
using Account = ClaudeCodeSetup::Account;
using State = ClaudeCodeSetup::State;

constexpr std::string_view ourSettings =
    R"({"statusLine":{"type":"command","command":"'/opt/tools/bin/brimwatch' --statusline"}})";

class ClaudeCodeSetupTest : public test::ClaudeFolders {
  protected:
    std::vector<Account> accounts(const std::vector<std::string>& manual = {}) {
        return ClaudeCodeSetup::accounts(files_, manual, home_, environment());
    }

    std::vector<std::string> directories(const std::vector<std::string>& manual = {}) {
        return directoriesIn(home_, manual);
    }
    std::vector<std::string> directoriesIn(const std::string& home,
                                           const std::vector<std::string>& manual = {}) {
        std::vector<std::string> result;
        for (const Account& account :
             ClaudeCodeSetup::accounts(files_, manual, home, environment())) {
            result.push_back(account.directory);
        }
        return result;
    }

    std::string id(const Account& account) {
        return ClaudeCodeSetup::accountID(files_, account, home_);
    }
    std::string idOf(const std::string& name) { return id({.directory = home_ + '/' + name}); }
    std::string manualName(const std::string& directory) {
        const Account account{.directory = directory, .isManual = true};
        EXPECT_EQ(id(account), ClaudeCodeSetup::accountName(files_, account, home_) + '-' +
                                   pathDigest(directory));
        return ClaudeCodeSetup::accountName(files_, account, home_);
    }

    State stateWith(std::string_view settings) {
        return ClaudeCodeSetup::classify(files_, parsed(settings), environment());
    }
    State stateWithFile(std::string_view bytes) {
        test::writeFile(work_ + "/.claude.json", "{}");
        test::writeFile(settingsIn(work_), bytes);
        const std::vector<Account> found = accounts();
        EXPECT_EQ(found.size(), 1U);
        return found.at(0).state;
    }

    // A folder that Claude Code ran in.
    void makeUsed(const std::string& folder) { test::writeFile(folder + "/.claude.json", "{}"); }
};

TEST_F(ClaudeCodeSetupTest, TheDefaultFolderIsKnownByTheFileBesideIt) {
    std::filesystem::create_directories(home_ + "/.claude");
    EXPECT_TRUE(accounts().empty());
    test::writeFile(home_ + "/.claude.json", "{}");
    EXPECT_THAT(accounts(), ElementsAre(Account{home_ + "/.claude", State::notRegistered, false}));
    EXPECT_EQ(id(accounts().at(0)), "default");
}

TEST_F(ClaudeCodeSetupTest, TheDefaultFolderIsKnownByAFileInsideToo) {
    makeUsed(home_ + "/.claude");
    EXPECT_THAT(directories(), ElementsAre(home_ + "/.claude"));
}

TEST_F(ClaudeCodeSetupTest, AFolderThatClaudeCodeNeverRanInIsDropped) {
    std::filesystem::create_directories(home_ + "/.claude-backup");
    test::writeFile(settingsIn(home_ + "/.claude-backup"),
                    R"({"statusLine":{"type":"command","command":"theirs"}})");
    test::writeFile(home_ + "/.claude.json", "{}");
    EXPECT_TRUE(accounts().empty());
}

TEST_F(ClaudeCodeSetupTest, AFolderWithOurStatusLineIsKeptWithoutItsConfigFile) {
    test::writeFile(settingsIn(home_ + "/.claude-old"), ourSettings);
    EXPECT_THAT(accounts(), ElementsAre(Account{home_ + "/.claude-old", State::registered, false}));
}

TEST_F(ClaudeCodeSetupTest, AFolderThatNeedsRepairOrHasTheOldHelperIsKeptToo) {
    executables_.clear();
    test::writeFile(settingsIn(home_ + "/.claude-a"), ourSettings);
    test::writeFile(settingsIn(home_ + "/.claude-b"),
                    R"({"statusLine":{"command":"python3 ~/.brimwatch/brimwatch.py"}})");
    EXPECT_THAT(accounts(), ElementsAre(Account{home_ + "/.claude-a", State::needsRepair, false},
                                        Account{home_ + "/.claude-b", State::oldHelper, false}));
}

TEST_F(ClaudeCodeSetupTest, AFileOfSuchANameIsNoFolder) {
    test::writeFile(home_ + "/.claude-notes", "text");
    EXPECT_TRUE(accounts().empty());
}

TEST_F(ClaudeCodeSetupTest, OtherNamesAreNotLookedAt) {
    for (const char* name : {"claude", ".claudex", ".claude.d", ".Claude-a", "x.claude-a"}) {
        test::writeFile(settingsIn(home_ + '/' + name), ourSettings);
    }
    EXPECT_TRUE(accounts().empty());
}

TEST_F(ClaudeCodeSetupTest, FoldersComeSortedByTheirNamesTheDefaultFirst) {
    for (const char* name :
         {"/.claude-b", "/.claude-한글", "/.claude", "/.claude-B", "/.claude-"}) {
        makeUsed(home_ + name);
    }
    EXPECT_THAT(directories(),
                ElementsAre(home_ + "/.claude", home_ + "/.claude-", home_ + "/.claude-B",
                            home_ + "/.claude-b", home_ + "/.claude-한글"));
}

TEST_F(ClaudeCodeSetupTest, AHomeThatCantBeListedHasNoDiscoveredAccounts) {
    makeUsed(folder_.file("x/.claude"));
    EXPECT_TRUE(accounts().empty());
    EXPECT_THAT(directories({folder_.file("x/.claude")}), ElementsAre(folder_.file("x/.claude")));
}

TEST_F(ClaudeCodeSetupTest, ALinkToAFolderCountsAndOneToNowhereDoesNot) {
    makeUsed(folder_.file("elsewhere"));
    link(folder_.file("elsewhere"), home_ + "/.claude-link");
    link(folder_.file("nowhere"), home_ + "/.claude-nowhere");
    link(home_ + "/.claude-self", home_ + "/.claude-self");
    EXPECT_THAT(directories(), ElementsAre(home_ + "/.claude-link"));
}

TEST_F(ClaudeCodeSetupTest, ANameThatIsNotUtf8IsPassedOver) {
    makeUsed(home_ + "/.claude-\xFF");
    makeUsed(home_ + "/.claude-\xED\xA0\x80");
    makeUsed(home_ + "/.claude-ok");
    EXPECT_THAT(directories(), ElementsAre(home_ + "/.claude-ok"));
}

TEST_F(ClaudeCodeSetupTest, ThousandsOfEntriesInTheHomeCostOneListing) {
    makeUsed(home_ + "/.claude-a");
    for (int number = 0; number < 5000; ++number)
        test::writeFile(home_ + "/.entry-" + std::to_string(number), "");
    test::ScriptedFileSystem recording(files_);
    const auto found = ClaudeCodeSetup::accounts(recording, {}, home_, environment());
    EXPECT_THAT(found, ElementsAre(Account{home_ + "/.claude-a", State::notRegistered, false}));
    EXPECT_LT(recording.steps().size(), 10U);
}

TEST_F(ClaudeCodeSetupTest, HundredsOfAccountsAreAllFound) {
    for (int number = 0; number < 300; ++number)
        makeUsed(home_ + "/.claude-" + std::to_string(number));
    EXPECT_EQ(accounts().size(), 300U);
}

TEST_F(ClaudeCodeSetupTest, AManualFolderNamedAsTheDefaultIsCalledAfterItsParent) {
    const std::string folder = folder_.file("x/y/.claude");
    std::filesystem::create_directories(folder);
    std::filesystem::create_directories(home_);
    EXPECT_THAT(accounts({folder}), ElementsAre(Account{folder, State::notRegistered, true}));
    EXPECT_EQ(id(accounts({folder}).at(0)), "y-" + pathDigest(folder));
}

TEST_F(ClaudeCodeSetupTest, AManualFolderThatDiscoveryDroppedComesBackAsAStandardOne) {
    std::filesystem::create_directories(home_ + "/.claude-team");
    EXPECT_TRUE(accounts().empty());
    const std::vector<Account> found = accounts({home_ + "/.claude-team"});
    EXPECT_THAT(found, ElementsAre(Account{home_ + "/.claude-team", State::notRegistered, false}));
    EXPECT_EQ(id(found.at(0)), "team");
}

TEST_F(ClaudeCodeSetupTest, AStandardFolderAddedThroughALinkedHomeIsNamedByTheHomeAsGiven) {
    std::filesystem::create_directories(folder_.file("real/.claude-team"));
    link(folder_.file("real"), home_);
    EXPECT_THAT(directories({folder_.file("real/.claude-team")}),
                ElementsAre(home_ + "/.claude-team"));
}

TEST_F(ClaudeCodeSetupTest, AFolderReachedByALinkAndDirectlyIsListedOnce) {
    makeUsed(home_ + "/.claude-a");
    link(home_ + "/.claude-a", folder_.file("link"));
    EXPECT_THAT(directories({folder_.file("link"), home_ + "/.claude-a"}),
                ElementsAre(home_ + "/.claude-a"));
    std::filesystem::create_directories(folder_.file("m"));
    link(folder_.file("m"), folder_.file("n"));
    EXPECT_THAT(directories({folder_.file("n"), folder_.file("m"), folder_.file("x/../m/")}),
                ElementsAre(home_ + "/.claude-a", folder_.file("m")));
}

TEST_F(ClaudeCodeSetupTest, ALinkInTheHomeAndItsTargetAddedByHandAreOneAccount) {
    makeUsed(folder_.file("data"));
    link(folder_.file("data"), home_ + "/.claude-data");
    EXPECT_THAT(directories({folder_.file("data")}), ElementsAre(home_ + "/.claude-data"));
}

TEST_F(ClaudeCodeSetupTest, ManualFoldersFollowTheDiscoveredOnesInTheOrderGiven) {
    makeUsed(home_ + "/.claude-z");
    for (const char* name : {"c", "a", "b"})
        std::filesystem::create_directories(folder_.file(name));
    EXPECT_THAT(
        directories({folder_.file("c"), folder_.file("a"), folder_.file("b")}),
        ElementsAre(home_ + "/.claude-z", folder_.file("c"), folder_.file("a"), folder_.file("b")));
}

TEST_F(ClaudeCodeSetupTest, TheHomeAFileAndWhatIsMissingAreNoManualFolders) {
    std::filesystem::create_directories(home_);
    link(home_, folder_.file("link"));
    test::writeFile(folder_.file("file"), "");
    EXPECT_TRUE(accounts({home_, home_ + "/", folder_.file("link"), folder_.file("file"),
                          folder_.file("missing")})
                    .empty());
}

TEST_F(ClaudeCodeSetupTest, APathThatNamesNoFolderOfItsOwnIsNoManualFolder) {
    std::filesystem::create_directories(home_);
    std::filesystem::create_directories(folder_.file("bad-\xFF"));
    link(folder_.file("bad-\xFF"), folder_.file("link"));
    EXPECT_TRUE(accounts({"", ".", "relative", folder_.file("bad-\xFF"), folder_.file("link"),
                          folder_.path() + std::string("\0/x", 3)})
                    .empty());
}

TEST_F(ClaudeCodeSetupTest, AManualFolderStaysWhateverItsState) {
    std::filesystem::create_directories(folder_.file("a"));
    test::writeFile(settingsIn(folder_.file("b")), ourSettings);
    EXPECT_THAT(accounts({folder_.file("a"), folder_.file("b")}),
                ElementsAre(Account{folder_.file("a"), State::notRegistered, true},
                            Account{folder_.file("b"), State::registered, true}));
}

TEST_F(ClaudeCodeSetupTest, AnyFileProblemCountsAsIfTheThingWereNotThere) {
    makeUsed(home_ + "/.claude");
    test::writeFile(settingsIn(work_), ourSettings);
    const std::string manual = std::filesystem::canonical(folder_.path()).string() + "/m";
    std::filesystem::create_directories(manual);
    const std::vector<Account> all = accounts({manual});
    ASSERT_EQ(all.size(), 3U);
    test::ScriptedFileSystem counting(files_);
    ClaudeCodeSetup::accounts(counting, {manual}, home_, environment());
    for (std::size_t step = 0; step < counting.steps().size(); ++step) {
        const std::string& failed = counting.steps()[step];
        test::ScriptedFileSystem failing(files_);
        failing.failAtStep(step, std::errc::permission_denied);
        std::set<std::string> found;
        for (const Account& account :
             ClaudeCodeSetup::accounts(failing, {manual}, home_, environment())) {
            found.insert(account.directory);
        }
        // A failed look costs the accounts that it is about, and no other.
        const bool isListing = failed == "entries " + home_;
        for (const Account& account : all) {
            const bool isAbout = failed.find(account.directory) != std::string::npos ||
                                 (isListing && !account.isManual);
            EXPECT_TRUE(found.contains(account.directory) || isAbout) << failed;
        }
        EXPECT_TRUE(!isListing || found == std::set<std::string>{manual});
    }
}

TEST_F(ClaudeCodeSetupTest, TwoLinksToOneFolderInTheHomeAreOneAccount) {
    test::writeFile(settingsIn(work_), ourSettings);
    link(".claude-work", home_ + "/.claude-link");
    EXPECT_THAT(directories(), ElementsAre(work_));
    link("../elsewhere", home_ + "/.claude-a");
    link("../elsewhere", home_ + "/.claude-b");
    test::writeFile(settingsIn(folder_.file("elsewhere")), ourSettings);
    EXPECT_THAT(directories(), ElementsAre(home_ + "/.claude-a", work_));
}

TEST_F(ClaudeCodeSetupTest, TheDefaultFolderThatDiscoveryDroppedComesBackAsAStandardOne) {
    const std::string folder = home_ + "/.claude";
    std::filesystem::create_directories(folder);
    EXPECT_TRUE(accounts().empty());
    EXPECT_EQ(accounts({folder}),
              (std::vector<Account>{{folder, State::notRegistered, /*isManual=*/false}}));
}

TEST_F(ClaudeCodeSetupTest, TheSpellingOfTheHomeDoesNotMatter) {
    test::writeFile(settingsIn(work_), ourSettings);
    for (const std::string& spelling :
         {home_ + "/", home_ + "//", home_ + "/./", home_ + "/x/.."}) {
        EXPECT_THAT(directoriesIn(spelling), ElementsAre(work_));
    }
}

TEST_F(ClaudeCodeSetupTest, AHomeThatIsNotUtf8HasAccountsAllTheSame) {
    const std::string home = folder_.file("h\xFF");
    test::writeFile(settingsIn(home + "/.claude-work"), ourSettings);
    EXPECT_THAT(directoriesIn(home), ElementsAre(home + "/.claude-work"));
}

TEST_F(ClaudeCodeSetupTest, ALinkToTheDefaultFolderMayBeAddedByTheFileBesideThat) {
    std::filesystem::create_directories(home_ + "/.claude");
    test::writeFile(home_ + "/.claude.json", "{}");
    link(home_ + "/.claude", folder_.file("picked"));
    EXPECT_TRUE(ClaudeCodeSetup::isClaudeFolder(files_, folder_.file("picked"), home_));
    link(home_, folder_.file("linked-home"));
    EXPECT_TRUE(
        ClaudeCodeSetup::isClaudeFolder(files_, home_ + "/.claude", folder_.file("linked-home")));
}

TEST_F(ClaudeCodeSetupTest, DiscoveryWritesNothing) {
    makeUsed(home_ + "/.claude");
    test::writeFile(settingsIn(work_), ourSettings);
    test::ScriptedFileSystem recording(files_);
    ClaudeCodeSetup::accounts(recording, {work_}, home_, environment());
    for (const std::string& step : recording.steps()) {
        const std::string name = step.substr(0, step.find(' '));
        EXPECT_THAT(name, ::testing::AnyOf("entries", "status", "read", "realPath", "linkTarget"));
    }
}

TEST_F(ClaudeCodeSetupTest, SettingsThatCantBeUsedCountAsEmpty) {
    for (const char* bytes : {"", "{", "[]", "null", "\"x\"", "{\"statusLine\":}", "\xFF"}) {
        EXPECT_EQ(stateWithFile(bytes), State::notRegistered) << bytes;
    }
    std::filesystem::remove(settingsIn(work_));
    EXPECT_THAT(accounts(), ElementsAre(Account{work_, State::notRegistered, false}));
    std::filesystem::create_directory(settingsIn(work_));
    EXPECT_THAT(accounts(), ElementsAre(Account{work_, State::notRegistered, false}));
}

TEST_F(ClaudeCodeSetupTest, TheFilesThatClaudeCodeWritesHaveAStatusLineOfTheUser) {
    EXPECT_EQ(stateWithFile(test::testData("claude-2.1.329-settings-before.json")),
              State::notRegistered);
    EXPECT_EQ(stateWithFile(test::testData("claude-2.1.329-settings-written-by-claude-code.json")),
              State::notRegistered);
}

TEST_F(ClaudeCodeSetupTest, AnotherStatusLineIsNotOurs) {
    for (
        const char* settings :
        {"{}", R"({"statusLine":null})", R"({"statusLine":"brimwatch --statusline"})",
         R"({"statusLine":{"type":"command"}})", R"({"statusLine":{"type":"command","command":1}})",
         R"({"statusLine":{"type":"command","command":"'/usr/bin/jq' --statusline"}})",
         R"({"statusLine":{"type":"other","command":"'/opt/tools/bin/brimwatch' --statusline"}})"}) {
        EXPECT_EQ(stateWith(settings), State::notRegistered) << settings;
    }
}

TEST_F(ClaudeCodeSetupTest, OurStatusLineIsRegisteredWhileItsExecutableIsUsable) {
    EXPECT_EQ(stateWith(ourSettings), State::registered);
    executables_.clear();
    EXPECT_EQ(stateWith(ourSettings), State::needsRepair);
}

TEST_F(ClaudeCodeSetupTest, ACopyElsewhereThatIsGoneOrOnADiskImageNeedsRepair) {
    executables_.insert("/Volumes/B/Brimwatch.app/Contents/MacOS/Brimwatch");
    for (const char* path : {"/gone/bin/brimwatch", "/gone/Brimwatch.app/Contents/MacOS/Brimwatch",
                             "/Volumes/B/Brimwatch.app/Contents/MacOS/Brimwatch"}) {
        EXPECT_EQ(stateWith(R"({"statusLine":{"type":"command","command":"')" + std::string(path) +
                            R"(' --statusline"}})"),
                  State::needsRepair)
            << path;
    }
}

TEST_F(ClaudeCodeSetupTest, ACopyInABuildFolderNeedsRepairUnlessThoseAreAccepted) {
    const std::string path = "/src/build/Brimwatch.app/Contents/MacOS/Brimwatch";
    executables_.insert(path);
    const JsonObject settings =
        parsed(R"({"statusLine":{"type":"command","command":"')" + path + R"(' --statusline"}})");
    CommandEnvironment accepting = environment();
    accepting.rejectDevelopmentLocations = false;
    EXPECT_EQ(ClaudeCodeSetup::classify(files_, settings, environment()), State::needsRepair);
    EXPECT_EQ(ClaudeCodeSetup::classify(files_, settings, accepting), State::registered);
}

TEST_F(ClaudeCodeSetupTest, TheScriptHelperIsKnownByItsPathWhateverTheType) {
    EXPECT_EQ(stateWith(R"({"statusLine":{"command":"python3 /h/.brimwatch/brimwatch.py -x"}})"),
              State::oldHelper);
    EXPECT_EQ(stateWith(R"({"statusLine":{"type":"command",
        "command":"'/h/.brimwatch/brimwatch.py/bin/brimwatch' --statusline"}})"),
              State::oldHelper);
}

TEST_F(ClaudeCodeSetupTest, APathThatTheSystemWouldCutShortIsNotUsable) {
    executables_.insert(std::string("/x\0/bin/brimwatch", 17));
    EXPECT_EQ(stateWith(R"({"statusLine":{"type":"command",
        "command":"'/x\u0000/bin/brimwatch' --statusline"}})"),
              State::needsRepair);
}

TEST_F(ClaudeCodeSetupTest, IdsComeFromTheNamesOfFolders) {
    EXPECT_EQ(idOf(".claude"), "default");
    EXPECT_EQ(idOf(".claude-work"), "work");
    EXPECT_EQ(idOf(".claude-한글"), "한글");
    EXPECT_EQ(idOf(".claude-a b"), "a-b");
    EXPECT_EQ(idOf(".claude-"), "default");
}

TEST_F(ClaudeCodeSetupTest, AManualFolderHasItsOwnNameIfThatTellsAnything) {
    EXPECT_EQ(manualName("/x/team"), "team");
    EXPECT_EQ(manualName("/x/.claude-team"), "team");
}

TEST_F(ClaudeCodeSetupTest, AManualFolderWhoseNameTellsNothingIsCalledAfterItsParent) {
    EXPECT_EQ(manualName("/x/y/.claude"), "y");
    EXPECT_EQ(manualName("/x/y/claude"), "y");
    EXPECT_EQ(manualName("/x/a b/.claude-"), "a-b");
    EXPECT_EQ(manualName("/.claude"), "default");
}

TEST_F(ClaudeCodeSetupTest, AManualFolderInTheHomeKeepsItsNameWithoutDots) {
    std::filesystem::create_directories(home_);
    EXPECT_EQ(manualName(home_ + "/claude"), "claude");
    EXPECT_EQ(manualName(home_ + "/..claude"), "claude");
    EXPECT_EQ(manualName(home_ + "/---"), "---");
}

TEST_F(ClaudeCodeSetupTest, AManualFolderInALinkedHomeIsInTheHome) {
    std::filesystem::create_directories(folder_.file("real"));
    link(folder_.file("real"), home_);
    EXPECT_EQ(manualName(folder_.file("real/claude")), "claude");
}

TEST_F(ClaudeCodeSetupTest, NoNameOfAFolderGetsShellCharactersIntoAnId) {
    std::filesystem::create_directories(home_);
    EXPECT_EQ(manualName(home_ + "/; &"), "default");
    EXPECT_EQ(manualName(home_ + "/'\n'"), "default");
    EXPECT_EQ(manualName(home_ + "/ "), "default");
}

TEST_F(ClaudeCodeSetupTest, ManualFoldersOfOneNameAreKeptApart) {
    const std::string first = id({.directory = "/x/team", .isManual = true});
    const std::string second = id({.directory = "/y/team", .isManual = true});
    EXPECT_NE(first, second);
    EXPECT_THAT(first, ::testing::StartsWith("team-"));
    EXPECT_EQ(first.size(), std::string("team-").size() + 12);
}

TEST_F(ClaudeCodeSetupTest, TheConfigFileLiesBesideTheDefaultFolderAndInsideEveryOther) {
    EXPECT_EQ(ClaudeCodeSetup::claudeConfigFile("/h/.claude", "/h"), "/h/.claude.json");
    EXPECT_EQ(ClaudeCodeSetup::claudeConfigFile("/h/x/../.claude/", "/h/./"), "/h/./.claude.json");
    EXPECT_EQ(ClaudeCodeSetup::claudeConfigFile("/h/.claude-a", "/h"), "/h/.claude-a/.claude.json");
    EXPECT_EQ(ClaudeCodeSetup::claudeConfigFile("/x/.claude", "/h"), "/x/.claude/.claude.json");
}

TEST_F(ClaudeCodeSetupTest, AFolderMayBeAddedIfClaudeCodeRanInIt) {
    makeUsed(folder_.file("a"));
    link(folder_.file("a"), folder_.file("link"));
    std::filesystem::create_directories(folder_.file("unused"));
    test::writeFile(folder_.file("file"), "");
    const auto isAccepted = [this](const std::string& folder) {
        return ClaudeCodeSetup::isClaudeFolder(files_, folder, home_);
    };
    EXPECT_TRUE(isAccepted(folder_.file("a")));
    EXPECT_TRUE(isAccepted(folder_.file("link")));
    EXPECT_FALSE(isAccepted(folder_.file("unused")));
    EXPECT_FALSE(isAccepted(folder_.file("file")));
    EXPECT_FALSE(isAccepted(folder_.file("missing")));
    EXPECT_FALSE(isAccepted(""));
}

TEST_F(ClaudeCodeSetupTest, TheHomeMayNotBeAddedAlsoNotThroughALink) {
    test::writeFile(home_ + "/.claude.json", "{}");
    link(home_, folder_.file("link"));
    EXPECT_FALSE(ClaudeCodeSetup::isClaudeFolder(files_, home_ + "/", home_));
    EXPECT_FALSE(ClaudeCodeSetup::isClaudeFolder(files_, folder_.file("link"), home_));
}

TEST_F(ClaudeCodeSetupTest, TheDefaultFolderMayBeAddedByTheFileBesideIt) {
    std::filesystem::create_directories(home_ + "/.claude");
    EXPECT_FALSE(ClaudeCodeSetup::isClaudeFolder(files_, home_ + "/.claude", home_));
    test::writeFile(home_ + "/.claude.json", "{}");
    EXPECT_TRUE(ClaudeCodeSetup::isClaudeFolder(files_, home_ + "/.claude", home_));
}

}  // namespace
}  // namespace brimwatch
