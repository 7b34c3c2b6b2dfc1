#include "limits/limits_memory.h"

#include <algorithm>
#include <utility>

#include "support/json_fields.h"

namespace brimwatch {
namespace {

using Window = LimitsFile::Window;

constexpr std::uint64_t sameCycleSeconds = 3600;

struct MergedWindow {
    Window window;
    bool changed = false;
};

MergedWindow mergeWindow(const Window& old, const Window& next, std::int64_t now) {
    const auto isLive = [now](const Window& window) { return now < *window.resetsAt; };
    if (!old.resetsAt || !next.resetsAt) return {next, !next.resetsAt || isLive(next)};
    if (isLive(old) != isLive(next))
        return isLive(old) ? MergedWindow{old, false} : MergedWindow{next, true};
    if (isMoreThanSecondsLater(*old.resetsAt, *next.resetsAt, sameCycleSeconds)) {
        return {next, isLive(next)};
    }
    if (isMoreThanSecondsLater(*next.resetsAt, *old.resetsAt, sameCycleSeconds)) {
        return {old, false};
    }
    const bool rose = !(old.usedPercentage > next.usedPercentage);
    return {{.usedPercentage = std::max(old.usedPercentage, next.usedPercentage),
             .resetsAt = next.resetsAt},
            rose && isLive(next)};
}

}  // namespace

LimitsMemory::Merged LimitsMemory::merge(const LimitsFile::Windows& old,
                                         const LimitsFile::Windows& next, std::int64_t now) {
    Merged merged{.windows = old, .changed = false};
    for (const auto& [key, window] : next) {
        const auto stored = merged.windows.find(key);
        if (stored == merged.windows.end()) {
            merged.windows.emplace(key, window);
            merged.changed |= !window.resetsAt || now < *window.resetsAt;
            continue;
        }
        const MergedWindow result = mergeWindow(stored->second, window, now);
        stored->second = result.window;
        merged.changed |= result.changed;
    }
    return merged;
}

const LimitsFile& LimitsMemory::remember(LimitsFile file, std::int64_t now) {
    const auto [entry, isNew] = files.try_emplace(file.id());
    LimitsFile& stored = entry->second;
    if (isNew) return stored = std::move(file);
    const bool isOlder = stored.updatedAt > file.updatedAt;
    if (file.provider == rawString(SubscriptionLimits::Provider::codex)) {
        if (!isOlder) stored = std::move(file);
        return stored;
    }
    auto [windows, changed] = merge(stored.windows, file.windows, now);
    file.windows = std::move(windows);
    if (!changed || isOlder) file.updatedAt = stored.updatedAt;
    return stored = std::move(file);
}

std::optional<LimitsMemory> LimitsMemory::fromJson(const JsonValue& value) {
    if (value.object() == nullptr) return std::nullopt;
    JsonFields fields(*value.object());
    LimitsMemory memory;
    for (const auto& [id, entry] : fields.object("files").members()) {
        const JsonObject* members = entry.object();
        std::optional<LimitsFile> file =
            members != nullptr ? LimitsFile::fromJson(*members) : std::nullopt;
        if (!file) return std::nullopt;
        memory.files.emplace_hint(memory.files.end(), id, *std::move(file));
    }
    if (!fields.allRead()) return std::nullopt;
    return memory;
}

JsonObject LimitsMemory::toJson() const {
    JsonObject entries;
    for (const auto& [id, file] : files)
        entries.set(id, file.toJson());
    JsonObject object;
    object.set("files", std::move(entries));
    return object;
}

}  // namespace brimwatch
