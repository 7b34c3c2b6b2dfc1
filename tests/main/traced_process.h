// What a run asks of the system, told by ptrace(2).
#pragma once

#include <string>
#include <vector>

#include "harness/process.h"

namespace brimwatch::test {

struct TracedRun {
    bool traced = false;             // false where the place allows no tracing
    std::vector<long> systemCalls;   // numbers, from the first one behind exec
    long peakResidentKilobytes = 0;  // of the program alone, as it exits
};

TracedRun traceProcess(const ProcessRequest& request);

}  // namespace brimwatch::test
