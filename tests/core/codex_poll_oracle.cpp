#include "codex_poll_oracle.h"

#include <algorithm>
#include <utility>

namespace brimwatch::test {

CodexPollOracle::CodexPollOracle(std::vector<Account> accounts) : all_(std::move(accounts)) {
    for (const Account& account : all_)
        folders_.insert(account.folder);
    refresh();
}

void CodexPollOracle::setEnabled(bool enabled) {
    if (view_.isRemoving && enabled) return;
    if (enabled != view_.isEnabled) ++revision_;
    view_.isEnabled = enabled;
    if (!enabled) {
        view_.received.clear();
        view_.statuses.clear();
        view_.codexStatus.reset();
    }
    reload();
}

void CodexPollOracle::setAccount(const Account& account, bool on) {
    if (view_.isRemoving) return;
    ++revision_;
    if (!on) {
        view_.excluded.insert(account.folder);
        view_.received.erase(account.key);
        view_.statuses.erase(account.folder);
        refresh();
        return;
    }
    if (!view_.isEnabled) {
        for (const Account& other : known_)
            view_.excluded.insert(other.folder);
    }
    view_.excluded.erase(account.folder);
    setEnabled(true);
    refresh();
    ++tasks_;
}

void CodexPollOracle::connect() {
    if (view_.isRemoving) return;
    if (known_.empty()) return;
    ++revision_;
    for (const Account& account : known_)
        view_.excluded.erase(account.folder);
    setEnabled(true);
    refresh();
    ++tasks_;
}

void CodexPollOracle::beginRemoval() {
    if (view_.isRemoving) return;
    view_.isRemoving = true;
    setEnabled(false);
}

void CodexPollOracle::endRemoval() {
    if (!view_.isRemoving) return;
    refresh();
    view_.isRemoving = false;
}

void CodexPollOracle::poll() {
    if (!isCollecting()) return;
    if (view_.isPolling) {
        view_.isRequested = true;
        return;
    }
    view_.isPolling = true;
    refresh();
    if (!isInstalled_) {
        view_.codexStatus = "codex를 못 찾았어요. ChatGPT 앱이나 codex CLI를 설치해 주세요.";
        finish();
        return;
    }
    run_.assign(known_.begin(), known_.end());
    goOn();
}

void CodexPollOracle::reload() {
    view_.shown.clear();
    for (const Account& account : known_) {
        const auto file = view_.files.find(account.key);
        if (isWanted(account) && file != view_.files.end()) view_.shown.insert(*file);
    }
}

void CodexPollOracle::refresh() {
    known_.clear();
    for (const Account& account : all_) {
        if (account.staysListed || folders_.contains(account.folder)) known_.push_back(account);
    }
    reload();
}

void CodexPollOracle::settle() {
    endRemoval();
    while (tasks_ > 0) {
        --tasks_;
        poll();
    }
}

void CodexPollOracle::answer(std::optional<double> percentage, const std::string& status) {
    view_.openQuestions = 0;
    if (percentage && !isCollecting()) {
        finish();
        return;
    }
    if (revision_ == revisionOfQuestion_ && isWanted(asked_)) {
        view_.statuses[asked_.folder] = status;
        if (percentage) {
            view_.received[asked_.key] = *percentage;
            view_.files[asked_.key] = *percentage;
            refresh();
        }
    }
    goOn();
}

bool CodexPollOracle::isWanted(const Account& account) const {
    const bool isKnown = std::any_of(known_.begin(), known_.end(), [&](const Account& known) {
        return known.key == account.key;
    });
    return isCollecting() && isKnown && !view_.excluded.contains(account.folder);
}

void CodexPollOracle::goOn() {
    while (!run_.empty()) {
        asked_ = run_.front();
        run_.pop_front();
        if (!isWanted(asked_)) continue;
        view_.asked.push_back(asked_.key);
        view_.openQuestions = 1;
        revisionOfQuestion_ = revision_;
        return;
    }
    view_.codexStatus.reset();
    finish();
}

void CodexPollOracle::finish() {
    run_.clear();
    view_.isPolling = false;
    if (std::exchange(view_.isRequested, false)) ++tasks_;
}

}  // namespace brimwatch::test
