#include "limits/limits_file.h"

#include <cmath>
#include <utility>

#include "support/json_fields.h"
#include "support/json_reader.h"
#include "support/json_value.h"
#include "support/json_writer.h"

namespace brimwatch {
namespace {

std::optional<LimitsFile::Window> decodeWindow(const JsonObject& object) {
    JsonFields fields(object);
    const LimitsFile::Window window{.usedPercentage = fields.number("used_percentage"),
                                    .resetsAt = fields.optionalInteger("resets_at")};
    if (!fields.allRead() || !std::isfinite(window.usedPercentage)) return std::nullopt;
    return window;
}

std::optional<LimitsFile::Windows> decodeWindows(const JsonObject& object) {
    LimitsFile::Windows windows;
    for (const JsonMember& member : object.members()) {
        const JsonObject* members = member.value.object();
        const auto window = members != nullptr ? decodeWindow(*members) : std::nullopt;
        if (!window) return std::nullopt;
        windows.emplace(member.key, *window);
    }
    return windows;
}

JsonValue encodeWindows(const LimitsFile::Windows& windows) {
    JsonObject object;
    for (const auto& [key, window] : windows) {
        JsonObject members;
        members.set("used_percentage", JsonNumber::fromDouble(window.usedPercentage));
        if (window.resetsAt) members.set("resets_at", JsonNumber::fromInteger(*window.resetsAt));
        object.set(key, std::move(members));
    }
    return object;
}

}  // namespace

std::optional<LimitsFile> LimitsFile::decode(std::string_view bytes) {
    const std::optional<JsonObject> object = parseJsonMembers(
        bytes, {"version", "provider", "account", "windows", "updated_at", "plan_tier"});
    if (!object) return std::nullopt;
    return fromJson(*object);
}

std::optional<LimitsFile> LimitsFile::fromJson(const JsonObject& object) {
    JsonFields fields(object);
    std::optional<Windows> windows = decodeWindows(fields.object("windows"));
    if (!windows) return std::nullopt;
    LimitsFile file{.version = fields.integer("version"),
                    .provider = fields.string("provider"),
                    .account = fields.string("account"),
                    .windows = *std::move(windows),
                    .updatedAt = fields.integer("updated_at"),
                    .planTier = fields.optionalString("plan_tier")};
    if (!fields.allRead()) return std::nullopt;
    return file;
}

std::string LimitsFile::encode() const {
    return writeJson(toJson(), JsonLayout::pretty);
}

JsonObject LimitsFile::toJson() const {
    JsonObject object;
    object.set("version", JsonNumber::fromInteger(version));
    object.set("provider", provider);
    object.set("account", account);
    object.set("windows", encodeWindows(windows));
    object.set("updated_at", JsonNumber::fromInteger(updatedAt));
    if (planTier) object.set("plan_tier", *planTier);
    return object;
}

std::string LimitsFile::id() const {
    return provider + '-' + account;
}

}  // namespace brimwatch
