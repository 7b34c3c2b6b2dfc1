// The settings store of a Linux desktop: what the user chose in one JSON file of the configuration
// folder, what the program learnt in files of the state folder, one a key.
//
// Nothing that is wrong with the files stops the start: what can't be used counts as absent, and is
// kept under another name beside what replaces it. Main thread only; `FileSystem` is used on a
// second thread, too.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/linux/preferences_file.h"
#include "platform/linux/state_files.h"
#include "platform/settings_store.h"

namespace brimwatch {

class JsonSettingsStore final : public SettingsStore {
  public:
    // `settingsFile` and `stateFolder` of support/paths.h. The file system must outlive the store.
    JsonSettingsStore(FileSystem& files, const std::string& settingsFile,
                      const std::string& stateFolder);

    std::optional<JsonValue> json(std::string_view key) const override;
    FileResult<void> setJson(std::string_view key, JsonValue value) override;
    FileResult<void> remove(std::string_view key) override;
    FileResult<void> flush() override;

  private:
    FileResult<void> change(std::string_view key, std::optional<JsonValue> value);

    PreferencesFile preferences_;
    StateFiles state_;
};

}  // namespace brimwatch
