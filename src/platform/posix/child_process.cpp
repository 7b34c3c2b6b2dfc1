#include "platform/posix/child_process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

#include "platform/posix/retry.h"
#include "platform/posix/spawning.h"
#include "platform/posix/system_error.h"

namespace brimwatch {
namespace {

// While it lives, a write to a pipe that nobody reads raises no SIGPIPE in this thread.
class PipeSignalHeldBack {
  public:
    PipeSignalHeldBack() {
        ::sigemptyset(&pipeSignal_);
        ::sigaddset(&pipeSignal_, SIGPIPE);
        sigset_t pending;
        ::sigpending(&pending);
        wasPending_ = ::sigismember(&pending, SIGPIPE) == 1;
        ::pthread_sigmask(SIG_BLOCK, &pipeSignal_, &formerMask_);
    }
    PipeSignalHeldBack(const PipeSignalHeldBack&) = delete;
    PipeSignalHeldBack& operator=(const PipeSignalHeldBack&) = delete;
    ~PipeSignalHeldBack() {
        const timespec atOnce{};
        if (!wasPending_) {
            retryOnInterrupt([&] { return ::sigtimedwait(&pipeSignal_, nullptr, &atOnce); });
        }
        ::pthread_sigmask(SIG_SETMASK, &formerMask_, nullptr);
    }

  private:
    sigset_t pipeSignal_{};
    sigset_t formerMask_{};
    bool wasPending_ = false;
};

std::vector<char*> argumentList(const ChildProcessRequest& request) {
    // The interface of exec predates const; it writes to nothing.
    std::vector<char*> list = {const_cast<char*>(request.executable.c_str())};
    for (const std::string& argument : request.arguments) {
        list.push_back(const_cast<char*>(argument.c_str()));
    }
    list.push_back(nullptr);
    return list;
}

tl::expected<pid_t, std::error_code> spawn(const ChildProcessRequest& request, int input,
                                           int output) {
    sigset_t mask;
    ::pthread_sigmask(SIG_BLOCK, nullptr, &mask);
    const SpawnAttributes attributes(mask, request.defaultSignals);
    SpawnFiles files(input, output);
    if (request.workingFolder) files.changeFolder(request.workingFolder->c_str());
    pid_t process = -1;
    const int failure =
        ::posix_spawn(&process, request.executable.c_str(), files.get(), attributes.get(),
                      argumentList(request).data(), const_cast<char* const*>(request.environment));
    if (failure != 0) return systemError(failure);
    return process;
}

}  // namespace

tl::expected<ChildProcess, std::error_code> ChildProcess::launch(
    const ChildProcessRequest& request) {
    Pipe input;
    Pipe output;
    if (!input.open() || !output.open()) return systemError(errno);
    const tl::expected<pid_t, std::error_code> process =
        spawn(request, input.readEnd.get(), output.writeEnd.get());
    if (!process) return tl::unexpected(process.error());
    ChildProcess child;
    if (!child.startWatching(*process)) return systemError(errno);
    ::fcntl(input.writeEnd.get(), F_SETFL, O_NONBLOCK);
    ::fcntl(output.readEnd.get(), F_SETFL, O_NONBLOCK);
    child.input_ = std::move(input.writeEnd);
    child.output_ = std::move(output.readEnd);
    return child;
}

bool ChildProcess::startWatching(pid_t process) {
    process_ = process;
    processDescriptor_ = FileDescriptor(openProcess(process));
    if (processDescriptor_.isOpen()) return true;
    const int reason = errno;
    ::kill(process, SIGKILL);
    retryOnInterrupt([&] { return ::waitpid(process, nullptr, 0); });
    errno = reason;
    return false;
}

std::error_code ChildProcess::write(std::string_view bytes) const {
    const PipeSignalHeldBack heldBack;
    const ssize_t count =
        retryOnInterrupt([&] { return ::write(input_.get(), bytes.data(), bytes.size()); });
    return count < 0 ? std::error_code(errno, std::generic_category()) : std::error_code();
}

tl::expected<std::size_t, std::error_code> ChildProcess::read(std::span<char> buffer) const {
    const ssize_t count =
        retryOnInterrupt([&] { return ::read(output_.get(), buffer.data(), buffer.size()); });
    if (count < 0) return systemError(errno);
    return static_cast<std::size_t>(count);
}

void ChildProcess::terminate() {
    input_.close();
    output_.close();
    // By descriptor: where SIGCHLD is ignored the number could be another process's by now. Without
    // SIGCONT a stopped process would not notice.
    for (const int signal : {SIGTERM, SIGCONT}) {
        ::syscall(SYS_pidfd_send_signal, processDescriptor_.get(), signal, nullptr, 0);
    }
}

bool ChildProcess::reapIfEnded() const {
    // Anything but zero: it is reaped now, or somebody else has done it.
    return retryOnInterrupt([&] { return ::waitpid(process_, nullptr, WNOHANG); }) != 0;
}

}  // namespace brimwatch
