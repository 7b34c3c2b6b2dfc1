// A model with accounts of Claude Code and Codex, and what tests of both ask about them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "model_fixture.h"

namespace brimwatch::test {

class AccountsFixture : public ModelFixture {
  protected:
    using Kind = CodexPoller::Failure::Kind;

    void settle() { time_.settle(); }
    void poll() { static_cast<void>(model().pollCodex()); }
    void removeEverything() { static_cast<void>(model().removeEverything()); }
    // Leaves the model in the middle of a removal; `settle` ends it. For a model that has not
    // started yet.
    void startAndBeginRemoval();

    // Accounts of the model, found by their folder and by their key.
    ClaudeCodeSetup::Account claudeAccount(const std::string& folder);
    CodexAccounts::Account codexAccount(std::string_view key);
    std::string codexFolder(std::string_view key) { return codexAccount(key).directory; }

    // Settings of a Claude Code folder whose status line is that command.
    static void writeStatusLine(const std::string& folder, const std::string& command);
    static std::string statusLine(const std::string& folder);  // empty if there is none
    static std::string ourStatusLine(const std::string& id);
    // Makes every change of that folder's settings fail until `files_.failNothing()`.
    void lockSettings(const std::string& folder, std::errc error = std::errc::no_space_on_device);

    // The status of a Codex account, empty if there is none.
    std::string codexStatusOf(std::string_view key);
    // What the status says of an answer that comes now.
    std::string receivedNow() const;
    // Answers the open question with both windows used to that percentage.
    void answer(double percentage);
    std::vector<std::string> askedKeys() const;
    // The weekly percentage in a limits file, or nothing if there is no such file.
    std::optional<double> storedWeekly(const std::string& id) const;

    // The JSON text under a key of the settings.
    std::string stored(std::string_view key) const { return defaults_.stored(std::string(key)); }
};

// As a failure shows it.
std::string messageOf(std::errc error);

}  // namespace brimwatch::test
