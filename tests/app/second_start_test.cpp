// A start of the program while another one runs: processes, with a message bus of their own.

#include "app/second_start.h"

#include <QTimer>
#include <csignal>

#include "harness/environment_list.h"
#include "harness/process.h"
#include "harness/temporary_folder.h"
#include "platform/linux/bus_test.h"
#include "platform/posix/instance_lock.h"

namespace brimwatch {
namespace {

constexpr const char* name = "net.quillmoor.brimwatch";
// By then a process has found the place taken and has asked who has it.
constexpr std::chrono::milliseconds longEnoughToAsk{700};

class SecondStart : public test::BusTest {
  protected:
    void SetUp() override {
        test::BusTest::SetUp();
        first_.emplace(daemon_->address());
        // One that was never set up would show its window.
        test::writeFile(folder_.file(".config/brimwatch/settings.json"), R"({"setupDone":true})");
    }
    void TearDown() override {
        lock_.reset();
        first_.reset();
        test::BusTest::TearDown();
    }

    // Somebody has the right to run.
    void takePlace() {
        auto lock = InstanceLock::take(folder_.file(".local/state/brimwatch"));
        ASSERT_TRUE(lock.has_value() && lock->has_value());
        lock_ = std::move(*lock);
    }
    // The options that a user gives, Qt's among them.
    test::Process startSecond() {
        return test::Process({.program = BRIMWATCH_COMMAND,
                              .arguments = {"-platform", "offscreen"},
                              .environment = environment(),
                              .input = "",
                              .prepare = nullptr});
    }
    test::EnvironmentList environment() {
        return {{"HOME", folder_.path()},
                {"PATH", "/usr/bin:/bin"},
                {"LANG", "C.UTF-8"},
                {"XDG_RUNTIME_DIR", folder_.path()},
                {"DBUS_SESSION_BUS_ADDRESS", daemon_->addressText()}};
    }
    static bool hasEnded(const test::Process& process) {
        siginfo_t information{};
        return ::waitid(P_PID, static_cast<id_t>(process.id()), &information,
                        WEXITED | WNOHANG | WNOWAIT) == 0 &&
               information.si_pid == process.id();
    }
    static void letPass(std::chrono::milliseconds time) {
        bool isOver = false;
        QTimer::singleShot(time, [&] { isOver = true; });
        EXPECT_TRUE(eventually([&] { return isOver; }));
    }

    test::TemporaryFolder folder_;
    std::optional<test::FakeService> first_;  // may take the name
    std::optional<InstanceLock> lock_;
};

TEST_F(SecondStart, WaitsForAFirstThatHasNoNameYet) {
    takePlace();
    first_->handle([](const QDBusMessage& call) { return call.createReply(); });
    test::Process second = startSecond();
    letPass(longEnoughToAsk);
    EXPECT_FALSE(hasEnded(second));
    first_->own(name);
    EXPECT_TRUE(eventually([&] { return hasEnded(second); }));
    EXPECT_EQ(first_->calls().size(), 1);
    const test::ProcessResult result = second.wait();
    EXPECT_TRUE(result.exitedWith(0));
    EXPECT_EQ(result.errorOutput, "");
}

TEST_F(SecondStart, WaitsForAFirstThatIsTooBusyToAnswer) {
    takePlace();
    QDBusMessage call;
    first_->handle([&](const QDBusMessage& message) {
        call = message;
        return QDBusMessage();
    });
    first_->own(name);
    test::Process second = startSecond();
    ASSERT_TRUE(eventually([&] { return !first_->calls().isEmpty(); }));
    letPass(std::chrono::seconds(3));
    EXPECT_FALSE(hasEnded(second));
    first_->connection().send(call.createReply());
    EXPECT_TRUE(eventually([&] { return hasEnded(second); }));
    EXPECT_EQ(first_->calls().size(), 1);
    EXPECT_TRUE(second.wait().exitedWith(0));
}

TEST_F(SecondStart, TakesThePlaceOfAFirstThatEndsWithTheOptionsItWasGiven) {
    takePlace();
    test::Process second = startSecond();
    letPass(longEnoughToAsk);
    EXPECT_FALSE(first_->sees(name));
    lock_.reset();
    EXPECT_TRUE(eventually([&] { return first_->sees(name); }));
    second.signal(SIGTERM);
    EXPECT_TRUE(eventually([&] { return hasEnded(second); }));
    const test::ProcessResult result = second.wait();
    EXPECT_TRUE(result.exitedWith(0));
    EXPECT_EQ(result.errorOutput, "");
}

TEST_F(SecondStart, IsRefusedWhenTheTimeIsOver) {
    takePlace();
    const auto claim = claimOrGiveWay(environment().view(), std::chrono::milliseconds(300));
    ASSERT_FALSE(claim.has_value());
    EXPECT_EQ(claim.error().reason, Application::Refusal::Reason::isRunning);
    EXPECT_EQ(claim.error().text, "it is running already");
}

TEST_F(SecondStart, TakesAPlaceThatIsFree) {
    const auto claim = claimOrGiveWay(environment().view(), std::chrono::milliseconds(0));
    ASSERT_TRUE(claim.has_value() && claim->has_value());
    EXPECT_EQ((*claim)->folders.home, folder_.path());
}

TEST_F(SecondStart, IsRefusedAtOnceByAFolderThatCantBeUsed) {
    test::writeFile(folder_.file(".local"), "a file in the way");
    const auto claim = claimOrGiveWay(environment().view(), std::chrono::hours(1));
    ASSERT_FALSE(claim.has_value());
    EXPECT_EQ(claim.error().reason, Application::Refusal::Reason::system);
}

}  // namespace
}  // namespace brimwatch
