#include "claude/status_line_command.h"

#include <algorithm>
#include <array>

#include "support/paths.h"
#include "support/unicode.h"

namespace brimwatch {
namespace {

constexpr std::string_view modeArgument = " --statusline";
constexpr std::string_view accountArgument = " --account ";
constexpr std::string_view quotedQuote = R"('\'')";
constexpr std::array<std::string_view, 2> ownPathEndings = {
    "/Brimwatch.app/Contents/MacOS/Brimwatch",
    "/bin/brimwatch",
};

std::string quoted(std::string_view path) {
    std::string result = "'";
    for (const char character : path) {
        if (character == '\'') {
            result += quotedQuote;
        } else {
            result += character;
        }
    }
    result += '\'';
    return result;
}

// What a single-quoted word stands for, if no quote stands anywhere but where `quoted` puts it.
std::optional<std::string> unquoted(std::string_view word) {
    std::string_view rest = word.substr(1, word.size() - 2);
    std::string path;
    while (!rest.empty()) {
        const bool isQuote = rest.starts_with(quotedQuote);
        path += isQuote ? '\'' : rest.front();
        rest.remove_prefix(isQuote ? quotedQuote.size() : 1);
    }
    if (quoted(path) != word) return std::nullopt;
    return path;
}

bool needsNoQuotes(std::string_view path) {
    std::string withoutSlashes(path);
    std::erase(withoutSlashes, '/');
    return holdsOnlyAccountKeyCharacters(withoutSlashes);
}

bool isArgumentTail(std::string_view tail) {
    if (tail.empty()) return true;
    if (!tail.starts_with(accountArgument)) return false;
    tail.remove_prefix(accountArgument.size());
    return !tail.empty() && holdsOnlyAccountKeyCharacters(tail);
}

bool hasComponent(std::string_view path, std::string_view component) {
    while (!path.empty()) {
        const std::string_view first = path.substr(0, path.find('/'));
        if (first == component) return true;
        path.remove_prefix(std::min(first.size() + 1, path.size()));
    }
    return false;
}

bool isDevelopmentLocation(std::string_view path) {
    constexpr std::array<std::string_view, 4> temporaryFolders = {
        "/tmp/", "/private/tmp/", "/var/folders/", "/private/var/folders/"};
    if (path.find(".app/Contents/MacOS/") == std::string_view::npos) return false;
    return hasComponent(path, "DerivedData") || hasComponent(path, "build") ||
           std::any_of(temporaryFolders.begin(), temporaryFolders.end(),
                       [path](std::string_view folder) { return path.starts_with(folder); });
}

}  // namespace

std::string statusLineCommand(std::string_view executable,
                              std::optional<std::string_view> account) {
    std::string command = quoted(executable);
    command += modeArgument;
    if (account) {
        command += accountArgument;
        command += *account;
    }
    return command;
}

std::optional<std::string> parseStatusLineCommand(std::string_view command) {
    const std::size_t mode = command.rfind(modeArgument);
    if (mode == std::string_view::npos) return std::nullopt;
    if (!isArgumentTail(command.substr(mode + modeArgument.size()))) return std::nullopt;
    const std::string_view head = command.substr(0, mode);
    std::optional<std::string> path;
    if (head.size() >= 2 && head.starts_with('\'') && head.ends_with('\'')) {
        path = unquoted(head);
    } else if (needsNoQuotes(head)) {
        path = head;
    }
    if (!path || !path->starts_with('/')) return std::nullopt;
    return path;
}

std::string_view presentStatusLineCommand(const JsonObject& settings) {
    const JsonValue* statusLine = settings.find("statusLine");
    const JsonValue* command = statusLine != nullptr ? statusLine->member("command") : nullptr;
    const std::string* text = command != nullptr ? command->string() : nullptr;
    return text != nullptr ? std::string_view(*text) : std::string_view();
}

std::optional<std::string> connectedExecutable(const JsonObject& settings,
                                               std::string_view executable) {
    const JsonValue* statusLine = settings.find("statusLine");
    if (statusLine == nullptr) return std::nullopt;
    const JsonValue* type = statusLine->member("type");
    if (type == nullptr || *type != JsonValue("command")) return std::nullopt;
    std::optional<std::string> path = parseStatusLineCommand(presentStatusLineCommand(settings));
    if (!path) return std::nullopt;
    const bool isOurs =
        *path == executable ||
        std::any_of(ownPathEndings.begin(), ownPathEndings.end(),
                    [&path](std::string_view ending) { return path->ends_with(ending); });
    if (!isOurs) return std::nullopt;
    return path;
}

bool isUsable(FileSystem& files, const std::string& path, DevelopmentLocations developmentLocations,
              const std::function<bool(const std::string&)>& isExecutable) {
    const std::string realPath = resolvedPath(files, path);
    if (realPath.starts_with("/Volumes/")) return false;
    if (realPath.find("/AppTranslocation/") != std::string::npos) return false;
    if (developmentLocations == DevelopmentLocations::rejected && isDevelopmentLocation(realPath)) {
        return false;
    }
    return isExecutable(path);
}

}  // namespace brimwatch
