#include "platform/posix/shell_command.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <utility>

#include "platform/posix/file_descriptor.h"
#include "platform/posix/retry.h"
#include "platform/posix/spawning.h"

namespace brimwatch {
namespace {

using Milliseconds = std::chrono::milliseconds;

constexpr std::size_t longestOutput = 64U << 20U;
// A status line is shorter, and each page of a larger buffer is one more fault.
constexpr std::size_t readSize = 4U << 10U;
constexpr Milliseconds pollInterval{10};
constexpr Milliseconds graceTime{500};

// Counts on while the machine sleeps.
Milliseconds now() {
    timespec time{};
    ::clock_gettime(CLOCK_BOOTTIME, &time);
    return std::chrono::duration_cast<Milliseconds>(std::chrono::seconds(time.tv_sec) +
                                                    std::chrono::nanoseconds(time.tv_nsec));
}

// Holds back the signals that would end this process, so that they can be read from a descriptor
// and the command can be ended first. Signals that are ignored stay ignored.
class EndingSignals {
  public:
    EndingSignals() {
        ::pthread_sigmask(SIG_BLOCK, nullptr, &formerMask_);
        const sigset_t ending = signalsThatEndThisProcess();
        descriptor_ = FileDescriptor(::signalfd(-1, &ending, SFD_CLOEXEC | SFD_NONBLOCK));
        // What can't be read must not be held back.
        if (descriptor_.isOpen()) ::pthread_sigmask(SIG_BLOCK, &ending, nullptr);
    }
    EndingSignals(const EndingSignals&) = delete;
    EndingSignals& operator=(const EndingSignals&) = delete;
    ~EndingSignals() { ::pthread_sigmask(SIG_SETMASK, &formerMask_, nullptr); }

    int descriptor() const { return descriptor_.get(); }
    const sigset_t& formerMask() const { return formerMask_; }

    // The signal that arrived, if one did.
    std::optional<int> take() const {
        signalfd_siginfo information{};
        const ssize_t count = ::read(descriptor_.get(), &information, sizeof information);
        if (count != sizeof information) return std::nullopt;
        return static_cast<int>(information.ssi_signo);
    }

  private:
    sigset_t signalsThatEndThisProcess() const {
        sigset_t ending;
        ::sigemptyset(&ending);
        for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
            struct sigaction action {};
            const bool ends = ::sigaction(signal, nullptr, &action) == 0 &&
                              action.sa_handler == SIG_DFL &&
                              ::sigismember(&formerMask_, signal) == 0;
            if (ends) ::sigaddset(&ending, signal);
        }
        return ending;
    }

    sigset_t formerMask_{};
    FileDescriptor descriptor_;
};

class Command {
  public:
    explicit Command(const ShellCommandRequest& request)
        : request_(request), unwritten_(request.input) {}

    std::optional<std::string> run() {
        // Processes that the command leaves behind become children of this one, so that one of them
        // that is this program again still finds it among its ancestors.
        ::prctl(PR_SET_CHILD_SUBREAPER, 1);
        if (!start()) return std::nullopt;
        while (output_.isOpen() || !exited_)
            step();
        if (wasSignalled_ || overflowed_) return std::nullopt;
        return std::move(printed_);
    }

  private:
    bool start() {
        Pipe input;
        Pipe output;
        if (!input.open() || !output.open()) return false;
        const SpawnAttributes attributes(signals_.formerMask(), request_.defaultSignals);
        const SpawnFiles files(input.readEnd.get(), output.writeEnd.get());
        const std::array<const char*, 4> arguments = {"sh", "-c", request_.commandLine.c_str(),
                                                      nullptr};
        // The interface of exec predates const; neither list is written to.
        const int failure = ::posix_spawn(&process_, "/bin/sh", files.get(), attributes.get(),
                                          const_cast<char* const*>(arguments.data()),
                                          const_cast<char* const*>(request_.environment));
        if (failure != 0) return false;
        input_ = std::move(input.writeEnd);
        output_ = std::move(output.readEnd);
        ::fcntl(input_.get(), F_SETFL, O_NONBLOCK);
        ::fcntl(output_.get(), F_SETFL, O_NONBLOCK);
        processDescriptor_ = FileDescriptor(openProcess(process_));
        deadline_ = now() + std::chrono::duration_cast<Milliseconds>(request_.timeOut);
        return true;
    }

    // Waits until something can go on, and goes on with all that can. Poll passes over descriptors
    // that are negative, as those of closed ends are.
    void step() {
        if (unwritten_.empty()) input_.close();
        std::array<pollfd, 4> entries = {
            {{.fd = input_.get(), .events = POLLOUT, .revents = 0},
             {.fd = output_.get(), .events = POLLIN, .revents = 0},
             {.fd = exited_ ? -1 : processDescriptor_.get(), .events = POLLIN, .revents = 0},
             {.fd = signals_.descriptor(), .events = POLLIN, .revents = 0}}};
        ::poll(entries.data(), entries.size(), millisecondsToWait());
        if (const std::optional<int> signal = signals_.take()) endWith(*signal);
        if (entries[0].revents != 0) writeInput();
        if (entries[1].revents != 0) readOutput();
        if (!exited_) reap();
        if (!exited_ && !terminated_ && now() >= deadline_) terminate();
    }

    int millisecondsToWait() const {
        // Without a descriptor for the process (an old kernel, a strict sandbox) it is looked
        // after.
        if (!exited_ && !processDescriptor_.isOpen()) return pollInterval.count();
        if (exited_ || terminated_) return -1;
        return static_cast<int>(std::max(deadline_ - now(), Milliseconds(0)).count());
    }

    void writeInput() {
        const ssize_t count = ::write(input_.get(), unwritten_.data(), unwritten_.size());
        if (count > 0) {
            unwritten_.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno != EAGAIN && errno != EINTR) {
            unwritten_ = {};  // the command does not want it
        }
    }

    void readOutput() {
        const std::size_t filled = printed_.size();
        printed_.resize(filled + readSize);
        const ssize_t count = ::read(output_.get(), printed_.data() + filled, readSize);
        const bool ended = count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR);
        printed_.resize(filled + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        if (printed_.size() > longestOutput) {
            overflowed_ = true;
            printed_.clear();
        }
        if (ended) output_.close();
    }

    void reap() {
        int status = 0;
        const pid_t reaped =
            retryOnInterrupt([&] { return ::waitpid(process_, &status, WNOHANG); });
        if (reaped == 0) return;
        exited_ = true;
        // Where SIGCHLD is ignored the system keeps no status; then only our own signal is known.
        wasSignalled_ = reaped == process_ ? WIFSIGNALED(status) : terminated_;
    }

    void terminate() {
        ::kill(process_, SIGTERM);
        ::kill(process_, SIGCONT);  // without it a stopped process would not notice
        terminated_ = true;
    }

    [[noreturn]] void endWith(int signal) {
        ::kill(-process_, SIGTERM);
        ::kill(-process_, SIGCONT);
        const Milliseconds end = now() + graceTime;
        while (isGroupAlive() && now() < end) {
            ::poll(nullptr, 0, static_cast<int>(pollInterval.count()));
        }
        ::kill(-process_, SIGKILL);
        sigset_t only;
        ::sigemptyset(&only);
        ::sigaddset(&only, signal);
        static_cast<void>(::raise(signal));
        ::pthread_sigmask(SIG_UNBLOCK, &only, nullptr);
        std::_Exit(EXIT_FAILURE);
    }

    // Those of its processes that have ended are reaped here, as orphans of the command come to us.
    bool isGroupAlive() const {
        while (::waitpid(-process_, nullptr, WNOHANG) > 0) {
        }
        return ::kill(-process_, 0) == 0;
    }

    const ShellCommandRequest& request_;
    EndingSignals signals_;
    FileDescriptor input_;
    FileDescriptor output_;
    FileDescriptor processDescriptor_;
    pid_t process_ = -1;
    Milliseconds deadline_{};
    std::string_view unwritten_;
    std::string printed_;
    bool exited_ = false;
    bool wasSignalled_ = false;
    bool terminated_ = false;
    bool overflowed_ = false;
};

}  // namespace

std::optional<std::string> runShellCommand(const ShellCommandRequest& request) {
    return Command(request).run();
}

}  // namespace brimwatch
