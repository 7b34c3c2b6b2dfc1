#include "platform/posix/boot_timer.h"

#include <gtest/gtest.h>
#include <poll.h>

#include <chrono>
#include <ctime>

namespace brimwatch {
namespace {

using std::chrono::milliseconds;

bool isOverWithin(const FileDescriptor& timer, milliseconds time) {
    pollfd entry{.fd = timer.get(), .events = POLLIN, .revents = 0};
    return ::poll(&entry, 1, static_cast<int>(time.count())) == 1;
}

std::chrono::nanoseconds bootTime() {
    timespec now{};
    ::clock_gettime(CLOCK_BOOTTIME, &now);
    return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

TEST(BootTimer, IsOverWhenItsTimeIsAndNotBefore) {
    for (const milliseconds time : {milliseconds(50), milliseconds(1050)}) {
        const std::chrono::nanoseconds start = bootTime();
        const auto timer = startBootTimer(time);
        ASSERT_TRUE(timer);
        EXPECT_TRUE(isOverWithin(*timer, milliseconds(10'000)));
        EXPECT_GE(bootTime() - start, time);
    }
}

TEST(BootTimer, NoTimeIsOverAtOnce) {
    for (const milliseconds time : {milliseconds(0), milliseconds(-1), milliseconds::min()}) {
        const auto timer = startBootTimer(time);
        ASSERT_TRUE(timer);
        EXPECT_TRUE(isOverWithin(*timer, milliseconds(10'000)));
    }
}

TEST(BootTimer, AnEndlessTimeIsNotOver) {
    const auto timer = startBootTimer(milliseconds::max());
    ASSERT_TRUE(timer);
    EXPECT_FALSE(isOverWithin(*timer, milliseconds(0)));
}

}  // namespace
}  // namespace brimwatch
