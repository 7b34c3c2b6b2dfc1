// Calls that a signal may interrupt.
#pragma once

#include <cerrno>

namespace brimwatch {

// Repeats a call of the system for as long as it fails with EINTR.
template <class Call>
auto retryOnInterrupt(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

}  // namespace brimwatch
