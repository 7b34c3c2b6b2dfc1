#include "claude/settings_file.h"

#include <utility>

#include "support/atomic_file.h"
#include "support/json_reader.h"
#include "support/json_writer.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

constexpr std::chrono::milliseconds secondLookAfter{100};
constexpr std::uint32_t newFilePermissions = 0644;

FileResult<SettingsFile> readOnce(FileSystem& files, const std::string& folder) {
    FileResult<StoredFile> file = readStoredFile(files, settingsPath(folder), settingsSizeLimit);
    if (!file) return tl::unexpected(file.error());
    if (file->isUnreadable && file->status.size > static_cast<std::int64_t>(settingsSizeLimit)) {
        return tl::unexpected(std::make_error_code(std::errc::file_too_large));
    }
    SettingsFile settings{*std::move(file), std::nullopt};
    if (settings.bytes) settings.object = parseJsonObject(*settings.bytes);
    return settings;
}

std::string backupPath(const std::string& folder) {
    return settingsPath(folder) + ".brimwatch-backup";
}

bool holds(FileSystem& files, const std::string& path, const SettingsFile& settings) {
    return settings.bytes && files.read(path, settings.bytes->size()) == *settings.bytes;
}

ReplacementOptions likeFormer(const SettingsFile& former) {
    return replacementLike(former, newFilePermissions);
}

}  // namespace

std::string settingsPath(std::string_view folder) {
    return joinPath(folder, "settings.json");
}

FileResult<SettingsFile> readSettings(FileSystem& files, const std::string& folder,
                                      const std::function<void(std::chrono::milliseconds)>& pause) {
    FileResult<SettingsFile> settings = readOnce(files, folder);
    if (settings && !settings->isDamaged()) return settings;
    pause(secondLookAfter);
    return readOnce(files, folder);
}

void backupSettings(FileSystem& files, const std::string& folder, const SettingsFile& settings) {
    const std::string backup = backupPath(folder);
    if (!settings.bytes || files.status(backup)) return;
    static_cast<void>(claimFile(files, backup, *settings.bytes, likeFormer(settings)));
}

FileResult<void> keepDamagedSettings(FileSystem& files, const std::string& folder,
                                     const SettingsFile& settings) {
    if (!settings.isDamaged() || holds(files, backupPath(folder), settings)) return {};
    return keepDamagedFile(files, settingsPath(folder), settings, likeFormer(settings));
}

FileResult<void> writeSettings(FileSystem& files, const std::string& folder,
                               const JsonObject& settings, const SettingsFile& former) {
    const std::string text = writeJson(settings, JsonLayout::pretty) + '\n';
    const ReplacementOptions options = likeFormer(former);
    const auto file = prepareReplacement(files, former.target, text, options);
    if (!file) return tl::unexpected(file.error());
    if (readOnce(files, folder) != former) {
        const auto changed = std::make_error_code(std::errc::resource_unavailable_try_again);
        return tl::unexpected(changed);
    }
    return finishReplacement(files, former.target, **file, options.durability);
}

}  // namespace brimwatch
