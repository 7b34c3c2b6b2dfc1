#include <algorithm>
#include <iterator>
#include <utility>

#include "claude/claude_code_setup.h"
#include "support/json_fields.h"
#include "support/path_text.h"

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

JsonObject AutoConnect::toJson() const {
    JsonArray paths;
    for (const std::string& path : declined)
        paths.emplace_back(textFromPath(path));
    return JsonObject({{"enabled", enabled}, {"declined", std::move(paths)}});
}

std::optional<AutoConnect> AutoConnect::fromJson(const JsonValue& value) {
    if (value.object() == nullptr) return std::nullopt;
    JsonFields fields(*value.object());
    AutoConnect result;
    result.enabled = fields.boolean("enabled");
    for (const JsonValue& text : fields.array("declined")) {
        std::optional<std::string> path =
            text.string() != nullptr ? pathFromText(*text.string()) : std::nullopt;
        if (!path) return std::nullopt;
        result.declined.insert(*std::move(path));
    }
    if (!fields.allRead()) return std::nullopt;
    return result;
}

}  // namespace brimwatch
