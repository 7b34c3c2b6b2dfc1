#include "bench/process_run.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <stdexcept>

namespace brimwatch::bench {
namespace {

using Clock = std::chrono::steady_clock;

class SpawnFiles {
  public:
    explicit SpawnFiles(const std::string& inputPath) {
        ::posix_spawn_file_actions_init(&actions_);
        open(STDIN_FILENO, inputPath.c_str(), O_RDONLY);
        open(STDOUT_FILENO, "/dev/null", O_WRONLY);
        open(STDERR_FILENO, "/dev/null", O_WRONLY);
    }
    SpawnFiles(const SpawnFiles&) = delete;
    SpawnFiles& operator=(const SpawnFiles&) = delete;
    ~SpawnFiles() { ::posix_spawn_file_actions_destroy(&actions_); }

    const posix_spawn_file_actions_t* get() const { return &actions_; }

  private:
    void open(int descriptor, const char* path, int flags) {
        ::posix_spawn_file_actions_addopen(&actions_, descriptor, path, flags, 0);
    }

    posix_spawn_file_actions_t actions_{};
};

std::vector<char*> pointers(const std::vector<std::string>& texts) {
    std::vector<char*> list;
    for (const std::string& text : texts)
        list.push_back(const_cast<char*>(text.c_str()));
    list.push_back(nullptr);
    return list;
}

struct Ending {
    int status = 0;
    rusage usage{};

    bool isSuccess() const { return WIFEXITED(status) && WEXITSTATUS(status) == 0; }
};

Ending waitFor(pid_t process) {
    Ending ending;
    while (::wait4(process, &ending.status, 0, &ending.usage) < 0) {
        if (errno != EINTR) throw std::runtime_error("can't wait for a program");
    }
    return ending;
}

}  // namespace

Measurement measure(const ProcessRun& run) {
    const SpawnFiles files(run.inputPath);
    const std::vector<char*> arguments = pointers(run.arguments);
    const std::vector<char*> environment = pointers(run.environment);
    pid_t process = -1;
    const Clock::time_point start = Clock::now();
    const int failure = ::posix_spawn(&process, arguments.front(), files.get(), nullptr,
                                      arguments.data(), environment.data());
    if (failure != 0) throw std::runtime_error("can't start " + run.arguments.front());
    const Ending ending = waitFor(process);
    const std::chrono::duration<double, std::milli> elapsed = Clock::now() - start;
    if (!ending.isSuccess()) throw std::runtime_error("failed: " + run.arguments.front());
    return {.milliseconds = elapsed.count(),
            .peakKibibytes = static_cast<double>(ending.usage.ru_maxrss),
            .pageFaults = static_cast<double>(ending.usage.ru_minflt)};
}

double ownPeakKibibytes() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss);
}

}  // namespace brimwatch::bench
