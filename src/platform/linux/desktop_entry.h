// Desktop entries, as the Desktop Entry Specification has them.
//
// Only the group [Desktop Entry] counts. Values are given as they stand in the file; what they mean
// depends on the type of the key. Pure functions, for any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brimwatch {

struct DesktopEntryLine {
    std::string_view key;
    std::string_view value;

    bool operator==(const DesktopEntryLine&) const = default;
};

// The keys of the group in their order; one that the file has twice, which is not allowed, comes
// twice. Nothing for a text that is no desktop entry, or in which one line is neither a comment nor
// a group nor a key. Views of the text.
std::optional<std::vector<DesktopEntryLine>> parseDesktopEntry(std::string_view text);

// Nothing for what is neither; 1 and 0 are what old entries have.
std::optional<bool> desktopBoolean(std::string_view value);
std::string desktopString(std::string_view value);
std::vector<std::string> desktopList(std::string_view value);

// The value of the key `Exec` that starts the program at that absolute path, without arguments.
// Nothing for a path that can't be told: one with "=", with a control character other than tab and
// line ends, or one that is not UTF-8.
std::optional<std::string> execValue(std::string_view path);

}  // namespace brimwatch
