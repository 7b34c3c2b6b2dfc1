// The reload cycle: what wakes the model, and how the files of the limits folder become figures.

#include <algorithm>
#include <utility>

#include "core/card_order.h"
#include "core/helper_model.h"
#include "limits/plan_names.h"
#include "limits/usage_name.h"
#include "platform/spawn.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds reloadDelay = 300ms;
constexpr std::chrono::milliseconds refreshPeriod = 60s;

using Provider = SubscriptionLimits::Provider;

void insertIds(SubscriptionIds& ids, Provider provider, const HelperModel::AccountKeys& keys) {
    SubscriptionLimits limits;
    limits.provider = provider;
    for (const std::string& key : keys) {
        limits.account = key;
        ids.insert(limits.id());
    }
}

std::optional<std::string> owned(std::optional<std::string_view> text) {
    return text ? std::optional<std::string>(*text) : std::nullopt;
}

}  // namespace

void HelperModel::reload() {
    const Instant now = surroundings_.now();
    const LimitsMemory formerMemory = memory_;
    const RecentUsageHistory formerHistory = recentHistory_;
    SubscriptionIds wanted;
    insertIds(wanted, Provider::claude, claudeIDs());
    insertIds(wanted, Provider::codex, codexIDs());

    std::vector<SubscriptionLimits> records =
        memory_.load(surroundings_.files, limitsFolder(surroundings_.home), wanted, now);
    for (SubscriptionLimits& record : records)
        decorate(record);
    records = recentHistory_.record(std::move(records), wanted, now);
    if (recentHistory_ != formerHistory) storeHistory();
    const bool memoryChanged = memory_ != formerMemory;
    assign(limits_, std::move(records), &HelperModel::limitsChanged);
    if (memoryChanged) {
        surroundings_.defaults.setJson(settings_key::limitsMemory, memory_.toJson());
    }
    updateMenuTitle();
    assign(menuGauge_, menuBarGauge(menuLimits()), &HelperModel::menuGaugeChanged);
    publish();
}

void HelperModel::publish() const {
    std::vector<SubscriptionLimits> ordered = menuLimits();
    const Instant now = surroundings_.now();
    cloud().publish(ordered, now);
    phone().publish(std::move(ordered), now);
}

void HelperModel::decorate(SubscriptionLimits& limits) const {
    limits.planTier = planTierOf(limits);
    limits.displayName = displayNameOf(limits);
}

std::optional<std::string> HelperModel::planTierOf(const SubscriptionLimits& limits) const {
    if (limits.provider == Provider::claude) {
        const auto tier = claudeTiers_.find(limits.account);
        return tier != claudeTiers_.end() ? std::optional(tier->second) : std::nullopt;
    }
    const auto reading = receivedCodex_.find(limits.account);
    if (reading == receivedCodex_.end()) return limits.planTier;
    return owned(codexPlanName(reading->second.planType));
}

std::optional<std::string> HelperModel::displayNameOf(const SubscriptionLimits& limits) const {
    const auto name = usageNames_.find(cardKey(limits.id()));
    if (name != usageNames_.end()) {
        if (std::optional<std::string> shown = normalizedUsageName(name->second)) return shown;
    }
    return defaultNameOf(limits);
}

std::optional<std::string> HelperModel::defaultNameOf(const SubscriptionLimits& limits) const {
    if (limits.provider == Provider::codex) {
        for (const CodexAccounts::Account& account : codexAccounts_) {
            if (account.key != limits.account) continue;
            const bool tells = account.name != account.key && account.name != "default";
            return tells ? std::optional(account.name) : std::nullopt;
        }
        return std::nullopt;
    }
    for (const Account& account : accounts_) {
        if (!account.isManual || claudeAccountKey(account) != limits.account) continue;
        return claudeAccountName(account);
    }
    return std::nullopt;
}

void HelperModel::storeHistory() {
    if (recentHistory_.accounts.empty()) {
        surroundings_.defaults.remove(settings_key::recentUsageHistory);
    } else {
        surroundings_.defaults.setJson(settings_key::recentUsageHistory, recentHistory_.toJson());
    }
}

void HelperModel::updateMenuTitle() {
    assign(menuTitle_, menuTitleText(menuLimits(), usageDisplay_), &HelperModel::menuTitleChanged);
}

void HelperModel::refresh() {
    assign(
        codexAccounts_,
        CodexAccounts::accounts(surroundings_.files, surroundings_.home,
                                codexSelection_.manualDirectories, surroundings_.codexEnvironment),
        &HelperModel::codexAccountsChanged);
    rediscoverAccounts();
    connectNewAccounts();
    readTiers();
    if (!phone().isChanging()) phone().refreshKey();
    reload();
    assign(codexBinary_, surroundings_.findCodex(), &HelperModel::codexBinaryChanged);
    if (!usesSystemServices()) return;
    assign(launchAtLogin_, surroundings_.systemServices->loginItem.isEnabled(),
           &HelperModel::launchAtLoginChanged);
}

std::vector<ClaudeCodeSetup::Account> HelperModel::discoverAccounts() const {
    return ClaudeCodeSetup::accounts(surroundings_.files, claudeManualDirectories_,
                                     surroundings_.home, surroundings_.commandEnvironment);
}

void HelperModel::rediscoverAccounts() {
    assign(accounts_, discoverAccounts(), &HelperModel::accountsChanged);
}

void HelperModel::readTiers() {
    Texts tiers;
    const AccountKeys wanted = claudeIDs();
    for (const Account& account : accounts_) {
        std::string key = claudeAccountKey(account);
        if (!wanted.contains(key)) continue;
        const std::optional<std::string> tier = tierReader_.tier(
            ClaudeCodeSetup::claudeConfigFile(account.directory, surroundings_.home));
        if (const auto text = claudePlanName(tier)) tiers.insert_or_assign(std::move(key), *text);
    }
    assign(claudeTiers_, std::move(tiers), &HelperModel::claudeTiersChanged);
}

void HelperModel::scheduleReload() {
    if (reloadScheduled_) return;
    reloadScheduled_ = true;
    spawn(reloadSoon(this, surroundings_.sleep));
}

QCoro::Task<> HelperModel::reloadSoon(QPointer<HelperModel> model, Sleep sleep) {
    co_await sleep(reloadDelay);
    if (!model) co_return;
    model->reloadScheduled_ = false;
    model->reload();
}

QCoro::Task<> HelperModel::refreshEveryMinute(QPointer<HelperModel> model, Sleep sleep) {
    while (model) {
        const SleepEnd end = co_await sleep(refreshPeriod);
        if (end == SleepEnd::cancelled) co_return;
        if (model) model->refresh();
    }
}

}  // namespace brimwatch
