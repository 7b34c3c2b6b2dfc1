// What lets the application run only once for each state folder.
//
// The file `.instance.lock` there is locked (flock) for as long as this lives. The kernel lets go
// of the lock when the process ends, however it ends; children don't inherit it. The file stays.
#pragma once

#include <optional>
#include <string>
#include <utility>

#include "platform/posix/file_descriptor.h"
#include "support/file_system.h"

namespace brimwatch {

class InstanceLock {
  public:
    // Never waits. Nothing if somebody else has it, be it in this process or on another machine
    // that shares the folder. A failure tells nothing of others: the folder or the file can't be
    // made or opened, or can't be locked there. What is missing is made, for the user alone.
    static FileResult<std::optional<InstanceLock>> take(const std::string& stateFolder);

  private:
    explicit InstanceLock(FileDescriptor file) : file_(std::move(file)) {}

    FileDescriptor file_;
};

}  // namespace brimwatch
