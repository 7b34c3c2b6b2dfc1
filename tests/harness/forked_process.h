// A part of a test that runs in a process of its own, a copy of the test's, and is killed with it.
#pragma once

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>

namespace brimwatch::test {

class ForkedProcess {
  public:
    explicit ForkedProcess(const std::function<void()>& action) : process_(::fork()) {
        if (process_ != 0) return;
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        action();
        ::_exit(0);
    }
    ForkedProcess(const ForkedProcess&) = delete;
    ForkedProcess& operator=(const ForkedProcess&) = delete;
    ~ForkedProcess() { kill(); }

    // Returns once nothing of it is left.
    void kill() {
        if (process_ <= 0) return;
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
        process_ = -1;
    }

  private:
    pid_t process_;
};

}  // namespace brimwatch::test
