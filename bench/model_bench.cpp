// What a reload costs beside reading and parsing the same files, which any reader has to do.
//
// Each pair is measured in one run; the table of ratios comes last.

#include <benchmark/benchmark.h>

#include <cstdlib>

#include "bench/model_home.h"
#include "bench/shortest_times.h"
#include "support/json_reader.h"

namespace brimwatch::bench {
namespace {

void readAndParse(benchmark::State& state) {
    ModelHome home(state.range(0), Histories::none);
    for ([[maybe_unused]] const auto round : state) {
        for (const std::string& path : home.files()) {
            const auto bytes = home.disk().read(path, limitsFileSizeLimit);
            const auto value = parseJson(bytes.value());
            if (!value) std::abort();
            benchmark::DoNotOptimize(value);
        }
    }
}

void reload(benchmark::State& state, Histories histories) {
    ModelHome home(state.range(0), histories);
    for ([[maybe_unused]] const auto round : state)
        home.model().reload();
}

void reloadRaisedFigures(benchmark::State& state, Histories histories) {
    ModelHome home(state.range(0), histories);
    for ([[maybe_unused]] const auto round : state) {
        state.PauseTiming();
        home.raiseFigures();
        state.ResumeTiming();
        home.model().reload();
    }
}

void refresh(benchmark::State& state) {
    ModelHome home(state.range(0), Histories::fullDay);
    for ([[maybe_unused]] const auto round : state)
        home.model().refresh();
}

void registerBenchmarks() {
    const auto add = [](const char* name, auto&&... arguments) {
        return benchmark::RegisterBenchmark(name, arguments...)->Repetitions(5);
    };
    add("read and parse", readAndParse)->Arg(10)->Arg(100)->Arg(1000);
    add("reload", reload, Histories::fullDay)->Arg(10)->Arg(100)->Arg(1000);
    add("reload, no history", reload, Histories::none)->Arg(10)->Arg(1000);
    add("reload, all figures new", reloadRaisedFigures, Histories::fullDay)->Arg(10);
    add("refresh", refresh)->Arg(10)->Arg(1000);
}

}  // namespace
}  // namespace brimwatch::bench

int main(int count, char** arguments) {
    benchmark::Initialize(&count, arguments);
    brimwatch::bench::registerBenchmarks();
    brimwatch::bench::ShortestTimes times;
    benchmark::RunSpecifiedBenchmarks(&times);
    std::printf("\n");
    times.printRatio("reload/10", "read and parse/10", "goal: at most 3");
    times.printRatio("reload/100", "reload/10", "goal: about 10, the accounts' ratio");
    times.printRatio("reload/1000", "reload/10", "goal: about 100, the accounts' ratio");
    times.printRatio("read and parse/1000", "read and parse/10", "the same of the anchor");
    times.printRatio("reload/1000", "read and parse/1000", "goal: at most 3");
    times.printRatio("reload, no history/10", "read and parse/10", "");
    times.printRatio("reload, all figures new/10", "read and parse/10", "stores ten histories");
    times.printRatio("refresh/10", "read and parse/10", "looks at every account folder");
    return 0;
}
