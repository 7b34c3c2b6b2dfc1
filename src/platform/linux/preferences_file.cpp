#include "platform/linux/preferences_file.h"

#include <algorithm>
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

// Without line breaks where they would make it too large: so no object that could be read is.
std::string fileText(const JsonObject& object) {
    std::string text = writeJson(object, JsonLayout::pretty) + '\n';
    if (text.size() > preferencesSizeLimit) text = writeJson(object, JsonLayout::compact);
    return text;
}

}  // namespace

PreferencesFile::PreferencesFile(FileSystem& files, std::string path, std::string lockPath)
    : files_(files), path_(std::move(path)), lockPath_(std::move(lockPath)) {
    const FileResult<StoredFile> file = readStoredFile(files_, path_, preferencesSizeLimit);
    if (file) known_ = objectIn(*file).value_or(JsonObject());
}

std::optional<JsonValue> PreferencesFile::value(std::string_view key) const {
    const auto change = findUnwritten(key);
    if (change != unwritten_.end()) return change->value;
    const JsonValue* value = known_.find(key);
    return value != nullptr ? std::optional(*value) : std::nullopt;
}

FileResult<void> PreferencesFile::change(std::string_view key, std::optional<JsonValue> value) {
    const auto former = findUnwritten(key);
    if (former != unwritten_.end()) unwritten_.erase(former);
    unwritten_.insert(unwritten_.begin(), {std::string(key), std::move(value)});
    const FileResult<void> written = write();
    if (written && findUnwritten(key) != unwritten_.end()) {
        return tl::unexpected(std::make_error_code(std::errc::file_too_large));
    }
    return written;
}

FileResult<void> PreferencesFile::flush() {
    return hasFailed_ ? write() : FileResult<void>();
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
    hasFailed_ = !written;
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
    const std::string folder = parentPath(former.target);
    if (const FileResult<void> made = files_.makeFolders(folder); !made) return made;
    files_.removeAbandonedTemporaries(folder);
    const ReplacementOptions options = replacementLike(former, newFilePermissions);
    if (former.exists() && !objectIn(former)) {
        const FileResult<void> kept = keepDamagedFile(files_, path_, former, options);
        if (!kept) return kept;
    }
    const auto file = prepareReplacement(files_, former.target, fileText(next), options);
    if (!file) return tl::unexpected(file.error());
    if (readStoredFile(files_, path_, preferencesSizeLimit) != former) {
        const auto changed = std::make_error_code(std::errc::resource_unavailable_try_again);
        return tl::unexpected(changed);
    }
    return finishReplacement(files_, former.target, **file, options.durability);
}

JsonObject PreferencesFile::changed(JsonObject object) const {
    for (const Change& change : unwritten_) {
        JsonObject next = object;
        if (change.value) {
            next.set(change.key, *change.value);
        } else {
            next.remove(change.key);
        }
        if (fileText(next).size() <= preferencesSizeLimit) object = std::move(next);
    }
    return object;
}

void PreferencesFile::settle(JsonObject stored) {
    known_ = std::move(stored);
    std::erase_if(unwritten_, [this](const Change& change) {
        const JsonValue* value = known_.find(change.key);
        return change.value ? value != nullptr && *value == *change.value : value == nullptr;
    });
}

std::vector<PreferencesFile::Change>::const_iterator PreferencesFile::findUnwritten(
    std::string_view key) const {
    return std::find_if(unwritten_.begin(), unwritten_.end(),
                        [key](const Change& change) { return change.key == key; });
}

}  // namespace brimwatch
