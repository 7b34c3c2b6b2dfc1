// The model with real processes around it: status line runs of the command, and a Codex server.

#include <gmock/gmock.h>
#include <sys/wait.h>

#include <QCoreApplication>
#include <QStandardPaths>
#include <QThread>
#include <algorithm>
#include <chrono>
#include <ctime>
#include <filesystem>

#include "harness/process.h"
#include "model_fixture.h"
#include "platform/linux/codex_process.h"
#include "platform/linux/limits_changed_listener.h"
#include "platform/linux/qt_folder_watch.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::SizeIs;

// Time stands still unless a test lets it pass; word of changes comes from the real system.
class ModelProcesses : public test::ModelFixture {
  protected:
    void SetUp() override {
        application_.emplace(argumentCount_, arguments_);
        environment_.set("XDG_RUNTIME_DIR", runtime_);
        std::filesystem::create_directories(runtime_);
        time_.setWallClock(instantFromUnixSeconds(static_cast<double>(std::time(nullptr))));
        codex_.installed = std::nullopt;
    }

    void TearDown() override {
        model_.reset();
        watch_.reset();
        listener_.reset();
        application_.reset();
    }

    void startWithRealWord() {
        watch_.emplace();
        listener_.emplace(environment_.view());
        HelperModel::Surroundings around = surroundings();
        around.systemServices.emplace(
            HelperModel::SystemServices{*watch_, *listener_, services_.login, services_.agents});
        start(std::move(around));
        time_.settle();
        settle();
        calm_ = time_.sleeperCount();
        reloadsBefore_ = reloadCount();
    }

    // How often the limits folder was listed.
    std::ptrdiff_t reloadCount() const {
        const std::string step = "entries " + limitsFolder(home_);
        return std::count(files_.steps().begin(), files_.steps().end(), step);
    }
    std::ptrdiff_t newReloads() const { return reloadCount() - reloadsBefore_; }
    // Whether a reload is due.
    bool isStirred() const { return time_.sleeperCount() > calm_; }

    static bool eventually(const std::function<bool()>& condition) {
        return test::eventually([&] {
            QCoreApplication::processEvents();
            return condition();
        });
    }
    // Lets everything arrive that was on its way.
    static void settle() {
        for (int turn = 0; turn < 20; ++turn) {
            QCoreApplication::processEvents();
            QThread::msleep(1);
        }
    }

    test::ProcessRequest statusLine(const std::string& account, double used) {
        const std::string reset = std::to_string(std::time(nullptr) / 600 * 600 + 7200);
        test::EnvironmentList environment = {
            {"HOME", home_}, {"PATH", "/usr/bin:/bin"}, {"XDG_RUNTIME_DIR", runtime_}};
        return {.program = BRIMWATCH_COMMAND,
                .arguments = {"--statusline", "--account", account},
                .environment = environment,
                .input = R"({"rate_limits":{"seven_day":{"used_percentage":)" +
                         std::to_string(used) + R"(,"resets_at":)" + reset + "}}}",
                .prepare = nullptr};
    }

    void runStatusLine(const std::string& account, double used) {
        EXPECT_TRUE(test::runProcess(statusLine(account, used)).exitedWith(0));
    }

    std::string runtime_ = folder_.file("runtime");
    std::optional<QCoreApplication> application_;
    std::optional<QtFolderWatch> watch_;
    std::optional<LimitsChangedListener> listener_;
    std::size_t calm_ = 0;
    std::ptrdiff_t reloadsBefore_ = 0;

  private:
    int argumentCount_ = 1;
    std::string name_ = "app_test";
    char* arguments_[2] = {name_.data(), nullptr};
};

TEST_F(ModelProcesses, ARunOfTheStatusLineBecomesACardByOneReload) {
    makeRegisteredFolder(".claude-work");
    startWithRealWord();
    runStatusLine("work", 40);
    ASSERT_TRUE(eventually([&] { return isStirred(); }));
    settle();
    EXPECT_TRUE(shownIds().empty());
    advance(300ms);
    EXPECT_EQ(shownWeekly("claude-work"), 40);
    settle();
    EXPECT_FALSE(isStirred());
    EXPECT_EQ(newReloads(), 1);
}

TEST_F(ModelProcesses, ABurstOfRunsCostsOneReload) {
    const std::vector<std::string> accounts = {"a", "b", "c", "d", "e"};
    for (const std::string& account : accounts)
        makeRegisteredFolder(".claude-" + account);
    startWithRealWord();
    std::vector<test::Process> runs;
    for (int used = 10; used < 14; ++used) {
        for (const std::string& account : accounts)
            runs.emplace_back(statusLine(account, used));
    }
    for (test::Process& run : runs)
        EXPECT_TRUE(run.wait().exitedWith(0));
    ASSERT_TRUE(eventually([&] { return isStirred(); }));
    settle();
    advance(300ms);
    EXPECT_THAT(shownIds(), SizeIs(5));
    for (const std::string& account : accounts)
        EXPECT_EQ(shownWeekly("claude-" + account), 13) << account;
    settle();
    EXPECT_FALSE(isStirred());
    EXPECT_EQ(newReloads(), 1);
}

TEST_F(ModelProcesses, ARunThatChangesNothingGivesNoWord) {
    makeRegisteredFolder(".claude-work");
    startWithRealWord();
    runStatusLine("work", 40);
    ASSERT_TRUE(eventually([&] { return isStirred(); }));
    settle();
    advance(300ms);
    settle();
    runStatusLine("work", 40);
    settle();
    EXPECT_FALSE(isStirred());
    EXPECT_EQ(newReloads(), 1);
}

TEST_F(ModelProcesses, TheBroadcastAloneIsEnough) {
    makeRegisteredFolder(".claude-work");
    startWithRealWord();
    watch_.reset();
    runStatusLine("work", 40);
    ASSERT_TRUE(eventually([&] { return isStirred(); }));
    advance(300ms);
    EXPECT_EQ(shownWeekly("claude-work"), 40);
}

TEST_F(ModelProcesses, TheFolderAloneIsEnough) {
    makeRegisteredFolder(".claude-work");
    startWithRealWord();
    listener_.reset();
    runStatusLine("work", 40);
    ASSERT_TRUE(eventually([&] { return isStirred(); }));
    advance(300ms);
    EXPECT_EQ(shownWeekly("claude-work"), 40);
}

TEST_F(ModelProcesses, AFolderThatWasDeletedIsWatchedNoMoreButTheMinuteStillReloads) {
    makeRegisteredFolder(".claude-work");
    startWithRealWord();
    listener_.reset();
    runStatusLine("work", 40);
    ASSERT_TRUE(eventually([&] { return isStirred(); }));
    settle();
    advance(300ms);
    std::filesystem::remove_all(limitsFolder(home_));
    settle();
    advance(300ms);
    EXPECT_TRUE(shownIds().empty());
    EXPECT_FALSE(test::exists(limitsFolder(home_)));
    runStatusLine("work", 41);
    settle();
    EXPECT_FALSE(isStirred());
    advance(60s);
    EXPECT_EQ(shownWeekly("claude-work"), 41);
}

class ModelAndCodexProcess : public ModelProcesses {
  protected:
    // A model whose questions go to a real child process.
    void startWithServer(const std::string& executable) {
        HelperModel::Surroundings around = surroundings();
        around.findCodex = [executable] { return executable; };
        around.readCodex = [this](std::string codex, CodexAccounts::Account account) {
            return readCodex({.executable = std::move(codex),
                              .accountFolder = std::move(account.directory),
                              .timeOut = 20s,
                              .environment = environment_.view(),
                              .defaultSignals = {}});
        };
        start(std::move(around));
    }

    void poll() {
        const QCoro::Task<> run = model().pollCodex();
        EXPECT_TRUE(eventually([&] { return !model().pollingCodex(); }));
    }
};

TEST_F(ModelAndCodexProcess, AnAnswerOfTheServerBecomesACardAndAFile) {
    const std::string folder = makeCodexFolder(".codex-work");
    environment_.set("SCRIPTED_APP_SERVER",
                     "read\nsay {\"id\":1,\"result\":{}}\nread\nread\n"
                     R"(say {"id":2,"result":{"rateLimits":{"planType":"plus",)"
                     R"("secondary":{"usedPercent":37,"windowDurationMins":10080}}}})"
                     "\nread\n");
    startWithServer(BRIMWATCH_SCRIPTED_APP_SERVER);
    poll();
    EXPECT_THAT(shownIds(), ElementsAre("codex-work"));
    EXPECT_EQ(shownWeekly("codex-work"), 37);
    EXPECT_EQ(model().limits().back().planTier, "Plus");
    EXPECT_TRUE(test::exists(limitsFile("codex-work")));
    EXPECT_THAT(model().codexAccountStatuses().at(folder), EndsWith("에 받음"));
    EXPECT_EQ(model().codexStatus(), std::nullopt);
}

TEST_F(ModelAndCodexProcess, AServerThatEndsIsToldOfInTheStatus) {
    const std::string folder = makeCodexFolder(".codex-work");
    environment_.set("SCRIPTED_APP_SERVER", "read\n");
    startWithServer(BRIMWATCH_SCRIPTED_APP_SERVER);
    poll();
    EXPECT_TRUE(shownIds().empty());
    EXPECT_EQ(model().codexAccountStatuses().at(folder),
              "조회하지 못했어요. 이 계정으로 Codex에 로그인했는지 확인해 주세요.");
}

TEST_F(ModelAndCodexProcess, AProgramThatCantBeStartedDoesNotAnswer) {
    const std::string folder = makeCodexFolder(".codex-work");
    startWithServer(folder_.file("no-codex-here"));
    poll();
    EXPECT_EQ(model().codexAccountStatuses().at(folder), "codex가 답하지 않았어요");
}

TEST_F(ModelAndCodexProcess, AModelThatGoesDuringAQuestionLeavesNoChildBehind) {
    makeCodexFolder(".codex-work");
    environment_.set("SCRIPTED_APP_SERVER", "read\nwait\n");
    environment_.set("SCRIPTED_APP_SERVER_NOTES", folder_.file("notes"));
    startWithServer(BRIMWATCH_SCRIPTED_APP_SERVER);
    const QCoro::Task<> run = model().pollCodex();
    ASSERT_TRUE(eventually([&] { return test::exists(folder_.file("notes")); }));
    model_.reset();
    QCoreApplication::sendPostedEvents();
    application_.reset();
    std::string process = test::readFile(folder_.file("notes"));
    process = process.substr(process.find(' ') + 1);
    const auto child = static_cast<pid_t>(std::stol(process));
    EXPECT_TRUE(test::eventually([&] { return ::waitpid(child, nullptr, WNOHANG) == child; }));
}

TEST_F(ModelAndCodexProcess, TheRealServerTellsThatNobodyIsLoggedIn) {
    const QString codex = QStandardPaths::findExecutable("codex");
    if (codex.isEmpty()) GTEST_SKIP() << "There is no codex on this machine.";
    const std::string folder = makeCodexFolder(".codex-work");
    environment_.set("HOME", home_);
    environment_.set("PATH", qEnvironmentVariable("PATH").toStdString());
    codex_.installed = codex.toStdString();
    startWithServer(codex.toStdString());
    poll();
    EXPECT_EQ(model().codexAccountStatuses().at(folder),
              "조회하지 못했어요. 이 계정으로 Codex에 로그인했는지 확인해 주세요.");
}

}  // namespace
}  // namespace brimwatch
