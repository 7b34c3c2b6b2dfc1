#include "platform/posix/executable_path.h"

#include <sys/auxv.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <string_view>

#include "support/paths.h"

namespace brimwatch {
namespace {

constexpr std::string_view deletedMark = " (deleted)";

std::string inWorkingFolder(std::string_view path) {
    std::array<char, PATH_MAX> folder{};
    if (::getcwd(folder.data(), folder.size()) == nullptr) return {};
    return joinPath(folder.data(), path);
}

bool isSameFile(const std::string& a, const std::string& b) {
    struct stat first {};
    struct stat second {};
    return ::stat(a.c_str(), &first) == 0 && ::stat(b.c_str(), &second) == 0 &&
           first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

// What the system makes of a program that is started by a descriptor.
bool isDescriptorPath(std::string_view path) {
    return path.starts_with("/proc/") || path.starts_with("/dev/fd/");
}

}  // namespace

bool isExecutableFile(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
           ::access(path.c_str(), X_OK) == 0;
}

std::optional<std::string> resolvedExecutablePath() {
    std::array<char, PATH_MAX> path{};
    const ssize_t length = ::readlink("/proc/self/exe", path.data(), path.size());
    if (length <= 0) return std::nullopt;
    std::string_view text(path.data(), static_cast<std::size_t>(length));
    if (text.ends_with(deletedMark)) text.remove_suffix(deletedMark.size());
    return std::string(text);
}

std::optional<std::string> calledExecutablePath() {
    // What was passed to exec: a shell has looked the name up by then.
    const unsigned long called = ::getauxval(AT_EXECFN);
    if (called == 0) return resolvedExecutablePath();
    std::string path = reinterpret_cast<const char*>(called);  // NOLINT: the system passes it so
    if (!path.starts_with('/')) path = inWorkingFolder(path);
    if (path.empty() || isDescriptorPath(path)) return resolvedExecutablePath();
    // Taking out ".." may lead elsewhere where links are on the way.
    std::string standardized = standardizedPath(path);
    return isSameFile(standardized, path) ? standardized : path;
}

}  // namespace brimwatch
