#include <algorithm>
#include <utility>

#include "codex/codex_accounts.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

// A number of any length, without leading zeros: of two, the one with more digits is greater.
using Number = std::pair<std::size_t, std::string_view>;

struct NodeVersion {
    std::vector<Number> numbers;  // "v18.20.4" has 18, 20 and 4
    std::string_view folderName;
};

NodeVersion parsedVersion(std::string_view folderName) {
    constexpr std::string_view digits = "0123456789";
    NodeVersion version{.numbers = {}, .folderName = folderName};
    std::string_view rest = folderName.substr(0, folderName.find('-'));
    while (true) {
        rest.remove_prefix(std::min(rest.find_first_of(digits), rest.size()));
        if (rest.empty()) return version;
        std::string_view number = rest.substr(0, rest.find_first_not_of(digits));
        rest.remove_prefix(number.size());
        number.remove_prefix(std::min(number.find_first_not_of('0'), number.size()));
        version.numbers.emplace_back(number.size(), number);
    }
}

// Higher versions first, and "v20.0.0" before "v20.0.0-rc.1".
bool precedes(const NodeVersion& a, const NodeVersion& b) {
    if (a.numbers != b.numbers) return a.numbers > b.numbers;
    return a.folderName < b.folderName;
}

void appendNodeVersionFolders(std::vector<std::string>& folders, FileSystem& files,
                              std::string_view home) {
    const std::string parent = joinPath(home, ".nvm/versions/node");
    const FileResult<std::vector<std::string>> names = files.entries(parent);
    if (!names) return;
    std::vector<NodeVersion> versions;
    for (const std::string& name : *names)
        versions.push_back(parsedVersion(name));
    std::sort(versions.begin(), versions.end(), precedes);
    for (const NodeVersion& version : versions)
        folders.push_back(joinPath(joinPath(parent, version.folderName), "bin"));
}

std::vector<std::string> bundleFolders(std::string_view home) {
    std::vector<std::string> folders;
    for (const std::string& bundle :
         {std::string("/Applications/ChatGPT.app"), std::string("/Applications/Codex.app"),
          joinPath(home, "Applications/ChatGPT.app")}) {
        folders.push_back(joinPath(bundle, "Contents/Resources/codex-cli/bin"));
        folders.push_back(joinPath(bundle, "Contents/Resources"));
    }
    return folders;
}

}  // namespace

std::vector<std::string> CodexAccounts::binaryCandidates(FileSystem& files, std::string_view home) {
    std::vector<std::string> folders = bundleFolders(home);
    folders.emplace_back("/opt/homebrew/bin");
    folders.emplace_back("/usr/local/bin");
    folders.push_back(joinPath(home, ".local/bin"));
    folders.emplace_back("/usr/bin");
    for (const std::string_view name : {".npm-global/bin", ".bun/bin", ".volta/bin"})
        folders.push_back(joinPath(home, name));
    appendNodeVersionFolders(folders, files, home);
    folders.push_back(joinPath(home, ".local/share/mise/shims"));
    for (std::string& folder : folders)
        folder += "/codex";
    return folders;
}

std::optional<std::string> CodexAccounts::findBinary(
    FileSystem& files, std::string_view home,
    const std::function<bool(const std::string& path)>& isExecutable) {
    std::vector<std::string> candidates = binaryCandidates(files, home);
    const auto found = std::find_if(candidates.begin(), candidates.end(), isExecutable);
    if (found == candidates.end()) return std::nullopt;
    return std::move(*found);
}

}  // namespace brimwatch
