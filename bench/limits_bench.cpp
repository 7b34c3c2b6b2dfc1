// What the limits cost beside the least that any reader of the same things would pay.
//
// Each pair is measured in one run; the table of ratios comes last.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "bench/shortest_times.h"
#include "limits/limits_memory.h"
#include "limits/recent_usage_result.h"
#include "limits/recent_usage_samples.h"
#include "platform/posix/posix_file_system.h"
#include "support/json_reader.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

constexpr double nowSeconds = 1'790'000'000;
constexpr Instant now = instantFromUnixSeconds(nowSeconds);
constexpr int sampleCount = 300;

// An account whose figures rise from sample to sample, the last one taken just now.
SubscriptionLimits accountWithSamples(double secondsBetween) {
    SubscriptionLimits limits;
    limits.account = "work";
    limits.planTier = "Max 20배";
    RecentUsageSamples samples;
    for (int index = 0; index < sampleCount; ++index) {
        RecentUsageSample sample;
        sample.updatedAt =
            instantFromUnixSeconds(nowSeconds - secondsBetween * (sampleCount - 1 - index));
        sample.fiveHour = UsageWindow{index / 4.0, instantFromUnixSeconds(nowSeconds + 7200)};
        sample.sevenDay = UsageWindow{index / 8.0, instantFromUnixSeconds(nowSeconds + 90'000)};
        sample.planTier = limits.planTier;
        samples.push_back(sample);
    }
    limits.fiveHour = samples.back().fiveHour;
    limits.sevenDay = samples.back().sevenDay;
    limits.updatedAt = now;
    limits.recentUsageHistory = samples;
    return limits;
}

// A sample every 288 seconds spans the whole day. At one every 73 seconds all stand within the
// longest period, which no recording brings about: the worst that a foreign history could do.
constexpr double secondsBetweenOverADay = 288;
constexpr double secondsBetweenOverSixHours = 73;

// Looks at both figures of each sample, and at nothing else.
void passOverSamples(benchmark::State& state) {
    const SubscriptionLimits limits = accountWithSamples(secondsBetweenOverADay);
    for ([[maybe_unused]] const auto round : state) {
        double sum = 0;
        for (const RecentUsageSample& sample : *limits.recentUsageHistory) {
            if (sample.fiveHour) sum += sample.fiveHour->usedPercentage;
            if (sample.sevenDay) sum += sample.sevenDay->usedPercentage;
        }
        benchmark::DoNotOptimize(sum);
    }
}

void deriveUsage(benchmark::State& state, double secondsBetween) {
    const SubscriptionLimits limits = accountWithSamples(secondsBetween);
    for ([[maybe_unused]] const auto round : state) {
        const auto result = RecentUsageResult::derive(limits, RecentUsagePeriod::sixHours, now);
        if (result.status != RecentUsageResult::Status::available) std::abort();
        benchmark::DoNotOptimize(result);
    }
}

// A folder of limits files, removed at the end.
class LimitsFolder {
  public:
    explicit LimitsFolder(std::int64_t accountCount) {
        if (::mkdtemp(path_.data()) == nullptr) std::abort();
        for (std::int64_t index = 0; index < accountCount; ++index) {
            const std::string account = std::to_string(index);
            const auto written =
                LimitsFile::write(files, {.provider = "claude",
                                          .account = account,
                                          .windows = {{"five_hour", {41.3, 1'790'007'200}},
                                                      {"seven_day", {62.5, 1'790'090'000}}},
                                          .planTier = std::nullopt,
                                          .now = now,
                                          .folder = path_});
            if (!written) std::abort();
            wanted.insert("claude-" + account);
            names.push_back("claude-" + account + ".json");
        }
    }
    LimitsFolder(const LimitsFolder&) = delete;
    LimitsFolder& operator=(const LimitsFolder&) = delete;
    ~LimitsFolder() { std::filesystem::remove_all(path_); }

    const std::string& path() const { return path_; }

    PosixFileSystem files;
    SubscriptionIds wanted;
    std::vector<std::string> names;

  private:
    std::string path_ = (std::filesystem::temp_directory_path() / "brimwatch-XXXXXX").string();
};

void readAndParseFiles(benchmark::State& state) {
    LimitsFolder folder(state.range(0));
    for ([[maybe_unused]] const auto round : state) {
        for (const std::string& name : folder.names) {
            const auto bytes =
                folder.files.read(joinPath(folder.path(), name), limitsFileSizeLimit);
            const auto value = parseJson(bytes.value());
            if (!value) std::abort();
            benchmark::DoNotOptimize(value);
        }
    }
}

void loadFolder(benchmark::State& state) {
    LimitsFolder folder(state.range(0));
    LimitsMemory memory;
    for ([[maybe_unused]] const auto round : state) {
        const auto records = memory.load(folder.files, folder.path(), folder.wanted, now);
        if (records.size() != folder.names.size()) std::abort();
        benchmark::DoNotOptimize(records);
    }
}

void registerBenchmarks() {
    const auto add = [](const char* name, auto&&... arguments) {
        return benchmark::RegisterBenchmark(name, arguments...)->Repetitions(5);
    };
    add("pass over 300 samples", passOverSamples);
    add("derive, samples of a day", deriveUsage, secondsBetweenOverADay);
    add("derive, samples of six hours", deriveUsage, secondsBetweenOverSixHours);
    add("read and parse", readAndParseFiles)->Arg(100)->Arg(1000);
    add("load", loadFolder)->Arg(100)->Arg(1000);
}

}  // namespace
}  // namespace brimwatch

int main(int count, char** arguments) {
    benchmark::Initialize(&count, arguments);
    brimwatch::registerBenchmarks();
    brimwatch::bench::ShortestTimes times;
    benchmark::RunSpecifiedBenchmarks(&times);
    std::printf("\n");
    times.printRatio("derive, samples of a day", "pass over 300 samples", "goal: at most 4");
    times.printRatio("derive, samples of six hours", "pass over 300 samples",
                     "four times denser than samples are recorded");
    times.printRatio("load/100", "read and parse/100", "goal: at most 3");
    times.printRatio("load/1000", "read and parse/1000", "goal: at most 3");
    times.printRatio("load/1000", "load/100", "goal: about 10, the accounts' ratio");
    return 0;
}
