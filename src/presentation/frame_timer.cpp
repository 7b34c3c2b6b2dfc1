#include "presentation/frame_timer.h"

#include <chrono>
#include <utility>

namespace brimwatch {

EventLoopFrameTimer::EventLoopFrameTimer() {
    timer_.setInterval(std::chrono::milliseconds(100));
    timer_.setTimerType(Qt::CoarseTimer);  // five milliseconds to either side
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { tick_(); });
}

void EventLoopFrameTimer::start(std::function<void()> tick) {
    tick_ = std::move(tick);
    timer_.start();
}

}  // namespace brimwatch
