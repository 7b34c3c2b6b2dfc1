#include <algorithm>
#include <iterator>

#include "claude/claude_code_setup.h"
#include "support/json_fields.h"

namespace brimwatch {

using Account = ClaudeCodeSetup::Account;
using AutoConnect = ClaudeCodeSetup::AutoConnect;
using State = ClaudeCodeSetup::State;

AutoConnect AutoConnect::inferred(const std::vector<Account>& accounts) {
    AutoConnect result;
    for (const Account& account : accounts) {
        if (account.state == State::notRegistered) result.declined.insert(account.directory);
    }
    result.enabled = std::any_of(accounts.begin(), accounts.end(), [](const Account& account) {
        return account.state == State::registered || account.state == State::needsRepair;
    });
    return result.enabled ? result : AutoConnect();
}

std::vector<Account> AutoConnect::candidates(const std::vector<Account>& accounts,
                                             const std::set<std::string>& skipped) const {
    std::vector<Account> result;
    if (!enabled) return result;
    std::copy_if(
        accounts.begin(), accounts.end(), std::back_inserter(result), [&](const Account& account) {
            const bool isWanted =
                account.state == State::notRegistered || account.state == State::needsRepair;
            return isWanted && !declined.contains(account.directory) &&
                   !skipped.contains(account.directory);
        });
    return result;
}

JsonValue AutoConnect::encode() const {
    return JsonObject(
        {{"enabled", enabled}, {"declined", JsonArray(declined.begin(), declined.end())}});
}

std::optional<AutoConnect> AutoConnect::decode(const JsonValue& json) {
    if (json.object() == nullptr) return std::nullopt;
    JsonFields fields(*json.object());
    AutoConnect result;
    result.enabled = fields.boolean("enabled");
    for (const JsonValue& path : fields.array("declined")) {
        if (path.string() == nullptr) return std::nullopt;
        result.declined.insert(*path.string());
    }
    if (!fields.allRead()) return std::nullopt;
    return result;
}

}  // namespace brimwatch
