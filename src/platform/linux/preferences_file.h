// What the user chose: one JSON object in a file that the user may edit as well.
//
// Each change starts from the file as it is now and touches one key; all others keep their values,
// the numbers to the digit. Two programs that write at once wait for each other as long as
// `FileSystem::lock` lets them; an editor knows of no lock, so the file is looked at again right
// before it is replaced. Symbolic links are followed; mode and owner stay.
//
// A file that is damaged or can't be read is kept beside the new one (`keepDamagedFile`). It, and
// one that went away, changes nothing of what is known. Belongs to one thread.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/file_system.h"
#include "support/json_value.h"
#include "support/stored_file.h"

namespace brimwatch {

// Nothing larger is read or written.
inline constexpr std::size_t preferencesSizeLimit = 1U << 20U;

class PreferencesFile {
  public:
    // Reads the file; what can't be read or parsed is empty. Writers of one file share `lockPath`.
    PreferencesFile(FileSystem& files, std::string path, std::string lockPath);

    std::optional<JsonValue> value(std::string_view key) const;
    // Waits for the disk. Without a value the key is removed. On failure the change holds for this
    // object and is tried again with the next one. One that would make the file too large fails
    // alone; later ones come first.
    FileResult<void> change(std::string_view key, std::optional<JsonValue> value);
    // Tries again what failed, unless it was too large.
    FileResult<void> flush();

  private:
    struct Change {
        std::string key;
        std::optional<JsonValue> value;
    };

    FileResult<void> write();
    FileResult<void> writeOnce();
    FileResult<void> replace(const StoredFile& former, const JsonObject& next);
    JsonObject changed(JsonObject object) const;
    void settle(JsonObject stored);
    std::vector<Change>::const_iterator findUnwritten(std::string_view key) const;

    FileSystem& files_;
    std::string path_;
    std::string lockPath_;
    JsonObject known_;
    std::vector<Change> unwritten_;  // one a key, the latest first
    bool hasFailed_ = false;
};

}  // namespace brimwatch
