#include "claude/claude_code_setup.h"

#include <algorithm>
#include <utility>

#include "claude/settings_file.h"
#include "claude/status_line_command.h"
#include "limits/account_name.h"
#include "support/json_reader.h"
#include "support/path_digest.h"
#include "support/paths.h"
#include "support/unicode.h"

namespace brimwatch {
namespace {

using Account = ClaudeCodeSetup::Account;
using State = ClaudeCodeSetup::State;

constexpr std::string_view standardName = ".claude";
constexpr std::string_view configName = ".claude.json";
constexpr std::string_view oldHelperMarker = "/.brimwatch/brimwatch.py";

bool isStandardName(std::string_view name) {
    return name == standardName || name.starts_with(".claude-");
}

// Whether JSON can hold the path and the system takes it as it is.
bool isNameable(std::string_view path) {
    return path.starts_with('/') && path.find('\0') == std::string_view::npos && isValidUtf8(path);
}

bool isFolder(FileSystem& files, const std::string& path) {
    const FileResult<FileStatus> status = files.status(path);
    return status && status->kind == FileKind::folder;
}

bool hasConfigFile(FileSystem& files, std::string_view folder, std::string_view home) {
    return files.status(ClaudeCodeSetup::claudeConfigFile(folder, home)).has_value() ||
           files.status(joinPath(folder, configName)).has_value();
}

State stateOf(FileSystem& files, const std::string& folder, const CommandEnvironment& environment) {
    const FileResult<std::string> bytes = files.read(settingsPath(folder), settingsSizeLimit);
    const std::optional<JsonObject> settings =
        bytes ? parseJsonMembers(*bytes, {"statusLine"}) : std::nullopt;
    return ClaudeCodeSetup::classify(files, settings.value_or(JsonObject()), environment);
}

std::vector<std::string> standardFolders(FileSystem& files, const std::string& home) {
    std::vector<std::string> folders;
    for (const std::string& name : files.entries(home).value_or(std::vector<std::string>())) {
        if (isStandardName(name) && isValidUtf8(name)) folders.push_back(joinPath(home, name));
    }
    std::sort(folders.begin(), folders.end());
    std::erase_if(folders,
                  [&files](const std::string& folder) { return !isFolder(files, folder); });
    return folders;
}

std::vector<Account> discoveredAccounts(FileSystem& files, const std::string& home,
                                        const CommandEnvironment& environment) {
    std::vector<Account> accounts;
    for (std::string& folder : standardFolders(files, home)) {
        const State state = stateOf(files, folder, environment);
        if (state == State::notRegistered && !hasConfigFile(files, folder, home)) continue;
        accounts.push_back({.directory = std::move(folder), .state = state, .isManual = false});
    }
    return accounts;
}

// Of accounts whose folders are one through links, the one that is no link stays, or else the
// first. Gives the folders that are left, without links.
std::set<std::string> keepEachFolderOnce(FileSystem& files, std::vector<Account>& accounts) {
    const auto isLink = [&files](const Account& account) {
        return files.linkTarget(account.directory).has_value();
    };
    std::set<std::string> seen;
    for (const Account& account : accounts) {
        if (!isLink(account)) seen.insert(resolvedPath(files, account.directory));
    }
    std::erase_if(accounts, [&](const Account& account) {
        return isLink(account) && !seen.insert(resolvedPath(files, account.directory)).second;
    });
    return seen;
}

Account manualAccount(FileSystem& files, const std::string& folder, const std::string& home,
                      const std::string& resolvedHome, const CommandEnvironment& environment) {
    const std::string_view name = lastPathComponent(folder);
    const bool isStandard = parentPath(folder) == resolvedHome && isStandardName(name);
    std::string directory = isStandard ? joinPath(home, name) : folder;
    const State state = stateOf(files, directory, environment);
    return {.directory = std::move(directory), .state = state, .isManual = !isStandard};
}

}  // namespace

std::vector<Account> ClaudeCodeSetup::accounts(FileSystem& files,
                                               const std::vector<std::string>& manualFolders,
                                               const std::string& givenHome,
                                               const CommandEnvironment& environment) {
    const std::string home = standardizedPath(givenHome);
    std::vector<Account> accounts = discoveredAccounts(files, home, environment);
    std::set<std::string> seen = keepEachFolderOnce(files, accounts);
    const std::string resolvedHome = resolvedPath(files, home);
    for (const std::string& manual : manualFolders) {
        if (!isNameable(manual)) continue;
        const std::string folder = resolvedPath(files, manual);
        if (folder == resolvedHome || !isNameable(folder) || !isFolder(files, folder)) continue;
        if (!seen.insert(folder).second) continue;
        accounts.push_back(manualAccount(files, folder, home, resolvedHome, environment));
    }
    return accounts;
}

std::string ClaudeCodeSetup::accountID(FileSystem& files, const Account& account,
                                       const std::string& home) {
    std::string id = accountName(files, account, home);
    if (account.isManual) id += '-' + pathDigest(account.directory);
    return id;
}

std::string ClaudeCodeSetup::accountName(FileSystem& files, const Account& account,
                                         const std::string& home) {
    std::string name = derivedAccountName(account.directory, standardName);
    if (!account.isManual || name != "default") return name;
    const std::string parent = resolvedPath(files, parentPath(account.directory));
    if (parent != resolvedPath(files, home)) return derivedAccountName(parent, standardName);
    std::string_view own = lastPathComponent(account.directory);
    own.remove_prefix(std::min(own.find_first_not_of('.'), own.size()));
    // The name becomes part of a shell command, and nothing there quotes it.
    if (own.empty() || !holdsOnlyAccountKeyCharacters(own)) return name;
    return std::string(own);
}

std::string ClaudeCodeSetup::claudeConfigFile(std::string_view folder, std::string_view home) {
    const bool isDefault = lastPathComponent(folder) == standardName &&
                           standardizedPath(parentPath(folder)) == standardizedPath(home);
    return joinPath(isDefault ? home : folder, configName);
}

bool ClaudeCodeSetup::isClaudeFolder(FileSystem& files, std::string_view folder,
                                     std::string_view home) {
    if (!isNameable(folder)) return false;
    const std::string resolved = resolvedPath(files, folder);
    const std::string resolvedHome = resolvedPath(files, home);
    return resolved != resolvedHome && isNameable(resolved) && isFolder(files, resolved) &&
           hasConfigFile(files, resolved, resolvedHome);
}

State ClaudeCodeSetup::classify(FileSystem& files, const JsonObject& settings,
                                const CommandEnvironment& environment) {
    if (presentStatusLineCommand(settings).find(oldHelperMarker) != std::string_view::npos) {
        return State::oldHelper;
    }
    const std::optional<std::string> executable =
        connectedExecutable(settings, environment.executable);
    if (!executable) return State::notRegistered;
    return isUsableCopy(files, *executable, environment) ? State::registered : State::needsRepair;
}

bool ClaudeCodeSetup::isUsableCopy(FileSystem& files, const std::string& executable,
                                   const CommandEnvironment& environment) {
    return isNameable(executable) &&
           isUsable(files, executable,
                    environment.rejectDevelopmentLocations ? DevelopmentLocations::rejected
                                                           : DevelopmentLocations::accepted,
                    environment.isExecutable);
}

}  // namespace brimwatch
