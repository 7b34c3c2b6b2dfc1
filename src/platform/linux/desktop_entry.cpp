#include "platform/linux/desktop_entry.h"

#include <algorithm>

#include "support/unicode.h"

namespace brimwatch {
namespace {

constexpr std::string_view blanks = " \t\r";

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string_view withoutLeadingBlanks(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of(blanks), text.size()));
}

// The next line of the text, which is then shorter by it. Some editors end lines with CR and LF.
std::string_view takeLine(std::string_view& text) {
    std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    if (line.ends_with('\r')) line.remove_suffix(1);
    return withoutLeadingBlanks(line);
}

std::optional<std::string_view> groupName(std::string_view line) {
    line = trimmed(line);
    if (!line.starts_with('[') || !line.ends_with(']')) return std::nullopt;
    const std::string_view name = line.substr(1, line.size() - 2);
    if (name.empty() || name.find_first_of("[]") != std::string_view::npos) return std::nullopt;
    return name;
}

std::optional<DesktopEntryLine> keyLine(std::string_view line) {
    const std::size_t equalsSign = line.find('=');
    if (equalsSign == std::string_view::npos) return std::nullopt;
    const DesktopEntryLine read = {.key = trimmed(line.substr(0, equalsSign)),
                                   .value = withoutLeadingBlanks(line.substr(equalsSign + 1))};
    if (read.key.empty()) return std::nullopt;
    return read;
}

// What the character behind a backslash stands for.
std::optional<char> escapedCharacter(char character) {
    switch (character) {
        case 's':
            return ' ';
        case 'n':
            return '\n';
        case 't':
            return '\t';
        case 'r':
            return '\r';
        case '\\':
        case ';':
            return character;
        default:
            return std::nullopt;
    }
}

bool isUnwritable(char character) {
    const bool hasEscape = character == '\n' || character == '\t' || character == '\r';
    const bool isControl = static_cast<unsigned char>(character) < ' ' || character == '\x7F';
    return character == '=' || (isControl && !hasEscape);
}

std::string escaped(std::string_view text) {
    std::string value;
    for (const char character : text) {
        switch (character) {
            case '\\':
                value += R"(\\)";
                break;
            case '\n':
                value += R"(\n)";
                break;
            case '\t':
                value += R"(\t)";
                break;
            case '\r':
                value += R"(\r)";
                break;
            default:
                value += character;
        }
    }
    return value;
}

}  // namespace

std::optional<std::vector<DesktopEntryLine>> parseDesktopEntry(std::string_view text) {
    constexpr std::string_view mainGroup = "Desktop Entry";
    if (text.find('\0') != std::string_view::npos) return std::nullopt;
    std::vector<DesktopEntryLine> lines;
    std::optional<std::string_view> group;
    while (!text.empty()) {
        const std::string_view line = takeLine(text);
        if (line.empty() || line.starts_with('#')) continue;
        if (const std::optional<std::string_view> next = groupName(line)) {
            if (!group && *next != mainGroup) return std::nullopt;
            group = next;
            continue;
        }
        const std::optional<DesktopEntryLine> read = keyLine(line);
        if (!group || !read) return std::nullopt;
        if (*group == mainGroup) lines.push_back(*read);
    }
    if (!group) return std::nullopt;
    return lines;
}

std::optional<bool> desktopBoolean(std::string_view value) {
    value = trimmed(value);
    if (value == "true" || value == "1") return true;
    if (value == "false" || value == "0") return false;
    return std::nullopt;
}

std::string desktopString(std::string_view value) {
    std::string text;
    while (!value.empty()) {
        const bool isEscape = value.front() == '\\' && value.size() > 1;
        const std::optional<char> meant = isEscape ? escapedCharacter(value[1]) : std::nullopt;
        text += meant.value_or(value.front());
        value.remove_prefix(meant ? 2 : 1);
    }
    return text;
}

std::vector<std::string> desktopList(std::string_view value) {
    std::vector<std::string> elements;
    std::size_t length = 0;
    while (!value.empty()) {
        if (length >= value.size() || value[length] == ';') {
            elements.push_back(desktopString(value.substr(0, length)));
            value.remove_prefix(std::min(length + 1, value.size()));
            length = 0;
        } else {
            length += value[length] == '\\' ? 2 : 1;
        }
    }
    return elements;
}

std::optional<std::string> execValue(std::string_view path) {
    constexpr std::string_view special = "\"`$\\";
    if (!isValidUtf8(path) || std::any_of(path.begin(), path.end(), isUnwritable)) {
        return std::nullopt;
    }
    // Launchers look whether the program is there before they make one percent sign of two, which
    // in an argument does no harm.
    const bool needsHelp = path.find('%') != std::string_view::npos;
    std::string argument = needsHelp ? "/usr/bin/env \"" : "\"";
    for (const char character : path) {
        if (special.find(character) != std::string_view::npos) argument += '\\';
        if (character == '%') argument += '%';
        argument += character;
    }
    return escaped(argument + '"');
}

}  // namespace brimwatch
