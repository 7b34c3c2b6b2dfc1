// A child process that is spoken to through pipes and never waited for.
//
// No call blocks. Every descriptor is closed on exec. The child has its own process group, so that
// an interrupt from the terminal reaches this program alone, which then ends the child in its own
// way.
#pragma once

#include <sys/types.h>

#include <csignal>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <tl/expected.hpp>
#include <vector>

#include "platform/posix/file_descriptor.h"

namespace brimwatch {

struct ChildProcessRequest {
    std::string executable;              // a path; no search
    std::vector<std::string> arguments;  // behind the executable
    // Else the one of this process.
    std::optional<std::string> workingFolder;
    const char* const* environment = nullptr;
    // Signals that are ignored here and have to have their default action in the child.
    sigset_t defaultSignals{};
};

// Its destructor closes the pipes and no more: who started it ends it and reaps it.
class ChildProcess {
  public:
    // With new pipes as standard input and output and the null device as standard error. What
    // can't be started, or can't be watched once it is, is not left running.
    static tl::expected<ChildProcess, std::error_code> launch(const ChildProcessRequest& request);

    // Can be read when there is output, and when it has ended.
    int outputDescriptor() const { return output_.get(); }
    // Can be read once the process has ended.
    int processDescriptor() const { return processDescriptor_.get(); }

    // At most PIPE_BUF bytes, which go out whole or not at all. A child that doesn't read is an
    // error, as is one that has closed its input; that raises no SIGPIPE.
    std::error_code write(std::string_view bytes) const;

    // How many bytes there were; zero at the end of the output. Where there are none just now:
    // `std::errc::resource_unavailable_try_again`.
    tl::expected<std::size_t, std::error_code> read(std::span<char> buffer) const;

    // Closes the pipes and asks the process to end, if it runs.
    void terminate();

    // Whether the process has ended. If it has, nothing of it is left.
    bool reapIfEnded() const;

  private:
    bool startWatching(pid_t process);

    pid_t process_ = -1;
    FileDescriptor input_;
    FileDescriptor output_;
    FileDescriptor processDescriptor_;
};

}  // namespace brimwatch
