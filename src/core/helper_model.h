// The one object that holds the state of the application: which accounts there are, their figures,
// what the user chose. Views observe it, the limits folder feeds it, and whatever the user does
// goes through one of its operations.
//
// Each observed field has a signal, which is sent synchronously after each real change and never
// otherwise. The values of the settings table are written to the store when they are set.
//
// Everything belongs to the main thread. A coroutine gives the thread up at each `co_await` and
// looks at the fields anew behind it. An observer may call operations, but must not destroy the
// model.
#pragma once

#include <QCoroTask>
#include <QObject>
#include <QPointer>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "claude/claude_code_setup.h"
#include "claude/claude_tier_reader.h"
#include "codex/codex_accounts.h"
#include "codex/codex_read_result.h"
#include "core/app_theme.h"
#include "limits/limits_memory.h"
#include "limits/menu_bar_gauge.h"
#include "limits/recent_usage_history.h"
#include "limits/recent_usage_period.h"
#include "limits/subscription_limits.h"
#include "limits/usage_display.h"
#include "platform/agent_stopper.h"
#include "platform/folder_watch.h"
#include "platform/limits_changed_broadcast.h"
#include "platform/login_item.h"
#include "platform/settings_store.h"
#include "platform/sleep.h"
#include "platform/task_end.h"
#include "publish/publishers/cloud_publisher.h"
#include "publish/publishers/phone_link_publisher.h"
#include "support/environment.h"
#include "support/language.h"

namespace brimwatch {

class HelperModel final : public QObject {
    Q_OBJECT

  public:
    using Paths = std::set<std::string>;
    using AccountKeys = std::set<std::string, std::less<>>;
    using Texts = std::map<std::string, std::string, std::less<>>;
    using Readings = std::map<std::string, CodexPoller::Reading, std::less<>>;
    using FindCodex = std::function<std::optional<std::string>()>;
    using ReadCodex = std::function<QCoro::Task<CodexReadResult>(std::string executable,
                                                                 CodexAccounts::Account account)>;

    // What the operating system does for the model.
    struct SystemServices {
        FolderWatch& folderWatch;
        LimitsChangedBroadcast& limitsChanged;
        LoginItem& loginItem;
        AgentStopper& agentStopper;
    };

    // What is referred to must outlive the model.
    struct Surroundings {
        SettingsStore& defaults;
        FileSystem& files;
        std::string home;  // what stands for the user's home folder
        CommandEnvironment commandEnvironment;
        Environment codexEnvironment;
        std::string locale;  // of times and numbers, as in "ko" or "de_DE.UTF-8"
        std::function<Instant()> now;
        Sleep sleep;
        ClaudeCodeSetup::Pause pause;
        ReadCodex readCodex;
        FindCodex findCodex = {};  // if absent, the search below `home`
        // To phones. An absent one sends nothing, as without the right to.
        std::unique_ptr<CloudPublisher> cloud = {};
        std::unique_ptr<PhoneLinkPublisher> phone = {};
        // Without them the model starts nothing by itself: no loop, no watch.
        std::optional<SystemServices> systemServices = {};
    };

    explicit HelperModel(Surroundings surroundings);

    // --- What is observed ---

    const std::vector<SubscriptionLimits>& limits() const { return limits_; }
    const std::vector<ClaudeCodeSetup::Account>& accounts() const { return accounts_; }
    const std::vector<CodexAccounts::Account>& codexAccounts() const { return codexAccounts_; }
    const std::vector<std::string>& claudeManualDirectories() const {
        return claudeManualDirectories_;
    }
    const CodexAccounts::Selection& codexSelection() const { return codexSelection_; }
    const std::optional<std::string>& codexBinary() const { return codexBinary_; }
    // A text for Codex as a whole, and one for each account that was asked, by its folder.
    const std::optional<std::string>& codexStatus() const { return codexStatus_; }
    const Texts& codexAccountStatuses() const { return codexAccountStatuses_; }
    const Readings& receivedCodex() const { return receivedCodex_; }  // by account key
    const Texts& claudeTiers() const { return claudeTiers_; }         // by account key
    const std::vector<std::string>& menuOrder() const { return menuOrder_; }
    const Texts& usageNames() const { return usageNames_; }  // by card key
    const std::string& menuTitle() const { return menuTitle_; }
    const MenuBarGauge& menuGauge() const { return menuGauge_; }
    UsageDisplay usageDisplay() const { return usageDisplay_; }
    RecentUsagePeriod recentUsagePeriod() const { return recentUsagePeriod_; }
    AppTheme appTheme() const { return appTheme_; }
    // In which the program speaks to the user; the model itself holds the Korean keys.
    const Language& language() const { return *language_; }
    bool claudeUsagePaused() const { return claudeUsagePaused_; }
    bool codexEnabled() const { return codexEnabled_; }
    bool launchAtLogin() const { return launchAtLogin_; }
    bool isRemoving() const { return isRemoving_; }
    bool removedEverything() const { return removedEverything_; }
    bool revealsMenuCardOrder() const { return revealsMenuCardOrder_; }
    // The last failure that the user has to see.
    const std::optional<std::string>& failure() const { return failure_; }
    // The user has seen it.
    void clearFailure() { setFailure({}); }
    // Of something that others do for the user.
    void reportFailure(std::string text) { setFailure(std::move(text)); }

    // Observed on their own.
    CloudPublisher& cloud() const { return *surroundings_.cloud; }
    PhoneLinkPublisher& phone() const { return *surroundings_.phone; }

    // --- What is worked out on demand ---

    // The keys of the accounts whose figures are wanted.
    AccountKeys claudeIDs() const;
    AccountKeys codexIDs() const;
    // `limits` in the order of the cards.
    std::vector<SubscriptionLimits> menuLimits() const;
    bool isCodexAccountOn(const CodexAccounts::Account& account) const;
    // Its figures are wanted, and come.
    bool isClaudeAccountOn(const ClaudeCodeSetup::Account& account) const;
    // As in the id of its record, and as it is called where the user gave it no name.
    std::string claudeAccountKey(const ClaudeCodeSetup::Account& account) const;
    std::string claudeAccountName(const ClaudeCodeSetup::Account& account) const;
    // Whether there is a copy of this program that status lines may name.
    bool isInstalled() const;
    // Of times: in the language, as they are written in the region of the user.
    std::string locale() const { return localeOf(language(), surroundings_.locale); }
    // The credit row of a card.
    std::optional<CodexCredits::Text> creditText(const SubscriptionLimits& limits) const;
    bool usesSystemServices() const { return surroundings_.systemServices.has_value(); }

    // --- What is not observed ---

    const std::string& home() const { return surroundings_.home; }

    std::int64_t codexConnectionRevision() const { return codexConnectionRevision_; }
    const ClaudeCodeSetup::AutoConnect& autoConnect() const { return autoConnect_; }
    const Paths& autoConnectFailed() const { return autoConnectFailed_; }
    const LimitsMemory& memory() const { return memory_; }
    const RecentUsageHistory& recentHistory() const { return recentHistory_; }
    bool pollingCodex() const { return pollingCodex_; }
    bool codexPollRequested() const { return codexPollRequested_; }

    // --- Choices ---

    // Hides or shows all figures of Claude Code, from the next reload on.
    void setClaudeUsagePaused(bool paused);
    // Can't be switched on during a removal.
    void setCodexEnabled(bool enabled);
    void setUsageDisplay(UsageDisplay display);
    void setRecentUsagePeriod(RecentUsagePeriod period);
    void setAppTheme(AppTheme theme);
    void setLanguage(const Language& language);  // one of `allLanguages`
    void setRevealsMenuCardOrder(bool reveals);
    // A failure shows in `failure`; `launchAtLogin` tells what the session says.
    void setLaunchAtLogin(bool on);
    // Off: takes back what was sent to iPhones; a failure shows in `failure`. Can't be switched on
    // during a removal.
    QCoro::Task<> setCloudEnabled(bool on);

    // --- Figures ---

    // From the files of the limits folder to `limits` and all that follows from them.
    void reload();
    // Looks for accounts and tiers, connects new accounts, and reloads.
    void refresh();
    // Asks Codex for the figures of all wanted accounts, one after the other. While a run is under
    // way it returns at once, and one more run follows.
    QCoro::Task<> pollCodex();

    // --- Connection: does nothing during a removal ---

    void connectClaude();
    void connectClaude(const ClaudeCodeSetup::Account& account);  // and no other
    void disconnectClaude(const ClaudeCodeSetup::Account& account);
    bool addClaudeFolder(const std::string& folder);  // whether it was accepted
    void connectCodex();
    bool addCodexFolder(const std::string& folder);  // whether it was accepted
    void setCodexAccount(const CodexAccounts::Account& account, bool on);

    // Puts the status lines back, takes back what was sent to phones, and leaves all accounts alone
    // until the user connects them again. The task gives the thread up between two accounts.
    QCoro::Task<> removeEverything();
    // Ends and deletes the agent of an earlier form of the program.
    void removeOldLaunchAgent();

    // --- Names and order ---

    // `key` is the id of a record; without a name that shows, the default name comes back.
    void setUsageName(const std::string& key, const std::optional<std::string>& name);
    // `id` and `before` are card keys.
    void moveCard(const std::string& id, std::ptrdiff_t offset);
    void moveCard(const std::string& id, const std::string& before);
    void resetCardOrder();

  signals:
    void limitsChanged();
    void accountsChanged();
    void codexAccountsChanged();
    void claudeManualDirectoriesChanged();
    void codexSelectionChanged();
    void codexBinaryChanged();
    void codexStatusChanged();
    void codexAccountStatusesChanged();
    void receivedCodexChanged();
    void claudeTiersChanged();
    void menuOrderChanged();
    void usageNamesChanged();
    void menuTitleChanged();
    void menuGaugeChanged();
    void usageDisplayChanged();
    void recentUsagePeriodChanged();
    void appThemeChanged();
    void languageChanged();
    void claudeUsagePausedChanged();
    void codexEnabledChanged();
    void launchAtLoginChanged();
    void isRemovingChanged();
    void removedEverythingChanged();
    void revealsMenuCardOrderChanged();
    void failureChanged();

  private:
    using Changed = void (HelperModel::*)();
    using Account = ClaudeCodeSetup::Account;

    // Gives the field its value and tells the observers, if that is a change.
    template <class Value>
    bool assign(Value& field, Value value, Changed changed) {
        if (field == value) return false;
        field = std::move(value);
        emit(this->*changed)();
        return true;
    }

    void readSettings();
    void makeAbsentPublishers();
    void readAutoConnect();
    void startServices();

    std::vector<Account> discoverAccounts() const;
    void rediscoverAccounts();
    void connectNewAccounts();
    void readTiers();

    void decorate(SubscriptionLimits& limits) const;
    std::optional<std::string> planTierOf(const SubscriptionLimits& limits) const;
    std::optional<std::string> displayNameOf(const SubscriptionLimits& limits) const;
    std::optional<std::string> defaultNameOf(const SubscriptionLimits& limits) const;
    void storeHistory();
    void updateMenuTitle();
    void publish() const;

    void scheduleReload();
    void schedulePoll();
    static QCoro::Task<> reloadSoon(QPointer<HelperModel> model, Sleep sleep);
    static QCoro::Task<> pollSoon(QPointer<HelperModel> model, Sleep sleep);
    static QCoro::Task<> refreshEveryMinute(QPointer<HelperModel> model, Sleep sleep);
    static QCoro::Task<> pollForever(QPointer<HelperModel> model, Sleep sleep);

    // What became of a run after an answer.
    enum class PollEnd { reached, cut };
    QCoro::Task<PollEnd> askCodex(std::string executable);
    void finishPoll();
    bool isAsked(const CodexAccounts::Account& account) const;
    bool isCollectingCodex() const { return codexEnabled_ && !isRemoving_; }
    void receive(const CodexAccounts::Account& account, const CodexPoller::Reading& reading);
    void setCodexAccountStatus(const std::string& folder, std::optional<std::string> text);

    FileResult<void> connect(const Account& account);
    FileResult<void> connectAndVerify(const Account& account);
    FileResult<void> disconnect(const Account& account);
    void noteClaudeConnection();
    void addManualDirectory(const std::string& path);
    void connectAdded(const Account& account);
    void leaveAllAlone();
    static QCoro::Task<std::vector<std::string>> withdraw(QPointer<HelperModel> model);
    void setAutoConnect(ClaudeCodeSetup::AutoConnect autoConnect);
    void setCodexSelection(CodexAccounts::Selection selection);
    void setMenuOrder(std::vector<std::string> order);
    void setFailure(std::optional<std::string> text);
    void excludeAllBut(const std::string& folder, CodexAccounts::Selection& selection) const;
    void switchCodexOn();
    void forgetCodexAnswers(const CodexAccounts::Account& account);
    std::vector<std::string> shownCardKeys() const;

    Surroundings surroundings_;

    std::vector<SubscriptionLimits> limits_;
    std::vector<Account> accounts_;
    std::vector<CodexAccounts::Account> codexAccounts_;
    std::vector<std::string> claudeManualDirectories_;
    CodexAccounts::Selection codexSelection_;
    std::optional<std::string> codexBinary_;
    std::optional<std::string> codexStatus_;
    Texts codexAccountStatuses_;
    Readings receivedCodex_;
    Texts claudeTiers_;
    std::vector<std::string> menuOrder_;
    Texts usageNames_;
    std::string menuTitle_;
    MenuBarGauge menuGauge_;
    UsageDisplay usageDisplay_ = UsageDisplay::remaining;
    RecentUsagePeriod recentUsagePeriod_ = RecentUsagePeriod::off;
    AppTheme appTheme_ = AppTheme::system;
    const Language* language_ = &allLanguages().front();
    bool claudeUsagePaused_ = false;
    bool codexEnabled_ = true;
    bool launchAtLogin_ = false;
    bool isRemoving_ = false;
    bool removedEverything_ = false;
    bool revealsMenuCardOrder_ = false;
    std::optional<std::string> failure_;

    std::int64_t codexConnectionRevision_ = 0;
    bool pollingCodex_ = false;
    bool codexPollRequested_ = false;
    bool reloadScheduled_ = false;
    ClaudeCodeSetup::AutoConnect autoConnect_;
    Paths autoConnectFailed_;
    ClaudeTierReader tierReader_;
    LimitsMemory memory_;
    RecentUsageHistory recentHistory_;
};

}  // namespace brimwatch
