#include "support/atomic_file.h"

#include "support/paths.h"

namespace brimwatch {
namespace {

FileResult<void> fill(TemporaryFile& file, std::string_view bytes,
                      const ReplacementOptions& options) {
    FileResult<void> result = file.write(bytes);
    if (result && options.owner) {
        // Only root may give a file away. The mode comes second: giving away may clear bits of it.
        static_cast<void>(file.setOwner(options.owner->owner, options.owner->group));
        result = file.setPermissions(options.permissions);
    }
    if (result && options.durability == Durability::synchronized) result = file.synchronize();
    return result;
}

FileResult<void> waitForName(FileSystem& files, const std::string& path, Durability durability) {
    if (durability != Durability::synchronized) return {};
    return files.synchronizeFolder(parentPath(path));
}

}  // namespace

FileResult<std::unique_ptr<TemporaryFile>> prepareReplacement(FileSystem& files,
                                                              const std::string& path,
                                                              std::string_view bytes,
                                                              const ReplacementOptions& options) {
    FileResult<std::unique_ptr<TemporaryFile>> file =
        files.makeTemporary(parentPath(path), options.permissions);
    if (!file) return file;
    const FileResult<void> filled = fill(**file, bytes, options);
    if (!filled) return tl::unexpected(filled.error());
    return file;
}

FileResult<void> finishReplacement(FileSystem& files, const std::string& path, TemporaryFile& file,
                                   Durability durability) {
    const FileResult<void> replaced = file.replace(path);
    return replaced ? waitForName(files, path, durability) : replaced;
}

FileResult<void> replaceFile(FileSystem& files, const std::string& path, std::string_view bytes,
                             const ReplacementOptions& options) {
    const auto file = prepareReplacement(files, path, bytes, options);
    if (!file) return tl::unexpected(file.error());
    return finishReplacement(files, path, **file, options.durability);
}

FileResult<void> claimFile(FileSystem& files, const std::string& path, std::string_view bytes,
                           const ReplacementOptions& options) {
    const auto file = prepareReplacement(files, path, bytes, options);
    if (!file) return tl::unexpected(file.error());
    const FileResult<void> claimed = (*file)->claim(path);
    return claimed ? waitForName(files, path, options.durability) : claimed;
}

}  // namespace brimwatch
