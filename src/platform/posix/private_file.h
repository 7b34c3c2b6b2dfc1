// Reading a file that holds a secret. What is checked and what is read is one open file, so that
// nothing can be put in its place in between. Never waits for a pipe or a device.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>

#include "platform/posix/file_descriptor.h"
#include "platform/private_file.h"

namespace brimwatch {

// 1 to `maximumBytes` bytes of a regular file of `user` with exactly the permissions 0600.
PrivateFileResult readPrivateFile(const std::string& path, uid_t user, std::size_t maximumBytes);

// Its two steps: the checked file, and its bytes, of which there may be more by then.
tl::expected<FileDescriptor, PrivateFileFailure> openPrivateFile(const std::string& path,
                                                                 uid_t user,
                                                                 std::size_t maximumBytes);
PrivateFileResult readOpenedFile(const FileDescriptor& file, std::size_t maximumBytes);

}  // namespace brimwatch
