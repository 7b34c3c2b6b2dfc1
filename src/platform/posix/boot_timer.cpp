#include "platform/posix/boot_timer.h"

#include <sys/timerfd.h>

#include <cerrno>

#include "platform/posix/system_error.h"

namespace brimwatch {

tl::expected<FileDescriptor, std::error_code> startBootTimer(std::chrono::milliseconds time) {
    FileDescriptor timer(::timerfd_create(CLOCK_BOOTTIME, TFD_CLOEXEC | TFD_NONBLOCK));
    if (!timer.isOpen()) return systemError(errno);
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
    const std::chrono::nanoseconds rest = time - seconds;
    itimerspec setting{};
    setting.it_value.tv_sec = seconds.count();
    setting.it_value.tv_nsec = rest.count();
    // Zero would stop the timer.
    if (time.count() <= 0) setting.it_value = {.tv_sec = 0, .tv_nsec = 1};
    if (::timerfd_settime(timer.get(), 0, &setting, nullptr) != 0) return systemError(errno);
    return timer;
}

}  // namespace brimwatch
