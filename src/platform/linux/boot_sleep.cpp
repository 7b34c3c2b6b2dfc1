#include "platform/linux/boot_sleep.h"

#include <QCoreApplication>
#include <QObject>
#include <QSocketNotifier>
#include <QTimer>
#include <algorithm>
#include <limits>
#include <optional>
#include <utility>

#include "platform/linux/event_loop_wait.h"
#include "platform/posix/boot_timer.h"

namespace brimwatch {
namespace {

// What a QTimer takes.
constexpr std::chrono::milliseconds shortest(0);
constexpr std::chrono::milliseconds longest(std::numeric_limits<int>::max());

// A sleep that has begun.
class BootSleep {
  public:
    explicit BootSleep(std::chrono::milliseconds time) {
        tl::expected<FileDescriptor, std::error_code> timer = startBootTimer(time);
        if (!timer) {
            QObject::connect(&awakeTimer_, &QTimer::timeout, &awakeTimer_, [this] { elapse(); });
            awakeTimer_.setSingleShot(true);
            awakeTimer_.start(std::clamp(time, shortest, longest));
            return;
        }
        timer_ = *std::move(timer);
        isOver_.emplace(timer_.get(), QSocketNotifier::Read);
        QObject::connect(&*isOver_, &QSocketNotifier::activated, &*isOver_, [this] { elapse(); });
    }

    EventLoopWait& wait() { return wait_; }
    SleepEnd end() const { return end_; }

  private:
    void elapse() {
        stop();
        wait_.end();
    }

    void cancel() {
        stop();
        end_ = SleepEnd::cancelled;
    }

    void stop() {
        awakeTimer_.stop();
        if (isOver_) isOver_->setEnabled(false);
    }

    FileDescriptor timer_;
    SleepEnd end_ = SleepEnd::elapsed;
    std::optional<QSocketNotifier> isOver_;
    QTimer awakeTimer_;  // where no descriptor can be had
    EventLoopWait wait_{[this] { cancel(); }};
};

}  // namespace

QCoro::Task<SleepEnd> sleepFor(std::chrono::milliseconds time) {
    if (QCoreApplication::instance() == nullptr) co_return SleepEnd::cancelled;
    BootSleep sleep(time);
    const EventLoopWait::End end(sleep.wait());
    co_await end;
    co_return sleep.end();
}

}  // namespace brimwatch
