// A reporter of Google Benchmark that can set the times of one run against each other.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <tuple>
#include <vector>

namespace brimwatch::bench {

// Prints what every reporter does, and keeps the shortest time of each benchmark.
class ShortestTimes : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Aggregate) continue;
            const auto [entry, isNew] = times_.try_emplace(nameOf(run), run.GetAdjustedCPUTime());
            if (!isNew) entry->second = std::min(entry->second, run.GetAdjustedCPUTime());
        }
    }

    // Nothing to say where a filter left one of the two out.
    void printRatio(const char* name, const char* anchor, const char* remark) const {
        if (times_.count(name) == 0 || times_.count(anchor) == 0) return;
        std::printf("%-30s %6.2f times %-24s (%s)\n", name, times_.at(name) / times_.at(anchor),
                    anchor, remark);
    }

  private:
    static std::string nameOf(const Run& run) {
        const auto& [function, arguments] = std::tie(run.run_name.function_name, run.run_name.args);
        return arguments.empty() ? function : function + '/' + arguments;
    }

    std::map<std::string, double> times_;
};

}  // namespace brimwatch::bench
