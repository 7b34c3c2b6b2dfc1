#include "platform/linux/update_choice.h"

#include <algorithm>
#include <cctype>

#include "platform/linux/appcast_version.h"

namespace brimwatch {
namespace {

constexpr std::uint32_t rolloutGroups = 7;

bool isBelow(const std::string& version, const std::string& other) {
    return std::is_lt(compareVersions(version, other));
}

// An ill-formed channel is the default one.
bool isOnDefaultChannel(const std::string& channel) {
    return channel.empty() || !std::all_of(channel.begin(), channel.end(), [](unsigned char c) {
               return std::isalnum(c) != 0 || c == '_' || c == '.' || c == '-';
           });
}

bool fitsInstallation(const AppcastItem& item, const UpdateConditions& conditions) {
    return (item.operatingSystem.empty() || item.operatingSystem == "linux") &&
           (item.processor.empty() || item.processor == conditions.processor) &&
           (item.installationType.empty() || item.installationType == "application") &&
           isOnDefaultChannel(item.channel) && !item.update.isDeltaUpdate &&
           !(item.minimumUpdateVersion &&
             isBelow(conditions.runningVersion, *item.minimumUpdateVersion));
}

bool isMajorFor(const AppcastItem& item, const std::string& runningVersion) {
    return item.minimumAutoupdateVersion && isBelow(runningVersion, *item.minimumAutoupdateVersion);
}

bool isRolledOut(const AppcastItem& item, const UpdateConditions& conditions) {
    if (conditions.check == UpdateCheck::byUser || !item.published ||
        !item.phasedRolloutIntervalSeconds || isCriticalFor(item, conditions.runningVersion))
        return true;
    const double age = unixSeconds(conditions.now) - unixSeconds(*item.published);
    const auto group = static_cast<double>(conditions.rolloutGroup % rolloutGroups);
    return age >= group * static_cast<double>(*item.phasedRolloutIntervalSeconds);
}

bool isSkipped(const AppcastItem& item, const UpdateConditions& conditions) {
    if (conditions.check == UpdateCheck::byUser || !conditions.skippedVersion) return false;
    const std::optional<std::string>& bound = item.ignoreSkippedUpgradesBelowVersion;
    if (bound && isBelow(*conditions.skippedVersion, *bound)) return false;
    return !isBelow(*conditions.skippedVersion, item.update.version);
}

enum class Majors { refused, accepted };

std::optional<AppcastItem> newestOf(const std::vector<AppcastItem>& items,
                                    const UpdateConditions& conditions, Majors majors) {
    const AppcastItem* newest = nullptr;
    for (const AppcastItem& item : items) {
        if (!fitsInstallation(item, conditions) || !isRolledOut(item, conditions) ||
            isSkipped(item, conditions))
            continue;
        if (majors == Majors::refused && isMajorFor(item, conditions.runningVersion)) continue;
        if (newest == nullptr || isBelow(newest->update.version, item.update.version))
            newest = &item;
    }
    const auto isNewerThan = [&](const std::string& version) {
        return newest != nullptr && isBelow(version, newest->update.version);
    };
    const bool isNewer = isNewerThan(conditions.runningVersion) &&
                         (!conditions.readyVersion || isNewerThan(*conditions.readyVersion));
    return isNewer ? std::optional(*newest) : std::nullopt;
}

}  // namespace

bool isCriticalFor(const AppcastItem& item, const std::string& runningVersion) {
    return item.isCritical &&
           (!item.criticalBelowVersion || isBelow(runningVersion, *item.criticalBelowVersion));
}

bool isInformationalFor(const AppcastItem& item, const std::string& runningVersion) {
    if (!item.isInformational) return false;
    const auto& versions = item.informationalVersions;
    const auto& bounds = item.informationalBelowVersions;
    if (versions.empty() && bounds.empty()) return true;
    return std::any_of(versions.begin(), versions.end(),
                       [&](const std::string& version) {
                           return std::is_eq(compareVersions(version, runningVersion));
                       }) ||
           std::any_of(bounds.begin(), bounds.end(),
                       [&](const std::string& bound) { return isBelow(runningVersion, bound); });
}

bool isSilentFor(const AppcastItem& item, const std::string& runningVersion) {
    return !isCriticalFor(item, runningVersion) && !isInformationalFor(item, runningVersion) &&
           !isMajorFor(item, runningVersion);
}

std::optional<AppcastItem> chooseUpdate(const std::vector<AppcastItem>& items,
                                        const UpdateConditions& conditions) {
    const std::optional<AppcastItem> minor = newestOf(items, conditions, Majors::refused);
    return minor ? minor : newestOf(items, conditions, Majors::accepted);
}

}  // namespace brimwatch
