// What one run of the status line costs, as a table in Markdown: `status_line_bench [RUNS]`.
//
// The programs are run in turn, each once a round in an order drawn anew for each round, so that
// whatever else the machine does falls on all of them alike. Ratios of their medians are what
// counts; the times themselves belong to the machine.

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "bench/file_bytes.h"
#include "bench/process_run.h"
#include "bench/status_line_stage.h"

namespace brimwatch::bench {
namespace {

constexpr int defaultRuns = 500;
constexpr int warmUpRounds = 5;
// Figures that are written again are no longer unchanged; that happens when they are 300 s old.
constexpr int roundsBetweenRenewals = 50;

constexpr const char* document =
    BRIMWATCH_TEST_DATA "/claude-2.1.329-after-response-with-rate-limits.json";
constexpr const char* shellScript = BRIMWATCH_BENCH_FOLDER "/status_line.sh";
constexpr const char* nodeScript = BRIMWATCH_BENCH_FOLDER "/status_line.js";
constexpr const char* chainedCommand = "cat";
constexpr const char* steadyHome = "steady-home";
constexpr const char* movingHome = "moving-home";

enum class Figures { unchanged, changed };

struct Program {
    std::string name;
    StatusLineStage& stage;
    ProcessRun run;
    Figures figures = Figures::unchanged;
    std::vector<Measurement> measurements = {};

    // By rank: 0.5 gives the median.
    double quantile(double Measurement::*quantity, double rank) const {
        std::vector<double> values;
        for (const Measurement& measurement : measurements)
            values.push_back(measurement.*quantity);
        const auto index = std::lround(rank * static_cast<double>(values.size() - 1));
        std::nth_element(values.begin(), values.begin() + index, values.end());
        return values[static_cast<std::size_t>(index)];
    }
    double medianMilliseconds() const { return quantile(&Measurement::milliseconds, 0.5); }
};

class StatusLineBench {
  public:
    void measure(int runs) {
        std::vector<Program*> order = programs();
        std::mt19937 random(1);
        for (int round = -warmUpRounds; round < runs; ++round) {
            if (round % roundsBetweenRenewals == 0 || round == -warmUpRounds) renewFigures();
            std::shuffle(order.begin(), order.end(), random);
            for (Program* program : order) {
                const Measurement measurement = measureOnce(*program, program->run);
                if (round >= 0) program->measurements.push_back(measurement);
            }
        }
    }

    void printTimes() {
        std::printf(
            "| Program | median ms | 10th to 90th percentile | ratio | peak KiB | page faults |\n"
            "|---|---:|---:|---:|---:|---:|\n");
        for (const Program* program : programs())
            printRow(*program);
        std::printf(
            "\n%zu runs each. Ratio: of the medians to /bin/true. Peak: the largest seen.\n",
            anchor_.measurements.size());
    }

    void printGoals() const {
        std::printf("\n| Goal | limit | measured | |\n|---|---:|---:|---|\n");
        printGoal("brimwatch, figures unchanged, ratio to /bin/true", Bound::atMost, 1.1,
                  ratio(unchanged_, anchor_));
        for (const Program* changed : {&changedInMemory_, &changedOnDisk_}) {
            printGoal((changed->name + ", ratio to /bin/true").c_str(), Bound::atMost, 1.6,
                      ratio(*changed, anchor_));
        }
        printGoal("bash and jq, ratio to brimwatch, figures unchanged", Bound::atLeast, 20,
                  ratio(shellAndJq_, unchanged_));
        printGoal("Node, ratio to brimwatch, figures unchanged", Bound::atLeast, 80,
                  ratio(node_, unchanged_));
        printGoal("peak memory, figures changed, KiB", Bound::atMost, 2048,
                  changedOnDisk_.quantile(&Measurement::peakKibibytes, 1));
        const double chaining = chained_.medianMilliseconds() - unchanged_.medianMilliseconds();
        printGoal("chaining beyond the time of the command alone, ms", Bound::atMost, 0.3,
                  chaining - shell_.medianMilliseconds());
        std::printf("\nChaining makes a run %.3f ms longer; the command alone takes %.3f ms.\n",
                    chaining, shell_.medianMilliseconds());
    }

    void printInstructions() {
        std::printf("\n| Program | instructions (callgrind) |\n|---|---:|\n");
        renewFigures();
        for (const Program* program : {&anchor_, &unchanged_, &changedOnDisk_}) {
            std::printf("| %s | %s |\n", program->name.c_str(),
                        countInstructions(*program).c_str());
        }
    }

  private:
    enum class Bound { atMost, atLeast };

    std::vector<Program*> programs() {
        return {&anchor_,     &unchanged_, &changedInMemory_, &changedOnDisk_,
                &shellAndJq_, &node_,      &shell_,           &chained_};
    }

    Program steady(std::string name, std::vector<std::string> arguments,
                   std::vector<std::string> environment) {
        return {.name = std::move(name),
                .stage = onDisk_,
                .run = {.arguments = std::move(arguments),
                        .environment = std::move(environment),
                        .inputPath = onDisk_.steadyDocument()}};
    }

    Program changing(std::string name, StatusLineStage& stage) const {
        return {.name = std::move(name),
                .stage = stage,
                .run = {.arguments = command_,
                        .environment = stage.environment(movingHome),
                        .inputPath = stage.movingDocument()},
                .figures = Figures::changed};
    }

    std::vector<std::string> chainingEnvironment() const {
        std::vector<std::string> environment = steadyEnvironment_;
        environment.push_back(std::string("BRIMWATCH_NEXT_STATUSLINE=") + chainedCommand);
        return environment;
    }

    void renewFigures() const {
        onDisk_.forgetFigures(steadyHome);
        bench::measure(unchanged_.run);
        if (onDisk_.takeDatagrams() != 1) throw std::runtime_error("no figures were written");
    }

    // Each run has to have done what it is measured for: the application hears of changed figures,
    // and of nothing else.
    static Measurement measureOnce(const Program& program, const ProcessRun& run) {
        if (program.figures == Figures::changed) program.stage.moveFigures();
        const Measurement measurement = bench::measure(run);
        const int expected = program.figures == Figures::changed ? 1 : 0;
        if (program.stage.takeDatagrams() != expected) {
            throw std::runtime_error("not the run that was meant: " + program.name);
        }
        return measurement;
    }

    static std::string countInstructions(const Program& program) {
        constexpr std::string_view key = "\ntotals: ";
        const std::string path = program.stage.file("callgrind.out");
        ProcessRun run = program.run;
        run.arguments.insert(run.arguments.begin(), {"/usr/bin/valgrind", "--tool=callgrind",
                                                     "--callgrind-out-file=" + path});
        measureOnce(program, run);
        const std::string counts = readFile(path);
        const std::size_t found = counts.find(key);
        if (found == std::string::npos) throw std::runtime_error("no totals by callgrind");
        const std::size_t start = found + key.size();
        return counts.substr(start, counts.find('\n', start) - start);
    }

    static double ratio(const Program& program, const Program& base) {
        return program.medianMilliseconds() / base.medianMilliseconds();
    }

    void printRow(const Program& program) const {
        const double peak = program.quantile(&Measurement::peakKibibytes, 1);
        std::printf("| %s | %.3f | %.3f to %.3f | %.2f | %s%.0f | %.0f |\n", program.name.c_str(),
                    program.medianMilliseconds(), program.quantile(&Measurement::milliseconds, 0.1),
                    program.quantile(&Measurement::milliseconds, 0.9), ratio(program, anchor_),
                    peak <= ownPeakKibibytes() ? "at most " : "", peak,
                    program.quantile(&Measurement::pageFaults, 0.5));
    }

    static void printGoal(const char* goal, Bound bound, double limit, double measured) {
        const bool isReached = bound == Bound::atMost ? measured <= limit : measured >= limit;
        std::printf("| %s | %s %g | %.4g | %s |\n", goal,
                    bound == Bound::atMost ? "at most" : "at least", limit, measured,
                    isReached ? "reached" : "missed");
    }

    StatusLineStage onDisk_{readFile(document), std::filesystem::temp_directory_path()};
    StatusLineStage inMemory_{readFile(document), "/dev/shm"};
    std::vector<std::string> command_ = {onDisk_.install(BRIMWATCH_COMMAND), "--statusline"};
    std::vector<std::string> steadyEnvironment_ = onDisk_.environment(steadyHome);

    Program anchor_ = steady("/bin/true", {"/bin/true"}, steadyEnvironment_);
    Program unchanged_ = steady("brimwatch, figures unchanged", command_, steadyEnvironment_);
    Program changedInMemory_ = changing("brimwatch, figures changed, home in memory", inMemory_);
    Program changedOnDisk_ = changing("brimwatch, figures changed, home on disk", onDisk_);
    Program shellAndJq_ = steady("bash and jq", {"/bin/bash", shellScript}, steadyEnvironment_);
    Program node_ = steady("Node", {"/usr/bin/node", nodeScript}, steadyEnvironment_);
    Program shell_ = steady(std::string("sh -c ") + chainedCommand,
                            {"/bin/sh", "-c", chainedCommand}, steadyEnvironment_);
    Program chained_ = steady(std::string("brimwatch, chaining ") + chainedCommand, command_,
                              chainingEnvironment());
};

int runsFrom(std::string_view argument) {
    int runs = 0;
    const char* end = argument.data() + argument.size();
    const auto [stop, error] = std::from_chars(argument.data(), end, runs);
    if (error != std::errc() || stop != end || runs < 1) {
        throw std::runtime_error("usage: status_line_bench [RUNS]");
    }
    return runs;
}

int run(const char* argument) {
    try {
        const int runs = argument != nullptr ? runsFrom(argument) : defaultRuns;
        StatusLineBench bench;
        bench.measure(runs);
        bench.printTimes();
        bench.printGoals();
        bench.printInstructions();
        return EXIT_SUCCESS;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "status_line_bench: %s\n", failure.what());
        return EXIT_FAILURE;
    }
}

}  // namespace
}  // namespace brimwatch::bench

int main(int /*count*/, char** arguments) {
    return brimwatch::bench::run(arguments[1]);
}
