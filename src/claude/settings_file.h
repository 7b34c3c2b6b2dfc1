// `settings.json` of a Claude Code folder: the user's file, shared with Claude Code and whatever
// else the user keeps there. It is read whole and replaced whole, and only while it still is what
// was read. There is no lock that the other writers would heed.
//
// Beside it lie safety copies for the user, which this program never reads back nor removes:
// `settings.json.brimwatch-backup`, the file as it was before our first change, and
// `settings.json.brimwatch-damaged-N`, files that could not be read or parsed and were replaced.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "support/file_system.h"
#include "support/json_value.h"
#include "support/stored_file.h"

namespace brimwatch {

// Far above any real one. A larger one is a failure: what is not looked at is not replaced.
inline constexpr std::size_t settingsSizeLimit = 256U << 20U;

// The file as it stood at one moment.
struct SettingsFile : StoredFile {
    std::optional<JsonObject> object;  // nothing if there is no file, or it holds none

    bool isDamaged() const { return isUnreadable || (bytes && !object); }

    bool operator==(const SettingsFile&) const = default;
};

std::string settingsPath(std::string_view folder);

// A file that is there but can't be read or parsed is read again after a pause of 100 ms, since
// its owner may be in the middle of writing. A file that is not there is no failure.
FileResult<SettingsFile> readSettings(FileSystem& files, const std::string& folder,
                                      const std::function<void(std::chrono::milliseconds)>& pause);

// Makes the backup, whole or not at all, if there is none yet. A failure is dropped.
void backupSettings(FileSystem& files, const std::string& folder, const SettingsFile& settings);

// Sees to it that the bytes of a damaged file lie beside it, in the backup or in a copy of their
// own; a file that can't be read is kept itself, under one more name.
FileResult<void> keepDamagedSettings(FileSystem& files, const std::string& folder,
                                     const SettingsFile& settings);

// Replaces the file at the end of its symbolic links, with its mode and owner. The failure
// `resource_unavailable_try_again` says that the file is no longer `former` and was left alone: a
// change that falls between that look and the renaming, the very next call, is lost.
FileResult<void> writeSettings(FileSystem& files, const std::string& folder,
                               const JsonObject& settings, const SettingsFile& former);

}  // namespace brimwatch
