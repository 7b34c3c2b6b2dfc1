#include "presentation/setup/account_rows.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "core/card_order.h"
#include "limits/usage_name.h"
#include "presentation/translated.h"

namespace brimwatch {
namespace {

using Provider = SubscriptionLimits::Provider;
using State = ClaudeCodeSetup::State;

struct Status {
    QString text = {};
    QString symbol = {};
    AccountTone tone = AccountTone::secondary;
};

Status statusOf(State state, bool isOn) {
    switch (state) {
        case State::registered:
            if (isOn) {
                return {.symbol = QStringLiteral("checkmark.circle.fill"),
                        .tone = AccountTone::comfortable};
            }
            return {.text = translated("수집 중지됨"), .symbol = QStringLiteral("pause.circle")};
        case State::needsRepair:
            return {.text = translated("연결 복구 필요"),
                    .symbol = QStringLiteral("exclamationmark.circle"),
                    .tone = AccountTone::warning};
        case State::oldHelper:
            return {.text = translated("예전 도우미로 연결됨")};
        case State::notRegistered:
            break;
    }
    return {};
}

// As far as its id needs.
SubscriptionLimits recordOf(Provider provider, const std::string& account) {
    SubscriptionLimits record;
    record.provider = provider;
    record.account = account;
    return record;
}

bool hasFigure(const HelperModel& model, const std::string& codexAccount) {
    const std::vector<SubscriptionLimits>& limits = model.limits();
    return std::any_of(limits.begin(), limits.end(), [&](const SubscriptionLimits& entry) {
        return entry.provider == Provider::codex && entry.account == codexAccount;
    });
}

Status codexStatus(const HelperModel& model, const CodexAccounts::Account& account) {
    if (!model.isCodexAccountOn(account)) {
        return {.text = translated("수집 중지됨"), .symbol = QStringLiteral("pause.circle")};
    }
    const auto status = model.codexAccountStatuses().find(account.directory);
    if (status != model.codexAccountStatuses().end()) return {.text = translated(status->second)};
    if (hasFigure(model, account.key)) return {};
    return {.text = translated("한도를 기다리는 중")};
}

AccountRow makeRow(const HelperModel& model, const SubscriptionLimits& record,
                   const std::string& name, const QString& spokenPrefix) {
    AccountRow row;
    row.recordId = QString::fromStdString(record.id());
    row.account = QString::fromStdString(record.account);
    row.originalName = QString::fromStdString(name);
    const auto given = model.usageNames().find(cardKey(record.id()));
    if (given != model.usageNames().end()) {
        const std::optional<std::string> shown = normalizedUsageName(given->second);
        row.givenName = QString::fromStdString(shown.value_or(std::string()));
    }
    row.name = row.givenName.isEmpty() ? row.originalName : row.givenName;
    row.spokenName = spokenPrefix + row.name;
    return row;
}

void setStatus(AccountRow& row, Status status) {
    row.statusText = std::move(status.text);
    row.statusSymbol = std::move(status.symbol);
    row.statusTone = status.tone;
}

}  // namespace

std::vector<AccountRow> claudeAccountRows(const HelperModel& model) {
    std::vector<AccountRow> rows;
    for (const ClaudeCodeSetup::Account& account : model.accounts()) {
        const SubscriptionLimits record =
            recordOf(Provider::claude, model.claudeAccountKey(account));
        AccountRow row = makeRow(model, record, model.claudeAccountName(account), {});
        row.folder = account.directory;
        row.isOn = model.isClaudeAccountOn(account);
        setStatus(row, statusOf(account.state, row.isOn));
        rows.push_back(std::move(row));
    }
    return rows;
}

std::vector<AccountRow> codexAccountRows(const HelperModel& model) {
    std::vector<AccountRow> rows;
    for (const CodexAccounts::Account& account : model.codexAccounts()) {
        AccountRow row = makeRow(model, recordOf(Provider::codex, account.key), account.name,
                                 QStringLiteral("Codex "));
        row.folder = account.directory;
        row.isOn = model.isCodexAccountOn(account);
        setStatus(row, codexStatus(model, account));
        rows.push_back(std::move(row));
    }
    return rows;
}

AccountRowsModel::AccountRowsModel()
    : KeyedRowsModel({"recordId", "account", "name", "givenName", "originalName", "spokenName",
                      "statusText", "statusSymbol", "statusTone", "isOn"}) {}

void AccountRowsModel::setAccounts(const std::vector<AccountRow>& accounts) {
    accounts_ = accounts;
    std::vector<Row> rows;
    std::transform(
        accounts.begin(), accounts.end(), std::back_inserter(rows), [](const AccountRow& row) {
            return Row{.key = QString::fromStdString(row.folder),
                       .values = {row.recordId, row.account, row.name, row.givenName,
                                  row.originalName, row.spokenName, row.statusText,
                                  row.statusSymbol, static_cast<int>(row.statusTone), row.isOn}};
        });
    setRows(std::move(rows));
}

std::string AccountRowsModel::folderOf(int row) const {
    const auto index = static_cast<std::size_t>(row);
    return index < accounts_.size() ? accounts_[index].folder : std::string();
}

}  // namespace brimwatch
