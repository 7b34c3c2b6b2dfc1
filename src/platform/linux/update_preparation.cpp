#include "platform/linux/update_preparation.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <optional>
#include <string_view>

#include "platform/bundle_info.h"
#include "platform/linux/appcast_version.h"
#include "platform/linux/ed25519_signature.h"
#include "platform/posix/executable_path.h"
#include "platform/posix/posix_file_system.h"
#include "support/paths.h"

namespace brimwatch {
namespace {

using Result = tl::expected<void, UpdateFailure>;

auto failure(UpdateFailure reason) {
    return tl::unexpected(reason);
}

// The bytes of a file, which must not change meanwhile.
class MappedFile {
  public:
    explicit MappedFile(const FileDescriptor& file) {
        struct stat status {};
        if (::fstat(file.get(), &status) != 0 || status.st_size <= 0) return;
        size_ = static_cast<std::size_t>(status.st_size);
        void* const address = ::mmap(nullptr, size_, PROT_READ, MAP_PRIVATE, file.get(), 0);
        if (address != MAP_FAILED) bytes_ = static_cast<const char*>(address);
    }
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;
    ~MappedFile() {
        if (bytes_ != nullptr) ::munmap(const_cast<char*>(bytes_), size_);
    }

    std::optional<std::string_view> view() const {
        if (bytes_ == nullptr) return std::nullopt;
        return std::string_view(bytes_, size_);
    }

  private:
    const char* bytes_ = nullptr;
    std::size_t size_ = 0;
};

Result checkSignature(const PreparationOrder& order, const FileDescriptor& file) {
    const MappedFile mapped(file);
    if (!mapped.view()) return failure(UpdateFailure::disk);
    if (verifyEd25519(*mapped.view(), order.signature, order.publicKey)) return {};
    return failure(UpdateFailure::signature);
}

Result unpackInto(const std::string& folder, const FileDescriptor& file, UnpackUpdate& unpack,
                  const std::atomic<bool>& isCancelled) {
    const FileDescriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened.isOpen() || ::lseek(file.get(), 0, SEEK_SET) != 0)
        return failure(UpdateFailure::disk);
    const auto unpacked = unpack(file.get(), opened.get(), isCancelled);
    if (unpacked) return {};
    return failure(unpacked.error() == UnpackFailure::archive ? UpdateFailure::archive
                                                              : UpdateFailure::disk);
}

// The signature does not cover what the feed says of the version: an old archive must not pass for
// a new one, nor that of another program for ours.
Result checkContent(const PreparationOrder& order, const std::string& folder) {
    PosixFileSystem files;
    const std::string desktopProgram = joinPath(folder, "libexec/brimwatch/brimwatch-desktop");
    const BundleInfo info = readBundleInfo(files, bundleInfoPath(desktopProgram));
    const bool isWhole = isExecutableFile(joinPath(folder, "bin/brimwatch")) &&
                         isExecutableFile(desktopProgram) && info.version == order.version &&
                         info.bundleIdentifier == order.bundleIdentifier &&
                         std::is_lt(compareVersions(order.runningVersion, info.version));
    return isWhole ? Result() : failure(UpdateFailure::archive);
}

Result fill(const PreparationOrder& order, const FileDescriptor& file,
            const VersionFolders& folders, const std::string& staging, UnpackUpdate& unpack,
            const std::atomic<bool>& isCancelled) {
    Result result = unpackInto(folders.path(staging), file, unpack, isCancelled);
    if (result) result = checkContent(order, folders.path(staging));
    if (result && !folders.adopt(staging, order.version)) result = failure(UpdateFailure::disk);
    return result;
}

}  // namespace

tl::expected<void, UpdateFailure> prepareUpdate(const PreparationOrder& order,
                                                const FileDescriptor& file,
                                                const VersionFolders& folders, UnpackUpdate& unpack,
                                                const std::atomic<bool>& isCancelled) {
    const Result isSigned = checkSignature(order, file);
    if (!isSigned) return isSigned;
    if (!VersionFolders::isName(order.version)) return failure(UpdateFailure::archive);
    folders.removeUnused(order.readyVersion);
    const FileResult<std::string> staging = folders.makeStaging();
    if (!staging) return failure(UpdateFailure::disk);
    const Result result = fill(order, file, folders, *staging, unpack, isCancelled);
    if (!result) folders.remove(*staging);
    return result;
}

}  // namespace brimwatch
