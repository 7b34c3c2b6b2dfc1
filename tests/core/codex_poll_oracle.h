// The polling of Codex told in the plainest way: what a model has to show after any list of
// events. Whatever the model starts as a task of its own waits here until `settle`.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace brimwatch::test {

class CodexPollOracle {
  public:
    struct Account {
        std::string key;
        std::string folder;
        bool staysListed = false;  // also when the folder is gone
    };
    using Figures = std::map<std::string, double>;  // weekly percentages by account key

    // All folders are there, in the order of the list, and everything is on.
    explicit CodexPollOracle(std::vector<Account> accounts);

    // --- What the user does, and the world ---
    void setEnabled(bool enabled);
    void setAccount(const Account& account, bool on);
    void connect();
    void beginRemoval();
    void endRemoval();
    void poll();
    void reload();
    void refresh();
    void removeFolder(const Account& account) { folders_.erase(account.folder); }
    void setInstalled(bool installed) { isInstalled_ = installed; }
    void settle();
    // Without a percentage: a failure. `status` is the text that the answer leaves if it is taken.
    void answer(std::optional<double> percentage, const std::string& status);

    // --- What shows ---
    struct View {
        bool isEnabled = true;
        bool isRemoving = false;
        bool isPolling = false;
        bool isRequested = false;
        std::optional<std::string> codexStatus;
        std::map<std::string, std::string> statuses;  // by folder
        Figures received;
        Figures files;
        Figures shown;
        std::set<std::string> excluded;  // folders
        std::vector<std::string> asked;  // keys, the answered ones included
        std::size_t openQuestions = 0;

        bool operator==(const View&) const = default;
    };
    const View& view() const { return view_; }

  private:
    bool isCollecting() const { return view_.isEnabled && !view_.isRemoving; }
    bool isWanted(const Account& account) const;
    void goOn();
    void finish();

    View view_;
    std::vector<Account> all_;
    std::set<std::string> folders_;  // that exist
    std::vector<Account> known_;     // as of the last refresh
    std::deque<Account> run_;        // who is still to be asked
    Account asked_;
    std::int64_t revision_ = 0;
    std::int64_t revisionOfQuestion_ = 0;
    int tasks_ = 0;
    bool isInstalled_ = true;
};

}  // namespace brimwatch::test
