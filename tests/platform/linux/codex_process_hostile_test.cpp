// Servers that mean ill or know no better, and programs that end at the wrong moment.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QCoroTask>
#include <QTimer>
#include <cerrno>

#include "codex_process_fixture.h"
#include "harness/process.h"
#include "platform/posix/ignored_signals.h"

namespace brimwatch {
namespace {

using Kind = CodexPoller::Failure::Kind;
using std::chrono::milliseconds;
using test::answer;
using test::CodexProcess;
using test::failureOf;
using test::greet;
using test::isReading;
using test::openDescriptors;
using test::pollerFailure;
using test::serverFailure;
using test::systemFailure;
using test::takeQuestion;
using ::testing::Contains;

// A task that nobody awaits, and what became of it.
QCoro::Task<> readInto(CodexReadRequest request, std::optional<CodexReadResult>* result) {
    *result = co_await readCodex(request);
}

TEST_F(CodexProcess, AServerThatFloodsItsOutputIsEndedWhenTheTimeIsOver) {
    timeOut_ = milliseconds(300);
    EXPECT_EQ(failureOf(read("flood")), pollerFailure(Kind::timedOut));
}

TEST_F(CodexProcess, AServerThatFloodsAndIgnoresItsEndFindsNobodyToWriteTo) {
    timeOut_ = milliseconds(300);
    EXPECT_EQ(failureOf(read("ignore-end\nflood")), pollerFailure(Kind::timedOut));
    EXPECT_TRUE(eventually([] { return !test::hasChild(); }));
}

TEST_F(CodexProcess, AServerThatIgnoresItsEndSeesTheEndOfItsInput) {
    EXPECT_TRUE(
        isReading(read(std::string("ignore-end\n") + greet + takeQuestion + answer + "read")));
    EXPECT_TRUE(eventually([] { return !test::hasChild(); }));
    EXPECT_THAT(notes(), Contains("end of input"));
}

TEST_F(CodexProcess, AServerThatIgnoresItsEndSeesTheEndOfItsInputWhenTheTimeIsOver) {
    timeOut_ = milliseconds(1000);
    EXPECT_EQ(failureOf(read("ignore-end\nread\nread")), pollerFailure(Kind::timedOut));
    EXPECT_TRUE(eventually([] { return !test::hasChild(); }));
    EXPECT_THAT(notes(), Contains("end of input"));
}

TEST_F(CodexProcess, ALineOfAHundredMegabytesIsAFailureOfTheServer) {
    EXPECT_EQ(failureOf(read("fill 100000000\nwait")), serverFailure("codex app-server 오류"));
}

TEST_F(CodexProcess, AServerThatNeverReadsBlocksNothing) {
    EXPECT_TRUE(isReading(read(std::string("say {\"id\":1}\n") + answer + "wait")));
}

TEST_F(CodexProcess, AServerThatExitsAtOnceHasEndedOrCannotBeWrittenTo) {
    const CodexReadFailure failure = failureOf(read(""));
    EXPECT_TRUE(failure == serverFailure("codex app-server가 끝났어요") ||
                failure == systemFailure(EPIPE))
        << ::testing::PrintToString(failure);
}

TEST_F(CodexProcess, AServerThatIgnoresItsEndIsLeftBehindAndReapedLater) {
    EXPECT_TRUE(isReading(
        read(std::string("ignore-end\n") + greet + takeQuestion + answer + "wait\nwait")));
    EXPECT_TRUE(test::hasChild());
    ::kill(server(), SIGKILL);
    EXPECT_TRUE(eventually([] { return !test::hasChild(); }));
}

TEST_F(CodexProcess, AServerThatTakesItsTimeToEndIsNotWaitedFor) {
    EXPECT_TRUE(isReading(read(std::string("drain\n") + greet + takeQuestion + answer + "wait")));
    EXPECT_TRUE(test::hasChild());
    EXPECT_TRUE(eventually([] { return !test::hasChild(); }));
}

// The server has said both before the first of it is looked at.
TEST_F(CodexProcess, AFailedWriteIsTheOutcomeThoughAnAnswerLiesReady) {
    std::optional<CodexReadResult> result;
    readInto(request(std::string("close-input\nsay {\"id\":1}\n") + answer + "describe\nwait"),
             &result);
    ASSERT_TRUE(test::eventually([&] { return notes().size() > 1; }));
    ASSERT_TRUE(eventually([&] { return result.has_value(); }));
    EXPECT_EQ(failureOf(*result), systemFailure(EPIPE));
}

TEST_F(CodexProcess, NothingOfAReadStaysWithTheApplication) {
    const qsizetype objects = application_->children().size();
    EXPECT_TRUE(isReading(read(std::string("drain\n") + greet + takeQuestion + answer + "wait")));
    EXPECT_TRUE(eventually([&] { return application_->children().size() == objects; }));
}

// The system takes over what has not ended yet; here that is this test.
TEST_F(CodexProcess, AProgramThatEndsDoesNotWaitForAServerThatIsAboutTo) {
    const std::set<int> before = openDescriptors();
    EXPECT_TRUE(isReading(
        read(std::string("ignore-end\n") + greet + takeQuestion + answer + "wait\nwait")));
    const pid_t child = server();
    application_.reset();
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_EQ(::waitpid(child, nullptr, WNOHANG), 0);
    ::kill(child, SIGKILL);
    EXPECT_EQ(::waitpid(child, nullptr, 0), child);
}

TEST_F(CodexProcess, AStoppedServerIsEndedToo) {
    timeOut_ = milliseconds(300);
    EXPECT_EQ(failureOf(read("read\nstop\nwait")), pollerFailure(Kind::timedOut));
    EXPECT_TRUE(eventually([] { return !test::hasChild(); }));
}

TEST_F(CodexProcess, EveryDescriptorIsClosedOnExecAndTheTimeCountsOnDuringSleep) {
    const std::set<int> before = openDescriptors();
    std::optional<CodexReadResult> result;
    readInto(request(std::string(greet) + takeQuestion + answer + "wait"), &result);
    int sleepProofTimers = 0;
    for (const int descriptor : openDescriptors()) {
        if (before.contains(descriptor)) continue;
        EXPECT_NE(::fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0) << descriptor;
        const std::string path = "/proc/self/fdinfo/" + std::to_string(descriptor);
        const bool isTimer = test::readFile(path).find("clockid: 7\n") != std::string::npos;
        sleepProofTimers += isTimer ? 1 : 0;
    }
    EXPECT_EQ(sleepProofTimers, 1);
    EXPECT_TRUE(eventually([&] { return result.has_value(); }));
}

TEST_F(CodexProcess, ADroppedTaskRunsToItsEndAndLeavesNothing) {
    { const QCoro::Task<CodexReadResult> dropped = readCodex(request(greet)); }
    EXPECT_TRUE(test::hasChild());
    EXPECT_TRUE(eventually([] { return !test::hasChild(); }));
}

TEST_F(CodexProcess, TheEndOfTheProgramEndsTheRead) {
    std::optional<CodexReadResult> result;
    readInto(request("wait"), &result);
    QTimer::singleShot(50, [] { QCoreApplication::quit(); });
    QCoreApplication::exec();
    ASSERT_TRUE(result);
    EXPECT_EQ(failureOf(*result), systemFailure(ECANCELED));
    EXPECT_TRUE(eventually([] { return !test::hasChild(); }));
}

// The system takes over what has not ended yet; here that is this test.
TEST_F(CodexProcess, AnApplicationThatGoesWithoutQuittingEndsTheReadToo) {
    std::optional<CodexReadResult> result;
    readInto(request("wait"), &result);
    const pid_t child = server();
    application_.reset();
    ASSERT_TRUE(result);
    EXPECT_EQ(failureOf(*result), systemFailure(ECANCELED));
    int status = 0;
    // It may have been reaped at once, if it was quick.
    const pid_t reaped = ::waitpid(child, &status, 0);
    EXPECT_TRUE(reaped == -1 || (WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM));
}

TEST_F(CodexProcess, SignalsThatAreIgnoredHereHaveTheirDefaultActionInTheChild) {
    const sigset_t formerlyDefault = ignoreWriteSignals();
    CodexReadRequest with =
        request(std::string("signals\n") + greet + takeQuestion + answer + "wait");
    with.defaultSignals = formerlyDefault;
    EXPECT_TRUE(isReading(QCoro::waitFor(readCodex(with))));
    EXPECT_THAT(notes(), Contains("SIGPIPE by default"));
    ::signal(SIGPIPE, SIG_DFL);
    ::signal(SIGXFSZ, SIG_DFL);
}

// Wherever the descriptors run out. The first read is for the sanitizers, which need descriptors of
// their own when they meet a type for the first time.
TEST_F(CodexProcess, ATableOfDescriptorsThatIsFullIsAnErrorOfTheSystemAndLeavesNothing) {
    const CodexReadRequest asking = request(std::string(greet) + takeQuestion + answer + "wait");
    ASSERT_TRUE(isReading(QCoro::waitFor(readCodex(asking))));
    ASSERT_TRUE(eventually([] { return !test::hasChild(); }));
    rlimit former{};
    ::getrlimit(RLIMIT_NOFILE, &former);
    const std::set<int> before = openDescriptors();
    int failures = 0;
    bool succeeded = false;
    for (rlim_t limit = STDERR_FILENO + 1; !succeeded && limit < former.rlim_cur; ++limit) {
        const rlimit narrow{.rlim_cur = limit, .rlim_max = former.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &narrow);
        QCoro::Task<CodexReadResult> task = readCodex(asking);
        ::setrlimit(RLIMIT_NOFILE, &former);
        const CodexReadResult result = QCoro::waitFor(std::move(task));
        succeeded = isReading(result);
        if (succeeded) break;
        ++failures;
        EXPECT_EQ(failureOf(result), systemFailure(EMFILE));
        EXPECT_EQ(openDescriptors(), before);
        EXPECT_FALSE(test::hasChild());
    }
    EXPECT_TRUE(succeeded);
    EXPECT_GE(failures, 6);  // a timer, two pipes and the process
}

TEST_F(CodexProcess, ManyReadsLeaveNothing) {
    for (int round = 0; round < 30; ++round)
        EXPECT_TRUE(isReading(readAnswerAfter("")));
}

}  // namespace
}  // namespace brimwatch
