#include "platform/linux/boot_sleep.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <QTimer>
#include <csignal>
#include <ctime>

#include "harness/temporary_folder.h"
#include "platform/linux/application_test.h"

namespace brimwatch {
namespace {

using std::chrono::milliseconds;
using test::openDescriptors;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

class BootSleepTest : public test::ApplicationTest {
  protected:
    struct Ended {
        int name = 0;
        SleepEnd end{};

        bool operator==(const Ended&) const = default;
    };

    void start(int name, milliseconds time) { sleep(name, time, &ended_); }

    // In the order of their ends.
    std::vector<Ended> ended_;

  private:
    static QCoro::Task<> sleep(int name, milliseconds time, std::vector<Ended>* ended) {
        const SleepEnd end = co_await sleepFor(time);
        ended->push_back({name, end});
    }
};

// Of the clock that a sleep uses.
milliseconds now() {
    timespec time{};
    ::clock_gettime(CLOCK_BOOTTIME, &time);
    return std::chrono::duration_cast<milliseconds>(std::chrono::seconds(time.tv_sec) +
                                                    std::chrono::nanoseconds(time.tv_nsec));
}

TEST_F(BootSleepTest, IsOverWhenItsTimeIsAndNotBefore) {
    const milliseconds before = now();
    start(1, milliseconds(120));
    EXPECT_THAT(ended_, IsEmpty());
    ASSERT_TRUE(eventually([&] { return !ended_.empty(); }));
    EXPECT_THAT(ended_, ElementsAre(Ended{1, SleepEnd::elapsed}));
    EXPECT_GE(now() - before, milliseconds(120));
}

TEST_F(BootSleepTest, NoTimeIsOverAtOnceButNotBeforeTheLoopTurns) {
    for (const milliseconds time : {milliseconds(0), milliseconds(-1), milliseconds::min()}) {
        ended_.clear();
        start(1, time);
        EXPECT_THAT(ended_, IsEmpty());
        ASSERT_TRUE(eventually([&] { return !ended_.empty(); }));
        EXPECT_THAT(ended_, ElementsAre(Ended{1, SleepEnd::elapsed}));
    }
}

TEST_F(BootSleepTest, AShorterOneIsOverWhileALongerOneGoesOn) {
    start(1, std::chrono::hours(1));
    start(2, milliseconds(20));
    ASSERT_TRUE(eventually([&] { return !ended_.empty(); }));
    EXPECT_THAT(ended_, ElementsAre(Ended{2, SleepEnd::elapsed}));
    application_.reset();
    EXPECT_THAT(ended_, ElementsAre(Ended{2, SleepEnd::elapsed}, Ended{1, SleepEnd::cancelled}));
}

TEST_F(BootSleepTest, TheQuittingOfTheApplicationCancelsEachOnce) {
    start(1, milliseconds::max());
    start(2, std::chrono::hours(1));
    QTimer::singleShot(20, [] { QCoreApplication::quit(); });
    QCoreApplication::exec();
    EXPECT_THAT(ended_, ElementsAre(Ended{1, SleepEnd::cancelled}, Ended{2, SleepEnd::cancelled}));
    application_.reset();
    EXPECT_EQ(ended_.size(), 2U);
}

TEST_F(BootSleepTest, AnApplicationThatGoesWithoutQuittingCancelsIt) {
    start(1, std::chrono::hours(1));
    application_.reset();
    EXPECT_THAT(ended_, ElementsAre(Ended{1, SleepEnd::cancelled}));
}

TEST_F(BootSleepTest, WithoutAnApplicationItIsCancelledAtOnce) {
    application_.reset();
    start(1, std::chrono::hours(1));
    EXPECT_THAT(ended_, ElementsAre(Ended{1, SleepEnd::cancelled}));
}

QCoro::Task<> sleepThrice(int* slept) {
    for (int count = 0; count < 3; ++count) {
        static_cast<void>(co_await sleepFor(std::chrono::hours(1)));
        ++*slept;
    }
}

TEST_F(BootSleepTest, OneThatBeginsWhileTheApplicationEndsIsCancelledAsWell) {
    int slept = 0;
    sleepThrice(&slept);
    QTimer::singleShot(20, [] { QCoreApplication::quit(); });
    QCoreApplication::exec();
    EXPECT_EQ(slept, 1);
    application_.reset();
    EXPECT_EQ(slept, 3);
}

TEST_F(BootSleepTest, ADroppedSleepLeavesNothing) {
    const std::set<int> before = openDescriptors();
    { const QCoro::Task<SleepEnd> dropped = sleepFor(milliseconds(20)); }
    EXPECT_NE(openDescriptors(), before);
    EXPECT_TRUE(eventually([&] { return openDescriptors() == before; }));
}

TEST_F(BootSleepTest, ADroppedSleepThatIsStillGoingOnWhenTheApplicationGoesLeavesNothing) {
    const std::set<int> before = openDescriptors();
    { const QCoro::Task<SleepEnd> dropped = sleepFor(std::chrono::hours(1)); }
    QTimer::singleShot(20, [] { QCoreApplication::quit(); });
    QCoreApplication::exec();
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(BootSleepTest, ItsTimerIsClosedOnExecAndCountsOnDuringSleep) {
    const std::set<int> before = openDescriptors();
    start(1, milliseconds(50));
    int timers = 0;
    for (const int descriptor : openDescriptors()) {
        if (before.contains(descriptor)) continue;
        EXPECT_NE(::fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0) << descriptor;
        const std::string path = "/proc/self/fdinfo/" + std::to_string(descriptor);
        timers += test::readFile(path).find("clockid: 7\n") != std::string::npos ? 1 : 0;
    }
    EXPECT_EQ(timers, 1);
    EXPECT_TRUE(eventually([&] { return !ended_.empty(); }));
}

TEST_F(BootSleepTest, WithoutADescriptorItSleepsAllTheSame) {
    start(1, milliseconds(0));
    ASSERT_TRUE(eventually([&] { return !ended_.empty(); }));
    ended_.clear();
    rlimit former{};
    ::getrlimit(RLIMIT_NOFILE, &former);
    const rlimit none{.rlim_cur = STDERR_FILENO + 1, .rlim_max = former.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &none);
    start(1, milliseconds(20));
    start(2, milliseconds::max());
    start(3, milliseconds::min());
    ::setrlimit(RLIMIT_NOFILE, &former);
    ASSERT_TRUE(eventually([&] { return ended_.size() == 2; }));
    EXPECT_THAT(ended_,
                UnorderedElementsAre(Ended{1, SleepEnd::elapsed}, Ended{3, SleepEnd::elapsed}));
    application_.reset();
    EXPECT_EQ(ended_.back(), (Ended{2, SleepEnd::cancelled}));
}

TEST_F(BootSleepTest, SignalsNeitherEndNorProlongIt) {
    struct sigaction former {};
    struct sigaction quiet {};
    quiet.sa_handler = [](int) {};
    ::sigaction(SIGALRM, &quiet, &former);
    const milliseconds before = now();
    start(1, milliseconds(100));
    ASSERT_TRUE(eventually([&] {
        ::raise(SIGALRM);
        return !ended_.empty();
    }));
    ::sigaction(SIGALRM, &former, nullptr);
    EXPECT_THAT(ended_, ElementsAre(Ended{1, SleepEnd::elapsed}));
    EXPECT_GE(now() - before, milliseconds(100));
}

TEST_F(BootSleepTest, FiveHundredAtOnceAllEnd) {
    constexpr int count = 500;
    for (int name = 0; name < count; ++name)
        start(name, milliseconds(name % 7));
    ASSERT_TRUE(eventually([&] { return ended_.size() == count; }));
    for (const Ended& ended : ended_)
        EXPECT_EQ(ended.end, SleepEnd::elapsed);
}

}  // namespace
}  // namespace brimwatch
