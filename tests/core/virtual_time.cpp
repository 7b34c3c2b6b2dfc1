#include "virtual_time.h"

#include <algorithm>

namespace brimwatch::test {

QCoro::Task<SleepEnd> VirtualTime::sleep(Milliseconds duration) {
    struct Enlist {
        bool await_ready() const { return false; }
        void await_suspend(std::coroutine_handle<> waiting) const {
            sleeper->waiting = waiting;
            const auto later = std::find_if(
                time->sleepers_.begin(), time->sleepers_.end(),
                [&](const Sleeper* other) { return other->deadline > sleeper->deadline; });
            time->sleepers_.insert(later, sleeper);
        }
        SleepEnd await_resume() const { return sleeper->end; }

        VirtualTime* time;
        Sleeper* sleeper;
    };
    Sleeper sleeper;
    sleeper.deadline = elapsed_ + duration;
    const Enlist enlist{this, &sleeper};
    const SleepEnd end = co_await enlist;
    co_return end;
}

void VirtualTime::advance(Milliseconds duration) {
    const Milliseconds end = elapsed_ + duration;
    while (!sleepers_.empty() && sleepers_.front()->deadline <= end) {
        letPass(sleepers_.front()->deadline - elapsed_);
        wake(sleepers_.begin(), SleepEnd::elapsed);
    }
    letPass(end - elapsed_);
}

bool VirtualTime::wakeNext() {
    if (sleepers_.empty() || sleepers_.front()->deadline > elapsed_) return false;
    wake(sleepers_.begin(), SleepEnd::elapsed);
    return true;
}

void VirtualTime::cancelSleeps() {
    while (!sleepers_.empty())
        wake(sleepers_.begin(), SleepEnd::cancelled);
}

void VirtualTime::wake(std::list<Sleeper*>::iterator sleeper, SleepEnd end) {
    Sleeper* woken = *sleeper;
    sleepers_.erase(sleeper);
    woken->end = end;
    ++wakeUpCount_;
    woken->waiting.resume();
}

void VirtualTime::letPass(Milliseconds duration) {
    elapsed_ += duration;
    now_ += duration;
}

}  // namespace brimwatch::test
