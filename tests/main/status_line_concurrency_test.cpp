// Many runs at once on one folder, and runs that are killed.

#include <atomic>
#include <chrono>
#include <csignal>
#include <map>
#include <thread>

#include "harness/random.h"
#include "limits/subscription_limits.h"
#include "main/status_line_process.h"

namespace brimwatch {
namespace {

using StatusLineConcurrency = StatusLineProcess;

constexpr int accountCount = 20;

// Reads all files over and over, as the application does, and counts what no reader may see: half a
// file, or a figure below one seen before.
class Reader {
  public:
    explicit Reader(std::string folder) : folder_(std::move(folder)), thread_([this] { read(); }) {}
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;
    ~Reader() { stop(); }

    void stop() {
        stopped_ = true;
        if (thread_.joinable()) thread_.join();
    }
    int broken() const { return broken_; }
    int steppedBack() const { return steppedBack_; }
    int filesRead() const { return filesRead_; }

  private:
    void read() {
        while (!stopped_) {
            for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
                const std::string name = entry.path().filename();
                if (name.starts_with('.') || !name.ends_with(".json")) continue;
                const std::string bytes = test::readFile(entry.path());
                const auto limits = SubscriptionLimits::fromFileData(bytes);
                ++filesRead_;
                if (!limits || !LimitsFile::decode(bytes)) {
                    ++broken_;
                    continue;
                }
                double& last = figures_[name];
                if (limits->fiveHour->usedPercentage < last) ++steppedBack_;
                last = limits->fiveHour->usedPercentage;
            }
        }
    }

    std::string folder_;
    std::map<std::string, double> figures_;
    std::atomic<bool> stopped_ = false;
    std::atomic<int> broken_ = 0;
    std::atomic<int> steppedBack_ = 0;
    std::atomic<int> filesRead_ = 0;
    std::thread thread_;
};

TEST_F(StatusLineConcurrency, SixtyFourRunsAtOnceOnTwentyAccountsLoseNothing) {
    std::filesystem::create_directories(limits_);
    test::Random random;
    SCOPED_TRACE(random.trace());
    std::map<int, int> highest;
    Reader reader(limits_);
    for (int round = 0; round < 10; ++round) {
        std::vector<test::Process> processes;
        for (int index = 0; index < 64; ++index) {
            const int account = static_cast<int>(random.below(accountCount));
            const int used = static_cast<int>(random.below(101));
            highest[account] = std::max(highest[account], used);
            processes.emplace_back(request(statusLineDocument(used), std::to_string(account)));
        }
        for (test::Process& process : processes)
            EXPECT_TRUE(process.wait().exitedWith(0));
    }
    reader.stop();
    EXPECT_EQ(reader.broken(), 0);
    EXPECT_EQ(reader.steppedBack(), 0);
    EXPECT_GT(reader.filesRead(), 100);
    for (const auto& [account, used] : highest) {
        const auto file = LimitsFile::decode(test::readFile(limitsPath(std::to_string(account))));
        ASSERT_TRUE(file);
        EXPECT_EQ(file->windows.at("five_hour").usedPercentage, used);
    }
    EXPECT_TRUE(leftovers().empty());
}

TEST_F(StatusLineConcurrency, RunsKilledAtRandomMomentsLoseNothingAndLeaveNothing) {
    test::Random random;
    SCOPED_TRACE(random.trace());
    run(request(statusLineDocument(0)));
    int killed = 0;
    double last = 0;
    for (int round = 1; round <= 600; ++round) {
        const double used = round / 10.0;
        test::Process process(request(statusLineDocument(used)));
        std::this_thread::sleep_for(std::chrono::microseconds(random.below(2500)));
        process.signal(SIGKILL);
        const bool finished = process.wait().exitedWith(0);
        killed += finished ? 0 : 1;
        const auto file = LimitsFile::decode(test::readFile(limitsPath()));
        ASSERT_TRUE(file) << round;
        const double stored = file->windows.at("five_hour").usedPercentage;
        ASSERT_GE(stored, finished ? used : last) << round;
        ASSERT_LE(stored, used) << round;
        last = stored;
    }
    EXPECT_GT(killed, 50);
    run(request(statusLineDocument(99)));
    EXPECT_TRUE(leftovers().empty());
    EXPECT_EQ(
        LimitsFile::decode(test::readFile(limitsPath()))->windows.at("five_hour").usedPercentage,
        99);
}

TEST_F(StatusLineConcurrency, AStoppedWriterIsWaitedForAndItsLockGoesWithIt) {
    run(request(statusLineDocument(0)));
    const std::string holder = "exec 9>'" + limits_ + "/.lock'; flock 9; echo held > '" +
                               folder_.file("held") + "'; sleep 60";
    test::Process stopped({.program = "/bin/sh",
                           .arguments = {"-c", holder},
                           .environment = environment_,
                           .input = "",
                           .prepare = [] { ::setpgid(0, 0); }});
    ASSERT_TRUE(test::eventually([this] { return test::exists(folder_.file("held")); }));
    test::Process waiting(request(statusLineDocument(10)));
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(
        LimitsFile::decode(test::readFile(limitsPath()))->windows.at("five_hour").usedPercentage,
        0);
    ::kill(-stopped.id(), SIGKILL);
    EXPECT_TRUE(waiting.wait().exitedWith(0));
    EXPECT_EQ(
        LimitsFile::decode(test::readFile(limitsPath()))->windows.at("five_hour").usedPercentage,
        10);
}

}  // namespace
}  // namespace brimwatch
