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

ModelHome::ModelHome(std::int64_t accountCount, Histories histories) {
    makeHome();
    for (std::int64_t index = 0; index < accountCount; ++index)
        makeAccount(std::to_string(index));
    writeFigures();
    if (histories == Histories::fullDay) storeHistories();
    startModel(disk_, Services::absent);
    if (model_->limits().size() != keys_.size()) std::abort();
}

ModelHome::ModelHome(std::int64_t claudeCount, std::int64_t codexCount, FileSystem& files,
                     const MakeStore& makeStore) {
    makeHome();
    defaults_ = makeStore(home_);
    for (std::int64_t index = 0; index < claudeCount; ++index)
        makeAccount(std::to_string(index));
    for (std::int64_t index = 1; index < codexCount; ++index) {
        const std::string folder = joinPath(home_, ".codex-" + std::to_string(index));
        std::filesystem::create_directories(folder);
        std::ofstream(joinPath(folder, "auth.json")) << "{}";
    }
    if (codexCount == 0) defaults_->setBoolean(settings_key::codexEnabled, false);
    writeFigures();
    startModel(files, Services::present);
}

void ModelHome::makeHome() {
    home_ = (std::filesystem::temp_directory_path() / "brimwatch-XXXXXX").string();
    if (::mkdtemp(home_.data()) == nullptr) std::abort();
}

void ModelHome::startModel(FileSystem& files, Services services) {
    HelperModel::Surroundings surroundings{
        .defaults = *defaults_,
        .files = files,
        .home = home_,
        .commandEnvironment = commandEnvironment_,
        .codexEnvironment = Environment(environment_.data()),
        .locale = "ko_KR",
        .now = [this] { return time_.now(); },
        .sleep = time_.sleeper(),
        .pause = [](std::chrono::milliseconds) {},
        .readCodex = [this](const std::string&, const CodexAccounts::Account&) { return answer(); },
        .findCodex = [] { return std::optional<std::string>("/usr/bin/codex"); },
        .systemServices = std::nullopt};
    if (services == Services::present) {
        surroundings.systemServices.emplace(
            HelperModel::SystemServices{doors_, doors_, doors_, doors_});
    }
    model_ = std::make_unique<HelperModel>(std::move(surroundings));
    time_.settle();
}

QCoro::Task<CodexReadResult> ModelHome::answer() {
    CodexPoller::Reading reading;
    reading.windows = figures();
    reading.planType = "plus";
    co_return CodexReadResult(reading);
}

LimitsFile::Windows ModelHome::figures() const {
    return {{"five_hour", {used_, wholeUnixSeconds(start) + 5 * 86400}},
            {"seven_day", {used_, wholeUnixSeconds(start) + 6 * 86400}}};
}

void ModelHome::advance(std::chrono::seconds duration) {
    if (std::exchange(isReported_, false)) doors_.changed();
    time_.advance(duration);
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
        const auto written =
            LimitsFile::write(disk_, {.provider = "claude",
                                      .account = key,
                                      .windows = figures(),
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
    defaults_->setJson(settings_key::recentUsageHistory, history.toJson());
}

void ModelHome::raiseFigures() {
    time_.advance(std::chrono::seconds(1));
    used_ += 0.001;
    writeFigures();
    isReported_ = true;
}

}  // namespace brimwatch::bench
