// Letting time pass in a coroutine.
#pragma once

#include <QCoroTask>
#include <chrono>
#include <functional>

namespace brimwatch {

enum class SleepEnd {
    elapsed,
    cancelled,  // the program ends
};

// The time that the machine sleeps counts. A time of zero ends at the next turn of the event loop.
using Sleep = std::function<QCoro::Task<SleepEnd>(std::chrono::milliseconds)>;

}  // namespace brimwatch
