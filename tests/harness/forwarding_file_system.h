// A file system that hands every step on to another one, for those that look at a few of them.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "support/file_system.h"

namespace brimwatch::test {

class ForwardingFileSystem : public FileSystem {
  public:
    explicit ForwardingFileSystem(FileSystem& inner) : inner_(inner) {}

    FileResult<std::string> read(const std::string& path, std::size_t maximumBytes) override {
        return inner_.read(path, maximumBytes);
    }
    FileResult<FileStatus> status(const std::string& path) override { return inner_.status(path); }
    FileResult<std::vector<std::string>> entries(const std::string& folder) override {
        return inner_.entries(folder);
    }
    FileResult<std::string> linkTarget(const std::string& path) override {
        return inner_.linkTarget(path);
    }
    FileResult<std::string> realPath(const std::string& path) override {
        return inner_.realPath(path);
    }
    FileResult<void> addName(const std::string& path, const std::string& name) override {
        return inner_.addName(path, name);
    }
    FileResult<void> remove(const std::string& path) override { return inner_.remove(path); }
    FileResult<void> makeFolders(const std::string& folder) override {
        return inner_.makeFolders(folder);
    }
    FileResult<std::unique_ptr<FileLock>> lock(const std::string& path, LockWait wait) override {
        return inner_.lock(path, wait);
    }
    FileResult<std::unique_ptr<TemporaryFile>> makeTemporary(const std::string& folder,
                                                             std::uint32_t permissions) override {
        return inner_.makeTemporary(folder, permissions);
    }
    void removeAbandonedTemporaries(const std::string& folder) override {
        inner_.removeAbandonedTemporaries(folder);
    }
    FileResult<void> synchronizeFolder(const std::string& folder) override {
        return inner_.synchronizeFolder(folder);
    }

  private:
    FileSystem& inner_;
};

}  // namespace brimwatch::test
