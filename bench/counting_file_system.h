// A file system that counts the bytes that are written to each file name.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "harness/forwarding_file_system.h"
#include "support/paths.h"

namespace brimwatch::bench {

class CountingFileSystem final : public test::ForwardingFileSystem {
  public:
    struct Written {
        std::uint64_t files = 0;
        std::uint64_t bytes = 0;
    };

    using ForwardingFileSystem::ForwardingFileSystem;

    // By the last component of the path.
    std::map<std::string, Written> written() const {
        const std::lock_guard lock(mutex_);
        return written_;
    }
    void forget() {
        const std::lock_guard lock(mutex_);
        written_.clear();
    }

    FileResult<std::unique_ptr<TemporaryFile>> makeTemporary(const std::string& folder,
                                                             std::uint32_t permissions) override {
        auto file = ForwardingFileSystem::makeTemporary(folder, permissions);
        if (!file) return file;
        return std::make_unique<Temporary>(*this, *std::move(file));
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

    mutable std::mutex mutex_;
    std::map<std::string, Written> written_;
};

}  // namespace brimwatch::bench
