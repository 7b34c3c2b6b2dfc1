// The accounts as their providers see them, and the programs on this machine that report them: some
// lately, some with figures of hours ago.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "core/scripted_codex.h"
#include "harness/random.h"
#include "limits/limits_file.h"

namespace brimwatch::test {

class UsageWorld {
  public:
    // The one whose sessions leave out a reset time now and then.
    inline static const std::string forgetfulAccount = "f";

    struct Account {
        std::string key;
        LimitsFile::Windows windows;                // as the provider has them
        std::vector<LimitsFile::Windows> sessions;  // as each session last heard of them
        bool isBusy = true;
        std::string codexPlan = "plus";
    };

    // Times of the providers, which no setting of a clock here changes.
    UsageWorld(Random& random, std::int64_t nowSeconds, const std::vector<std::string>& keys);

    void advance(std::chrono::seconds duration);
    std::vector<Account>& accounts() { return accounts_; }

    // What one of the account's sessions reports now.
    LimitsFile::Windows report(Account& account);
    // What Codex answers, now and then an error.
    CodexReadResult answer(const Account& account);

  private:
    void startCycle(LimitsFile::Windows& windows, const std::string& key, std::int64_t seconds);

    Random& random_;
    std::int64_t now_;
    std::vector<Account> accounts_;
};

}  // namespace brimwatch::test
