// Files that are being written beside the one that they will replace.
//
// Their names are hidden, so that no reader takes one for a file of its own. For as long as its
// writer lives, a temporary file is locked (flock); the kernel lets go of the lock when the writer
// dies, however it dies, and so the next writer knows which ones were left behind.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/posix/file_descriptor.h"
#include "support/file_system.h"

namespace brimwatch {

class PosixTemporaryFile final : public TemporaryFile {
  public:
    static FileResult<std::unique_ptr<TemporaryFile>> make(const std::string& folder,
                                                           std::uint32_t permissions);
    static bool isTemporaryName(std::string_view name);
    static void removeIfAbandoned(const std::string& path);

    PosixTemporaryFile(std::string path, FileDescriptor file);
    PosixTemporaryFile(const PosixTemporaryFile&) = delete;
    PosixTemporaryFile& operator=(const PosixTemporaryFile&) = delete;
    ~PosixTemporaryFile() override;

    FileResult<void> write(std::string_view bytes) override;
    FileResult<void> setOwner(std::uint32_t owner, std::uint32_t group) override;
    FileResult<void> setPermissions(std::uint32_t permissions) override;
    FileResult<void> synchronize() override;
    FileResult<void> replace(const std::string& path) override;
    FileResult<void> claim(const std::string& path) override;

  private:
    std::string path_;
    FileDescriptor file_;
    bool hasOwnName_ = true;
};

}  // namespace brimwatch
