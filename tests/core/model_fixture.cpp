#include "model_fixture.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <iterator>
#include <utility>

namespace brimwatch::test {
namespace {

struct NamedSignal {
    void (HelperModel::*signal)();
    const char* name;
};

// By the field that changed.
constexpr std::array allSignals = {
    NamedSignal{&HelperModel::limitsChanged, "limits"},
    NamedSignal{&HelperModel::accountsChanged, "accounts"},
    NamedSignal{&HelperModel::codexAccountsChanged, "codexAccounts"},
    NamedSignal{&HelperModel::claudeManualDirectoriesChanged, "claudeManualDirectories"},
    NamedSignal{&HelperModel::codexSelectionChanged, "codexSelection"},
    NamedSignal{&HelperModel::codexBinaryChanged, "codexBinary"},
    NamedSignal{&HelperModel::codexStatusChanged, "codexStatus"},
    NamedSignal{&HelperModel::codexAccountStatusesChanged, "codexAccountStatuses"},
    NamedSignal{&HelperModel::receivedCodexChanged, "receivedCodex"},
    NamedSignal{&HelperModel::claudeTiersChanged, "claudeTiers"},
    NamedSignal{&HelperModel::menuOrderChanged, "menuOrder"},
    NamedSignal{&HelperModel::usageNamesChanged, "usageNames"},
    NamedSignal{&HelperModel::menuTitleChanged, "menuTitle"},
    NamedSignal{&HelperModel::menuGaugeChanged, "menuGauge"},
    NamedSignal{&HelperModel::usageDisplayChanged, "usageDisplay"},
    NamedSignal{&HelperModel::recentUsagePeriodChanged, "recentUsagePeriod"},
    NamedSignal{&HelperModel::appThemeChanged, "appTheme"},
    NamedSignal{&HelperModel::claudeUsagePausedChanged, "claudeUsagePaused"},
    NamedSignal{&HelperModel::codexEnabledChanged, "codexEnabled"},
    NamedSignal{&HelperModel::launchAtLoginChanged, "launchAtLogin"},
    NamedSignal{&HelperModel::isRemovingChanged, "isRemoving"},
    NamedSignal{&HelperModel::removedEverythingChanged, "removedEverything"},
    NamedSignal{&HelperModel::revealsMenuCardOrderChanged, "revealsMenuCardOrder"},
    NamedSignal{&HelperModel::failureChanged, "failure"},
};

}  // namespace

HelperModel::Surroundings ModelFixture::surroundings() {
    std::filesystem::create_directories(home_);
    return {.defaults = defaults_,
            .files = files_,
            .home = home_,
            .commandEnvironment = {.executable = program,
                                   .installedCandidates = {},
                                   .rejectDevelopmentLocations = true,
                                   .isExecutable =
                                       [this](const std::string& path) {
                                           return executables_.contains(path);
                                       }},
            .codexEnvironment = environment_.view(),
            .locale = "ko_KR",
            .now = [this] { return time_.now(); },
            .sleep = time_.sleeper(),
            .pause = [](std::chrono::milliseconds) {},
            .readCodex = codex_.reader(),
            .findCodex = codex_.finder(),
            .systemServices = std::nullopt};
}

HelperModel::Surroundings ModelFixture::surroundingsWithServices() {
    HelperModel::Surroundings result = surroundings();
    result.systemServices.emplace(services_.doors());
    return result;
}

HelperModel& ModelFixture::start() {
    return start(surroundings());
}

HelperModel& ModelFixture::startWithServices() {
    return start(surroundingsWithServices());
}

HelperModel& ModelFixture::start(HelperModel::Surroundings surroundings) {
    model_.reset();
    model_ = std::make_unique<HelperModel>(std::move(surroundings));
    return *model_;
}

HelperModel& ModelFixture::startWith(std::string_view key, std::string_view json) {
    model_.reset();
    defaults_.put(std::string(key), json);
    defaults_.changes.clear();
    defaults_.writes.clear();
    return start();
}

std::string ModelFixture::makeClaudeFolder(std::string_view name) {
    std::string folder = path(name);
    std::filesystem::create_directories(folder);
    const std::string config = name == ".claude" ? path(".claude.json") : folder + "/.claude.json";
    writeFile(config, "{}");
    return folder;
}

std::string ModelFixture::makeRegisteredFolder(std::string_view name) {
    std::string folder = makeClaudeFolder(name);
    const HelperModel::Surroundings around = surroundings();
    const std::string id = ClaudeCodeSetup::accountID(disk_, {.directory = folder}, home_);
    const FileResult<void> result =
        ClaudeCodeSetup::connect(disk_, folder, id, around.commandEnvironment, around.pause);
    EXPECT_TRUE(result) << result.error().message();
    return folder;
}

std::string ModelFixture::makeCodexFolder(std::string_view name) {
    std::string folder = path(name);
    writeFile(folder + "/auth.json", "{}");
    return folder;
}

void ModelFixture::storeTier(const std::string& folder, std::string_view tier) {
    writeFile(folder + "/.claude.json",
              R"({"oauthAccount":{"userRateLimitTier":")" + std::string(tier) + "\"}}");
}

bool ModelFixture::isRegistered(const std::string& folder) {
    const std::string settings = folder + "/settings.json";
    return exists(settings) && readFile(settings).find("--statusline") != std::string::npos;
}

std::string ModelFixture::limitsFile(const std::string& id) const {
    return home_ + "/.brimwatch/limits/" + id + ".json";
}

void ModelFixture::writeLimits(const std::string& id, double fiveHour, double sevenDay) {
    writeLimits(figures(id, fiveHour, sevenDay));
}

LimitsFile ModelFixture::figures(const std::string& id, double fiveHour, double sevenDay) const {
    const std::size_t dash = id.find('-');
    const CodexPoller::Reading reading = codexReading(fiveHour, sevenDay, time_.now());
    LimitsFile file;
    file.provider = id.substr(0, dash);
    file.account = id.substr(dash + 1);
    file.windows = reading.windows;
    file.updatedAt = wholeUnixSeconds(time_.now());
    return file;
}

void ModelFixture::writeLimits(const LimitsFile& file) {
    writeFile(limitsFile(file.id()), file.encode());
}

std::vector<std::string> ModelFixture::shownIds() {
    std::vector<std::string> ids;
    std::transform(model().limits().begin(), model().limits().end(), std::back_inserter(ids),
                   [](const SubscriptionLimits& limits) { return limits.id(); });
    return ids;
}

std::optional<double> ModelFixture::shownWeekly(const std::string& id) {
    for (const SubscriptionLimits& limits : model().limits()) {
        if (limits.id() == id && limits.sevenDay) return limits.sevenDay->usedPercentage;
    }
    return std::nullopt;
}

SignalLog::SignalLog(HelperModel& model) {
    for (const auto& [signal, name] : allSignals) {
        QObject::connect(&model, signal, &model,
                         [names = names_, name = name] { names->emplace_back(name); });
    }
}

SignalCount::SignalCount(HelperModel& model, void (HelperModel::*signal)()) {
    QObject::connect(&model, signal, &model, [count = count_] { ++*count; });
}

}  // namespace brimwatch::test
