// A part of a test that runs in a process of its own and is killed in front of one of its calls
// that change files: what a power cut leaves, apart from what had not reached the disk.
#pragma once

#include <cstddef>
#include <functional>
#include <vector>

namespace brimwatch::test {

struct KilledRun {
    bool isTraced = false;      // false where the place allows no tracing
    bool isKilled = false;      // false if it ended before
    int exitStatus = -1;        // of one that ended
    std::vector<long> changes;  // the numbers of its calls that change files or wait for the disk
};

// Lets the action run until it is about to make its change with that number, counted from 0. The
// process leaves with what the action gives.
KilledRun runUntilChange(std::size_t change, const std::function<int()>& action);

}  // namespace brimwatch::test
