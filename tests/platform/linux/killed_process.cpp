#include "platform/linux/killed_process.h"

#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <set>

namespace brimwatch::test {
namespace {

constexpr int systemCallStop = SIGTRAP | 0x80;

bool isChange(long number) {
    static const std::set<long> changes = {
        SYS_open,     SYS_openat,    SYS_write,     SYS_mkdir,     SYS_mkdirat,   SYS_rename,
        SYS_renameat, SYS_renameat2, SYS_symlink,   SYS_symlinkat, SYS_unlink,    SYS_unlinkat,
        SYS_rmdir,    SYS_chmod,     SYS_fchmod,    SYS_fchmodat,  SYS_ftruncate, SYS_link,
        SYS_linkat,   SYS_fsync,     SYS_fdatasync, SYS_pwrite64,  SYS_writev};
    return changes.contains(number);
}

long enteredSystemCall(pid_t process) {
    __ptrace_syscall_info information{};
    ::ptrace(PTRACE_GET_SYSCALL_INFO, process, sizeof information, &information);
    return information.op == PTRACE_SYSCALL_INFO_ENTRY ? static_cast<long>(information.entry.nr)
                                                       : -1;
}

pid_t startTraced(const std::function<int()>& action) {
    const pid_t process = ::fork();
    if (process == 0) {
        ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        ::raise(SIGSTOP);
        ::_exit(action());
    }
    return process;
}

}  // namespace

KilledRun runUntilChange(std::size_t change, const std::function<int()>& action) {
    KilledRun run;
    const pid_t process = startTraced(action);
    int status = 0;
    ::waitpid(process, &status, 0);
    run.isTraced = WIFSTOPPED(status) && ::ptrace(PTRACE_SETOPTIONS, process, nullptr,
                                                  PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL) == 0;
    while (run.isTraced && ::ptrace(PTRACE_SYSCALL, process, nullptr, nullptr) == 0) {
        if (::waitpid(process, &status, 0) != process || !WIFSTOPPED(status)) break;
        if (WSTOPSIG(status) != systemCallStop) continue;
        const long number = enteredSystemCall(process);
        if (!isChange(number)) continue;
        if (run.changes.size() == change) {
            run.isKilled = true;
            break;
        }
        run.changes.push_back(number);
    }
    if (!run.isKilled && WIFEXITED(status)) {
        run.exitStatus = WEXITSTATUS(status);
        return run;
    }
    ::kill(process, SIGKILL);
    ::waitpid(process, nullptr, 0);
    return run;
}

}  // namespace brimwatch::test
