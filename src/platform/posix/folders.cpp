#include "platform/posix/folders.h"

#include <sys/stat.h>

#include <cerrno>

#include "platform/posix/system_error.h"
#include "support/paths.h"

namespace brimwatch {

FileResult<void> makeFolders(const std::string& folder, mode_t mode) {
    if (::mkdir(folder.c_str(), mode) == 0 || errno == EEXIST) return {};
    const std::string parent = parentPath(folder);
    if (errno != ENOENT || parent == folder) return systemError(errno);
    if (const FileResult<void> made = makeFolders(parent, mode); !made) return made;
    if (::mkdir(folder.c_str(), mode) == 0 || errno == EEXIST) return {};
    return systemError(errno);
}

}  // namespace brimwatch
