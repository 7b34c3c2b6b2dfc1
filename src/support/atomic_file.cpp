#include "support/atomic_file.h"

#include <memory>

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

}  // namespace

FileResult<void> replaceFile(FileSystem& files, const std::string& path, std::string_view bytes,
                             const ReplacementOptions& options) {
    const std::string folder = parentPath(path);
    FileResult<std::unique_ptr<TemporaryFile>> file =
        files.makeTemporary(folder, options.permissions);
    if (!file) return tl::unexpected(file.error());
    FileResult<void> result = fill(**file, bytes, options);
    if (result) result = (*file)->replace(path);
    if (result && options.durability == Durability::synchronized) {
        result = files.synchronizeFolder(folder);
    }
    return result;
}

}  // namespace brimwatch
