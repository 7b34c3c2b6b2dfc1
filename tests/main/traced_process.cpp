#include "main/traced_process.h"

#include <sys/ptrace.h>
#include <sys/user.h>
#include <sys/wait.h>

#include <csignal>
#include <fstream>
#include <utility>

namespace brimwatch::test {
namespace {

constexpr int systemCallStop = SIGTRAP | 0x80;

bool isEvent(int status, int event) {
    return status >> 8 == (SIGTRAP | (event << 8));
}

long peakResidentKilobytes(pid_t process) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.starts_with("VmHWM:")) return std::stol(line.substr(6));
    }
    return 0;
}

long systemCallNumber(pid_t process) {
    __ptrace_syscall_info information{};
    ::ptrace(PTRACE_GET_SYSCALL_INFO, process, sizeof information, &information);
    return information.op == PTRACE_SYSCALL_INFO_ENTRY ? static_cast<long>(information.entry.nr)
                                                       : -1;
}

}  // namespace

TracedRun traceProcess(const ProcessRequest& request) {
    ProcessRequest traced = request;
    traced.prepare = [&request] {
        if (request.prepare) request.prepare();
        ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        ::raise(SIGSTOP);
    };
    Process process(traced);
    TracedRun run;
    int status = 0;
    ::waitpid(process.id(), &status, 0);
    if (!WIFSTOPPED(status) ||
        ::ptrace(PTRACE_SETOPTIONS, process.id(), nullptr,
                 PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACEEXEC | PTRACE_O_TRACEEXIT) != 0) {
        return run;
    }
    run.traced = true;
    bool executed = false;
    while (::ptrace(PTRACE_SYSCALL, process.id(), nullptr, nullptr) == 0) {
        if (::waitpid(process.id(), &status, 0) != process.id() || !WIFSTOPPED(status)) break;
        executed |= isEvent(status, PTRACE_EVENT_EXEC);
        if (isEvent(status, PTRACE_EVENT_EXIT)) {
            run.peakResidentKilobytes = peakResidentKilobytes(process.id());
        }
        if (!executed || WSTOPSIG(status) != systemCallStop) continue;
        const long number = systemCallNumber(process.id());
        if (number >= 0) run.systemCalls.push_back(number);
    }
    return run;
}

}  // namespace brimwatch::test
