#include "platform/linux/state_files.h"

#include <utility>

#include "support/atomic_file.h"
#include "support/json_reader.h"
#include "support/json_writer.h"
#include "support/paths.h"
#include "support/stored_file.h"

namespace brimwatch {
namespace {

constexpr ReplacementOptions stateOptions = {
    .durability = Durability::renamed, .permissions = 0600, .owner = std::nullopt};

FileResult<void> keepFormer(FileSystem& files, const std::string& path) {
    const FileResult<StoredFile> former = readStoredFile(files, path, stateFileSizeLimit);
    if (!former) return tl::unexpected(former.error());
    return former->exists() ? keepDamagedFile(files, path, *former, stateOptions)
                            : FileResult<void>();
}

FileResult<void> removeFile(FileSystem& files, const std::string& path) {
    const FileResult<void> removed = files.remove(path);
    if (!removed && removed.error() == std::errc::no_such_file_or_directory) return {};
    return removed;
}

// What a file shall hold, or nothing if it shall not be there.
struct StateChange {
    std::string path;
    std::optional<std::string> bytes;
};

FileResult<void> carryOut(FileSystem& files, const StateChange& change) {
    if (!change.bytes) return removeFile(files, change.path);
    const std::string folder = parentPath(change.path);
    if (const FileResult<void> made = files.makeFolders(folder); !made) return made;
    files.removeAbandonedTemporaries(folder);
    return replaceFile(files, change.path, *change.bytes, stateOptions);
}

FileResult<void> carryOut(FileSystem& files, const StateChange& change, bool& holdsUnread) {
    if (holdsUnread) {
        const FileResult<void> kept = keepFormer(files, change.path);
        if (!kept) return kept;
    }
    const FileResult<void> done = carryOut(files, change);
    holdsUnread &= !done;
    return done;
}

}  // namespace

StateFiles::StateFiles(FileSystem& files, std::string folder,
                       std::initializer_list<std::string_view> keys)
    : files_(files), folder_(std::move(folder)) {
    for (const std::string_view key : keys)
        entries_.emplace(key, read(key));
}

std::optional<JsonValue> StateFiles::value(std::string_view key) const {
    const auto entry = entries_.find(key);
    return entry != entries_.end() ? entry->second.value : std::nullopt;
}

FileResult<void> StateFiles::change(std::string_view key, std::optional<JsonValue> value) {
    Entry& entry = entries_.find(key)->second;
    if (entry.value == value && !entry.isTooLarge) return {};
    entry.value = std::move(value);
    StateChange change{.path = path(key), .bytes = {}};
    if (entry.value) change.bytes = writeJson(*entry.value, JsonLayout::compact);
    entry.isTooLarge = change.bytes && change.bytes->size() > stateFileSizeLimit;
    if (entry.isTooLarge) {
        return tl::unexpected(std::make_error_code(std::errc::file_too_large));
    }
    tasks_.submit(std::string(key),
                  [&files = files_, change = std::move(change), holdsUnread = entry.holdsUnread] {
                      return carryOut(files, change, *holdsUnread);
                  });
    return {};
}

StateFiles::Entry StateFiles::read(std::string_view key) const {
    const FileResult<std::string> bytes = files_.read(path(key), stateFileSizeLimit);
    std::optional<JsonValue> value = bytes ? parseJson(*bytes) : std::nullopt;
    const bool isMissing = !bytes && bytes.error() == std::errc::no_such_file_or_directory;
    const bool holdsUnread = !value && !isMissing;
    return {.value = std::move(value), .holdsUnread = std::make_shared<bool>(holdsUnread)};
}

std::string StateFiles::path(std::string_view key) const {
    return joinPath(folder_, std::string(key) + ".json");
}

}  // namespace brimwatch
