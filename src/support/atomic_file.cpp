#include "support/atomic_file.h"

#include "support/paths.h"

namespace brimwatch {
namespace {

// Only root may give a file to another user; everyone may give it to a group of theirs. Tells
// whether the group has it.
bool giveAway(TemporaryFile& file, const FileOwner& owner) {
    return file.setOwner(owner.owner, owner.group) ||
           file.setOwner(TemporaryFile::sameOwner, owner.group);
}

// The rights of the file's group were meant for another group than the one that has it now.
constexpr std::uint32_t withGroupAsOthers(std::uint32_t permissions) {
    constexpr std::uint32_t others = 07;
    return (permissions & ~(others << 3U)) | ((permissions & others) << 3U);
}

FileResult<void> fill(TemporaryFile& file, std::string_view bytes,
                      const ReplacementOptions& options) {
    FileResult<void> result = file.write(bytes);
    // The mode comes second: giving a file away may clear bits of it.
    if (result && options.owner) {
        const bool isOfGroup = giveAway(file, *options.owner);
        result = file.setPermissions(isOfGroup ? options.permissions
                                               : withGroupAsOthers(options.permissions));
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
