#include "support/paths.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <vector>

namespace brimwatch {
namespace {

constexpr std::size_t passwordFileLimit = 16U << 20U;

std::string_view withoutTrailingSlashes(std::string_view path) {
    const std::size_t last = path.find_last_not_of('/');
    if (last == std::string_view::npos) return path.substr(0, 1);
    return path.substr(0, last + 1);
}

// The fields of passwd(5): name, password, user, group, comment, home, shell.
constexpr std::size_t userField = 2;
constexpr std::size_t homeField = 5;

std::string_view passwordField(std::string_view line, std::size_t index) {
    for (; index > 0; --index) {
        const std::size_t colon = line.find(':');
        if (colon == std::string_view::npos) return {};
        line.remove_prefix(colon + 1);
    }
    return line.substr(0, line.find(':'));
}

std::optional<std::string> homeFromPasswordFile(std::string_view text, std::uint32_t userId) {
    std::array<char, 16> digits{};
    const auto written = std::to_chars(digits.data(), digits.data() + digits.size(), userId);
    const std::string_view wanted(digits.data(),
                                  static_cast<std::size_t>(written.ptr - digits.data()));
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        const std::string_view home = passwordField(line, homeField);
        if (passwordField(line, userField) == wanted && home.starts_with('/')) {
            return std::string(home);
        }
        text.remove_prefix(std::min(line.size() + 1, text.size()));
    }
    return std::nullopt;
}

struct BaseFolder {
    std::string_view variable;
    std::string_view belowHome;
};

std::optional<std::string> baseFolder(const BaseFolder& folder, const Environment& environment,
                                      FileSystem& files, std::uint32_t userId) {
    const std::optional<std::string_view> chosen = environment.value(folder.variable);
    if (chosen && chosen->starts_with('/')) return std::string(*chosen);
    const std::optional<std::string> home = realHomeFolder(environment, files, userId);
    if (!home) return std::nullopt;
    return joinPath(*home, folder.belowHome);
}

std::optional<std::string> below(const std::optional<std::string>& folder, std::string_view name) {
    if (!folder) return std::nullopt;
    return joinPath(*folder, name);
}

}  // namespace

std::string joinPath(std::string_view folder, std::string_view name) {
    std::string path;
    path.reserve(folder.size() + 1 + name.size());
    path = folder;
    if (!path.ends_with('/')) path += '/';
    path += name;
    return path;
}

std::string_view lastPathComponent(std::string_view path) {
    path = withoutTrailingSlashes(path);
    if (path == "/") return path;
    return path.substr(path.find_last_of('/') + 1);
}

std::string parentPath(std::string_view path) {
    path = withoutTrailingSlashes(path);
    const std::size_t slash = path.find_last_of('/');
    if (slash == std::string_view::npos) return ".";
    return std::string(withoutTrailingSlashes(path.substr(0, slash + 1)));
}

std::string standardizedPath(std::string_view path) {
    const bool isAbsolute = path.starts_with('/');
    std::vector<std::string_view> components;
    while (!path.empty()) {
        const std::string_view component = path.substr(0, path.find('/'));
        path.remove_prefix(std::min(component.size() + 1, path.size()));
        if (component.empty() || component == ".") continue;
        const bool leavesFolder =
            component == ".." && !components.empty() && components.back() != "..";
        if (leavesFolder) {
            components.pop_back();
        } else if (component != ".." || !isAbsolute) {
            components.push_back(component);
        }
    }
    std::string result = isAbsolute ? "/" : "";
    for (const std::string_view& component : components) {
        if (&component != &components.front()) result += '/';
        result += component;
    }
    return result;
}

std::string resolvedPath(FileSystem& files, std::string_view path) {
    std::string existing = standardizedPath(path);
    if (existing.empty()) existing = ".";
    std::string missing;
    while (true) {
        const FileResult<std::string> real = files.realPath(existing);
        if (real) return missing.empty() ? *real : joinPath(*real, missing);
        const std::string parent = parentPath(existing);
        if (parent == existing) return missing.empty() ? existing : joinPath(existing, missing);
        const std::string name(lastPathComponent(existing));
        missing = missing.empty() ? name : joinPath(name, missing);
        existing = parent;
    }
}

std::optional<std::string> realHomeFolder(const Environment& environment, FileSystem& files,
                                          std::uint32_t userId) {
    const std::optional<std::string_view> home = environment.value("HOME");
    if (home && home->starts_with('/')) return std::string(*home);
    const FileResult<std::string> users = files.read("/etc/passwd", passwordFileLimit);
    if (!users) return std::nullopt;
    return homeFromPasswordFile(*users, userId);
}

std::optional<std::string> homeFolder(const Environment& environment, FileSystem& files,
                                      std::uint32_t userId) {
    const std::optional<std::string_view> moved = environment.value("BRIMWATCH_HOME");
    if (moved && !moved->empty()) return std::string(*moved);
    return realHomeFolder(environment, files, userId);
}

std::string limitsFolder(std::string_view home) {
    return joinPath(home, ".brimwatch/limits");
}

std::optional<std::string> configFolder(const Environment& environment, FileSystem& files,
                                        std::uint32_t userId) {
    const BaseFolder config = {.variable = "XDG_CONFIG_HOME", .belowHome = ".config"};
    return baseFolder(config, environment, files, userId);
}

std::optional<std::string> settingsFile(const Environment& environment, FileSystem& files,
                                        std::uint32_t userId) {
    return below(configFolder(environment, files, userId), "brimwatch/settings.json");
}

std::optional<std::string> stateFolder(const Environment& environment, FileSystem& files,
                                       std::uint32_t userId) {
    const BaseFolder state = {.variable = "XDG_STATE_HOME", .belowHome = ".local/state"};
    return below(baseFolder(state, environment, files, userId), "brimwatch");
}

std::optional<std::string> dataFolder(const Environment& environment, FileSystem& files,
                                      std::uint32_t userId) {
    const BaseFolder data = {.variable = "XDG_DATA_HOME", .belowHome = ".local/share"};
    return below(baseFolder(data, environment, files, userId), "brimwatch");
}

}  // namespace brimwatch
