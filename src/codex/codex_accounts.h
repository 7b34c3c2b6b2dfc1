// The Codex folders of the user, one for each subscription, and the `codex` executable.
//
// Codex keeps its login in a folder, `~/.codex` unless `CODEX_HOME` names another. Nothing in such
// a folder is ever opened or changed here: `auth.json` and `config.toml` are only looked for.
//
// No operation fails. What the disk does not tell counts as not being there. Main thread only.
#pragma once

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "support/environment.h"
#include "support/file_system.h"
#include "support/json_value.h"

namespace brimwatch {

struct CodexAccounts {
    struct Account {
        std::string directory;  // standardised, symbolic links resolved
        std::string name;       // shown unless the user gave another
        std::string key;        // names the limits file, "codex-<key>.json"

        bool operator==(const Account&) const = default;
    };

    // What the user chose beyond what is found. Paths are standardised, symbolic links resolved.
    struct Selection {
        std::vector<std::string> manualDirectories;
        std::set<std::string, std::less<>> excluded;  // listed, but not asked for figures

        // Also switches on a folder that was switched off.
        void add(FileSystem& files, std::string_view folder);

        // Nothing unless both keys are there with their types; unknown keys are ignored.
        static std::optional<Selection> fromJson(const JsonValue& value);
        JsonObject toJson() const;

        bool operator==(const Selection&) const = default;
    };

    // The default folder, whether or not it exists, the folders of the home folder that hold a
    // login, and the manual ones, also those that have gone. Sorted by name, then by folder; each
    // folder once.
    static std::vector<Account> accounts(FileSystem& files, std::string_view home,
                                         const std::vector<std::string>& manualDirectories,
                                         const Environment& environment);

    static Account account(FileSystem& files, std::string_view folder, std::string_view home);

    // Whether the folder may be added by hand.
    static bool isCodexFolder(FileSystem& files, std::string_view folder);

    // Where `codex` may be, the most preferred first. The first nine are the same everywhere; what
    // follows is where Linux tools install it. The search path of the shell is not asked.
    static std::vector<std::string> binaryCandidates(FileSystem& files, std::string_view home);

    // `isExecutable` tells whether a path names an executable file.
    static std::optional<std::string> findBinary(
        FileSystem& files, std::string_view home,
        const std::function<bool(const std::string& path)>& isExecutable);
};

}  // namespace brimwatch
