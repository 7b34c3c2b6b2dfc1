// A file system in memory: quick enough for ten thousand files, and for fuzzing. It has files in
// folders that are always there, without links and locks.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "support/file_system.h"

namespace brimwatch::test {

class MemoryFileSystem final : public FileSystem {
  public:
    struct File {
        std::string bytes;
        FileStatus status;
    };

    // By path.
    const std::map<std::string, File>& files() const { return files_; }
    void put(const std::string& path, std::string bytes) {
        const auto size = static_cast<std::int64_t>(bytes.size());
        ++writes_;
        files_[path] = {.bytes = std::move(bytes),
                        .status = {.kind = FileKind::regular,
                                   .permissions = 0644,
                                   .owner = 0,
                                   .group = 0,
                                   .device = 1,
                                   .inode = writes_,
                                   .modifiedNanoseconds = static_cast<std::int64_t>(writes_),
                                   .size = size}};
    }

    FileResult<std::string> read(const std::string& path, std::size_t maximumBytes) override {
        const auto file = files_.find(path);
        if (file == files_.end()) return failure(std::errc::no_such_file_or_directory);
        if (file->second.bytes.size() > maximumBytes) return failure(std::errc::file_too_large);
        return file->second.bytes;
    }
    FileResult<FileStatus> status(const std::string& path) override {
        const auto file = files_.find(path);
        if (file == files_.end()) return failure(std::errc::no_such_file_or_directory);
        return file->second.status;
    }
    FileResult<std::string> linkTarget(const std::string& path) override {
        return failure(files_.contains(path) ? std::errc::invalid_argument
                                             : std::errc::no_such_file_or_directory);
    }
    FileResult<std::string> realPath(const std::string& path) override {
        if (!files_.contains(path)) return failure(std::errc::no_such_file_or_directory);
        return path;
    }
    FileResult<void> addName(const std::string& path, const std::string& name) override {
        if (files_.contains(name)) return failure(std::errc::file_exists);
        files_[name] = files_.at(path);
        return {};
    }
    FileResult<void> remove(const std::string& path) override {
        if (files_.erase(path) == 0) return failure(std::errc::no_such_file_or_directory);
        return {};
    }
    FileResult<void> makeFolders(const std::string&) override { return {}; }
    FileResult<std::vector<std::string>> entries(const std::string&) override {
        return failure(std::errc::function_not_supported);
    }
    FileResult<std::unique_ptr<FileLock>> lock(const std::string&, LockWait) override {
        return failure(std::errc::no_lock_available);
    }
    FileResult<std::unique_ptr<TemporaryFile>> makeTemporary(const std::string&,
                                                             std::uint32_t) override {
        return std::make_unique<Temporary>(*this);
    }
    void removeAbandonedTemporaries(const std::string&) override {}
    FileResult<void> synchronizeFolder(const std::string&) override { return {}; }

  private:
    class Temporary final : public TemporaryFile {
      public:
        explicit Temporary(MemoryFileSystem& files) : files_(files) {}

        FileResult<void> write(std::string_view bytes) override {
            bytes_ += bytes;
            return {};
        }
        FileResult<void> setOwner(std::uint32_t, std::uint32_t) override { return {}; }
        FileResult<void> setPermissions(std::uint32_t) override { return {}; }
        FileResult<void> synchronize() override { return {}; }
        FileResult<void> replace(const std::string& path) override {
            files_.put(path, bytes_);
            return {};
        }
        FileResult<void> claim(const std::string& path) override {
            if (files_.files_.contains(path)) return failure(std::errc::file_exists);
            return replace(path);
        }

      private:
        MemoryFileSystem& files_;
        std::string bytes_;
    };

    static tl::unexpected<std::error_code> failure(std::errc error) {
        return tl::unexpected(std::make_error_code(error));
    }

    std::map<std::string, File> files_;
    std::uint64_t writes_ = 0;
};

}  // namespace brimwatch::test
