// Sleeping on the clock that counts on while the machine sleeps.
#pragma once

#include <QCoroTask>
#include <chrono>

#include "platform/sleep.h"

namespace brimwatch {

// Sleeps in the event loop, from the call on; a time of zero or less is over at the next turn of
// the loop. Cancelled when the application quits or goes away, and at once where there is none.
// With no descriptor to be had, the time that the machine sleeps does not count. A task that is
// dropped runs on to its end. Main thread.
QCoro::Task<SleepEnd> sleepFor(std::chrono::milliseconds time);

}  // namespace brimwatch
