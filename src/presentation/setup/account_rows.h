// The accounts of a provider as the settings show them, one row an account.
//
// Roles are named as the fields of `AccountRow`, but for its folder, which views don't get; tones
// are the numbers of `AccountTone`. Main thread.
#pragma once

#include <QString>
#include <optional>
#include <string>
#include <vector>

#include "core/helper_model.h"
#include "presentation/keyed_rows_model.h"

namespace brimwatch {

enum class AccountTone { secondary, comfortable, warning };

struct AccountRow {
    std::string folder;
    QString recordId;   // as in "claude-work"
    QString account;    // as in "work"
    QString name;       // the given one, or the original one
    QString givenName;  // by the user; may be empty
    QString originalName;
    QString spokenName;    // `name`, told apart from that of another provider
    QString statusText;    // may be empty
    QString statusSymbol;  // may be empty
    AccountTone statusTone = AccountTone::secondary;
    bool isOn = false;  // its figures are wanted

    bool operator==(const AccountRow&) const = default;
};

std::vector<AccountRow> claudeAccountRows(const HelperModel& model);
std::vector<AccountRow> codexAccountRows(const HelperModel& model);

class AccountRowsModel : public KeyedRowsModel {
    Q_OBJECT

  public:
    AccountRowsModel();

    void setAccounts(const std::vector<AccountRow>& accounts);
    const std::vector<AccountRow>& accounts() const { return accounts_; }
    // The one of a row that views show, as it is now among `accounts`; nothing if either is gone.
    template <class Account>
    std::optional<Account> find(int row, const std::vector<Account>& accounts) const {
        const std::string folder = folderOf(row);
        for (const Account& account : accounts) {
            if (account.directory == folder) return account;
        }
        return std::nullopt;
    }
    // Empty if there is no such row.
    std::string folderOf(int row) const;

  private:
    std::vector<AccountRow> accounts_;
};

}  // namespace brimwatch
