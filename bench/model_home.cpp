#include "bench/model_home.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <utility>

#include "support/paths.h"

namespace brimwatch::bench {
namespace {

constexpr int sampleCount = 300;
constexpr double secondsBetween = 288;

const std::string program = "/opt/tools/bin/brimwatch";

// Rises from sample to sample; the last one stands an hour before the start.
RecentUsageSamples samplesOfADay() {
    RecentUsageSamples samples;
    for (int index = 0; index < sampleCount; ++index) {
        RecentUsageSample sample;
        sample.updatedAt = instantFromUnixSeconds(unixSeconds(ModelHome::start) -
                                                  secondsBetween * (sampleCount - 1 - index));
        sample.fiveHour = UsageWindow{index / 20.0, ModelHome::start + std::chrono::hours(2)};
        sample.sevenDay = UsageWindow{index / 20.0, ModelHome::start + std::chrono::hours(100)};
        sample.planTier = "Max 20배";
        samples.push_back(sample);
    }
    return samples;
}

}  // namespace

ModelHome::ModelHome(std::int64_t accountCount, Histories histories)
    : home_((std::filesystem::temp_directory_path() / "brimwatch-XXXXXX").string()),
      commandEnvironment_{.executable = program,
                          .installedCandidates = {},
                          .rejectDevelopmentLocations = true,
                          .isExecutable = [](const std::string& path) { return path == program; }} {
    if (::mkdtemp(home_.data()) == nullptr) std::abort();
    for (std::int64_t index = 0; index < accountCount; ++index)
        makeAccount(std::to_string(index));
    writeFigures();
    if (histories == Histories::fullDay) storeHistories();
    model_ = std::make_unique<HelperModel>(
        HelperModel::Surroundings{.defaults = defaults_,
                                  .files = disk_,
                                  .home = home_,
                                  .commandEnvironment = commandEnvironment_,
                                  .codexEnvironment = Environment(environment_.data()),
                                  .locale = "ko_KR",
                                  .now = [this] { return time_.now(); },
                                  .sleep = time_.sleeper(),
                                  .pause = [](std::chrono::milliseconds) {},
                                  .readCodex = {},
                                  .findCodex = [] { return std::nullopt; },
                                  .systemServices = std::nullopt});
    if (model_->limits().size() != keys_.size()) std::abort();
}

ModelHome::~ModelHome() {
    model_.reset();
    std::filesystem::remove_all(home_);
}

void ModelHome::makeAccount(const std::string& name) {
    const std::string folder = joinPath(home_, ".claude-" + name);
    std::filesystem::create_directories(folder);
    std::ofstream(joinPath(folder, ".claude.json"))
        << R"({"oauthAccount":{"organizationRateLimitTier":"default_claude_max_20x"}})";
    const auto connected = ClaudeCodeSetup::connect(disk_, folder, name, commandEnvironment_,
                                                    [](std::chrono::milliseconds) {});
    if (!connected) std::abort();
    keys_.push_back(name);
    files_.push_back(joinPath(limitsFolder(home_), "claude-" + name + ".json"));
}

void ModelHome::writeFigures() {
    const std::int64_t now = wholeUnixSeconds(time_.now());
    for (const std::string& key : keys_) {
        const auto written = LimitsFile::write(
            disk_, {.provider = "claude",
                    .account = key,
                    .windows = {{"five_hour", {used_, wholeUnixSeconds(start) + 7200}},
                                {"seven_day", {used_, wholeUnixSeconds(start) + 360'000}}},
                    .planTier = std::nullopt,
                    .minimumIntervalSeconds = 0,
                    .mergingExisting = false,
                    .now = instantFromUnixSeconds(static_cast<double>(now)),
                    .folder = limitsFolder(home_)});
        if (!written) std::abort();
    }
}

void ModelHome::storeHistories() {
    RecentUsageHistory history;
    for (const std::string& key : keys_)
        history.accounts["claude-" + key] = samplesOfADay();
    defaults_.setJson(settings_key::recentUsageHistory, history.toJson());
}

void ModelHome::raiseFigures() {
    time_.advance(std::chrono::seconds(1));
    used_ += 0.001;
    writeFigures();
}

}  // namespace brimwatch::bench
