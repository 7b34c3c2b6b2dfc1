// Asking Codex: one run at a time, one account after the other.

#include <system_error>
#include <utility>
#include <variant>

#include "core/codex_status_text.h"
#include "core/helper_model.h"
#include "limits/plan_names.h"
#include "platform/spawn.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds pollPeriod = 300s;

bool isCancelled(const CodexReadResult& result) {
    if (result) return false;
    const auto* error = std::get_if<std::error_code>(&result.error());
    return error != nullptr && *error == std::errc::operation_canceled;
}

}  // namespace

QCoro::Task<> HelperModel::pollForever(QPointer<HelperModel> model, Sleep sleep) {
    SleepEnd end = co_await sleep(0ms);
    while (model && end == SleepEnd::elapsed) {
        co_await model->pollCodex();
        end = co_await sleep(pollPeriod);
    }
}

void HelperModel::schedulePoll() {
    spawn(pollSoon(this, surroundings_.sleep));
}

QCoro::Task<> HelperModel::pollSoon(QPointer<HelperModel> model, Sleep sleep) {
    const SleepEnd end = co_await sleep(0ms);
    if (model && end == SleepEnd::elapsed) co_await model->pollCodex();
}

QCoro::Task<> HelperModel::pollCodex() {
    if (!isCollectingCodex()) co_return;
    if (pollingCodex_) {
        codexPollRequested_ = true;
        co_return;
    }
    pollingCodex_ = true;
    refresh();
    if (usesSystemServices()) removeOldLaunchAgent();
    std::optional<std::string> executable = surroundings_.findCodex();
    if (!executable) {
        assign(codexStatus_, std::optional<std::string>(codexNotFoundText),
               &HelperModel::codexStatusChanged);
        finishPoll();
        co_return;
    }
    const QPointer<HelperModel> model(this);
    const PollEnd end = co_await askCodex(*std::move(executable));
    if (!model) co_return;
    if (end == PollEnd::reached) {
        assign(codexStatus_, std::optional<std::string>(), &HelperModel::codexStatusChanged);
    }
    finishPoll();
}

QCoro::Task<HelperModel::PollEnd> HelperModel::askCodex(std::string executable) {
    const QPointer<HelperModel> model(this);
    const std::vector<CodexAccounts::Account> accounts = codexAccounts_;
    for (const CodexAccounts::Account& account : accounts) {
        if (!isAsked(account)) continue;
        const std::int64_t revision = codexConnectionRevision_;
        const CodexReadResult result = co_await surroundings_.readCodex(executable, account);
        if (!model || isCancelled(result)) co_return PollEnd::cut;
        if (result && !isCollectingCodex()) co_return PollEnd::cut;
        if (revision != codexConnectionRevision_ || !codexIDs().contains(account.key)) continue;
        if (result) {
            receive(account, *result);
        } else {
            setCodexAccountStatus(account.directory, std::string(codexFailureText(result.error())));
        }
    }
    co_return PollEnd::reached;
}

bool HelperModel::isAsked(const CodexAccounts::Account& account) const {
    return isCodexAccountOn(account) && codexIDs().contains(account.key);
}

void HelperModel::receive(const CodexAccounts::Account& account,
                          const CodexPoller::Reading& reading) {
    Readings readings = receivedCodex_;
    readings.insert_or_assign(account.key, reading);
    assign(receivedCodex_, std::move(readings), &HelperModel::receivedCodexChanged);
    const std::optional<std::string_view> plan = codexPlanName(reading.planType);
    const Instant now = surroundings_.now();
    static_cast<void>(
        LimitsFile::write(surroundings_.files,
                          {.provider = std::string(rawString(SubscriptionLimits::Provider::codex)),
                           .account = account.key,
                           .windows = reading.windows,
                           .planTier = plan ? std::optional<std::string>(*plan) : std::nullopt,
                           .minimumIntervalSeconds = 0,
                           .mergingExisting = false,
                           .now = now,
                           .folder = limitsFolder(surroundings_.home),
                           .lockWait = LockWait::atMostTwoSeconds}));
    setCodexAccountStatus(account.directory, codexReceivedText(now, locale()));
    refresh();
}

void HelperModel::setCodexAccountStatus(const std::string& folder,
                                        std::optional<std::string> text) {
    Texts statuses = codexAccountStatuses_;
    if (text) {
        statuses.insert_or_assign(folder, *std::move(text));
    } else {
        statuses.erase(folder);
    }
    assign(codexAccountStatuses_, std::move(statuses), &HelperModel::codexAccountStatusesChanged);
}

void HelperModel::finishPoll() {
    pollingCodex_ = false;
    if (std::exchange(codexPollRequested_, false)) schedulePoll();
}

}  // namespace brimwatch
