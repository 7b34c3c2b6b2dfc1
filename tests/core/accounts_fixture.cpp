#include "accounts_fixture.h"

#include <algorithm>
#include <iterator>

#include "core/codex_status_text.h"
#include "limits/limits_file.h"
#include "support/json_reader.h"
#include "support/json_writer.h"

namespace brimwatch::test {

void AccountsFixture::startAndBeginRemoval() {
    for (const char* name : {".claude-r1", ".claude-r2", ".claude-r3"}) {
        writeStatusLine(makeClaudeFolder(name), ourStatusLine(name + 8));
    }
    start();
    removeEverything();
    ASSERT_TRUE(model().isRemoving());
}

ClaudeCodeSetup::Account AccountsFixture::claudeAccount(const std::string& folder) {
    for (const ClaudeCodeSetup::Account& account : model().accounts()) {
        if (account.directory == folder) return account;
    }
    ADD_FAILURE() << "no account of Claude Code in " << folder;
    return {};
}

CodexAccounts::Account AccountsFixture::codexAccount(std::string_view key) {
    for (const CodexAccounts::Account& account : model().codexAccounts()) {
        if (account.key == key) return account;
    }
    ADD_FAILURE() << "no account of Codex with the key " << key;
    return {};
}

void AccountsFixture::writeStatusLine(const std::string& folder, const std::string& command) {
    const JsonObject statusLine({{"type", "command"}, {"command", command}});
    const JsonObject settings({{"statusLine", statusLine}});
    writeFile(folder + "/settings.json", writeJson(settings, JsonLayout::pretty));
}

std::string AccountsFixture::statusLine(const std::string& folder) {
    const std::string path = folder + "/settings.json";
    const std::optional<JsonValue> settings =
        exists(path) ? parseJson(readFile(path)) : std::optional<JsonValue>();
    const JsonValue* line = settings ? settings->member("statusLine") : nullptr;
    const JsonValue* command = line != nullptr ? line->member("command") : nullptr;
    return command != nullptr && command->string() != nullptr ? *command->string() : "";
}

std::string AccountsFixture::ourStatusLine(const std::string& id) {
    return '\'' + program + "' --statusline --account " + id;
}

void AccountsFixture::lockSettings(const std::string& folder, std::errc error) {
    files_.failEvery("makeTemporary " + folder, error);
}

std::string AccountsFixture::codexStatusOf(std::string_view key) {
    const auto status = model().codexAccountStatuses().find(codexFolder(key));
    return status != model().codexAccountStatuses().end() ? status->second : "";
}

std::string AccountsFixture::receivedNow() const {
    return codexReceivedText(now(), "ko_KR");
}

void AccountsFixture::answer(double percentage) {
    codex_.answer(codexReading(percentage, percentage, now()));
}

std::vector<std::string> AccountsFixture::askedKeys() const {
    std::vector<std::string> keys;
    std::transform(codex_.questions().begin(), codex_.questions().end(), std::back_inserter(keys),
                   [](const ScriptedCodex::Question& question) { return question.account.key; });
    return keys;
}

std::optional<double> AccountsFixture::storedWeekly(const std::string& id) const {
    if (!exists(limitsFile(id))) return std::nullopt;
    const std::optional<LimitsFile> file = LimitsFile::decode(readFile(limitsFile(id)));
    if (!file) return std::nullopt;
    return file->windows.at("seven_day").usedPercentage;
}

std::string messageOf(std::errc error) {
    return std::make_error_code(error).message();
}

}  // namespace brimwatch::test
