#include "presentation/frame_timer.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEvent>
#include <string>

#include "harness/process.h"

namespace brimwatch {
namespace {

// The timer that fired last.
class FiredTimer final : public QObject {
  public:
    bool eventFilter(QObject* watched, QEvent* event) override {
        const auto* timer = qobject_cast<QTimer*>(watched);
        if (timer == nullptr || event->type() != QEvent::Timer) return false;
        interval = timer->interval();
        type = timer->timerType();
        return false;
    }

    int interval = 0;
    Qt::TimerType type = Qt::PreciseTimer;
};

TEST(EventLoopFrameTimer, TicksTenTimesASecondWithATolerance) {
    int argumentCount = 1;
    std::string name = "presentation_test";
    char* arguments[] = {name.data(), nullptr};
    QCoreApplication application(argumentCount, arguments);
    FiredTimer fired;
    application.installEventFilter(&fired);
    EventLoopFrameTimer timer;
    int ticks = 0;
    EXPECT_FALSE(timer.isRunning());
    timer.start([&ticks] { ++ticks; });
    EXPECT_TRUE(timer.isRunning());
    EXPECT_TRUE(test::eventually([&ticks] {
        QCoreApplication::processEvents();
        return ticks >= 2;
    }));
    EXPECT_EQ(fired.interval, 100);
    EXPECT_EQ(fired.type, Qt::CoarseTimer);
    timer.stop();
    EXPECT_FALSE(timer.isRunning());
}

}  // namespace
}  // namespace brimwatch
