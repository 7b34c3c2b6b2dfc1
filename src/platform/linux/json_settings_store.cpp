#include "platform/linux/json_settings_store.h"

#include <utility>

#include "support/paths.h"

namespace brimwatch {

JsonSettingsStore::JsonSettingsStore(FileSystem& files, const std::string& settingsFile,
                                     const std::string& stateFolder)
    : preferences_(files, settingsFile, joinPath(stateFolder, ".settings.lock")),
      state_(files, stateFolder,
             {settings_key::limitsMemory, settings_key::recentUsageHistory, settings_key::macID}) {}

std::optional<JsonValue> JsonSettingsStore::json(std::string_view key) const {
    std::optional<JsonValue> value = state_.has(key) ? state_.value(key) : preferences_.value(key);
    if (value && value->isNull()) return std::nullopt;
    return value;
}

FileResult<void> JsonSettingsStore::setJson(std::string_view key, JsonValue value) {
    return change(key, std::move(value));
}

FileResult<void> JsonSettingsStore::remove(std::string_view key) {
    return change(key, std::nullopt);
}

FileResult<void> JsonSettingsStore::flush() {
    const FileResult<void> chosen = preferences_.flush();
    const FileResult<void> learnt = state_.flush();
    return chosen ? learnt : chosen;
}

FileResult<void> JsonSettingsStore::change(std::string_view key, std::optional<JsonValue> value) {
    if (state_.has(key)) {
        static_cast<void>(preferences_.flush());
        return state_.change(key, std::move(value));
    }
    state_.retry();
    return preferences_.change(key, std::move(value));
}

}  // namespace brimwatch
