// Running a shell command line as a filter.
#pragma once

#include <chrono>
#include <csignal>
#include <optional>
#include <string>
#include <string_view>

namespace brimwatch {

struct ShellCommandRequest {
    std::string commandLine;
    std::string_view input;
    // When it is still running after that, the command is sent SIGTERM.
    std::chrono::duration<double> timeOut{};
    const char* const* environment = nullptr;
    // Signals that are ignored here and have to have their default action in the command.
    sigset_t defaultSignals{};
};

// Runs `/bin/sh -c` with the input on its standard input and gives what it printed, once its output
// has ended and it has exited by itself. Nothing if it could not be started, was ended by a signal,
// or printed more than any status line can be (64 MiB). Its standard error goes to the null device.
//
// Input and output flow at once. A process that the command leaves behind with its output open
// keeps this waiting. The command runs in a process group of its own: a signal that ends this
// process (SIGTERM, SIGINT, SIGHUP, SIGQUIT) ends that group first. SIGKILL can't be answered; the
// command then loses its streams. Orphans of the command become children of this process.
// SIGPIPE must be ignored (`ignoreWriteSignals`).
std::optional<std::string> runShellCommand(const ShellCommandRequest& request);

}  // namespace brimwatch
