#include "harness/process.h"

#include <fcntl.h>
#include <linux/close_range.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <stdexcept>
#include <thread>
#include <utility>

namespace brimwatch::test {
namespace {

int memoryFile(std::string_view bytes) {
    const int file = ::memfd_create("stream", MFD_CLOEXEC);
    if (file < 0) throw std::runtime_error("no memory file");
    while (!bytes.empty()) {
        const ssize_t count = ::write(file, bytes.data(), bytes.size());
        if (count <= 0) throw std::runtime_error("can't fill a memory file");
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    ::lseek(file, 0, SEEK_SET);
    return file;
}

std::string takeAll(int file) {
    ::lseek(file, 0, SEEK_SET);
    std::string bytes;
    std::array<char, 65536> buffer{};
    for (ssize_t count = 0; (count = ::read(file, buffer.data(), buffer.size())) > 0;) {
        bytes.append(buffer.data(), static_cast<std::size_t>(count));
    }
    ::close(file);
    return bytes;
}

std::vector<char*> argumentList(const ProcessRequest& request) {
    std::vector<char*> list = {const_cast<char*>(request.program.c_str())};
    for (const std::string& argument : request.arguments) {
        list.push_back(const_cast<char*>(argument.c_str()));
    }
    list.push_back(nullptr);
    return list;
}

}  // namespace

bool ProcessResult::exitedWith(int code) const {
    return WIFEXITED(status) && WEXITSTATUS(status) == code;
}

bool ProcessResult::endedBySignal(int signal) const {
    return WIFSIGNALED(status) && WTERMSIG(status) == signal;
}

Process::Process(const ProcessRequest& request)
    : output_(memoryFile("")), errorOutput_(memoryFile("")) {
    const int input = memoryFile(request.input);
    const std::vector<char*> arguments = argumentList(request);
    process_ = ::fork();
    if (process_ == 0) {
        ::dup2(input, STDIN_FILENO);
        ::dup2(output_, STDOUT_FILENO);
        ::dup2(errorOutput_, STDERR_FILENO);
        // What the test itself was started with is not the program's.
        ::close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
        if (request.prepare) request.prepare();
        ::execve(request.program.c_str(), arguments.data(),
                 const_cast<char* const*>(request.environment.entries()));
        ::_exit(127);
    }
    ::close(input);
    if (process_ < 0) throw std::runtime_error("can't fork");
}

Process::Process(Process&& other) noexcept
    : process_(std::exchange(other.process_, -1)),
      output_(std::exchange(other.output_, -1)),
      errorOutput_(std::exchange(other.errorOutput_, -1)) {}

Process::~Process() {
    if (process_ <= 0) return;
    signal(SIGKILL);
    wait();
}

void Process::signal(int number) const {
    ::kill(process_, number);
}

ProcessResult Process::wait() {
    ProcessResult result;
    while (::wait4(process_, &result.status, 0, &result.usage) < 0 && errno == EINTR) {
    }
    process_ = -1;
    result.output = takeAll(output_);
    result.errorOutput = takeAll(errorOutput_);
    return result;
}

ProcessResult runProcess(const ProcessRequest& request) {
    return Process(request).wait();
}

bool eventually(const std::function<bool()>& condition) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + std::chrono::seconds(10);
    while (!condition()) {
        if (Clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

}  // namespace brimwatch::test
