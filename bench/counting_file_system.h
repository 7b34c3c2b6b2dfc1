// A file system that counts the bytes that are written to each file name.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "support/file_system.h"
#include "support/paths.h"

namespace brimwatch::bench {

class CountingFileSystem final : public FileSystem {
  public:
    struct Written {
        std::uint64_t files = 0;
        std::uint64_t bytes = 0;
    };

    explicit CountingFileSystem(FileSystem& inner) : inner_(inner) {}

    // By the last component of the path.
    std::map<std::string, Written> written() const {
        const std::lock_guard lock(mutex_);
        return written_;
    }
    void forget() {
        const std::lock_guard lock(mutex_);
        written_.clear();
    }

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
        auto file = inner_.makeTemporary(folder, permissions);
        if (!file) return file;
        return std::make_unique<Temporary>(*this, *std::move(file));
    }
    void removeAbandonedTemporaries(const std::string& folder) override {
        inner_.removeAbandonedTemporaries(folder);
    }
    FileResult<void> synchronizeFolder(const std::string& folder) override {
        return inner_.synchronizeFolder(folder);
    }

  private:
    class Temporary final : public TemporaryFile {
      public:
        Temporary(CountingFileSystem& files, std::unique_ptr<TemporaryFile> inner)
            : files_(files), inner_(std::move(inner)) {}

        FileResult<void> write(std::string_view bytes) override {
            bytes_ += bytes.size();
            return inner_->write(bytes);
        }
        FileResult<void> setOwner(std::uint32_t owner, std::uint32_t group) override {
            return inner_->setOwner(owner, group);
        }
        FileResult<void> setPermissions(std::uint32_t permissions) override {
            return inner_->setPermissions(permissions);
        }
        FileResult<void> synchronize() override { return inner_->synchronize(); }
        FileResult<void> replace(const std::string& path) override {
            files_.count(path, bytes_);
            return inner_->replace(path);
        }
        FileResult<void> claim(const std::string& path) override {
            files_.count(path, bytes_);
            return inner_->claim(path);
        }

      private:
        CountingFileSystem& files_;
        std::unique_ptr<TemporaryFile> inner_;
        std::uint64_t bytes_ = 0;
    };

    void count(const std::string& path, std::uint64_t bytes) {
        const std::lock_guard lock(mutex_);
        Written& written = written_[std::string(lastPathComponent(path))];
        ++written.files;
        written.bytes += bytes;
    }

    FileSystem& inner_;
    mutable std::mutex mutex_;
    std::map<std::string, Written> written_;
};

}  // namespace brimwatch::bench
