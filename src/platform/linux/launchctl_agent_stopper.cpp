#include "platform/linux/launchctl_agent_stopper.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <utility>

#include "platform/posix/file_descriptor.h"
#include "platform/posix/retry.h"
#include "platform/posix/spawning.h"

namespace brimwatch {

LaunchctlAgentStopper::LaunchctlAgentStopper(Environment environment, std::string command)
    : environment_(environment), command_(std::move(command)) {}

void LaunchctlAgentStopper::stop(const std::string& definition) {
    const FileDescriptor nullDevice(::open("/dev/null", O_RDWR | O_CLOEXEC));
    if (!nullDevice.isOpen()) return;
    sigset_t noSignals;
    sigset_t allSignals;
    ::sigemptyset(&noSignals);
    ::sigfillset(&allSignals);
    const SpawnAttributes attributes(noSignals, allSignals);
    SpawnFiles files(nullDevice.get(), nullDevice.get());
    files.closeOthers();
    const std::string session = "gui/" + std::to_string(::getuid());
    const std::array<const char*, 5> arguments = {command_.c_str(), "bootout", session.c_str(),
                                                  definition.c_str(), nullptr};
    pid_t process = -1;
    // The interface of exec predates const; neither list is written to.
    const int failure = ::posix_spawn(&process, command_.c_str(), files.get(), attributes.get(),
                                      const_cast<char* const*>(arguments.data()),
                                      const_cast<char* const*>(environment_.entries()));
    if (failure != 0) return;
    retryOnInterrupt([&] { return ::waitpid(process, nullptr, 0); });
}

}  // namespace brimwatch
