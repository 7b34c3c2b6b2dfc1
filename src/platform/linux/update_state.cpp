#include "platform/linux/update_state.h"

#include <QRandomGenerator>
#include <utility>

#include "support/json_fields.h"

namespace brimwatch {
namespace {

constexpr const char* fileKey = "updates";
constexpr const char* checksKey = "automaticallyChecksForUpdates";
constexpr const char* downloadsKey = "automaticallyDownloadsUpdates";
constexpr const char* lastCheckKey = "lastCheckTime";
constexpr const char* skippedKey = "skippedVersion";
constexpr const char* groupKey = "updateGroupIdentifier";

}  // namespace

UpdateState::UpdateState(FileSystem& files, std::string folder)
    : files_(files, std::move(folder), {fileKey}),
      rolloutGroup_(QRandomGenerator::system()->generate()) {
    read();
}

void UpdateState::read() {
    const std::optional<JsonValue> stored = files_.value(fileKey);
    if (!stored) return;
    const auto flag = [&](const char* key, bool& place) {
        const JsonValue* value = stored->member(key);
        if (value != nullptr && value->boolean() != nullptr) place = *value->boolean();
    };
    const auto number = [&](const char* key) -> std::optional<std::int64_t> {
        const JsonValue* value = stored->member(key);
        return value != nullptr && value->number() != nullptr ? value->number()->toInteger()
                                                              : std::nullopt;
    };
    flag(checksKey, automaticallyChecks_);
    flag(downloadsKey, automaticallyDownloads_);
    if (const auto seconds = number(lastCheckKey))
        lastCheck_ = instantFromUnixSeconds(static_cast<double>(*seconds));
    const JsonValue* skipped = stored->member(skippedKey);
    if (skipped != nullptr && skipped->string() != nullptr) skippedVersion_ = *skipped->string();
    if (const auto group = number(groupKey)) rolloutGroup_ = static_cast<std::uint32_t>(*group);
}

void UpdateState::setAutomaticallyChecks(bool value) {
    automaticallyChecks_ = value;
    write();
}

void UpdateState::setAutomaticallyDownloads(bool value) {
    automaticallyDownloads_ = value;
    write();
}

void UpdateState::setLastCheck(Instant value) {
    lastCheck_ = value;
    write();
}

void UpdateState::setSkippedVersion(const std::string& version) {
    skippedVersion_ = version;
    write();
}

void UpdateState::write() {
    JsonObject object;
    object.set(checksKey, automaticallyChecks_);
    object.set(downloadsKey, automaticallyDownloads_);
    object.set(groupKey, JsonNumber::fromInteger(rolloutGroup_));
    if (lastCheck_)
        object.set(lastCheckKey, JsonNumber::fromInteger(wholeUnixSeconds(*lastCheck_)));
    if (skippedVersion_) object.set(skippedKey, *skippedVersion_);
    // What can't be stored holds for this run, and is tried again with the next change.
    static_cast<void>(files_.change(fileKey, JsonValue(std::move(object))));
}

}  // namespace brimwatch
