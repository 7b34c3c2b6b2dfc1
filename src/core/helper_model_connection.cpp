// Which accounts feed the cards: connecting, disconnecting, folders added by hand, the removal.

#include <QLoggingCategory>
#include <algorithm>
#include <utility>

#include "core/helper_model.h"
#include "publish/publishers/publication_failure.h"
#include "support/path_text.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

using namespace std::chrono_literals;

using AutoConnect = ClaudeCodeSetup::AutoConnect;
using Selection = CodexAccounts::Selection;

constexpr std::string_view noAccountText =
    "Claude Code 계정을 찾지 못했어요. Claude Code에 로그인한 뒤 다시 연결해 주세요.";
constexpr std::string_view noClaudeFolderText =
    "Claude Code 설정 폴더를 골라 주세요. Claude Code를 실행한 적이 있는, .claude.json이 있는 "
    "폴더여야 해요.";
constexpr std::string_view noCodexFolderText =
    "Codex 설정 폴더를 골라 주세요. auth.json이나 config.toml이 있는 폴더여야 해요.";

// Names of accounts are the user's own and stay out of the log.
const QLoggingCategory& claudeLog() {
    static const QLoggingCategory category("net.quillmoor.brimwatch.mac.claude");
    return category;
}

std::string joinedLines(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines)
        text += '\n' + line;
    return text;
}

}  // namespace

FileResult<void> HelperModel::connect(const Account& account) {
    FileSystem& files = surroundings_.files;
    return ClaudeCodeSetup::connect(files, account.directory,
                                    ClaudeCodeSetup::accountID(files, account, surroundings_.home),
                                    surroundings_.commandEnvironment, surroundings_.pause);
}

FileResult<void> HelperModel::connectAndVerify(const Account& account) {
    const FileResult<void> result = connect(account);
    if (!result) return result;
    rediscoverAccounts();
    const bool isRegistered =
        std::any_of(accounts_.begin(), accounts_.end(), [&](const Account& candidate) {
            return candidate.directory == account.directory &&
                   candidate.state == ClaudeCodeSetup::State::registered;
        });
    if (isRegistered) return {};
    return tl::unexpected(make_error_code(ClaudeCodeSetup::ConnectionFailure::installRequired));
}

FileResult<void> HelperModel::disconnect(const Account& account) {
    return ClaudeCodeSetup::disconnect(surroundings_.files, account.directory,
                                       surroundings_.commandEnvironment, surroundings_.pause);
}

void HelperModel::connectClaude() {
    if (isRemoving_) return;
    setFailure(std::nullopt);
    rediscoverAccounts();
    if (accounts_.empty()) return setFailure(std::string(noAccountText));
    autoConnect_ = {.enabled = true, .declined = {}};
    autoConnectFailed_.clear();
    std::vector<std::string> failures;
    const std::vector<Account> accounts = accounts_;
    for (const Account& account : accounts) {
        const FileResult<void> result = connectAndVerify(account);
        if (result) continue;
        autoConnectFailed_.insert(account.directory);
        failures.push_back(claudeAccountName(account) + ": " + result.error().message());
    }
    setAutoConnect(autoConnect_);
    if (failures.size() < accounts.size()) {
        noteClaudeConnection();
        cloud().switchOn();
    }
    if (!failures.empty()) {
        setFailure("Claude Code 설정을 바꾸지 못했어요:" + joinedLines(failures));
    }
    refresh();
}

void HelperModel::connectClaude(const Account& account) {
    if (isRemoving_) return;
    setFailure(std::nullopt);
    autoConnectFailed_.erase(account.directory);
    connectAdded(account);
    refresh();
}

void HelperModel::noteClaudeConnection() {
    setClaudeUsagePaused(false);
    assign(removedEverything_, false, &HelperModel::removedEverythingChanged);
    surroundings_.defaults.setBoolean(settings_key::setupDone, true);
}

void HelperModel::connectNewAccounts() {
    const std::vector<Account> candidates = autoConnect_.candidates(accounts_, autoConnectFailed_);
    for (const Account& account : candidates) {
        if (connect(account)) {
            qCInfo(claudeLog, "Claude Code 계정을 연결했다: <private>");
        } else {
            autoConnectFailed_.insert(account.directory);
            qCInfo(claudeLog, "Claude Code 계정을 연결하지 못했다: <private>");
        }
    }
    if (!candidates.empty()) rediscoverAccounts();
}

void HelperModel::disconnectClaude(const Account& account) {
    if (isRemoving_) return;
    setFailure(std::nullopt);
    AutoConnect autoConnect = autoConnect_;
    autoConnect.declined.insert(account.directory);
    setAutoConnect(std::move(autoConnect));
    const FileResult<void> result = disconnect(account);
    if (!result) {
        setFailure("Claude Code 설정을 되돌리지 못했어요: " + result.error().message());
    }
    refresh();
}

bool HelperModel::addClaudeFolder(const std::string& folder) {
    if (isRemoving_) return false;
    setFailure(std::nullopt);
    FileSystem& files = surroundings_.files;
    if (!ClaudeCodeSetup::isClaudeFolder(files, folder, surroundings_.home)) {
        setFailure(std::string(noClaudeFolderText));
        return false;
    }
    const std::string path = resolvedPath(files, folder);
    addManualDirectory(path);
    rediscoverAccounts();
    const auto found = std::find_if(accounts_.begin(), accounts_.end(), [&](const Account& other) {
        return resolvedPath(files, other.directory) == path;
    });
    if (found != accounts_.end()) connectAdded(*found);
    refresh();
    return true;
}

void HelperModel::addManualDirectory(const std::string& path) {
    std::vector<std::string> folders = claudeManualDirectories_;
    if (std::find(folders.begin(), folders.end(), path) != folders.end()) return;
    folders.push_back(path);
    std::vector<std::string> texts;
    std::transform(folders.begin(), folders.end(), std::back_inserter(texts), textFromPath);
    surroundings_.defaults.setStrings(settings_key::claudeManualDirectories, texts);
    assign(claudeManualDirectories_, std::move(folders),
           &HelperModel::claudeManualDirectoriesChanged);
}

void HelperModel::connectAdded(const Account& account) {
    AutoConnect autoConnect = autoConnect_;
    autoConnect.declined.erase(account.directory);
    setAutoConnect(std::move(autoConnect));
    const FileResult<void> result = connect(account);
    if (result) return noteClaudeConnection();
    setFailure("Claude Code 설정을 바꾸지 못했어요: " + result.error().message());
}

void HelperModel::setAutoConnect(AutoConnect autoConnect) {
    autoConnect_ = std::move(autoConnect);
    surroundings_.defaults.setJson(settings_key::claudeAutoConnect, autoConnect_.toJson());
}

void HelperModel::connectCodex() {
    if (isRemoving_) return;
    setFailure(std::nullopt);
    if (codexAccounts_.empty()) return;
    ++codexConnectionRevision_;
    Selection selection = codexSelection_;
    for (const CodexAccounts::Account& account : codexAccounts_)
        selection.excluded.erase(account.directory);
    setCodexSelection(std::move(selection));
    switchCodexOn();
    refresh();
    schedulePoll();
}

bool HelperModel::addCodexFolder(const std::string& folder) {
    if (isRemoving_) return false;
    setFailure(std::nullopt);
    FileSystem& files = surroundings_.files;
    if (!CodexAccounts::isCodexFolder(files, folder)) {
        setFailure(std::string(noCodexFolderText));
        return false;
    }
    ++codexConnectionRevision_;
    Selection selection = codexSelection_;
    if (!codexEnabled_) excludeAllBut(resolvedPath(files, folder), selection);
    selection.add(files, folder);
    setCodexSelection(std::move(selection));
    switchCodexOn();
    refresh();
    schedulePoll();
    return true;
}

void HelperModel::setCodexAccount(const CodexAccounts::Account& account, bool on) {
    if (isRemoving_) return;
    setFailure(std::nullopt);
    ++codexConnectionRevision_;
    Selection selection = codexSelection_;
    if (on) {
        if (!codexEnabled_) excludeAllBut(account.directory, selection);
        selection.excluded.erase(account.directory);
        setCodexSelection(std::move(selection));
        switchCodexOn();
    } else {
        selection.excluded.insert(account.directory);
        setCodexSelection(std::move(selection));
        forgetCodexAnswers(account);
    }
    refresh();
    if (on) schedulePoll();
}

void HelperModel::excludeAllBut(const std::string& folder, Selection& selection) const {
    for (const CodexAccounts::Account& account : codexAccounts_) {
        if (account.directory != folder) selection.excluded.insert(account.directory);
    }
}

void HelperModel::switchCodexOn() {
    setCodexEnabled(true);
    assign(removedEverything_, false, &HelperModel::removedEverythingChanged);
}

void HelperModel::forgetCodexAnswers(const CodexAccounts::Account& account) {
    Readings readings = receivedCodex_;
    readings.erase(account.key);
    assign(receivedCodex_, std::move(readings), &HelperModel::receivedCodexChanged);
    setCodexAccountStatus(account.directory, std::nullopt);
}

void HelperModel::setCodexSelection(Selection selection) {
    assign(codexSelection_, std::move(selection), &HelperModel::codexSelectionChanged);
    surroundings_.defaults.setJson(settings_key::codexAccounts, codexSelection_.toJson());
}

QCoro::Task<> HelperModel::removeEverything() {
    if (isRemoving_) co_return;
    assign(isRemoving_, true, &HelperModel::isRemovingChanged);
    setFailure(std::nullopt);
    leaveAllAlone();
    const QPointer<HelperModel> model(this);
    std::vector<std::string> failures;
    const std::vector<Account> accounts = accounts_;
    for (const Account& account : accounts) {
        if (account.state == ClaudeCodeSetup::State::notRegistered) continue;
        co_await surroundings_.sleep(0ms);
        if (!model) co_return;
        const FileResult<void> result = disconnect(account);
        if (!result)
            failures.push_back(claudeAccountName(account) + ": " + result.error().message());
    }
    const std::vector<std::string> notWithdrawn = co_await withdraw(model);
    if (!model) co_return;
    failures.insert(failures.end(), notWithdrawn.begin(), notWithdrawn.end());
    if (launchAtLogin_) setLaunchAtLogin(false);
    refresh();
    assign(removedEverything_, failures.empty(), &HelperModel::removedEverythingChanged);
    if (!failures.empty()) {
        setFailure("일부를 해제하지 못했어요. 다시 눌러 주세요." + joinedLines(failures));
    }
    assign(isRemoving_, false, &HelperModel::isRemovingChanged);
}

// From both kinds of phones at once; gives a line for each failure.
QCoro::Task<std::vector<std::string>> HelperModel::withdraw(QPointer<HelperModel> model) {
    QCoro::Task<TaskOutcome> fromCloud = outcomeOf(model->cloud().switchOff());
    QCoro::Task<TaskOutcome> fromPhone = outcomeOf(model->phone().pause());
    std::vector<std::string> failures;
    const TaskOutcome cloud = co_await std::move(fromCloud);
    if (cloud.failure) {
        failures.push_back("iPhone으로 보낸 값: " + failureDescription(cloud.failure));
    }
    const TaskOutcome phone = co_await std::move(fromPhone);
    if (phone.failure) {
        failures.push_back("안드로이드로 보낸 값: " + failureDescription(phone.failure));
    }
    co_return failures;
}

void HelperModel::leaveAllAlone() {
    setClaudeUsagePaused(true);
    AutoConnect autoConnect;
    for (const Account& account : accounts_)
        autoConnect.declined.insert(account.directory);
    autoConnectFailed_.clear();
    setAutoConnect(std::move(autoConnect));
    setCodexEnabled(false);
    reload();
}

}  // namespace brimwatch
