#include "core/helper_model.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "core/card_order.h"
#include "platform/spawn.h"
#include "publish/publishers/publication_failure.h"
#include "support/path_text.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

constexpr std::string_view oldLaunchAgent =
    "Library/LaunchAgents/net.quillmoor.brimwatch.codex.plist";

// Nothing if the value is absent or fails to decode.
template <class Value>
std::optional<Value> decoded(const SettingsStore& defaults, std::string_view key) {
    const std::optional<JsonValue> value = defaults.json(key);
    return value ? Value::fromJson(*value) : std::nullopt;
}

std::vector<std::string> pathsFromTexts(const std::vector<std::string>& texts) {
    std::vector<std::string> paths;
    for (const std::string& text : texts) {
        if (std::optional<std::string> path = pathFromText(text)) paths.push_back(*std::move(path));
    }
    return paths;
}

HelperModel::FindCodex searchBelowHome(FileSystem& files, const std::string& home,
                                       const CommandEnvironment& environment) {
    return [&files, home, isExecutable = environment.isExecutable] {
        return CodexAccounts::findBinary(files, home, isExecutable);
    };
}

}  // namespace

HelperModel::HelperModel(Surroundings surroundings)
    : surroundings_(std::move(surroundings)), tierReader_(surroundings_.files) {
    if (!surroundings_.findCodex) {
        surroundings_.findCodex = searchBelowHome(surroundings_.files, surroundings_.home,
                                                  surroundings_.commandEnvironment);
    }
    readSettings();
    makeAbsentPublishers();
    readAutoConnect();
    refresh();
    if (usesSystemServices()) startServices();
}

void HelperModel::readSettings() {
    const SettingsStore& defaults = surroundings_.defaults;
    menuOrder_ = defaults.strings(settings_key::menuOrder).value_or(menuOrder_);
    claudeManualDirectories_ =
        pathsFromTexts(defaults.strings(settings_key::claudeManualDirectories)
                           .value_or(std::vector<std::string>()));
    usageNames_ = defaults.dictionary(settings_key::usageNames).value_or(usageNames_);
    claudeUsagePaused_ = defaults.boolean(settings_key::claudeUsagePaused).value_or(false);
    codexSelection_ = decoded<CodexAccounts::Selection>(defaults, settings_key::codexAccounts)
                          .value_or(codexSelection_);
    memory_ = decoded<LimitsMemory>(defaults, settings_key::limitsMemory).value_or(memory_);
    recentHistory_ = decoded<RecentUsageHistory>(defaults, settings_key::recentUsageHistory)
                         .value_or(recentHistory_);
    codexEnabled_ = defaults.boolean(settings_key::codexEnabled).value_or(true);
    usageDisplay_ = usageDisplayFromRawString(
        defaults.string(settings_key::usageDisplay).value_or(std::string()));
    recentUsagePeriod_ = recentUsagePeriodFromRawValue(
        defaults.integer(settings_key::recentUsagePeriod).value_or(0));
    appTheme_ =
        appThemeFromRawString(defaults.string(settings_key::appTheme).value_or(std::string()));
    language_ = &languageOfCode(defaults.string(settings_key::language).value_or(std::string()));
}

void HelperModel::makeAbsentPublishers() {
    const auto now = surroundings_.now;
    if (!surroundings_.cloud) {
        surroundings_.cloud = std::make_unique<CloudPublisher>(CloudPublisher::Surroundings{
            .defaults = &surroundings_.defaults, .now = now, .sleep = surroundings_.sleep});
    }
    if (!surroundings_.phone) {
        surroundings_.phone = std::make_unique<PhoneLinkPublisher>(
            PhoneLinkPublisher::Surroundings{.store = std::make_unique<MemoryPhoneKeyStore>(),
                                             .defaults = &surroundings_.defaults,
                                             .now = now,
                                             .sleep = surroundings_.sleep});
    }
}

void HelperModel::readAutoConnect() {
    using AutoConnect = ClaudeCodeSetup::AutoConnect;
    const SettingsStore& defaults = surroundings_.defaults;
    if (std::optional<AutoConnect> stored =
            decoded<AutoConnect>(defaults, settings_key::claudeAutoConnect)) {
        autoConnect_ = *std::move(stored);
        return;
    }
    autoConnect_ = AutoConnect::inferred(discoverAccounts());
    // One that can't be decoded stays until the user changes something.
    if (!defaults.json(settings_key::claudeAutoConnect)) setAutoConnect(autoConnect_);
}

void HelperModel::startServices() {
    const SystemServices& services = *surroundings_.systemServices;
    const QPointer<HelperModel> model(this);
    const auto changed = [model] {
        if (model) model->scheduleReload();
    };
    services.limitsChanged.listen(changed);
    const std::string folder = limitsFolder(surroundings_.home);
    static_cast<void>(surroundings_.files.makeFolders(folder));
    services.folderWatch.watch(folder, changed);
    spawn(pollForever(model, surroundings_.sleep));
    spawn(refreshEveryMinute(model, surroundings_.sleep));
}

HelperModel::AccountKeys HelperModel::claudeIDs() const {
    AccountKeys keys;
    for (const Account& account : accounts_) {
        if (isClaudeAccountOn(account)) keys.insert(claudeAccountKey(account));
    }
    return keys;
}

bool HelperModel::isClaudeAccountOn(const Account& account) const {
    return !claudeUsagePaused_ && !isRemoving_ &&
           account.state == ClaudeCodeSetup::State::registered &&
           !autoConnect_.declined.contains(account.directory);
}

std::string HelperModel::claudeAccountKey(const Account& account) const {
    return ClaudeCodeSetup::accountID(surroundings_.files, account, surroundings_.home);
}

std::string HelperModel::claudeAccountName(const Account& account) const {
    return ClaudeCodeSetup::accountName(surroundings_.files, account, surroundings_.home);
}

bool HelperModel::isInstalled() const {
    const CommandEnvironment& environment = surroundings_.commandEnvironment;
    const auto isUsable = [&](const std::string& executable) {
        return ClaudeCodeSetup::isUsableCopy(surroundings_.files, executable, environment);
    };
    return isUsable(environment.executable) ||
           std::any_of(environment.installedCandidates.begin(),
                       environment.installedCandidates.end(), isUsable);
}

HelperModel::AccountKeys HelperModel::codexIDs() const {
    AccountKeys keys;
    for (const CodexAccounts::Account& account : codexAccounts_) {
        if (isCodexAccountOn(account)) keys.insert(account.key);
    }
    return keys;
}

std::vector<SubscriptionLimits> HelperModel::menuLimits() const {
    return inCardOrder(limits_, menuOrder_);
}

bool HelperModel::isCodexAccountOn(const CodexAccounts::Account& account) const {
    return isCollectingCodex() && !codexSelection_.excluded.contains(account.directory);
}

std::optional<CodexCredits::Text> HelperModel::creditText(const SubscriptionLimits& limits) const {
    if (limits.provider == SubscriptionLimits::Provider::claude) return std::nullopt;
    const auto reading = receivedCodex_.find(limits.account);
    if (reading == receivedCodex_.end() || !reading->second.credits) return std::nullopt;
    return reading->second.credits->text(surroundings_.locale);
}

// The setters store the field and not the argument: an observer may have chosen anew.
void HelperModel::setClaudeUsagePaused(bool paused) {
    assign(claudeUsagePaused_, paused, &HelperModel::claudeUsagePausedChanged);
    surroundings_.defaults.setBoolean(settings_key::claudeUsagePaused, claudeUsagePaused_);
}

void HelperModel::setCodexEnabled(bool enabled) {
    if (isRemoving_ && enabled) return;
    if (codexEnabled_ != enabled) ++codexConnectionRevision_;
    assign(codexEnabled_, enabled, &HelperModel::codexEnabledChanged);
    surroundings_.defaults.setBoolean(settings_key::codexEnabled, codexEnabled_);
    if (!codexEnabled_) {
        assign(receivedCodex_, Readings(), &HelperModel::receivedCodexChanged);
        assign(codexAccountStatuses_, Texts(), &HelperModel::codexAccountStatusesChanged);
        assign(codexStatus_, std::optional<std::string>(), &HelperModel::codexStatusChanged);
    }
    reload();
}

void HelperModel::setUsageDisplay(UsageDisplay display) {
    assign(usageDisplay_, display, &HelperModel::usageDisplayChanged);
    surroundings_.defaults.setString(settings_key::usageDisplay, rawString(usageDisplay_));
    updateMenuTitle();
}

void HelperModel::setRecentUsagePeriod(RecentUsagePeriod period) {
    assign(recentUsagePeriod_, period, &HelperModel::recentUsagePeriodChanged);
    surroundings_.defaults.setInteger(settings_key::recentUsagePeriod,
                                      rawValue(recentUsagePeriod_));
}

void HelperModel::setAppTheme(AppTheme theme) {
    assign(appTheme_, theme, &HelperModel::appThemeChanged);
    surroundings_.defaults.setString(settings_key::appTheme, rawString(appTheme_));
}

void HelperModel::setLanguage(const Language& language) {
    assign(language_, &language, &HelperModel::languageChanged);
    surroundings_.defaults.setString(settings_key::language, language.code);
}

void HelperModel::setRevealsMenuCardOrder(bool reveals) {
    assign(revealsMenuCardOrder_, reveals, &HelperModel::revealsMenuCardOrderChanged);
}

void HelperModel::setLaunchAtLogin(bool on) {
    setFailure(std::nullopt);
    if (usesSystemServices()) {
        const FileResult<void> result = surroundings_.systemServices->loginItem.setEnabled(on);
        if (!result) setFailure("로그인할 때 열기를 바꾸지 못했어요: " + result.error().message());
    }
    refresh();
}

QCoro::Task<> HelperModel::setCloudEnabled(bool on) {
    if (on && isRemoving_) co_return;
    setFailure(std::nullopt);
    if (on) {
        cloud().switchOn();
        refresh();
        co_return;
    }
    const QPointer<HelperModel> model(this);
    const TaskOutcome outcome = co_await outcomeOf(cloud().switchOff());
    if (!model || !outcome.failure) co_return;
    setFailure("iPhone으로 보낸 값을 지우지 못했어요: " + failureDescription(outcome.failure));
}

void HelperModel::removeOldLaunchAgent() {
    const std::string path = joinPath(surroundings_.home, oldLaunchAgent);
    if (!surroundings_.files.status(path)) return;
    if (usesSystemServices()) surroundings_.systemServices->agentStopper.stop(path);
    static_cast<void>(surroundings_.files.remove(path));
}

void HelperModel::setFailure(std::optional<std::string> text) {
    assign(failure_, std::move(text), &HelperModel::failureChanged);
}

}  // namespace brimwatch
