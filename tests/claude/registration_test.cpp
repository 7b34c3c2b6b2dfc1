#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "claude/claude_code_setup.h"
#include "claude/claude_folders.h"
#include "claude/status_line_command.h"
#include "support/json_writer.h"

namespace brimwatch {
namespace {

using State = ClaudeCodeSetup::State;

constexpr std::string_view bundleEnding = "/Brimwatch.app/Contents/MacOS/Brimwatch";

class Registration : public test::ClaudeFolders {
  protected:
    FileResult<void> connect(const std::optional<std::string>& account = "work") {
        return ClaudeCodeSetup::connect(files_, work_, account, environment_, noPause);
    }
    FileResult<void> disconnect() {
        return ClaudeCodeSetup::disconnect(files_, work_, environment_, noPause);
    }

    void store(std::string_view settings) { test::writeFile(path_, settings); }
    JsonObject stored() const { return parsed(test::readFile(path_)); }
    State state() const {
        PosixFileSystem files;
        return ClaudeCodeSetup::classify(files, stored(), environment_);
    }

    static void noPause(std::chrono::milliseconds) {}

    std::string path_ = settingsIn(work_);
    std::string backup_ = path_ + ".brimwatch-backup";
    CommandEnvironment environment_ = environment();

    void SetUp() override { std::filesystem::create_directories(work_); }
};

JsonObject ourStatusLine(std::string_view command = test::programCommand) {
    return JsonObject({{"type", "command"},
                       {"command", command},
                       {"refreshInterval", JsonNumber::fromInteger(60)}});
}

TEST_F(Registration, MakesAMissingFileWithTheStatusLineAlone) {
    ASSERT_TRUE(connect());
    EXPECT_EQ(test::readFile(path_),
              "{\n"
              "  \"statusLine\": {\n"
              "    \"command\": \"'/opt/tools/bin/brimwatch' --statusline --account work\",\n"
              "    \"refreshInterval\": 60,\n"
              "    \"type\": \"command\"\n"
              "  }\n"
              "}\n");
    EXPECT_THAT(names(work_), ::testing::ElementsAre("settings.json"));
}

TEST_F(Registration, NamesNoAccountWhereNoneIsGiven) {
    ASSERT_TRUE(connect(std::nullopt));
    EXPECT_EQ(presentStatusLineCommand(stored()), "'/opt/tools/bin/brimwatch' --statusline");
}

TEST_F(Registration, KeepsTheUsersCommandAndEverythingElseOfTheFileThatClaudeCodeWrites) {
    for (const char* name : {"claude-2.1.329-settings-before.json",
                             "claude-2.1.329-settings-written-by-claude-code.json"}) {
        const std::string text = test::testData(name);
        store(text);
        ASSERT_TRUE(connect());
        JsonObject expected = parsed(text);
        JsonObject variables = *expected.find("env")->object();
        variables.set("BRIMWATCH_NEXT_STATUSLINE",
                      "python3 /home/someone/harness/statusline_dump.py /home/someone/dumps");
        expected.set("env", variables);
        expected.set("statusLine", ourStatusLine());
        EXPECT_EQ(stored(), expected);
        ASSERT_TRUE(disconnect());
        EXPECT_EQ(stored(), parsed(text));
    }
}

TEST_F(Registration, AChainedCommandIsKeptWhateverItsType) {
    for (const char* type : {R"("command")", R"("static")", "7", "null"}) {
        store(R"({"statusLine":{"command":"theirs","type":)" + std::string(type) + "}}");
        ASSERT_TRUE(connect());
        EXPECT_EQ(*stored().find("env"), parsed(R"({"BRIMWATCH_NEXT_STATUSLINE":"theirs"})"))
            << type;
    }
}

TEST_F(Registration, OtherMembersOfTheFormerStatusLineAreNotCarriedOver) {
    store(R"({"statusLine":{"type":"command","command":"theirs","padding":2}})");
    ASSERT_TRUE(connect());
    EXPECT_EQ(*stored().find("statusLine"), JsonValue(ourStatusLine()));
    ASSERT_TRUE(disconnect());
    EXPECT_EQ(stored(), parsed(R"({"statusLine":{"type":"command","command":"theirs"}})"));
}

TEST_F(Registration, ConnectingTwiceChangesNothingNotEvenTheTime) {
    store(R"({"statusLine":{"type":"command","command":"theirs"}})");
    ASSERT_TRUE(connect());
    const FileStatus before = *files_.status(path_);
    ASSERT_TRUE(connect());
    EXPECT_EQ(*files_.status(path_), before);
}

TEST_F(Registration, AnUnchangedRegistrationTakesNoBackup) {
    store(writeJson(JsonObject({{"statusLine", ourStatusLine()}}), JsonLayout::compact));
    ASSERT_TRUE(connect());
    EXPECT_FALSE(test::exists(backup_));
}

TEST_F(Registration, AnotherIdRewritesTheCommandAndKeepsTheVariables) {
    store(R"({"env":{"A":"1"},"statusLine":{"type":"command","command":"theirs"}})");
    ASSERT_TRUE(connect());
    const JsonValue variables = *stored().find("env");
    ASSERT_TRUE(connect("other"));
    EXPECT_EQ(*stored().find("env"), variables);
    EXPECT_EQ(presentStatusLineCommand(stored()),
              "'/opt/tools/bin/brimwatch' --statusline --account other");
}

TEST_F(Registration, ConnectingAfterDisconnectingChainsTheFormerCommandAgain) {
    store(R"({"statusLine":{"type":"command","command":"theirs"}})");
    ASSERT_TRUE(connect());
    const JsonObject connected = stored();
    ASSERT_TRUE(disconnect());
    EXPECT_EQ(stored(), parsed(R"({"statusLine":{"type":"command","command":"theirs"}})"));
    ASSERT_TRUE(connect());
    EXPECT_EQ(stored(), connected);
}

TEST_F(Registration, AFormerStatusLineWithoutACommandLeavesTheVariablesAloneAndIsGoneLater) {
    for (const char* former : {R"({"type":"command"})", R"({"command":""})", R"({"command":5})",
                               "\"text\"", "null", "[]"}) {
        store(R"({"env":{"A":"1"},"statusLine":)" + std::string(former) + "}");
        ASSERT_TRUE(connect());
        EXPECT_EQ(*stored().find("env"), parsed(R"({"A":"1"})")) << former;
        ASSERT_TRUE(disconnect());
        EXPECT_EQ(stored(), parsed(R"({"env":{"A":"1"}})")) << former;
    }
}

TEST_F(Registration, VariablesThatAreNoObjectAreReplacedByTheChain) {
    for (const char* variables : {"[]", "\"A=1\"", "null", "3"}) {
        store(R"({"statusLine":{"command":"theirs"},"env":)" + std::string(variables) + "}");
        ASSERT_TRUE(connect());
        EXPECT_EQ(*stored().find("env"), parsed(R"({"BRIMWATCH_NEXT_STATUSLINE":"theirs"})"));
    }
}

TEST_F(Registration, VariablesThatAreNoObjectStayWhereNothingIsChainedAndGoWithTheRegistration) {
    store(R"({"env":[1]})");
    ASSERT_TRUE(connect());
    EXPECT_EQ(*stored().find("env"), JsonValue(JsonArray{JsonNumber{"1"}}));
    ASSERT_TRUE(disconnect());
    EXPECT_EQ(stored(), JsonObject());
}

TEST_F(Registration, DisconnectingLeavesOtherVariablesAndRemovesAnObjectThatHeldOnlyOurs) {
    store(R"({"env":{"A":"1"},"statusLine":{"command":"theirs"}})");
    ASSERT_TRUE(connect());
    ASSERT_TRUE(disconnect());
    EXPECT_EQ(*stored().find("env"), parsed(R"({"A":"1"})"));
    store(R"({"statusLine":{"command":"theirs"}})");
    ASSERT_TRUE(connect());
    ASSERT_TRUE(disconnect());
    EXPECT_EQ(stored().find("env"), nullptr);
}

TEST_F(Registration, AChainedVariableThatIsNoTextRestoresNothing) {
    for (const char* next : {"\"\"", "5", "null", "{}"}) {
        store(R"({"env":{"BRIMWATCH_NEXT_STATUSLINE":)" + std::string(next) + "}}");
        ASSERT_TRUE(connect());
        ASSERT_TRUE(disconnect());
        EXPECT_EQ(stored(), JsonObject()) << next;
    }
}

TEST_F(Registration, DisconnectingFromAStatusLineThatIsNotOursChangesNothing) {
    for (const char* settings : {R"({"statusLine":{"type":"command","command":"theirs"},"env":{}})",
                                 "{}", "[", "", R"({"env":{"BRIMWATCH_NEXT_STATUSLINE":"x"}})"}) {
        store(settings);
        const FileStatus before = *files_.status(path_);
        EXPECT_TRUE(disconnect());
        EXPECT_EQ(test::readFile(path_), settings);
        EXPECT_EQ(*files_.status(path_), before);
    }
    EXPECT_FALSE(test::exists(backup_));
    std::filesystem::remove(path_);
    EXPECT_TRUE(disconnect());
    EXPECT_TRUE(names(work_).empty());
}

TEST_F(Registration, DisconnectingTakesNoBackup) {
    store(writeJson(JsonObject({{"statusLine", ourStatusLine()}}), JsonLayout::compact));
    ASSERT_TRUE(disconnect());
    EXPECT_EQ(test::readFile(path_), "{}\n");
    EXPECT_FALSE(test::exists(backup_));
}

TEST_F(Registration, EveryStateBecomesRegisteredByConnectingAndNotRegisteredByDisconnecting) {
    const std::vector<std::pair<State, const char*>> rows = {
        {State::notRegistered, R"({"statusLine":{"command":"theirs"}})"},
        {State::registered,
         R"({"statusLine":{"type":"command","command":"'/opt/tools/bin/brimwatch' --statusline"}})"},
        {State::needsRepair,
         R"({"statusLine":{"type":"command","command":"'/gone/bin/brimwatch' --statusline"}})"},
        {State::oldHelper, R"({"statusLine":{"command":"python3 /h/.brimwatch/brimwatch.py"}})"},
    };
    for (const auto& [from, settings] : rows) {
        store(settings);
        EXPECT_EQ(state(), from);
        ASSERT_TRUE(connect());
        EXPECT_EQ(state(), State::registered);
        if (from == State::notRegistered) continue;
        store(settings);
        ASSERT_TRUE(disconnect());
        EXPECT_EQ(state(), State::notRegistered);
    }
}

TEST_F(Registration, NeedsRepairWhenItsExecutableMovesAway) {
    ASSERT_TRUE(connect());
    executables_.clear();
    EXPECT_EQ(state(), State::needsRepair);
}

TEST_F(Registration, ARepairKeepsAnEarlierChain) {
    for (const char* command :
         {"'/gone/bin/brimwatch' --statusline", "python3 /h/.brimwatch/brimwatch.py"}) {
        store(R"({"env":{"BRIMWATCH_NEXT_STATUSLINE":"theirs"},
            "statusLine":{"type":"command","command":")" +
              std::string(command) + "\"}}");
        ASSERT_TRUE(connect());
        EXPECT_EQ(*stored().find("env"), parsed(R"({"BRIMWATCH_NEXT_STATUSLINE":"theirs"})"));
        ASSERT_TRUE(disconnect());
        EXPECT_EQ(stored(), parsed(R"({"statusLine":{"type":"command","command":"theirs"}})"));
    }
}

TEST_F(Registration, TheOldHelperIsNeverChained) {
    store(R"({"statusLine":{"type":"command","command":"python3 /h/.brimwatch/brimwatch.py"}})");
    ASSERT_TRUE(connect());
    EXPECT_EQ(stored(), JsonObject({{"statusLine", ourStatusLine()}}));
}

TEST_F(Registration, ACopyThatTheStatusLineNamesAndThatWorksStays) {
    executables_.insert("/usr/local/bin/brimwatch");
    store(R"({"statusLine":{"type":"command",
        "command":"'/usr/local/bin/brimwatch' --statusline"}})");
    ASSERT_TRUE(connect());
    EXPECT_EQ(presentStatusLineCommand(stored()),
              "'/usr/local/bin/brimwatch' --statusline --account work");
}

TEST_F(Registration, TheRunningCopyIsPreferredToInstalledOnes) {
    executables_.insert("/usr/bin/brimwatch");
    environment_.installedCandidates = {"/usr/bin/brimwatch"};
    ASSERT_TRUE(connect());
    EXPECT_EQ(presentStatusLineCommand(stored()), test::programCommand);
}

TEST_F(Registration, ARunningCopyInABuildFolderIsNeverNamed) {
    environment_.executable = "/project/build" + std::string(bundleEnding);
    environment_.installedCandidates = installedCandidates("/h");
    executables_ = {environment_.executable};
    store("{}");
    const FileResult<void> result = connect();
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error(), ClaudeCodeSetup::ConnectionFailure::installRequired);
    EXPECT_EQ(test::readFile(path_), "{}");
    EXPECT_THAT(names(work_), ::testing::ElementsAre("settings.json"));

    executables_.insert("/Applications" + std::string(bundleEnding));
    ASSERT_TRUE(connect());
    EXPECT_EQ(presentStatusLineCommand(stored()),
              "'/Applications/Brimwatch.app/Contents/MacOS/Brimwatch' --statusline --account work");
}

TEST_F(Registration, InstalledCopiesAreTriedInOrder) {
    environment_.executable = "/gone/bin/brimwatch";
    environment_.installedCandidates = installedCandidates("/h");
    executables_ = {"/h/.local/bin/brimwatch", "/usr/bin/brimwatch"};
    ASSERT_TRUE(connect());
    EXPECT_EQ(presentStatusLineCommand(stored()),
              "'/usr/bin/brimwatch' --statusline --account work");
}

TEST_F(Registration, WithoutAUsableCopyTheUserIsToldToInstall) {
    executables_.clear();
    for (const char* settings : {"{}", "{", R"({"statusLine":{"command":"theirs"}})"}) {
        store(settings);
        const FileResult<void> result = connect();
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error().message(),
                  "Brimwatch?를 응용 프로그램 폴더에 설치한 뒤 앱을 다시 열어 주세요.");
        EXPECT_EQ(test::readFile(path_), settings);
    }
    EXPECT_THAT(names(work_), ::testing::ElementsAre("settings.json"));
}

TEST_F(Registration, ACopyWhosePathIsNotUtf8IsNeverNamed) {
    environment_.executable = "/opt/\xFF/bin/brimwatch";
    executables_ = {environment_.executable};
    EXPECT_EQ(connect().error(), ClaudeCodeSetup::ConnectionFailure::installRequired);
}

TEST_F(Registration, AQuoteInThePathOfTheProgramSurvivesTheShell) {
    environment_.executable = "/Users/o'neil/bin/brimwatch";
    executables_ = {environment_.executable};
    ASSERT_TRUE(connect());
    EXPECT_EQ(presentStatusLineCommand(stored()),
              R"('/Users/o'\''neil/bin/brimwatch' --statusline --account work)");
    EXPECT_EQ(state(), State::registered);
}

TEST_F(Registration, TheFirstOfTwoFormerCommandsIsInTheBackupAndTheLastIsChained) {
    const std::string first = R"({"statusLine":{"type":"command","command":"first"}})";
    store(first);
    ASSERT_TRUE(connect());
    store(R"({"statusLine":{"type":"command","command":"second"}})");
    ASSERT_TRUE(connect());
    EXPECT_EQ(test::readFile(backup_), first);
    EXPECT_EQ(*stored().find("env"), parsed(R"({"BRIMWATCH_NEXT_STATUSLINE":"second"})"));
}

TEST_F(Registration, NumbersTextsAndEmptyThingsComeBackInTheirOwnForm) {
    store(R"({"a":1e3,"b":12345678901234567890,"c":-0,"d":"\ud83d/","e":{},"f":[],"g":[[{}]],
        "한글":"\u0000","statusLine":{"command":"theirs"}})");
    ASSERT_TRUE(connect());
    ASSERT_TRUE(disconnect());
    EXPECT_EQ(test::readFile(path_),
              "{\n  \"a\": 1e3,\n  \"b\": 12345678901234567890,\n  \"c\": -0,\n"
              "  \"d\": \"\\ud83d/\",\n  \"e\": {},\n  \"f\": [],\n  \"g\": [\n    [\n      {}\n"
              "    ]\n  ],\n  \"statusLine\": {\n    \"command\": \"theirs\",\n"
              "    \"type\": \"command\"\n  },\n  \"한글\": \"\\u0000\"\n}\n");
}

TEST_F(Registration, AFolderThatIsMissingIsAFileError) {
    std::filesystem::remove(work_);
    EXPECT_EQ(connect().error(), std::errc::no_such_file_or_directory);
    EXPECT_FALSE(test::exists(work_));
}

}  // namespace
}  // namespace brimwatch
