#include "limits/limits_memory.h"

#include <algorithm>

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

}  // namespace brimwatch
