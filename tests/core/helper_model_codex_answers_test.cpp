// What becomes of an answer of Codex.

#include <gmock/gmock.h>

#include "accounts_fixture.h"
#include "limits/limits_file.h"

namespace brimwatch {
namespace {

using namespace std::chrono_literals;
using test::SignalCount;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class HelperModelCodexAnswers : public test::AccountsFixture {
  protected:
    LimitsFile storedFile(const std::string& id) {
        return LimitsFile::decode(test::readFile(limitsFile(id))).value();
    }
    // The account has figures of 10 percent, received at the start of the test.
    void startWithFigures() {
        makeCodexFolder(".codex");
        start();
        poll();
        answer(10);
        ASSERT_EQ(shownWeekly("codex-default"), 10);
    }
};

TEST_F(HelperModelCodexAnswers, AReadingIsKeptUnderTheKeyOfTheAccount) {
    makeCodexFolder(".codex-work");
    start();
    poll();
    answer(10);
    const CodexPoller::Reading reading = test::codexReading(20, 30, now());
    codex_.answer(reading);
    ASSERT_EQ(model().receivedCodex().size(), 2U);
    EXPECT_EQ(model().receivedCodex().at("work"), reading);
}

TEST_F(HelperModelCodexAnswers, AReadingBecomesTheLimitsFileOfTheAccount) {
    makeCodexFolder(".codex-work");
    start();
    model().setCodexAccount(codexAccount("default"), false);
    poll();
    const CodexPoller::Reading reading = test::codexReading(20.5, 30.25, now());
    advance(7s);
    codex_.answer(reading);
    const LimitsFile file = storedFile("codex-work");
    EXPECT_EQ(file.version, 1);
    EXPECT_EQ(file.provider, "codex");
    EXPECT_EQ(file.account, "work");
    EXPECT_EQ(file.windows, reading.windows);
    EXPECT_EQ(file.updatedAt, wholeUnixSeconds(now())) << "the time of the answer";
    EXPECT_EQ(file.planTier, "Plus");
}

TEST_F(HelperModelCodexAnswers, AFileOfAManualFolderHasItsDigits) {
    const std::string folder = folder_.file("elsewhere/team");
    test::writeFile(folder + "/config.toml", "");
    start();
    model().setCodexEnabled(false);
    ASSERT_TRUE(model().addCodexFolder(folder));
    settle();
    ASSERT_TRUE(codex_.isAsking());
    const std::string key = codex_.questions().back().account.key;
    EXPECT_THAT(key, ::testing::MatchesRegex("team-[0-9a-f]{12}"));
    answer(44);
    EXPECT_EQ(storedWeekly("codex-" + key), 44);
    EXPECT_EQ(shownWeekly("codex-" + key), 44);
}

TEST_F(HelperModelCodexAnswers, APlanThatNobodyKnowsIsNotStored) {
    start();
    for (const std::optional<std::string>& plan :
         {std::optional<std::string>(), std::optional<std::string>("plus-next")}) {
        poll();
        CodexPoller::Reading reading = test::codexReading(20, 30, now());
        reading.planType = plan;
        codex_.answer(reading);
        EXPECT_EQ(storedFile("codex-default").planTier, std::nullopt);
        EXPECT_EQ(model().limits().at(0).planTier, std::nullopt);
    }
}

TEST_F(HelperModelCodexAnswers, ThePlanIsStoredAsItIsShown) {
    start();
    poll();
    CodexPoller::Reading reading = test::codexReading(20, 30, now());
    reading.planType = "prolite";
    codex_.answer(reading);
    EXPECT_EQ(storedFile("codex-default").planTier, "Pro Lite");
    EXPECT_EQ(model().limits().at(0).planTier, "Pro Lite");
}

TEST_F(HelperModelCodexAnswers, EqualFiguresAreWrittenAgainAtOnce) {
    startWithFigures();
    const std::int64_t first = storedFile("codex-default").updatedAt;
    const CodexPoller::Reading same = model().receivedCodex().at("default");
    advance(1s);
    poll();
    codex_.answer(same);
    EXPECT_EQ(storedFile("codex-default").updatedAt, first + 1);
}

TEST_F(HelperModelCodexAnswers, ALowerFigureIsBelievedAndAWindowThatIsGoneGoes) {
    startWithFigures();
    advance(1s);
    poll();
    CodexPoller::Reading reading = test::codexReading(5, 5, now());
    reading.windows.erase("five_hour");
    codex_.answer(reading);
    EXPECT_EQ(storedFile("codex-default").windows, reading.windows);
    EXPECT_EQ(shownWeekly("codex-default"), 5);
    EXPECT_EQ(model().limits().at(0).fiveHour, std::nullopt);
}

TEST_F(HelperModelCodexAnswers, TheStatusTellsTheTimeOfTheAnswer) {
    start();
    poll();
    advance(14min);
    answer(10);
    EXPECT_EQ(codexStatusOf("default"), receivedNow());
}

TEST_F(HelperModelCodexAnswers, TheStatusIsWrittenInTheLocaleOfTheUser) {
    HelperModel::Surroundings around = surroundings();
    around.locale = "de_DE.UTF-8";
    start(std::move(around));
    poll();
    answer(10);
    EXPECT_THAT(codexStatusOf("default"), ::testing::MatchesRegex("[0-9]{2}:[0-9]{2}에 받음"));
}

TEST_F(HelperModelCodexAnswers, TheStatusesAreKeptByFolder) {
    const std::string folder = makeCodexFolder(".codex-work");
    start();
    poll();
    codex_.answer(test::codexFailure(Kind::noLimits));
    answer(10);
    EXPECT_THAT(model().codexAccountStatuses(),
                ElementsAre(::testing::Key(path(".codex")), ::testing::Key(folder)));
    EXPECT_EQ(model().codexAccountStatuses().at(folder), receivedNow());
}

TEST_F(HelperModelCodexAnswers, AReadingIsFollowedByARefresh) {
    start();
    poll();
    makeRegisteredFolder(".claude-work");
    writeLimits("claude-work", 1, 2);
    answer(10);
    EXPECT_THAT(shownIds(), ElementsAre("claude-work", "codex-default"));
}

TEST_F(HelperModelCodexAnswers, AFailureIsNotFollowedByARefresh) {
    start();
    poll();
    makeRegisteredFolder(".claude-work");
    codex_.answer(test::codexFailure(Kind::server));
    EXPECT_THAT(model().accounts(), IsEmpty());
}

TEST_F(HelperModelCodexAnswers, ReadingFileStatusAndCardComeInThisOrder) {
    start();
    std::vector<std::string> events;
    const auto note = [&](const std::string& event) {
        const bool isStored = test::exists(limitsFile("codex-default"));
        events.push_back(event + (isStored ? " after the file" : " before the file"));
    };
    QObject::connect(&model(), &HelperModel::receivedCodexChanged, [&] { note("reading"); });
    QObject::connect(&model(), &HelperModel::codexAccountStatusesChanged, [&] { note("status"); });
    QObject::connect(&model(), &HelperModel::limitsChanged, [&] { note("card"); });
    poll();
    answer(10);
    EXPECT_THAT(events, ElementsAre("reading before the file", "status after the file",
                                    "card after the file"));
}

TEST_F(HelperModelCodexAnswers, AFileThatCanNotBeWrittenIsNoFailure) {
    startWithFigures();
    poll();
    files_.failEveryStepNamed("write", std::errc::no_space_on_device);
    advance(1min);
    answer(50);
    EXPECT_EQ(model().failure(), std::nullopt);
    EXPECT_EQ(codexStatusOf("default"), receivedNow());
    EXPECT_EQ(model().receivedCodex().at("default").windows.at("seven_day").usedPercentage, 50);
    EXPECT_EQ(shownWeekly("codex-default"), 10);
    EXPECT_FALSE(model().pollingCodex());
}

TEST_F(HelperModelCodexAnswers, AWriterThatHoldsTheLockForEverIsNotWaitedFor) {
    start();
    poll();
    answer(10);
    EXPECT_THAT(files_.steps(), ::testing::Contains(::testing::StartsWith("lock for two seconds")));
    EXPECT_THAT(files_.steps(),
                ::testing::Not(::testing::Contains(::testing::StartsWith("lock until free"))));
}

TEST_F(HelperModelCodexAnswers, ALimitsFolderThatCanNotBeMadeIsNoFailure) {
    test::writeFile(path(".brimwatch"), "in the way");
    start();
    poll();
    answer(50);
    EXPECT_EQ(model().failure(), std::nullopt);
    EXPECT_EQ(codexStatusOf("default"), receivedNow());
    EXPECT_THAT(shownIds(), IsEmpty());
}

TEST_F(HelperModelCodexAnswers, TheFiguresOutliveTheProgram) {
    startWithFigures();
    start();
    EXPECT_EQ(shownWeekly("codex-default"), 10);
    EXPECT_EQ(model().limits().at(0).planTier, "Plus");
    EXPECT_THAT(model().receivedCodex(), IsEmpty());
    EXPECT_THAT(model().codexAccountStatuses(), IsEmpty());
}

struct FailureCase {
    const char* name;
    CodexReadResult result;
    std::string text;
};

std::vector<FailureCase> failures() {
    using Kind = CodexPoller::Failure::Kind;
    const std::string silent = "codex가 답하지 않았어요";
    return {{"NoLimits", test::codexFailure(Kind::noLimits),
             "한도가 없어요. 이 계정으로 Codex에 로그인했는지 확인해 주세요."},
            {"Server", test::codexFailure(Kind::server),
             "조회하지 못했어요. 이 계정으로 Codex에 로그인했는지 확인해 주세요."},
            {"NotFound", test::codexFailure(Kind::notFound), silent},
            {"TimedOut", test::codexFailure(Kind::timedOut), silent},
            {"System", test::codexSystemError(std::errc::permission_denied), silent}};
}

class HelperModelCodexFailures : public HelperModelCodexAnswers,
                                 public ::testing::WithParamInterface<FailureCase> {};

TEST_P(HelperModelCodexFailures, HasItsTextInTheStatusOfTheAccountAndNowhereElse) {
    start();
    poll();
    codex_.answer(GetParam().result);
    EXPECT_EQ(codexStatusOf("default"), GetParam().text);
    EXPECT_EQ(model().codexStatus(), std::nullopt);
    EXPECT_EQ(model().failure(), std::nullopt);
    EXPECT_FALSE(test::exists(limitsFile("codex-default")));
    EXPECT_THAT(model().receivedCodex(), IsEmpty());
}

TEST_P(HelperModelCodexFailures, LeavesTheLastGoodFiguresAlone) {
    startWithFigures();
    const std::string file = test::readFile(limitsFile("codex-default"));
    const HelperModel::Readings readings = model().receivedCodex();
    advance(1h);
    poll();
    const SignalCount changes(model(), &HelperModel::limitsChanged);
    codex_.answer(GetParam().result);
    EXPECT_EQ(codexStatusOf("default"), GetParam().text);
    EXPECT_EQ(test::readFile(limitsFile("codex-default")), file);
    EXPECT_EQ(model().receivedCodex(), readings);
    EXPECT_EQ(shownWeekly("codex-default"), 10);
    EXPECT_EQ(changes.count(), 0);
}

TEST_P(HelperModelCodexFailures, GivesWayToTheNextReadingAndTheNextAccountIsAsked) {
    makeCodexFolder(".codex-work");
    start();
    poll();
    codex_.answer(GetParam().result);
    EXPECT_THAT(askedKeys(), ElementsAre("default", "work"));
    answer(10);
    poll();
    answer(20);
    EXPECT_EQ(codexStatusOf("default"), receivedNow());
}

INSTANTIATE_TEST_SUITE_P(Each, HelperModelCodexFailures, ::testing::ValuesIn(failures()),
                         [](const auto& each) { return std::string(each.param.name); });

}  // namespace
}  // namespace brimwatch
