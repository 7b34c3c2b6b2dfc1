// The pulse of the rocket: ten calls a second while it runs. Main thread.
#pragma once

#include <QTimer>
#include <functional>

namespace brimwatch {

class FrameTimer {
  public:
    FrameTimer() = default;
    FrameTimer(const FrameTimer&) = delete;
    FrameTimer& operator=(const FrameTimer&) = delete;
    virtual ~FrameTimer() = default;  // stops it

    virtual void start(std::function<void()> tick) = 0;
    virtual void stop() = 0;
    virtual bool isRunning() const = 0;
};

// On the event loop, with a tolerance that lets the system join wake-ups.
class EventLoopFrameTimer final : public FrameTimer {
  public:
    EventLoopFrameTimer();

    void start(std::function<void()> tick) override;
    void stop() override { timer_.stop(); }
    bool isRunning() const override { return timer_.isActive(); }

  private:
    std::function<void()> tick_;
    QTimer timer_;
};

}  // namespace brimwatch
