#include <algorithm>
#include <utility>

#include "limits/limits_memory.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

bool isLimitsFileName(std::string_view name) {
    return name.ends_with(".json") && !name.starts_with('.');
}

std::vector<std::string> limitsFileNames(FileSystem& fileSystem, const std::string& folder) {
    std::vector<std::string> names =
        fileSystem.entries(folder).value_or(std::vector<std::string>());
    std::erase_if(names, [](const std::string& name) { return !isLimitsFileName(name); });
    std::sort(names.begin(), names.end());
    return names;
}

std::optional<LimitsFile> readWanted(FileSystem& fileSystem, const std::string& path,
                                     const SubscriptionIds& wanted) {
    const FileResult<std::string> bytes = fileSystem.read(path, limitsFileSizeLimit);
    if (!bytes) return std::nullopt;
    std::optional<LimitsFile> file = LimitsFile::decode(*bytes);
    if (!file || !SubscriptionLimits::fromFile(*file) || !wanted.contains(file->id())) {
        return std::nullopt;
    }
    return file;
}

}  // namespace

std::vector<SubscriptionLimits> LimitsMemory::load(FileSystem& fileSystem,
                                                   const std::string& folder,
                                                   const SubscriptionIds& wanted, Instant now) {
    std::vector<SubscriptionLimits> records;
    for (const std::string& name : limitsFileNames(fileSystem, folder)) {
        std::optional<LimitsFile> file = readWanted(fileSystem, joinPath(folder, name), wanted);
        if (!file) continue;
        const LimitsFile& believed = remember(*std::move(file), wholeUnixSeconds(now));
        // Merged windows have to be fit to be shown, too.
        if (auto record = SubscriptionLimits::fromFile(believed)) {
            records.push_back(*std::move(record));
        }
    }
    std::stable_sort(records.begin(), records.end(), precedes);
    return records;
}

}  // namespace brimwatch
