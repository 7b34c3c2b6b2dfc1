#include "platform/posix/boot_timer.h"

#include <sys/timerfd.h>

#include <cerrno>

#include "platform/posix/system_error.h"

namespace brimwatch {

tl::expected<FileDescriptor, std::error_code> startBootTimer(std::chrono::milliseconds time) {
    using Nanoseconds = std::chrono::nanoseconds;
    FileDescriptor timer(::timerfd_create(CLOCK_BOOTTIME, TFD_CLOEXEC | TFD_NONBLOCK));
    if (!timer.isOpen()) return systemError(errno);
    // Zero would stop the timer.
    const Nanoseconds untilEnd = time.count() > 0 ? Nanoseconds(time) : Nanoseconds(1);
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(untilEnd);
    itimerspec setting{};
    setting.it_value.tv_sec = seconds.count();
    setting.it_value.tv_nsec = (untilEnd - seconds).count();
    if (::timerfd_settime(timer.get(), 0, &setting, nullptr) != 0) return systemError(errno);
    return timer;
}

}  // namespace brimwatch
