#include "platform/linux/kde_globals.h"

#include <charconv>

#include "support/paths.h"

namespace brimwatch {
namespace {

constexpr std::size_t maximumBytes = std::size_t{1} << 20;

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string_view takeLine(std::string_view& text) {
    const std::size_t end = text.find('\n');
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return trimmed(line);
}

// Without flags as in "Name[$i]", which mark it as not to be changed.
std::string_view withoutFlags(std::string_view key) {
    return trimmed(key.substr(0, key.find("[$")));
}

std::optional<double> number(std::string_view text) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

}  // namespace

std::optional<double> animationDurationFactor(std::string_view kdeGlobals) {
    std::optional<double> factor;
    bool isInGroup = false;
    while (!kdeGlobals.empty()) {
        const std::string_view line = takeLine(kdeGlobals);
        if (line.starts_with('[')) isInGroup = withoutFlags(line) == "[KDE]";
        const std::size_t equals = line.find('=');
        if (!isInGroup || line.starts_with('#') || equals == std::string_view::npos) continue;
        if (withoutFlags(line.substr(0, equals)) != "AnimationDurationFactor") continue;
        factor = number(trimmed(line.substr(equals + 1)));
    }
    return factor;
}

bool kdeStopsMotion(FileSystem& files, const std::optional<std::string>& configFolder) {
    if (!configFolder) return false;
    const auto text = files.read(joinPath(*configFolder, "kdeglobals"), maximumBytes);
    return text && animationDurationFactor(*text) == 0.0;
}

}  // namespace brimwatch
