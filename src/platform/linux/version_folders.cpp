#include "platform/linux/version_folders.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <string_view>
#include <vector>

#include "platform/posix/system_error.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

constexpr std::string_view stagingPrefix = ".staging-";
constexpr std::string_view linkName = ".current-new";
constexpr mode_t privateFileMode = 0600;
constexpr std::uint32_t othersMayWrite = 0002;

FileResult<void> synchronize(const std::string& folder) {
    const FileDescriptor file(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!file.isOpen() || ::fsync(file.get()) != 0) return systemError(errno);
    return {};
}

bool isOwnFolder(FileSystem& files, const std::string& path, std::uint32_t userId) {
    const FileResult<FileStatus> status = files.status(path);
    return status && status->kind == FileKind::folder && status->owner == userId &&
           (status->permissions & othersMayWrite) == 0 && ::access(path.c_str(), W_OK) == 0;
}

constexpr bool mayStandInName(char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '.' ||
           c == '_' || c == '-' || c == '+';
}

}  // namespace

std::optional<VersionFolders> VersionFolders::find(FileSystem& files,
                                                   const std::string& desktopProgram,
                                                   std::uint32_t userId) {
    // ROOT/versions/NAME/libexec/brimwatch/brimwatch-desktop
    const std::string version = parentPath(parentPath(parentPath(desktopProgram)));
    const std::string versions = parentPath(version);
    const std::string root = parentPath(versions);
    const FileResult<std::string> link = files.linkTarget(root + "/current");
    const bool isVersion = lastPathComponent(versions) == "versions" && link &&
                           link->starts_with("versions/") && isOwnFolder(files, root, userId) &&
                           isOwnFolder(files, versions, userId);
    if (!isVersion) return std::nullopt;
    return VersionFolders(root, std::string(lastPathComponent(version)));
}

bool VersionFolders::isName(const std::string& version) {
    constexpr std::size_t longest = 64;
    return !version.empty() && version.size() <= longest && version.front() != '.' &&
           std::all_of(version.begin(), version.end(), mayStandInName);
}

FileResult<FileDescriptor> VersionFolders::makeUnnamedFile() const {
    const std::string folder = root_ + "/versions";
    FileDescriptor file(
        ::open(folder.c_str(), O_TMPFILE | O_RDWR | O_EXCL | O_CLOEXEC, privateFileMode));
    if (file.isOpen()) return file;
    // File systems that know of no such files.
    std::string name = path(".staging-file-XXXXXX");
    file = FileDescriptor(::mkostemp(name.data(), O_CLOEXEC));
    if (!file.isOpen()) return systemError(errno);
    ::unlink(name.c_str());
    return file;
}

FileResult<std::string> VersionFolders::makeStaging() const {
    std::string folder = path(std::string(stagingPrefix) + "XXXXXX");
    constexpr mode_t folderMode = 0755;
    if (::mkdtemp(folder.data()) == nullptr || ::chmod(folder.c_str(), folderMode) != 0)
        return systemError(errno);
    return std::string(lastPathComponent(folder));
}

FileResult<void> VersionFolders::adopt(const std::string& staging,
                                       const std::string& version) const {
    if (current() == version) {
        remove(staging);
        return {};
    }
    remove(version);
    if (::rename(path(staging).c_str(), path(version).c_str()) != 0) return systemError(errno);
    return synchronize(root_ + "/versions");
}

FileResult<void> VersionFolders::switchTo(const std::string& version) const {
    if (::access((path(version) + "/bin/brimwatch").c_str(), X_OK) != 0) return systemError(errno);
    const std::string link = joinPath(root_, linkName);
    ::unlink(link.c_str());
    if (::symlink(("versions/" + version).c_str(), link.c_str()) != 0 ||
        ::rename(link.c_str(), joinPath(root_, "current").c_str()) != 0)
        return systemError(errno);
    return synchronize(root_);
}

void VersionFolders::removeUnused(const std::string& keep) const {
    std::error_code error;
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(root_ + "/versions", error))
        names.push_back(entry.path().filename().string());
    for (const std::string& name : names) {
        const bool isOurs = name.starts_with(stagingPrefix) || isName(name);
        if (isOurs && name != keep) remove(name);
    }
}

void VersionFolders::remove(const std::string& name) const {
    const std::optional<std::string> used = current();
    // Without knowing what is used nothing is unused.
    if (!used || name == *used || name == running_) return;
    std::error_code error;
    std::filesystem::remove_all(path(name), error);
}

std::optional<std::string> VersionFolders::current() const {
    std::array<char, PATH_MAX> target{};
    const ssize_t length =
        ::readlink(joinPath(root_, "current").c_str(), target.data(), target.size());
    if (length <= 0) return std::nullopt;
    return std::string(lastPathComponent({target.data(), static_cast<std::size_t>(length)}));
}

}  // namespace brimwatch
