// The settings of the program: what the user chose and what the program learnt, by key.
//
// A value is one of few types; one of another type counts as absent, and so does null. A change is
// seen by the next call, whether or not it could be stored. Observers are not told: the model,
// which makes the changes, tells its own. Nothing throws. Main thread only.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/file_system.h"
#include "support/json_value.h"

namespace brimwatch {

namespace settings_key {
// What the user chose.
inline constexpr std::string_view setupDone = "setupDone";
inline constexpr std::string_view claudeUsagePaused = "claudeUsagePaused";
inline constexpr std::string_view claudeManualDirectories = "claudeManualDirectories";
inline constexpr std::string_view claudeAutoConnect = "claudeAutoConnect";
inline constexpr std::string_view menuOrder = "menuOrder";
inline constexpr std::string_view usageNames = "usageNames";
inline constexpr std::string_view codexAccounts = "codexAccounts";
inline constexpr std::string_view codexEnabled = "codexEnabled";
inline constexpr std::string_view recentUsagePeriod = "recentUsagePeriod";
inline constexpr std::string_view usageDisplay = "usageDisplay";
inline constexpr std::string_view appTheme = "appTheme";
inline constexpr std::string_view language = "language";
inline constexpr std::string_view cloudEnabled = "cloudEnabled";
inline constexpr std::string_view phoneLinkPaused = "phoneLinkPaused";
// What the program learnt.
inline constexpr std::string_view limitsMemory = "limitsMemory";
inline constexpr std::string_view recentUsageHistory = "recentUsageHistory";
inline constexpr std::string_view macID = "macID";
}  // namespace settings_key

class SettingsStore {
  public:
    using Dictionary = std::map<std::string, std::string, std::less<>>;

    SettingsStore() = default;
    SettingsStore(const SettingsStore&) = delete;
    SettingsStore& operator=(const SettingsStore&) = delete;
    virtual ~SettingsStore() = default;

    std::optional<bool> boolean(std::string_view key) const;
    // Also of a number that is whole without being spelled so.
    std::optional<std::int64_t> integer(std::string_view key) const;
    std::optional<std::string> string(std::string_view key) const;
    // Absent as a whole if one element is of another type; the same with a dictionary.
    std::optional<std::vector<std::string>> strings(std::string_view key) const;
    std::optional<Dictionary> dictionary(std::string_view key) const;
    virtual std::optional<JsonValue> json(std::string_view key) const = 0;

    // Strings are those of `JsonValue`; a path becomes one by `textFromPath`. What the call gives
    // is that of `setJson`.
    FileResult<void> setBoolean(std::string_view key, bool value);
    FileResult<void> setInteger(std::string_view key, std::int64_t value);
    FileResult<void> setString(std::string_view key, std::string_view value);
    FileResult<void> setStrings(std::string_view key, const std::vector<std::string>& value);
    FileResult<void> setDictionary(std::string_view key, const Dictionary& value);
    // Success: what the user chose is on the disk, what the program learnt is on its way there. A
    // value that failed to reach the disk is tried again with the next change of either kind. One
    // that is too large to be stored fails alone, and holds for this run. If the stored value is
    // equal already, nothing is written.
    virtual FileResult<void> setJson(std::string_view key, JsonValue value) = 0;
    virtual FileResult<void> remove(std::string_view key) = 0;

    // Waits until everything was written once more, and tells whether that went well. For the end
    // of the process.
    virtual FileResult<void> flush() = 0;
};

}  // namespace brimwatch
