#include "app/program_path.h"

#include "platform/posix/executable_path.h"
#include "support/paths.h"

namespace brimwatch {

std::optional<std::string> commandPath(const std::string& argumentZero) {
    constexpr std::string_view desktopProgram = "brimwatch-desktop";
    if (argumentZero.starts_with('/') && lastPathComponent(argumentZero) != desktopProgram) {
        return argumentZero;
    }
    const std::optional<std::string> own = resolvedExecutablePath();
    if (!own) return std::nullopt;
    // <prefix>/libexec/brimwatch/brimwatch-desktop
    return joinPath(parentPath(parentPath(parentPath(*own))), "bin/brimwatch");
}

BundleInfo ownBundleInfo(FileSystem& files) {
    const std::optional<std::string> executable = resolvedExecutablePath();
    return executable ? readBundleInfo(files, bundleInfoPath(*executable)) : BundleInfo();
}

}  // namespace brimwatch
