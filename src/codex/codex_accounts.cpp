#include "codex/codex_accounts.h"

#include <algorithm>
#include <tuple>

#include "limits/account_name.h"
#include "support/path_digest.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

using Account = CodexAccounts::Account;

constexpr std::string_view defaultFolderName = ".codex";
constexpr std::string_view namedFolderPrefix = ".codex-";

bool exists(FileSystem& files, const std::string& path) {
    return files.status(path).has_value();
}

bool isFolder(FileSystem& files, const std::string& path) {
    const FileResult<FileStatus> status = files.status(path);
    return status && status->kind == FileKind::folder;
}

std::string defaultFolder(std::string_view home, const Environment& environment) {
    const std::optional<std::string_view> moved = environment.value("CODEX_HOME");
    if (moved && !moved->empty()) return std::string(*moved);
    return joinPath(home, defaultFolderName);
}

bool holdsLogin(FileSystem& files, std::string_view folder) {
    const std::string resolved = resolvedPath(files, folder);
    return isFolder(files, resolved) && exists(files, joinPath(resolved, "auth.json"));
}

std::vector<std::string> discoveredFolders(FileSystem& files, std::string_view home) {
    std::vector<std::string> folders;
    const FileResult<std::vector<std::string>> names = files.entries(std::string(home));
    if (!names) return folders;
    for (const std::string& name : *names) {
        if (name != defaultFolderName && !name.starts_with(namedFolderPrefix)) continue;
        std::string folder = joinPath(home, name);
        if (holdsLogin(files, folder)) folders.push_back(std::move(folder));
    }
    return folders;
}

// Whether the folder's own name tells it apart from every other folder in the home folder. Where
// cleaning the name changed it, `.codex-a b` and `.codex-a-b` would share the key "a-b".
bool isStandard(FileSystem& files, const Account& account, std::string_view home) {
    if (parentPath(account.directory) != resolvedPath(files, home)) return false;
    const std::string_view folderName = lastPathComponent(account.directory);
    if (folderName == defaultFolderName) return true;
    return account.name != "default" && folderName.starts_with(namedFolderPrefix) &&
           folderName.substr(namedFolderPrefix.size()) == account.name;
}

bool precedes(const Account& a, const Account& b) {
    return std::tie(a.name, a.directory) < std::tie(b.name, b.directory);
}

}  // namespace

std::vector<Account> CodexAccounts::accounts(FileSystem& files, std::string_view home,
                                             const std::vector<std::string>& manualDirectories,
                                             const Environment& environment) {
    std::vector<std::string> folders = discoveredFolders(files, home);
    folders.push_back(defaultFolder(home, environment));
    folders.insert(folders.end(), manualDirectories.begin(), manualDirectories.end());
    std::vector<Account> accounts;
    accounts.reserve(folders.size());
    for (const std::string& folder : folders)
        accounts.push_back(account(files, folder, home));
    std::sort(accounts.begin(), accounts.end(), precedes);
    // Name and key follow from the folder, so that accounts of one folder are equal and adjacent.
    accounts.erase(std::unique(accounts.begin(), accounts.end()), accounts.end());
    return accounts;
}

Account CodexAccounts::account(FileSystem& files, std::string_view folder, std::string_view home) {
    Account account;
    account.directory = resolvedPath(files, folder);
    account.name = derivedAccountName(account.directory, defaultFolderName);
    account.key = account.name;
    if (!isStandard(files, account, home)) account.key += '-' + pathDigest(account.directory);
    return account;
}

bool CodexAccounts::isCodexFolder(FileSystem& files, std::string_view folder) {
    return isFolder(files, resolvedPath(files, folder)) &&
           (exists(files, joinPath(folder, "auth.json")) ||
            exists(files, joinPath(folder, "config.toml")));
}

}  // namespace brimwatch
