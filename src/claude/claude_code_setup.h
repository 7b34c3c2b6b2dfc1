// The Claude Code folders of a user: which there are, how each stands towards this program, what
// each is called, and the program's registration as their status line.
//
// Nothing is kept between calls: every answer comes from the disk as it is now. Discovery never
// fails and never writes; what it can't read counts as not there. Paths are absolute. A folder in
// the home whose name is not UTF-8, and one to be added whose path is not, is never an account: no
// command in JSON could name it. Main thread.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "claude/command_environment.h"
#include "support/file_system.h"
#include "support/json_value.h"

namespace brimwatch {

struct ClaudeCodeSetup {
    enum class State {
        notRegistered,  // no status line of ours; the user's own may be there
        registered,     // the status line is ours and names a usable executable
        needsRepair,    // the status line is ours, but its executable can't be used
        oldHelper,      // the status line is that of the script that came before this program
    };

    struct Account {
        std::string directory;
        State state = State::notRegistered;
        bool isManual = false;  // picked by the user where discovery would not have looked

        bool operator==(const Account&) const = default;
    };

    // Which folders are connected without asking.
    struct AutoConnect {
        bool enabled = false;
        std::set<std::string> declined;  // `directory` of folders that are left alone

        // For a user of whom nothing is stored yet: who connected some folders chose not to connect
        // the others.
        static AutoConnect inferred(const std::vector<Account>& accounts);
        // The accounts to connect now, in the order given, without the folders in `skipped`.
        std::vector<Account> candidates(const std::vector<Account>& accounts,
                                        const std::set<std::string>& skipped) const;

        // Nothing unless both keys are there with their types; unknown keys are ignored.
        static std::optional<AutoConnect> fromJson(const JsonValue& value);
        JsonObject toJson() const;

        bool operator==(const AutoConnect&) const = default;
    };

    // As an `std::error_code`, whose message is for the user.
    enum class ConnectionFailure { installRequired = 1 };

    // Lets that time pass.
    using Pause = std::function<void(std::chrono::milliseconds)>;

    // The discovered accounts by name, then those of the manual folders in the order given; each
    // folder once, however many links lead to it.
    static std::vector<Account> accounts(FileSystem& files,
                                         const std::vector<std::string>& manualFolders,
                                         const std::string& givenHome,
                                         const CommandEnvironment& environment);

    // The account key, stable for as long as the folder has its path.
    static std::string accountID(FileSystem& files, const Account& account,
                                 const std::string& home);
    // The id without the digits that keep manual folders of one name apart.
    static std::string accountName(FileSystem& files, const Account& account,
                                   const std::string& home);

    // The `.claude.json` that belongs to the folder: for `~/.claude` it lies beside it.
    static std::string claudeConfigFile(std::string_view folder, std::string_view home);

    // Whether the user may add the folder by hand: Claude Code has run in it.
    static bool isClaudeFolder(FileSystem& files, std::string_view folder, std::string_view home);

    // How a folder with these parsed settings stands.
    static State classify(FileSystem& files, const JsonObject& settings,
                          const CommandEnvironment& environment);

    // Whether a command that names this copy of the program will work, and can be written as JSON.
    static bool isUsableCopy(FileSystem& files, const std::string& executable,
                             const CommandEnvironment& environment);

    // Makes the program the status line of the folder; the user's own command goes on as the one
    // that ours runs. `account` is an `accountID`. `settings.json` changes in nothing else and is
    // the old or the new one at any moment. One that can't be read or parsed is replaced, and kept
    // beside it; where it can't be kept, it is left alone.
    static FileResult<void> connect(FileSystem& files, const std::string& folder,
                                    const std::optional<std::string>& account,
                                    const CommandEnvironment& environment, const Pause& pause);

    // Puts the user's own status line back. Nothing happens if the present one is not ours.
    static FileResult<void> disconnect(FileSystem& files, const std::string& folder,
                                       const CommandEnvironment& environment, const Pause& pause);
};

// NOLINTNEXTLINE(readability-identifier-naming): the name that std::error_code looks for
std::error_code make_error_code(ClaudeCodeSetup::ConnectionFailure failure);

}  // namespace brimwatch

template <>
struct std::is_error_code_enum<brimwatch::ClaudeCodeSetup::ConnectionFailure> : std::true_type {};
