// Time that passes when a test says so: a wall clock, which can be set, and the sleeps of
// coroutines, which go by the time that has passed.
#pragma once

#include <chrono>
#include <coroutine>
#include <cstdint>
#include <list>

#include "platform/sleep.h"
#include "support/instant.h"

namespace brimwatch::test {

class VirtualTime {
  public:
    using Milliseconds = std::chrono::milliseconds;

    explicit VirtualTime(Instant now) : now_(now) {}
    VirtualTime(const VirtualTime&) = delete;
    VirtualTime& operator=(const VirtualTime&) = delete;
    ~VirtualTime() { cancelSleeps(); }

    Instant now() const { return now_; }
    void setWallClock(Instant now) { now_ = now; }

    QCoro::Task<SleepEnd> sleep(Milliseconds duration);
    // What is in force until the end of the sleep.
    Sleep sleeper() {
        return [this](Milliseconds duration) { return sleep(duration); };
    }

    // Lets time pass; who wakes up in it runs at his moment.
    void advance(Milliseconds duration);
    // Lets everything run that waits for no time to pass.
    void settle() { advance(Milliseconds(0)); }
    // Lets the next of them run, and tells whether there was one.
    bool wakeNext();
    // Wakes all sleepers as the end of the program does.
    void cancelSleeps();

    std::size_t sleeperCount() const { return sleepers_.size(); }
    // How often somebody was woken.
    std::uint64_t wakeUpCount() const { return wakeUpCount_; }

  private:
    struct Sleeper {
        Milliseconds deadline{};
        std::coroutine_handle<> waiting;
        SleepEnd end = SleepEnd::elapsed;
    };

    void wake(std::list<Sleeper*>::iterator sleeper, SleepEnd end);
    void letPass(Milliseconds duration);

    Instant now_;
    Milliseconds elapsed_{};
    std::list<Sleeper*> sleepers_;  // in the order of their deadlines
    std::uint64_t wakeUpCount_ = 0;
};

}  // namespace brimwatch::test
