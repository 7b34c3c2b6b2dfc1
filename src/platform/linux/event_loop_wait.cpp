#include "platform/linux/event_loop_wait.h"

#include <QCoreApplication>
#include <utility>

namespace brimwatch {

EventLoopWait::EventLoopWait(std::function<void()> cancelled) : cancelled_(std::move(cancelled)) {
    resumption_.setSingleShot(true);
    QObject::connect(&resumption_, &QTimer::timeout, &context_, [this] { resume(); });
    const QCoreApplication* application = QCoreApplication::instance();
    QObject::connect(application, &QCoreApplication::aboutToQuit, &context_, [this] { cancel(); });
    // Without an event loop that quits.
    QObject::connect(application, &QObject::destroyed, &context_, [this] { cancel(); });
}

void EventLoopWait::end() {
    hasEnded_ = true;
    resumption_.start();
}

void EventLoopWait::cancel() {
    if (!std::exchange(hasEnded_, true)) cancelled_();
    resume();
}

void EventLoopWait::resume() {
    if (waiting_) std::exchange(waiting_, nullptr).resume();
}

}  // namespace brimwatch
