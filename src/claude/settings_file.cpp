#include "claude/settings_file.h"

#include <utility>

#include "support/atomic_file.h"
#include "support/json_reader.h"
#include "support/json_writer.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

constexpr std::chrono::milliseconds secondLookAfter{100};
constexpr int linkLimit = 40;  // as many as the kernel follows
constexpr int damagedCopyLimit = 1000;
constexpr std::uint32_t newFilePermissions = 0644;
constexpr std::uint32_t ownerReadsAndWrites = 0600;

auto failure(std::errc error) {
    return tl::unexpected(std::make_error_code(error));
}

bool isMissing(const std::error_code& error) {
    return error == std::errc::no_such_file_or_directory;
}

// Also where the last link leads to nothing: what is written has to go there.
FileResult<std::string> behindLinks(FileSystem& files, std::string path) {
    for (int links = 0; links <= linkLimit; ++links) {
        const FileResult<std::string> target = files.linkTarget(path);
        if (!target) {
            const bool isNoLink = target.error() == std::errc::invalid_argument;
            if (isNoLink || isMissing(target.error())) return path;
            return tl::unexpected(target.error());
        }
        path = target->starts_with('/') ? *target : joinPath(parentPath(path), *target);
    }
    return failure(std::errc::too_many_symbolic_link_levels);
}

FileResult<SettingsFile> readOnce(FileSystem& files, const std::string& folder) {
    FileResult<std::string> target = behindLinks(files, settingsPath(folder));
    if (!target) return tl::unexpected(target.error());
    SettingsFile settings;
    settings.target = *std::move(target);
    FileResult<std::string> bytes = files.read(settings.target, settingsSizeLimit);
    if (!bytes && isMissing(bytes.error())) return settings;
    if (!bytes && bytes.error() == std::errc::file_too_large) return tl::unexpected(bytes.error());
    // After the bytes: as the last look before a renaming it tells of any later change, too.
    const FileResult<FileStatus> status = files.status(settings.target);
    if (!status) return tl::unexpected(status.error());
    settings.status = *status;
    settings.isUnreadable = !bytes;
    if (!bytes) return settings;
    settings.object = parseJsonObject(*bytes);
    settings.bytes = *std::move(bytes);
    return settings;
}

std::string backupPath(const std::string& folder) {
    return settingsPath(folder) + ".brimwatch-backup";
}

std::string damagedCopyPath(const std::string& folder, int number) {
    return settingsPath(folder) + ".brimwatch-damaged-" + std::to_string(number);
}

bool holds(FileSystem& files, const std::string& path, const SettingsFile& settings) {
    return settings.bytes && files.read(path, settings.bytes->size()) == *settings.bytes;
}

ReplacementOptions likeFormer(const SettingsFile& former) {
    ReplacementOptions options{.durability = Durability::synchronized,
                               .permissions = newFilePermissions,
                               .owner = std::nullopt};
    if (!former.bytes && !former.isUnreadable) return options;
    options.permissions = former.status.permissions;
    // What nobody could read for its mode would not be read any better after us.
    if (former.isUnreadable) options.permissions |= ownerReadsAndWrites;
    options.owner = FileOwner{.owner = former.status.owner, .group = former.status.group};
    return options;
}

FileResult<void> keepAs(FileSystem& files, const std::string& path, const SettingsFile& settings) {
    if (settings.isUnreadable) return files.addName(settings.target, path);
    return claimFile(files, path, *settings.bytes, likeFormer(settings));
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
    for (int number = 1; number <= damagedCopyLimit; ++number) {
        const std::string copy = damagedCopyPath(folder, number);
        if (holds(files, copy, settings)) return {};
        const FileResult<void> kept = keepAs(files, copy, settings);
        if (kept || kept.error() != std::errc::file_exists) return kept;
    }
    return failure(std::errc::file_exists);
}

FileResult<void> writeSettings(FileSystem& files, const std::string& folder,
                               const JsonObject& settings, const SettingsFile& former) {
    const std::string text = writeJson(settings, JsonLayout::pretty) + '\n';
    const ReplacementOptions options = likeFormer(former);
    const auto file = prepareReplacement(files, former.target, text, options);
    if (!file) return tl::unexpected(file.error());
    if (readOnce(files, folder) != former) {
        return failure(std::errc::resource_unavailable_try_again);
    }
    return finishReplacement(files, former.target, **file, options.durability);
}

}  // namespace brimwatch
