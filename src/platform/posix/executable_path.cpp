#include "platform/posix/executable_path.h"

#include <sys/auxv.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <memory>

#include "support/paths.h"

namespace brimwatch {
namespace {

constexpr const char* ownExecutable = "/proc/self/exe";

bool isOwnExecutable(const std::string& path) {
    struct stat own {};
    struct stat other {};
    return ::stat(ownExecutable, &own) == 0 && ::stat(path.c_str(), &other) == 0 &&
           own.st_dev == other.st_dev && own.st_ino == other.st_ino;
}

}  // namespace

std::optional<std::string> resolvedExecutablePath() {
    std::array<char, PATH_MAX> path{};
    const ssize_t length = ::readlink(ownExecutable, path.data(), path.size());
    if (length <= 0) return std::nullopt;
    return std::string(path.data(), static_cast<std::size_t>(length));
}

std::optional<std::string> calledExecutablePath() {
    // What was passed to exec: a shell has looked the name up by then.
    const auto* called =
        reinterpret_cast<const char*>(::getauxval(AT_EXECFN));  // NOLINT: the system passes it so
    std::array<char, PATH_MAX> folder{};
    if (called != nullptr && ::getcwd(folder.data(), folder.size()) != nullptr) {
        const std::string path =
            standardizedPath(*called == '/' ? called : joinPath(folder.data(), called));
        if (isOwnExecutable(path)) return path;
    }
    return resolvedExecutablePath();
}

}  // namespace brimwatch
