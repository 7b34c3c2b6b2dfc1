#include "platform/linux/update_archive.h"

#include <archive.h>
#include <archive_entry.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/posix/file_descriptor.h"
#include "platform/posix/retry.h"

namespace brimwatch {
namespace {

constexpr std::size_t longestPath = 1024;
constexpr std::size_t bufferSize = std::size_t{128} << 10U;
constexpr std::size_t blockSize = std::size_t{64} << 10U;
constexpr mode_t folderMode = 0755;
constexpr mode_t programMode = 0755;
constexpr mode_t fileMode = 0644;
constexpr mode_t executeBits = 0111;

using Components = std::vector<std::string>;
using Result = tl::expected<void, UnpackFailure>;

auto failure(UnpackFailure reason) {
    return tl::unexpected(reason);
}

struct CloseArchive {
    void operator()(archive* opened) const { ::archive_read_free(opened); }
};

// Nothing for a path that leaves the folder it is taken from. "." and what repeats "/" is left out.
std::optional<Components> componentsOf(std::string_view path) {
    if (path.empty() || path.size() > longestPath || path.starts_with('/')) return std::nullopt;
    Components components;
    while (!path.empty()) {
        const std::string_view name = path.substr(0, path.find('/'));
        path.remove_prefix(std::min(name.size() + 1, path.size()));
        if (name == "..") return std::nullopt;
        if (!name.empty() && name != ".") components.emplace_back(name);
    }
    return components;
}

// Only at its beginning a link may climb, and not out of the folder: behind another link ".." would
// lead from where that one leads.
bool staysInside(std::string_view target, std::size_t depth) {
    while (target.starts_with("../")) {
        if (depth == 0) return false;
        --depth;
        target.remove_prefix(3);
    }
    return componentsOf(target).has_value();
}

class Unpacking {
  public:
    Unpacking(int archive, int folder, const std::atomic<bool>& isCancelled,
              const UnpackLimits& limits)
        : folder_(folder),
          isCancelled_(isCancelled),
          limits_(limits),
          archive_(::archive_read_new()),
          isOpen_(open(*archive_, archive)) {}

    Result run() {
        if (!isOpen_) return failure(UnpackFailure::archive);
        while (true) {
            archive_entry* entry = nullptr;
            const int status = ::archive_read_next_header(archive_.get(), &entry);
            if (status == ARCHIVE_EOF) return synchronizeFolders();
            if (status != ARCHIVE_OK || ++entryCount_ > limits_.entries)
                return failure(UnpackFailure::archive);
            if (isCancelled_) return failure(UnpackFailure::cancelled);
            const Result unpacked = unpack(entry);
            if (!unpacked) return unpacked;
        }
    }

  private:
    static bool open(struct archive& reader, int descriptor) {
        ::archive_read_support_filter_gzip(&reader);
        ::archive_read_support_filter_xz(&reader);
        ::archive_read_support_filter_zstd(&reader);
        ::archive_read_support_format_tar(&reader);
        return ::archive_read_open_fd(&reader, descriptor, blockSize) == ARCHIVE_OK;
    }

    Result unpack(archive_entry* entry) {
        const char* name = ::archive_entry_pathname(entry);
        std::optional<Components> path = name != nullptr ? componentsOf(name) : std::nullopt;
        if (!path || ::archive_entry_hardlink(entry) != nullptr)
            return failure(UnpackFailure::archive);
        const mode_t type = ::archive_entry_filetype(entry);
        if (type == AE_IFDIR) return openFolder(*path).map([](const FileDescriptor&) {});
        if (path->empty()) return failure(UnpackFailure::archive);
        const std::string last = std::move(path->back());
        path->pop_back();
        const auto parent = openFolder(*path);
        if (!parent) return failure(parent.error());
        if (type == AE_IFLNK)
            return makeLink(*parent, last, ::archive_entry_symlink(entry), path->size());
        if (type != AE_IFREG) return failure(UnpackFailure::archive);
        const bool isProgram = (::archive_entry_perm(entry) & executeBits) != 0;
        return makeFile(*parent, last, isProgram ? programMode : fileMode);
    }

    // With all that is missing above it. A link in the way is as wrong as a file.
    tl::expected<FileDescriptor, UnpackFailure> openFolder(const Components& path) {
        FileDescriptor folder(::fcntl(folder_, F_DUPFD_CLOEXEC, 0));
        std::string place;
        for (const std::string& name : path) {
            if (::mkdirat(folder.get(), name.c_str(), folderMode) != 0 && errno != EEXIST)
                return failure(UnpackFailure::disk);
            FileDescriptor next(::openat(folder.get(), name.c_str(),
                                         O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
            const bool isInTheWay = !next.isOpen() && (errno == ENOTDIR || errno == ELOOP);
            if (isInTheWay) return failure(UnpackFailure::archive);
            folder = std::move(next);
            place.append(name).append("/");
            folders_.insert(place);
        }
        if (!folder.isOpen()) return failure(UnpackFailure::disk);
        return folder;
    }

    static UnpackFailure reasonNotMade() {
        return errno == EEXIST ? UnpackFailure::archive : UnpackFailure::disk;
    }

    static Result makeLink(const FileDescriptor& parent, const std::string& name,
                           const char* target, std::size_t depth) {
        if (target == nullptr || !staysInside(target, depth))
            return failure(UnpackFailure::archive);
        if (::symlinkat(target, parent.get(), name.c_str()) != 0) return failure(reasonNotMade());
        return {};
    }

    Result makeFile(const FileDescriptor& parent, const std::string& name, mode_t mode) {
        const FileDescriptor file(::openat(parent.get(), name.c_str(),
                                           O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                                           mode));
        if (!file.isOpen()) return failure(reasonNotMade());
        std::vector<char> buffer(bufferSize);
        while (true) {
            const la_ssize_t count =
                ::archive_read_data(archive_.get(), buffer.data(), buffer.size());
            if (count < 0) return failure(UnpackFailure::archive);
            if (count == 0) break;
            byteCount_ += count;
            if (byteCount_ > limits_.bytes) return failure(UnpackFailure::archive);
            if (isCancelled_) return failure(UnpackFailure::cancelled);
            if (!write(file, {buffer.data(), static_cast<std::size_t>(count)}))
                return failure(UnpackFailure::disk);
        }
        // The umask may have taken more than it should from a program that others run, too.
        const bool isDone = ::fchmod(file.get(), mode) == 0 && ::fsync(file.get()) == 0;
        return isDone ? Result() : failure(UnpackFailure::disk);
    }

    static bool write(const FileDescriptor& file, std::string_view bytes) {
        while (!bytes.empty()) {
            const ssize_t count =
                retryOnInterrupt([&] { return ::write(file.get(), bytes.data(), bytes.size()); });
            if (count <= 0) return false;
            bytes.remove_prefix(static_cast<std::size_t>(count));
        }
        return true;
    }

    Result synchronizeFolders() {
        for (const std::string& path : folders_) {
            const FileDescriptor folder(
                ::openat(folder_, path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
            if (!folder.isOpen() || ::fsync(folder.get()) != 0) return failure(UnpackFailure::disk);
        }
        return ::fsync(folder_) == 0 ? Result() : failure(UnpackFailure::disk);
    }

    int folder_;
    const std::atomic<bool>& isCancelled_;
    UnpackLimits limits_;
    std::unique_ptr<archive, CloseArchive> archive_;
    bool isOpen_;
    int entryCount_ = 0;
    std::int64_t byteCount_ = 0;
    std::set<std::string> folders_;
};

}  // namespace

tl::expected<void, UnpackFailure> unpackArchive(int archive, int folder,
                                                const std::atomic<bool>& isCancelled,
                                                const UnpackLimits& limits) {
    return Unpacking(archive, folder, isCancelled, limits).run();
}

tl::expected<void, UnpackFailure> unpackUpdate(int archive, int folder,
                                               const std::atomic<bool>& isCancelled) {
    return unpackArchive(archive, folder, isCancelled);
}

}  // namespace brimwatch
