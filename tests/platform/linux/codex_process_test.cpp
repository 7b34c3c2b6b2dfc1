#include "platform/linux/codex_process.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoroTask>
#include <cerrno>
#include <filesystem>

#include "codex_process_fixture.h"

namespace brimwatch {
namespace {

using Kind = CodexPoller::Failure::Kind;
using std::chrono::milliseconds;
using test::answer;
using test::CodexProcess;
using test::failureOf;
using test::greet;
using test::isReading;
using test::pollerFailure;
using test::serverFailure;
using test::systemFailure;
using test::takeQuestion;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;

TEST_F(CodexProcess, GivesTheReading) {
    EXPECT_TRUE(isReading(readAnswerAfter("")));
}

TEST_F(CodexProcess, GreetsWaitsForTheReplyAndAsksBackToBack) {
    ASSERT_TRUE(isReading(readAnswerAfter("")));
    ASSERT_TRUE(eventually([&] { return !test::hasChild(); }));
    const std::vector<std::string> lines = notes();
    ASSERT_GE(lines.size(), 4U);
    EXPECT_THAT(
        std::vector(lines.begin() + 1, lines.begin() + 4),
        ElementsAre(
            R"(read {"id":1,"method":"initialize","params":{"clientInfo":{"name":"brimwatch","title":"Brimwatch?","version":"1.0"}}})",
            R"(read {"method":"initialized"})",
            R"(read {"id":2,"method":"account/rateLimits/read","params":{"excludeResetCreditDetails":true}})"));
}

TEST_F(CodexProcess, AServerThatPrintsLogLinesAndNotificationsFirstIsServedNormally) {
    EXPECT_TRUE(isReading(
        read(std::string("say log line\nsay {\"method\":\"note\"}\nsay []\n"
                         "say {\"method\":\"x\",\"error\":{\"message\":\"y\"}}\n") +
             greet + takeQuestion + "say log\nsay {\"method\":\"note\"}\n" + answer + "wait")));
}

TEST_F(CodexProcess, ARepeatedGreetingDoesNotAskASecondTime) {
    timeOut_ = milliseconds(500);
    EXPECT_EQ(failureOf(read(std::string(greet) + takeQuestion + "say {\"id\":1}\nread\nwait")),
              pollerFailure(Kind::timedOut));
    ASSERT_TRUE(eventually([] { return !test::hasChild(); }));
    int questions = 0;
    for (const std::string& line : notes())
        questions += line.find("account/rateLimits/read") != std::string::npos ? 1 : 0;
    EXPECT_EQ(questions, 1);
}

TEST_F(CodexProcess, AnErrorInTheAnswerIsOneOfTheServerNeverNoLimits) {
    EXPECT_EQ(failureOf(readAnswerAfter("say {\"id\":2,\"error\":{\"message\":\"log in\"}}\n")),
              serverFailure("log in"));
}

TEST_F(CodexProcess, AnErrorWhoseMessageIsNoTextHasOneOfOurs) {
    EXPECT_EQ(failureOf(readAnswerAfter("say {\"id\":2,\"error\":{\"message\":7}}\n")),
              serverFailure("codex app-server 오류"));
}

TEST_F(CodexProcess, AnIdThatIsNoIntegerIsPassedOver) {
    EXPECT_TRUE(
        isReading(readAnswerAfter("say {\"id\":1.5,\"error\":{\"message\":\"x\"}}\n"
                                  "say {\"id\":\"1\",\"error\":{\"message\":\"x\"}}\n")));
}

TEST_F(CodexProcess, AnAnswerWithoutAResultMeansNoLimits) {
    EXPECT_EQ(failureOf(readAnswerAfter("say {\"id\":2}\n")), pollerFailure(Kind::noLimits));
}

TEST_F(CodexProcess, AnAnswerWithoutAFiveHourOrWeeklyWindowMeansNoLimits) {
    EXPECT_EQ(failureOf(readAnswerAfter(
                  R"(say {"id":2,"result":{"rateLimits":{"planType":"plus","primary":null}}})"
                  "\n")),
              pollerFailure(Kind::noLimits));
}

TEST_F(CodexProcess, AServerThatAnswersNothingIsEndedWhenTheTimeIsOver) {
    timeOut_ = milliseconds(300);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(failureOf(read("wait")), pollerFailure(Kind::timedOut));
    EXPECT_GE(std::chrono::steady_clock::now() - start, timeOut_);
    EXPECT_TRUE(eventually([] { return !test::hasChild(); }));
}

TEST_F(CodexProcess, TheTimeCoversTheWholeConversation) {
    timeOut_ = milliseconds(300);
    EXPECT_EQ(failureOf(read(std::string(greet) + takeQuestion + "wait")),
              pollerFailure(Kind::timedOut));
}

TEST_F(CodexProcess, NoTimeAtAllIsOverAtOnce) {
    for (const milliseconds time : {milliseconds(0), milliseconds(-5)}) {
        timeOut_ = time;
        EXPECT_EQ(failureOf(read("wait")), pollerFailure(Kind::timedOut));
    }
}

TEST_F(CodexProcess, AServerThatExitsBeforeItsAnswerHasEnded) {
    EXPECT_EQ(failureOf(read("read")), serverFailure("codex app-server가 끝났어요"));
    EXPECT_EQ(failureOf(read(std::string(greet) + takeQuestion)),
              serverFailure("codex app-server가 끝났어요"));
}

TEST_F(CodexProcess, AServerThatOnlyClosesItsOutputHasEnded) {
    EXPECT_EQ(failureOf(read("read\nclose-output\nwait")),
              serverFailure("codex app-server가 끝났어요"));
}

TEST_F(CodexProcess, WhatCannotBeLaunchedIsAnErrorOfTheSystem) {
    CodexReadRequest missing = request("");
    missing.executable = folder_.file("no codex");
    EXPECT_EQ(failureOf(QCoro::waitFor(readCodex(missing))), systemFailure(ENOENT));
    test::writeFile(folder_.file("text"), "no program");
    missing.executable = folder_.file("text");
    EXPECT_EQ(failureOf(QCoro::waitFor(readCodex(missing))), systemFailure(EACCES));
    std::filesystem::permissions(folder_.file("text"), std::filesystem::perms::owner_all);
    EXPECT_EQ(failureOf(QCoro::waitFor(readCodex(missing))), systemFailure(ENOEXEC));
}

TEST_F(CodexProcess, AnAccountFolderThatIsGoneIsAnErrorOfTheSystem) {
    CodexReadRequest gone = request(answer);
    gone.accountFolder = folder_.file("gone");
    EXPECT_EQ(failureOf(QCoro::waitFor(readCodex(gone))), systemFailure(ENOENT));
}

TEST_F(CodexProcess, AFailedWriteIsAnErrorOfTheSystemAndNoSignalEndsTheProgram) {
    ASSERT_EQ(::signal(SIGPIPE, SIG_DFL), SIG_DFL);
    EXPECT_EQ(failureOf(read("read\nclose-input\nsay {\"id\":1}\nwait")), systemFailure(EPIPE));
    sigset_t pending;
    ::sigpending(&pending);
    EXPECT_EQ(::sigismember(&pending, SIGPIPE), 0);
}

TEST_F(CodexProcess, TheAccountFolderIsItsHomeAndItsWorkingFolder) {
    environment_.set("CODEX_HOME", "/elsewhere");
    environment_.set("CODEX_HOMES", "more");
    ASSERT_TRUE(
        isReading(readAnswerAfter("describe\nvariable CODEX_HOME\nvariable CODEX_HOMES\n")));
    EXPECT_THAT(notes(), Contains("argument app-server"));
    EXPECT_THAT(notes(), Contains("folder " + folder_.path()));
    EXPECT_THAT(notes(), Contains("CODEX_HOME=" + folder_.path()));
    EXPECT_THAT(notes(), Not(Contains("CODEX_HOME=/elsewhere")));
    EXPECT_THAT(notes(), Contains("CODEX_HOMES=more"));
    EXPECT_THAT(notes(), Contains("error output /dev/null"));
}

TEST_F(CodexProcess, WithoutAnAccountFolderEverythingIsInherited) {
    environment_.set("CODEX_HOME", "/elsewhere");
    CodexReadRequest plain =
        request(std::string("describe\nvariable CODEX_HOME\n") + greet + takeQuestion + answer);
    plain.accountFolder.reset();
    ASSERT_TRUE(isReading(QCoro::waitFor(readCodex(plain))));
    EXPECT_THAT(notes(), Contains("folder " + std::filesystem::current_path().string()));
    EXPECT_THAT(notes(), Contains("CODEX_HOME=/elsewhere"));
}

TEST_F(CodexProcess, AChattyServerFillsNoPipe) {
    EXPECT_TRUE(isReading(readAnswerAfter("chatter 3000000\n")));
}

}  // namespace
}  // namespace brimwatch
