// Asking the `codex` program for the figures of one account: one child process, one question, one
// reading. Nothing stays running between two questions.
//
// The child is `codex app-server`. Whatever the outcome is, it is asked to end and not waited for;
// it is reaped once it has ended, which may take it some seconds. Main thread, with an event loop.
#pragma once

#include <QCoroTask>
#include <chrono>
#include <csignal>
#include <optional>
#include <string>

#include "codex/codex_read_result.h"
#include "support/environment.h"

namespace brimwatch {

struct CodexReadRequest {
    std::string executable;  // an absolute path
    // The value of CODEX_HOME and the working folder of the child; else it has ours.
    std::optional<std::string> accountFolder;
    // For everything from the launch on. The time that the machine sleeps counts.
    std::chrono::milliseconds timeOut{};
    // Of the child, but for CODEX_HOME. Used only until the call returns its task.
    Environment environment;
    // Signals that are ignored here and have to have their default action in the child.
    sigset_t defaultSignals{};
};

// The child is launched before the call returns. A task that is dropped runs on to its end. When
// the application quits, the task ends with `std::errc::operation_canceled`.
QCoro::Task<CodexReadResult> readCodex(CodexReadRequest request);

}  // namespace brimwatch
