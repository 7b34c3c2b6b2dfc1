#include "platform/posix/boot_timer.h"

#include <gtest/gtest.h>
#include <poll.h>

#include <chrono>

namespace brimwatch {
namespace {

using std::chrono::milliseconds;

bool isOverWithin(const FileDescriptor& timer, milliseconds time) {
    pollfd entry{.fd = timer.get(), .events = POLLIN, .revents = 0};
    return ::poll(&entry, 1, static_cast<int>(time.count())) == 1;
}

TEST(BootTimer, IsOverWhenItsTimeIs) {
    const auto timer = startBootTimer(milliseconds(1050));
    ASSERT_TRUE(timer);
    EXPECT_FALSE(isOverWithin(*timer, milliseconds(500)));
    EXPECT_TRUE(isOverWithin(*timer, milliseconds(10'000)));
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
