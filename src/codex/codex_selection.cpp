#include <algorithm>
#include <iterator>

#include "codex/codex_accounts.h"
#include "support/json_fields.h"
#include "support/path_text.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

using Selection = CodexAccounts::Selection;

constexpr std::string_view manualDirectoriesKey = "manualDirectories";
constexpr std::string_view excludedKey = "excluded";

std::optional<std::vector<std::string>> pathsFromJson(const JsonArray& elements) {
    std::vector<std::string> paths;
    for (const JsonValue& element : elements) {
        if (element.string() == nullptr) return std::nullopt;
        std::optional<std::string> path = pathFromText(*element.string());
        if (!path) return std::nullopt;
        paths.push_back(*std::move(path));
    }
    return paths;
}

template <class Paths>
JsonArray jsonFromPaths(const Paths& paths) {
    JsonArray elements;
    for (const std::string& path : paths)
        elements.emplace_back(textFromPath(path));
    return elements;
}

}  // namespace

void Selection::add(FileSystem& files, std::string_view folder) {
    std::string path = resolvedPath(files, folder);
    excluded.erase(path);
    const auto known = std::find(manualDirectories.begin(), manualDirectories.end(), path);
    if (known == manualDirectories.end()) manualDirectories.push_back(std::move(path));
}

std::optional<Selection> Selection::fromJson(const JsonValue& value) {
    if (value.object() == nullptr) return std::nullopt;
    JsonFields fields(*value.object());
    std::optional<std::vector<std::string>> manual =
        pathsFromJson(fields.array(manualDirectoriesKey));
    std::optional<std::vector<std::string>> excluded = pathsFromJson(fields.array(excludedKey));
    if (!fields.allRead() || !manual || !excluded) return std::nullopt;
    return Selection{.manualDirectories = *std::move(manual),
                     .excluded = {std::make_move_iterator(excluded->begin()),
                                  std::make_move_iterator(excluded->end())}};
}

JsonObject Selection::toJson() const {
    JsonObject object;
    object.set(manualDirectoriesKey, jsonFromPaths(manualDirectories));
    object.set(excludedKey, jsonFromPaths(excluded));
    return object;
}

}  // namespace brimwatch
