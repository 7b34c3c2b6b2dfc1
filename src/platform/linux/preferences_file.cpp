#include "platform/linux/preferences_file.h"

#include <utility>

#include "support/json_reader.h"
#include "support/json_writer.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

constexpr std::uint32_t newFilePermissions = 0600;
constexpr int attempts = 5;

std::optional<JsonObject> objectIn(const StoredFile& file) {
    return file.bytes ? parseJsonObject(*file.bytes) : std::nullopt;
}

}  // namespace

PreferencesFile::PreferencesFile(FileSystem& files, std::string path, std::string lockPath)
    : files_(files), path_(std::move(path)), lockPath_(std::move(lockPath)) {
    const FileResult<StoredFile> file = readStoredFile(files_, path_, preferencesSizeLimit);
    if (file) known_ = objectIn(*file).value_or(JsonObject());
}

std::optional<JsonValue> PreferencesFile::value(std::string_view key) const {
    const auto change = unwritten_.find(key);
    if (change != unwritten_.end()) return change->second;
    const JsonValue* value = known_.find(key);
    return value != nullptr ? std::optional(*value) : std::nullopt;
}

FileResult<void> PreferencesFile::change(std::string_view key, std::optional<JsonValue> value) {
    unwritten_.insert_or_assign(std::string(key), std::move(value));
    const FileResult<void> written = write();
    hasFailed_ = !written;
    return written;
}

FileResult<void> PreferencesFile::flush() {
    if (!hasFailed_) return {};
    const FileResult<void> written = write();
    hasFailed_ = !written;
    return written;
}

FileResult<void> PreferencesFile::write() {
    static_cast<void>(files_.makeFolders(parentPath(lockPath_)));
    // Where there are no locks, the look before the replacement has to do.
    const auto lock = files_.lock(lockPath_, LockWait::atMostTwoSeconds);
    FileResult<void> written;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        written = writeOnce();
        if (written || written.error() != std::errc::resource_unavailable_try_again) break;
    }
    return written;
}

FileResult<void> PreferencesFile::writeOnce() {
    const FileResult<StoredFile> former = readStoredFile(files_, path_, preferencesSizeLimit);
    if (!former) return tl::unexpected(former.error());
    const std::optional<JsonObject> present = objectIn(*former);
    const JsonObject next = changed(present.value_or(known_));
    const bool isStored = present == next || (!former->exists() && next.empty());
    if (!isStored || hasFailed_) {
        const FileResult<void> replaced = replace(*former, next);
        if (!replaced) return replaced;
    }
    settle(next);
    return {};
}

FileResult<void> PreferencesFile::replace(const StoredFile& former, const JsonObject& next) {
    const std::string text = writeJson(next, JsonLayout::pretty) + '\n';
    if (text.size() > preferencesSizeLimit) {
        return tl::unexpected(std::make_error_code(std::errc::file_too_large));
    }
    const std::string folder = parentPath(former.target);
    if (const FileResult<void> made = files_.makeFolders(folder); !made) return made;
    files_.removeAbandonedTemporaries(folder);
    const ReplacementOptions options = replacementLike(former, newFilePermissions);
    if (former.exists() && !objectIn(former)) {
        const FileResult<void> kept = keepDamagedFile(files_, path_, former, options);
        if (!kept) return kept;
    }
    const auto file = prepareReplacement(files_, former.target, text, options);
    if (!file) return tl::unexpected(file.error());
    if (readStoredFile(files_, path_, preferencesSizeLimit) != former) {
        const auto changed = std::make_error_code(std::errc::resource_unavailable_try_again);
        return tl::unexpected(changed);
    }
    return finishReplacement(files_, former.target, **file, options.durability);
}

JsonObject PreferencesFile::changed(JsonObject object) const {
    for (const auto& [key, value] : unwritten_) {
        if (value) {
            object.set(key, *value);
        } else {
            object.remove(key);
        }
    }
    return object;
}

void PreferencesFile::settle(JsonObject stored) {
    known_ = std::move(stored);
    unwritten_.clear();
}

}  // namespace brimwatch
