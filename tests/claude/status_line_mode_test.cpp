#include "claude/status_line_mode.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <csignal>

#include "harness/environment_list.h"
#include "harness/scripted_file_system.h"
#include "harness/temporary_folder.h"
#include "platform/posix/posix_file_system.h"

namespace brimwatch {
namespace {

using Limits = StatusLineMode::ParsedLimits;

constexpr std::int64_t now = 1'790'000'000;
constexpr std::int64_t later = now + 3600;

std::string account(std::vector<std::string_view> arguments,
                    std::optional<std::string_view> folder = std::nullopt) {
    return StatusLineMode::accountArgument(arguments, folder);
}

TEST(AccountArgument, IsTheValueBehindTheOption) {
    EXPECT_EQ(account({"--statusline", "--account", "work"}), "work");
    EXPECT_EQ(account({"--statusline", "x", "--account", "한글.a_b-1"}), "한글.a_b-1");
}

TEST(AccountArgument, AsLastArgumentCountsAsNotGiven) {
    EXPECT_EQ(account({"--statusline", "--account"}), "default");
    EXPECT_EQ(account({"--statusline", "--account"}, "/home/a/.claude-work"), "work");
}

TEST(AccountArgument, WithASlashOrAnotherForbiddenCharacterCountsAsNotGiven) {
    for (const char* value : {"a/b", "../x", "a b", "", "a'b", "a\xFF", "a\n", "🚀"}) {
        EXPECT_EQ(account({"--statusline", "--account", value}, "/h/.claude-work"), "work")
            << value;
        EXPECT_EQ(account({"--statusline", "--account", value}), "default") << value;
    }
}

TEST(AccountArgument, OnlyTheFirstOneCounts) {
    EXPECT_EQ(account({"--account", "a/b", "--account", "c"}), "default");
    EXPECT_EQ(account({"--account", "--account", "c"}), "--account");
}

TEST(AccountArgument, IsDerivedFromTheConfigurationFolderWithoutOne) {
    EXPECT_EQ(account({"--statusline"}, "/home/a/.claude"), "default");
    EXPECT_EQ(account({"--statusline"}, "/home/a/.claude-two/"), "two");
    EXPECT_EQ(account({"--statusline"}, ""), "default");
}

Limits parsed(const std::string& fiveHour) {
    return StatusLineMode::parseRateLimits(R"({"rate_limits":{"five_hour":)" + fiveHour + "}}");
}

double parsedUsed(const std::string& number) {
    const Limits limits = parsed(R"({"used_percentage":)" + number + "}");
    return limits.contains("five_hour") ? limits.at("five_hour").usedPercentage : -1;
}

std::optional<std::int64_t> parsedReset(const std::string& value) {
    return parsed(R"({"used_percentage":1,"resets_at":)" + value + "}").at("five_hour").resetsAt;
}

TEST(ParseRateLimits, TakesBothWindows) {
    EXPECT_EQ(StatusLineMode::parseRateLimits(
                  R"({"model":{},"rate_limits":{"seven_day":{"used_percentage":62.5,"resets_at":7},
                      "five_hour":{"used_percentage":41.3,"resets_at":5},"x":{"used_percentage":1}}})"),
              (Limits{{"five_hour", {41.3, 5}}, {"seven_day", {62.5, 7}}}));
}

TEST(ParseRateLimits, WithoutAnObjectOfLimitsIsEmpty) {
    for (const char* input :
         {"", "x", "{", "[]", "1", "null", "{}", R"({"rate_limits":null})", R"({"rate_limits":[]})",
          R"({"rate_limits":"x"})", R"({"rate_limits":{}})", R"({"rate_limits":{"five_hour":1}})",
          R"({"rate_limits":{"five_hour":null,"seven_day":[]}})",
          R"([{"rate_limits":{"five_hour":{"used_percentage":1}}}])",
          R"({"rate_limits":{"five_hour":{"used_percentage":1}}} x)",
          "{\"a\":\"\xFF\",\"rate_limits\":{\"five_hour\":{\"used_percentage\":1}}}"}) {
        EXPECT_TRUE(StatusLineMode::parseRateLimits(input).empty()) << input;
    }
}

TEST(ParseRateLimits, SkipsAWindowWithoutANumberAndTriesTheOther) {
    for (const char* bad :
         {"{}", "null", "1", R"({"used_percentage":null})", R"({"used_percentage":"1"})",
          R"({"used_percentage":[]})", R"({"resets_at":5})"}) {
        const Limits limits =
            StatusLineMode::parseRateLimits(R"({"rate_limits":{"five_hour":)" + std::string(bad) +
                                            R"(,"seven_day":{"used_percentage":2}}})");
        EXPECT_EQ(limits, (Limits{{"seven_day", {2, std::nullopt}}})) << bad;
    }
}

TEST(ParseRateLimits, PercentagesAreHeldInRangeAndRoundedToOneDecimal) {
    EXPECT_EQ(parsedUsed("150"), 100.0);
    EXPECT_EQ(parsedUsed("-3"), 0);
    EXPECT_EQ(parsedUsed("41.26"), 41.3);
    EXPECT_EQ(parsedUsed("41.24"), 41.2);
    EXPECT_EQ(parsedUsed("0.25"), 0.3);
    EXPECT_EQ(parsedUsed("0.04"), 0);
    EXPECT_EQ(parsedUsed("99.99"), 100.0);
    EXPECT_EQ(parsedUsed("41.260000000000005"), 41.3);
    EXPECT_EQ(parsedUsed("1e400"), 100.0);
    EXPECT_EQ(parsedUsed("-1e400"), 0);
    EXPECT_FALSE(std::signbit(parsedUsed("-0")));
}

TEST(ParseRateLimits, ABooleanPassesAsANumber) {
    EXPECT_EQ(parsedUsed("true"), 1);
    EXPECT_EQ(parsedUsed("false"), 0);
    EXPECT_EQ(parsedReset("true"), 1);
}

TEST(ParseRateLimits, AResetTimeLosesItsFraction) {
    EXPECT_EQ(parsedReset("1790000000.9"), 1790000000);
    EXPECT_EQ(parsedReset("1.7900000009e9"), 1790000000);
    EXPECT_EQ(parsedReset("9223372036854775807"), INT64_MAX);
    EXPECT_EQ(parsedReset("-5.9"), -5);
}

TEST(ParseRateLimits, AResetTimeThatIsNoNumberIsAbsent) {
    for (const char* value : {"null", R"("2026-11-21T00:00:00Z")", "[]", "{}"}) {
        EXPECT_EQ(parsedReset(value), std::nullopt) << value;
    }
}

TEST(ParseRateLimitsDeathTest, AResetTimeBeyondSixtyFourBitsAborts) {
    for (const char* value : {"9223372036854775808", "-9223372036854775809", "1e19", "1e400"}) {
        EXPECT_EXIT(parsedReset(value), ::testing::KilledBySignal(SIGABRT), "") << value;
    }
}

TEST(ParseRateLimits, AResetTimeBeyondSixtyFourBitsOfAWindowThatDoesNotCountIsNotLookedAt) {
    EXPECT_TRUE(parsed(R"({"used_percentage":null,"resets_at":1e19})").empty());
    EXPECT_TRUE(parsed(R"({"resets_at":9223372036854775808})").empty());
}

TEST(ParseRateLimits, ALoneSurrogateElsewhereInTheDocumentCostsNothing) {
    EXPECT_FALSE(StatusLineMode::parseRateLimits(
                     R"({"name":"cut \ud83d","rate_limits":{"five_hour":{"used_percentage":1}}})")
                     .empty());
}

struct CapturedDocument {
    const char* name;
    Limits limits;
};

TEST(ParseRateLimits, ReadsTheCapturedDocumentsOfBothVersions) {
    const CapturedDocument documents[] = {
        {"claude-2.1.329-before-first-response.json", {}},
        {"claude-2.1.329-after-response-with-rate-limits.json",
         {{"five_hour", {41.3, 1795244084}}, {"seven_day", {62.5, 1795535084}}}},
        {"claude-2.1.329-rate-limits-five-hour-only.json", {{"five_hour", {41.3, 1795244089}}}},
        {"claude-2.1.329-rate-limits-seven-day-only.json", {{"seven_day", {62.5, 1795535089}}}},
        {"claude-2.1.329-rate-limits-over.json",
         {{"five_hour", {100, 1795244089}}, {"seven_day", {100, 1795535089}}}},
        {"claude-2.1.197-after-response-with-rate-limits.json",
         {{"five_hour", {41.3, 1795244084}}, {"seven_day", {62.5, 1795535084}}}},
        {"claude-2.1.197-rate-limits-no-reset.json", {{"seven_day", {62.5, 1795535090}}}},
        {"claude-2.1.197-rate-limits-over.json",
         {{"five_hour", {100, 1795244090}}, {"seven_day", {100, 1795535090}}}},
        {"claude-2.1.197-rate-limits-precise.json",
         {{"five_hour", {33.3, 1795244090}}, {"seven_day", {0, 1795535090}}}},
        {"claude-2.1.197-rate-limits-reset-past.json",
         {{"five_hour", {41.3, 1795234490}}, {"seven_day", {62.5, 1795535090}}}},
    };
    for (const CapturedDocument& document : documents) {
        EXPECT_EQ(StatusLineMode::parseRateLimits(test::testData(document.name)), document.limits)
            << document.name;
    }
}

std::string text(const Limits& limits, UsageDisplay display = UsageDisplay::remaining,
                 std::string_view language = "ko") {
    return StatusLineMode::statusText(limits, display, instantFromUnixSeconds(now + 0.9),
                                      languageOfCode(language));
}

TEST(StatusText, NamesTheWeeklyWindowFirst) {
    EXPECT_EQ(text({{"five_hour", {41.3, later}}, {"seven_day", {62.5, later}}}),
              "주간 37% 남음 · 5시간 58% 남음");
    EXPECT_EQ(
        text({{"five_hour", {41.3, later}}, {"seven_day", {62.5, later}}}, UsageDisplay::used),
        "주간 63% 사용 · 5시간 42% 사용");
}

TEST(StatusText, IsOfOneLanguageAsAWhole) {
    EXPECT_EQ(text({{"five_hour", {41.3, later}}, {"seven_day", {62.5, later}}},
                   UsageDisplay::remaining, "en"),
              "Weekly 37% left · 5-hour 58% left");
    EXPECT_EQ(
        text({{"five_hour", {40, now}}, {"seven_day", {62.5, later}}}, UsageDisplay::used, "en"),
        "Weekly 63% used · 5-hour waiting for a new value");
    EXPECT_EQ(text({{"seven_day", {62.5, now}}}, UsageDisplay::used, "en"), "Weekly reset");
}

TEST(StatusText, OfNoLimitsIsEmpty) {
    EXPECT_EQ(text({}), "");
}

TEST(StatusText, OfOneWindowIsOneSegment) {
    EXPECT_EQ(text({{"five_hour", {0, later}}}), "5시간 100% 남음");
    EXPECT_EQ(text({{"seven_day", {100, later}}}), "주간 0% 남음");
}

TEST(StatusText, RoundsWhatIsLeftInBothDisplays) {
    EXPECT_EQ(text({{"five_hour", {12.5, later}}}), "5시간 87% 남음");
    EXPECT_EQ(text({{"five_hour", {12.5, later}}}, UsageDisplay::used), "5시간 13% 사용");
}

TEST(StatusText, HoldsWhatIsLeftBetweenZeroAndAHundred) {
    EXPECT_EQ(text({{"five_hour", {250, later}}}), "5시간 0% 남음");
    EXPECT_EQ(text({{"five_hour", {-50, later}}}), "5시간 100% 남음");
}

TEST(StatusText, AFiveHourWindowPastItsResetWaitsForANewValueBesideAWeeklyOne) {
    EXPECT_EQ(text({{"five_hour", {40, now}}, {"seven_day", {62.5, later}}}),
              "주간 37% 남음 · 5시간 새 값 대기");
    EXPECT_EQ(text({{"five_hour", {40, now - 1}}, {"seven_day", {62.5, now - 1}}}),
              "주간 초기화됨 · 5시간 새 값 대기");
}

TEST(StatusText, AFiveHourWindowPastItsResetWithoutAWeeklyOneIsReset) {
    EXPECT_EQ(text({{"five_hour", {40, now}}}), "5시간 초기화됨");
}

TEST(StatusText, AWeeklyWindowPastItsResetIsResetInAnyCase) {
    EXPECT_EQ(text({{"seven_day", {40, now}}}), "주간 초기화됨");
    EXPECT_EQ(text({{"five_hour", {40, later}}, {"seven_day", {40, now}}}),
              "주간 초기화됨 · 5시간 60% 남음");
}

TEST(StatusText, AWindowIsLiveUntilTheVerySecondOfItsReset) {
    EXPECT_EQ(text({{"five_hour", {40, now + 1}}}), "5시간 60% 남음");
}

TEST(StatusText, AWindowWithoutAResetAlwaysShowsItsPercentage) {
    EXPECT_EQ(text({{"five_hour", {40, std::nullopt}}}), "5시간 60% 남음");
}

// A run with every service of the system in the hands of the test.
class StatusLineRun : public ::testing::Test {
  protected:
    std::string run(const std::string& input, std::vector<std::string_view> arguments = {
                                                  "--statusline", "--account", "work"}) {
        std::string output;
        posted_ = 0;
        commands_.clear();
        const StatusLineMode mode{
            .arguments = arguments,
            .environment = environment_.view(),
            .userId = userId_,
            .files = *usedFiles_,
            .readInput = [&] { return input; },
            .writeOutput = [&](std::string_view text) { output += text; },
            .now = [this] { return instantFromUnixSeconds(static_cast<double>(now_)); },
            .postLimitsChanged = [this] { ++posted_; },
            .isChainedByItself = [this] { return isChainedByItself_; },
            .runCommand =
                [this](const std::string& command, std::string_view bytes,
                       StatusLineMode::TimeOut timeOut) {
                    commands_.push_back(command);
                    wasStoredBeforeCommand_ = test::exists(file_);
                    postedBeforeCommand_ = posted_;
                    commandInput_ = bytes;
                    timeOut_ = timeOut;
                    return commandOutput_;
                },
        };
        mode.run();
        return output;
    }

    static std::string document(double used) {
        return R"({"rate_limits":{"five_hour":{"used_percentage":)" + std::to_string(used) +
               R"(,"resets_at":)" + std::to_string(later) + "}}}\n";
    }

    test::TemporaryFolder folder_;
    test::EnvironmentList environment_ = {{"HOME", folder_.path()}};
    PosixFileSystem files_;
    FileSystem* usedFiles_ = &files_;
    std::string file_ = folder_.file(".brimwatch/limits/claude-work.json");
    std::uint32_t userId_ = 0;
    std::int64_t now_ = now;
    int posted_ = 0;
    bool isChainedByItself_ = false;
    std::optional<std::string> commandOutput_ = "next";
    std::vector<std::string> commands_;
    std::string commandInput_;
    bool wasStoredBeforeCommand_ = false;
    int postedBeforeCommand_ = 0;
    StatusLineMode::TimeOut timeOut_{};
};

TEST_F(StatusLineRun, StoresTheFiguresPostsTheBroadcastAndPrintsALine) {
    EXPECT_EQ(run(document(41.3)), "5시간 58% 남음\n");
    EXPECT_EQ(posted_, 1);
    EXPECT_EQ(LimitsFile::decode(test::readFile(file_)),
              (LimitsFile{1, "claude", "work", {{"five_hour", {41.3, later}}}, now, std::nullopt}));
}

TEST_F(StatusLineRun, EqualFiguresAreStoredAndBroadcastEveryFiveMinutes) {
    run(document(40));
    for (const std::int64_t second : {1, 60, 299}) {
        now_ = now + second;
        EXPECT_EQ(run(document(40)), "5시간 60% 남음\n");
        EXPECT_EQ(posted_, 0);
    }
    now_ = now + 300;
    run(document(40));
    EXPECT_EQ(posted_, 1);
    EXPECT_EQ(LimitsFile::decode(test::readFile(file_))->updatedAt, now + 300);
}

TEST_F(StatusLineRun, WithoutFiguresNothingIsStoredOrPosted) {
    for (const char* input : {"", "not json", "{}", R"({"rate_limits":{}})"}) {
        EXPECT_EQ(run(input), "\n");
        EXPECT_EQ(posted_, 0);
    }
    EXPECT_FALSE(test::exists(folder_.file(".brimwatch")));
}

TEST_F(StatusLineRun, ADocumentWithoutLimitsDoesNotWipeTheStoredOnes) {
    run(document(40));
    const std::string stored = test::readFile(file_);
    run(test::testData("claude-2.1.329-before-first-response.json"));
    EXPECT_EQ(test::readFile(file_), stored);
}

TEST_F(StatusLineRun, OneUsableWindowIsStoredAndShown) {
    const std::string output = run(
        R"({"rate_limits":{"five_hour":{"used_percentage":null},"seven_day":{"used_percentage":10}}})");
    EXPECT_EQ(output, "주간 90% 남음\n");
    EXPECT_EQ(LimitsFile::decode(test::readFile(file_))->windows.size(), 1U);
}

TEST_F(StatusLineRun, AFailedWriteChangesNothingInTheOutput) {
    test::writeFile(folder_.file(".brimwatch"), "a file in place of the folder");
    EXPECT_EQ(run(document(40)), "5시간 60% 남음\n");
    EXPECT_EQ(posted_, 0);
}

TEST_F(StatusLineRun, WithoutAHomeFolderTheLineIsPrintedAllTheSame) {
    environment_ = {{"HOME", "relative"}};
    userId_ = 4'000'000'000;
    EXPECT_EQ(run(document(40)), "5시간 60% 남음\n");
    EXPECT_EQ(posted_, 0);
}

TEST_F(StatusLineRun, TheHomeFolderCanBeMoved) {
    const test::TemporaryFolder moved;
    environment_.set("BRIMWATCH_HOME", moved.path());
    run(document(40));
    EXPECT_TRUE(test::exists(moved.file(".brimwatch/limits/claude-work.json")));
    EXPECT_FALSE(test::exists(file_));
    environment_.set("BRIMWATCH_HOME", "");
    run(document(40));
    EXPECT_TRUE(test::exists(file_));
}

TEST_F(StatusLineRun, TheAccountComesFromTheConfigurationFolder) {
    environment_.set("CLAUDE_CONFIG_DIR", "/home/a/.claude-한글");
    run(document(40), {"--statusline"});
    EXPECT_TRUE(test::exists(folder_.file(".brimwatch/limits/claude-한글.json")));
}

TEST_F(StatusLineRun, TheDisplayIsReadFromTheSettings) {
    const std::string settings = folder_.file(".config/brimwatch/settings.json");
    for (const char* other : {R"({"usageDisplay":"remaining"})", R"({"usageDisplay":"Used"})",
                              R"({"usageDisplay":1})", "{}", "[]", "", "{"}) {
        test::writeFile(settings, other);
        EXPECT_EQ(run(document(40)), "5시간 60% 남음\n") << other;
    }
    test::writeFile(settings, R"({"appTheme":"dark","usageDisplay":"used"})");
    EXPECT_EQ(run(document(40)), "5시간 40% 사용\n");
    const test::TemporaryFolder config;
    environment_.set("XDG_CONFIG_HOME", config.path());
    EXPECT_EQ(run(document(40)), "5시간 60% 남음\n");
}

TEST_F(StatusLineRun, TheLanguageIsReadFromTheSettings) {
    const std::string settings = folder_.file(".config/brimwatch/settings.json");
    for (const char* other : {R"({"language":"ko"})", R"({"language":"EN"})",
                              R"({"language":true})", R"({"language":"xx"})"}) {
        test::writeFile(settings, other);
        EXPECT_EQ(run(document(40)), "5시간 60% 남음\n") << other;
    }
    test::writeFile(settings, R"({"language":"en","usageDisplay":"used"})");
    EXPECT_EQ(run(document(40)), "5-hour 40% used\n");
}

TEST_F(StatusLineRun, TheSettingsDoNotFollowTheMovedHome) {
    const test::TemporaryFolder moved;
    environment_.set("BRIMWATCH_HOME", moved.path());
    test::writeFile(folder_.file(".config/brimwatch/settings.json"), R"({"usageDisplay":"used"})");
    EXPECT_EQ(run(document(40)), "5시간 40% 사용\n");
}

TEST_F(StatusLineRun, TheFormerStatusLineIsRunWithTheVeryBytesAndItsOutputWins) {
    environment_.set("BRIMWATCH_NEXT_STATUSLINE", "my line --x");
    const std::string input = document(40);
    EXPECT_EQ(run(input), "next\n");
    EXPECT_EQ(commands_, (std::vector<std::string>{"my line --x"}));
    EXPECT_EQ(commandInput_, input);
    EXPECT_EQ(timeOut_.count(), 5.0);
    EXPECT_TRUE(test::exists(file_));
}

TEST_F(StatusLineRun, TheFiguresAreSafeBeforeTheFormerStatusLineIsRun) {
    environment_.set("BRIMWATCH_NEXT_STATUSLINE", "x");
    run(document(40));
    EXPECT_TRUE(wasStoredBeforeCommand_);
    EXPECT_EQ(postedBeforeCommand_, 1);
}

TEST_F(StatusLineRun, WaitsForTheLockForAsLongAsItTakes) {
    test::ScriptedFileSystem recording(files_);
    usedFiles_ = &recording;
    run(document(40));
    EXPECT_THAT(recording.steps(),
                ::testing::Contains("lock until free " + folder_.file(".brimwatch/limits/.lock")));
}

TEST_F(StatusLineRun, SettingsBeyondAMebibyteCountAsNone) {
    const std::string padding(1U << 20U, ' ');
    test::writeFile(folder_.file(".config/brimwatch/settings.json"),
                    R"({"usageDisplay":"used"})" + padding);
    EXPECT_EQ(run(document(40)), "5시간 60% 남음\n");
}

TEST_F(StatusLineRun, TheFormerStatusLineGetsBytesThatCantBeParsed) {
    environment_.set("BRIMWATCH_NEXT_STATUSLINE", "x");
    const std::string input("\xFF\0{", 3);
    EXPECT_EQ(run(input), "next\n");
    EXPECT_EQ(commandInput_, input);
}

TEST_F(StatusLineRun, AnEmptyFormerStatusLineCountsAsAbsent) {
    environment_.set("BRIMWATCH_NEXT_STATUSLINE", "");
    EXPECT_EQ(run(document(40)), "5시간 60% 남음\n");
    EXPECT_TRUE(commands_.empty());
}

TEST_F(StatusLineRun, WithoutAResultOfTheFormerStatusLineItsOwnLineIsPrinted) {
    environment_.set("BRIMWATCH_NEXT_STATUSLINE", "x");
    commandOutput_ = std::nullopt;
    EXPECT_EQ(run(document(40)), "5시간 60% 남음\n");
    commandOutput_ = "not \xFF UTF-8";
    EXPECT_EQ(run(document(40)), "5시간 60% 남음\n");
    commandOutput_ = "surrogate \xED\xA0\x80";
    EXPECT_EQ(run(document(40)), "5시간 60% 남음\n");
}

TEST_F(StatusLineRun, AnEmptyOutputOfTheFormerStatusLineIsAnEmptyLine) {
    environment_.set("BRIMWATCH_NEXT_STATUSLINE", "x");
    for (const char* output : {"", "\n", "\r\n\r\n"}) {
        commandOutput_ = output;
        EXPECT_EQ(run(document(40)), "\n");
    }
}

TEST_F(StatusLineRun, OnlyNewlinesAtTheTwoEndsOfTheOutputAreRemoved) {
    environment_.set("BRIMWATCH_NEXT_STATUSLINE", "x");
    commandOutput_ = "\n\v\f\r\u0085\u2028\u2029one\n\u2028two\u2029\u2028\u0085\r\f\v\n";
    EXPECT_EQ(run(""), "one\n\u2028two\n");
    commandOutput_ = " \tone \n";
    EXPECT_EQ(run(""), " \tone \n");
    commandOutput_ = "\u2027x\u0084";
    EXPECT_EQ(run(""), "\u2027x\u0084\n");
}

TEST_F(StatusLineRun, AFormerStatusLineThatLeadsBackHereIsNotRun) {
    environment_.set("BRIMWATCH_NEXT_STATUSLINE", "x");
    isChainedByItself_ = true;
    EXPECT_EQ(run(document(40)), "5시간 60% 남음\n");
    EXPECT_TRUE(commands_.empty());
}

}  // namespace
}  // namespace brimwatch
