// What posix_spawn needs, with owners: pipes, attributes and file actions.
#pragma once

#include <fcntl.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <csignal>

#include "platform/posix/file_descriptor.h"

namespace brimwatch {

// The C library's own pidfd_open can't be called from C++ everywhere.
inline int openProcess(pid_t process) {
    return static_cast<int>(::syscall(SYS_pidfd_open, process, 0));
}

// Both ends are closed on exec.
struct Pipe {
    FileDescriptor readEnd;
    FileDescriptor writeEnd;

    // Sets errno if it fails.
    bool open() {
        std::array<int, 2> ends{};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0) return false;
        readEnd = FileDescriptor(ends[0]);
        writeEnd = FileDescriptor(ends[1]);
        return true;
    }
};

// A process group of its own, that signal mask, and the default action for those signals.
class SpawnAttributes {
  public:
    SpawnAttributes(const sigset_t& mask, const sigset_t& defaultSignals) {
        ::posix_spawnattr_init(&attributes_);
        ::posix_spawnattr_setpgroup(&attributes_, 0);
        ::posix_spawnattr_setsigmask(&attributes_, &mask);
        ::posix_spawnattr_setsigdefault(&attributes_, &defaultSignals);
        ::posix_spawnattr_setflags(
            &attributes_, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    SpawnAttributes(const SpawnAttributes&) = delete;
    SpawnAttributes& operator=(const SpawnAttributes&) = delete;
    ~SpawnAttributes() { ::posix_spawnattr_destroy(&attributes_); }

    const posix_spawnattr_t* get() const { return &attributes_; }

  private:
    posix_spawnattr_t attributes_{};
};

// Those standard input and output; standard error is the null device.
class SpawnFiles {
  public:
    SpawnFiles(int input, int output) {
        ::posix_spawn_file_actions_init(&actions_);
        ::posix_spawn_file_actions_adddup2(&actions_, input, STDIN_FILENO);
        ::posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
        ::posix_spawn_file_actions_addopen(&actions_, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    }
    SpawnFiles(const SpawnFiles&) = delete;
    SpawnFiles& operator=(const SpawnFiles&) = delete;
    ~SpawnFiles() { ::posix_spawn_file_actions_destroy(&actions_); }

    // Also those that were opened without being closed on exec.
    void closeOthers() { ::posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1); }
    void changeFolder(const char* path) { ::posix_spawn_file_actions_addchdir_np(&actions_, path); }

    const posix_spawn_file_actions_t* get() const { return &actions_; }

  private:
    posix_spawn_file_actions_t actions_{};
};

}  // namespace brimwatch
