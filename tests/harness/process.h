// Real processes, started by a test and ended with it.
#pragma once

#include <sys/resource.h>
#include <sys/types.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "harness/environment_list.h"

namespace brimwatch::test {

struct ProcessResult {
    std::string output;
    std::string errorOutput;
    int status = 0;  // as waitpid gives it
    rusage usage{};

    bool exitedWith(int code) const;
    bool endedBySignal(int signal) const;
};

struct ProcessRequest {
    std::string program;
    std::vector<std::string> arguments;  // behind the program's path
    EnvironmentList environment = {};
    std::string input;
    // Runs in the child between fork and exec.
    std::function<void()> prepare;
};

// A process whose standard streams are files, so that it never waits for the test. Without a call
// of `wait` the destructor kills it.
class Process {
  public:
    explicit Process(const ProcessRequest& request);
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    Process(Process&& other) noexcept;
    Process& operator=(Process&&) = delete;
    ~Process();

    pid_t id() const { return process_; }
    void signal(int number) const;
    ProcessResult wait();

  private:
    pid_t process_ = -1;
    int output_ = -1;
    int errorOutput_ = -1;
};

ProcessResult runProcess(const ProcessRequest& request);

// Waits until the condition holds, for ten seconds at most.
bool eventually(const std::function<bool()>& condition);

}  // namespace brimwatch::test
