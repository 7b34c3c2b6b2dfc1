// The broadcast by which a status line run tells that it has written a limits file.
//
// It may be lost, or come more than once. Where it can't be had, nothing comes. Main thread.
#pragma once

#include <functional>

namespace brimwatch {

class LimitsChangedBroadcast {
  public:
    LimitsChangedBroadcast() = default;
    LimitsChangedBroadcast(const LimitsChangedBroadcast&) = delete;
    LimitsChangedBroadcast& operator=(const LimitsChangedBroadcast&) = delete;
    virtual ~LimitsChangedBroadcast() = default;  // ends the listening

    // Begins to listen, for whoever asked last.
    virtual void listen(std::function<void()> received) = 0;
};

}  // namespace brimwatch
