// One run of a program, measured as the one who starts it sees it: from before the start until it
// has ended.
//
// A child starts out in the memory of its parent, and the peak that the system tells of it includes
// that: a peak not above that of this process is only a bound. Therefore it is kept small, linked
// statically and without iostream. Main thread only.
#pragma once

#include <string>
#include <vector>

namespace brimwatch::bench {

struct ProcessRun {
    std::vector<std::string> arguments;    // the program's absolute path first
    std::vector<std::string> environment;  // "NAME=value"; the whole of it
    std::string inputPath;                 // standard input; both outputs go to the null device
};

struct Measurement {
    double milliseconds = 0;  // of the monotonic clock
    double peakKibibytes = 0;
    double pageFaults = 0;  // those that needed no disk
};

// Throws std::runtime_error unless the program ends by itself with status 0.
Measurement measure(const ProcessRun& run);

// The peak memory of this process so far.
double ownPeakKibibytes();

}  // namespace brimwatch::bench
