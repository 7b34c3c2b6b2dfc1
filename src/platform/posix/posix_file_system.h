// The file system as POSIX and Linux give it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "support/file_system.h"

namespace brimwatch {

class PosixFileSystem final : public FileSystem {
  public:
    FileResult<std::string> read(const std::string& path, std::size_t maximumBytes) override;
    FileResult<FileStatus> status(const std::string& path) override;
    FileResult<std::vector<std::string>> entries(const std::string& folder) override;
    FileResult<std::string> linkTarget(const std::string& path) override;
    FileResult<std::string> realPath(const std::string& path) override;
    FileResult<void> addName(const std::string& path, const std::string& name) override;
    FileResult<void> remove(const std::string& path) override;
    FileResult<void> makeFolders(const std::string& folder) override;
    FileResult<std::unique_ptr<FileLock>> lock(const std::string& path, LockWait wait) override;
    FileResult<std::unique_ptr<TemporaryFile>> makeTemporary(const std::string& folder,
                                                             std::uint32_t permissions) override;
    void removeAbandonedTemporaries(const std::string& folder) override;
    FileResult<void> synchronizeFolder(const std::string& folder) override;
};

}  // namespace brimwatch
