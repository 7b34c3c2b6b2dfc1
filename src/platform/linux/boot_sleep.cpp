#include "platform/linux/boot_sleep.h"

#include <QCoreApplication>
#include <QObject>
#include <QSocketNotifier>
#include <utility>

#include "platform/linux/event_loop_wait.h"
#include "platform/posix/boot_timer.h"

namespace brimwatch {
namespace {

// A sleep that has begun.
class BootSleep {
  public:
    explicit BootSleep(FileDescriptor timer)
        : timer_(std::move(timer)), isOver_(timer_.get(), QSocketNotifier::Read) {
        QObject::connect(&isOver_, &QSocketNotifier::activated, &isOver_, [this] { elapse(); });
    }

    EventLoopWait& wait() { return wait_; }
    SleepEnd end() const { return end_; }

  private:
    void elapse() {
        isOver_.setEnabled(false);
        wait_.end();
    }

    void cancel() {
        isOver_.setEnabled(false);
        end_ = SleepEnd::cancelled;
    }

    FileDescriptor timer_;
    SleepEnd end_ = SleepEnd::elapsed;
    QSocketNotifier isOver_;
    EventLoopWait wait_{[this] { cancel(); }};
};

}  // namespace

QCoro::Task<SleepEnd> sleepFor(std::chrono::milliseconds time) {
    if (QCoreApplication::instance() == nullptr) co_return SleepEnd::cancelled;
    tl::expected<FileDescriptor, std::error_code> timer = startBootTimer(time);
    if (!timer) co_return SleepEnd::cancelled;
    BootSleep sleep(*std::move(timer));
    const EventLoopWait::End end(sleep.wait());
    co_await end;
    co_return sleep.end();
}

}  // namespace brimwatch
