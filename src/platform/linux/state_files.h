// What the program learnt: one file a key, `KEY.json` with one JSON value, written when it changes,
// on a thread of its own and without waiting for the disk. Of several changes the latest is
// written.
//
// A file that is damaged or can't be read counts as absent, and is kept beside the one that
// replaces it (`keepDamagedFile`). One process writes; nobody else's changes are looked for.
// Belongs to one thread.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/linux/background_tasks.h"
#include "support/file_system.h"
#include "support/json_value.h"

namespace brimwatch {

// Nothing larger is read or written.
inline constexpr std::size_t stateFileSizeLimit = 16U << 20U;

class StateFiles {
  public:
    // Reads the files of those keys; there are no others.
    StateFiles(FileSystem& files, std::string folder, std::initializer_list<std::string_view> keys);

    bool has(std::string_view key) const { return entries_.contains(key); }
    std::optional<JsonValue> value(std::string_view key) const;
    // Without a value the file is removed. Fails only for a value that is too large to be stored,
    // which then holds for this object alone.
    FileResult<void> change(std::string_view key, std::optional<JsonValue> value);
    // Tries again what failed.
    void retry() { tasks_.retry(); }
    // Waits until everything was tried, and tells whether it is written.
    FileResult<void> flush() { return tasks_.flush(); }

  private:
    struct Entry {
        std::optional<JsonValue> value;
        bool isTooLarge = false;
        // Whether the file still holds what could not be taken in. Of the tasks, once they begin.
        std::shared_ptr<bool> holdsUnread;
    };

    Entry read(std::string_view key) const;
    std::string path(std::string_view key) const;

    FileSystem& files_;
    std::string folder_;
    std::map<std::string, Entry, std::less<>> entries_;
    BackgroundTasks tasks_;
};

}  // namespace brimwatch
